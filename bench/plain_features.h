// Local peaks as a reader would write them first: every pixel above the threshold against its neighbours.
#pragma once

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

inline std::int32_t magnitude(std::int32_t v) { return v == INT32_MIN ? v : std::abs(v); }
inline float magnitude(float v) { return std::fabs(v); }
inline bool isClose(std::int32_t v, std::int32_t extremum) { return v == extremum; }
inline bool isClose(float v, float extremum) { return std::fabs(v - extremum) <= std::numeric_limits<float>::min(); }

template <class T>
void findPeaks(const Image<T>& src, T threshold, bool cross, int border, std::vector<Point>& peaks) {
  peaks.clear();
  for (int y = border; y < src.height - border; ++y) {
    for (int x = border; x < src.width - border; ++x) {
      const T v = src.row(y)[x];
      if (!(magnitude(v) > threshold)) continue;
      T highest = v, lowest = v;
      for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
          if (cross && dx != 0 && dy != 0) continue;
          const T n = src.row(y + dy)[x + dx];
          highest = n > highest ? n : highest;
          lowest = n < lowest ? n : lowest;
        }
      }
      if (isClose(v, v > 0 ? highest : lowest)) peaks.push_back({x, y});
    }
  }
}

}  // namespace bench::ZVP_LOOPS::plain
