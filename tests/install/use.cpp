#include <zvpcv/zvpcv.h>

#include <cstdint>
#include <vector>

int main() {
  const std::vector<std::uint8_t> src(12, 1);
  std::vector<std::int32_t> table(5 * 4);
  const Status status = zvpiIntegral_8u32s_C1R(src.data(), 4, table.data(), 5 * 4, {4, 3}, 0);
  return status == StatusOk && table.back() == 12 ? 0 : 1;
}
