// Blocks between inaccessible pages.
#include "calls/operand.h"
#include "support/image.h"

namespace zvp::calls {

Block exactBlock(std::size_t bytes, bool atEnd) {
  const auto block = std::make_shared<test::GuardedBlock>(bytes, test::Placement{atEnd, 0});
  const auto freeze = [block, frozen = false]() mutable {
    if (!frozen) block->use(1, 0);
    frozen = true;
  };
  return {{block, block->start()}, freeze};
}

}  // namespace zvp::calls
