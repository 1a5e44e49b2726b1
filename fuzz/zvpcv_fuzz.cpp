// One structured fuzz target for the whole interface: the first bytes pick an export, the rest draw its arguments, valid
// and invalid ones. Operands are heap blocks, so that the address sanitizer sees every access beyond.
#include <fuzzer/FuzzedDataProvider.h>

#include "calls/calls.h"

namespace zvp::calls {

Block exactBlock(std::size_t bytes, bool) {
  return {std::shared_ptr<std::uint8_t>(new std::uint8_t[bytes], std::default_delete<std::uint8_t[]>()), nullptr};
}

namespace {

class FromBytes : public Draw {
 public:
  FromBytes(const std::uint8_t* data, std::size_t size) : Draw(true), bytes_(data, size) {}

  std::int64_t integer(std::int64_t low, std::int64_t high) override {
    return bytes_.ConsumeIntegralInRange(low, high);
  }

 private:
  FuzzedDataProvider bytes_;
};

}  // namespace
}  // namespace zvp::calls

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zvp::calls;
  FromBytes draw(data, size);
  const std::vector<Export>& all = allExports();
  Call call(all[std::size_t(draw.integer(0, std::int64_t(all.size()) - 1))], draw);
  if (call.isComplete()) call.run();
  return 0;
}
