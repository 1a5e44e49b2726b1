// What a fill does with the runs it finds: paints them, counts their pixels, and surrounds them with a rectangle.
#pragma once

#include "core/rows.h"
#include "distance/flood/runs.h"
#include "simd/walk.h"

namespace zvp::flood {

// Area and bounding box of the runs seen so far.
struct Extent {
  int64_t area = 0;
  int left = INT32_MAX, right = -1, top = INT32_MAX, bottom = -1;

  void count(Run run) { area += run.right - run.left + 1; }
  void surround(Run run) {
    left = simd::min(left, run.left);
    right = simd::max(right, run.right);
    top = simd::min(top, run.y);
    bottom = simd::max(bottom, run.y);
  }
};

template <class T, int channels>
class Painter {
 public:
  Painter(Rows<T> image, const T* value) : image_(image), pattern_(Chunk::repeat(value)) {}

  ZVP_INLINE void paint(Run run) const {
    T* p = image_.row(run.y) + int64_t{run.left} * channels;
    const int64_t count = int64_t{run.right} - run.left + 1;
    const auto pixel = simd::load<Pixel>(&pattern_);
    for (int64_t i = simd::sweep<Widths>(0, 0, Packs{p, count, pattern_}); i < count; ++i)
      simd::store(p + i * channels, pixel);
  }

 private:
  using Chunk = ChunkOf<T, channels>;

  struct Pixel {
    T elements[channels];
  };

  struct Widths {
    static constexpr int mostLanes = Chunk::kLanes, fewestLanes = 16 / int{sizeof(T)};
    template <int N>
    static constexpr int narrower = fewestLanes;
    template <int N>
    static constexpr int outputs = N / channels;
  };

  // A store may reach into the next pixel of the run, never beyond the run.
  struct Packs {
    T* p;
    int64_t count;
    typename Chunk::Vector pattern;

    template <int N>
    ZVP_INLINE int64_t last() const {
      return count - (N + channels - 1) / channels;
    }
    template <int N>
    ZVP_INLINE void run(int64_t i) const {
      simd::store(p + i * channels, simd::load<simd::Pack<T, N>>(&pattern));
    }
  };

  Rows<T> image_;
  typename Chunk::Vector pattern_;
};

}  // namespace zvp::flood
