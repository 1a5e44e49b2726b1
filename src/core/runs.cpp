#include "core/runs.h"

#include <string.h>

#include "core/checks.h"
#include "simd/simd.h"
#include "zvpcore/zvpcore.h"

namespace zvp {
namespace {

using Block = simd::Pack<uint8_t, 16>;

// A larger fill would only push the caller's data out of the caches.
constexpr int64_t kCachedFillBytes = 2097152;

template <class T>
void fillCached(uint8_t* dst, int64_t bytes, T value) {
  for (int64_t i = 0; i < bytes; i += int64_t{sizeof(T)}) simd::store(dst + i, value);
}

// Bytes up to the next address that is a multiple of a block.
int64_t bytesToBlock(const uint8_t* p) { return -reinterpret_cast<intptr_t>(p) & int64_t{sizeof(Block) - 1}; }

// Streams whole blocks; the pattern is that of a fill that starts at an element, also where elements straddle blocks.
template <class T>
void fillStreamed(uint8_t* dst, int64_t bytes, T value) {
  alignas(16) uint8_t pattern[2 * sizeof(Block)];
  fillCached(pattern, sizeof pattern, value);
  const int64_t head = bytesToBlock(dst);
  memcpy(dst, pattern, static_cast<size_t>(head));
  const auto block = simd::load<Block>(pattern + head % int64_t{sizeof(T)});
  int64_t i = head;
  for (; i <= bytes - int64_t{sizeof(Block)}; i += int64_t{sizeof(Block)}) simd::storeStream(dst + i, block);
  memcpy(dst + i, &block, static_cast<size_t>(bytes - i));
  simd::fence();
}

void copyStreamed(const uint8_t* src, uint8_t* dst, int64_t bytes) {
  int64_t i = bytesToBlock(dst);
  memcpy(dst, src, static_cast<size_t>(i));
  for (; i <= bytes - int64_t{sizeof(Block)}; i += int64_t{sizeof(Block)})
    simd::storeStream(dst + i, simd::load<Block>(src + i));
  memcpy(dst + i, src + i, static_cast<size_t>(bytes - i));
  simd::fence();
}

bool exceedsCaches(int64_t bytes) {
  int largest = 0;
  zvpGetMaxCacheSizeB(&largest);
  return largest > 0 && bytes > largest;
}

}  // namespace

template <class T>
Status fillRun(T* dst, int n, T value) {
  if (Status s = firstFailure(nonNull(dst), check(n >= 1, ErrSize))) return s;
  auto* bytes = reinterpret_cast<uint8_t*>(dst);
  const int64_t size = int64_t{n} * int64_t{sizeof(T)};
  if (size > kCachedFillBytes) {
    fillStreamed(bytes, size, value);
  } else {
    fillCached(bytes, size, value);
  }
  return StatusOk;
}

Status copyRun(const uint8_t* src, uint8_t* dst, int n) {
  if (Status s = firstFailure(nonNull(src, dst), check(n >= 1, ErrSize))) return s;
  if (n > kCachedFillBytes && exceedsCaches(2 * int64_t{n})) {
    copyStreamed(src, dst, n);
  } else {
    memcpy(dst, src, static_cast<size_t>(n));
  }
  return StatusOk;
}

template <class S>
Status convertRun(const S* src, float* dst, int n) {
  if (Status s = firstFailure(nonNull(src), nonNull(dst), check(n >= 1, ErrSize))) return s;
  for (int i = 0; i < n; ++i) simd::store(dst + i, static_cast<float>(simd::load<S>(src + i)));
  return StatusOk;
}

template Status fillRun(uint8_t*, int, uint8_t);
template Status fillRun(uint16_t*, int, uint16_t);
template Status fillRun(int32_t*, int, int32_t);
template Status fillRun(float*, int, float);
template Status fillRun(double*, int, double);
template Status convertRun(const uint8_t*, float*, int);
template Status convertRun(const uint16_t*, float*, int);
template Status convertRun(const int16_t*, float*, int);

}  // namespace zvp
