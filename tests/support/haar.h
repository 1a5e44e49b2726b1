// Stages for the tests: seeded arrays in the form in which callers give them, and objects that release themselves.
#pragma once

#include <memory>
#include <vector>

#include "support/image.h"
#include "zvpcv/detect.h"

namespace zvp::test {

template <class T>
struct StageArrays {
  std::vector<Rect> rects;
  std::vector<T> weights, thresholds, val1, val2;
  std::vector<int> counts;

  StageArrays() {  // empty arrays are arrays too: their pointers are not null
    rects.reserve(1);
    counts.reserve(1);
    for (auto* numbers : {&weights, &thresholds, &val1, &val2}) numbers->reserve(1);
  }

  int length() const { return static_cast<int>(counts.size()); }

  void add(T threshold, T v1, T v2, const std::vector<std::pair<Rect, T>>& features) {
    for (const auto& [rect, weight] : features) {
      rects.push_back(rect);
      weights.push_back(weight);
    }
    counts.push_back(static_cast<int>(features.size()));
    thresholds.push_back(threshold);
    val1.push_back(v1);
    val2.push_back(v2);
  }
};

using HaarPointer = std::unique_ptr<HaarClassifier, Status (*)(HaarClassifier*)>;

template <class T>
using HaarInit = Status (*)(HaarClassifier**, const Rect*, const T*, const T*, const T*, const T*, const int*, int);

template <class T>
HaarInit<T> haarInit(bool tilted) {
  if constexpr (std::is_same_v<T, float>) {
    return tilted ? zvpiTiltedHaarClassifierInitAlloc_32f : zvpiHaarClassifierInitAlloc_32f;
  } else {
    return tilted ? zvpiTiltedHaarClassifierInitAlloc_32s : zvpiHaarClassifierInitAlloc_32s;
  }
}

template <class T>
HaarPointer build(const StageArrays<T>& s, bool tilted = false) {
  HaarClassifier* object = nullptr;
  EXPECT_EQ(haarInit<T>(tilted)(&object, s.rects.data(), s.weights.data(), s.thresholds.data(), s.val1.data(),
                                s.val2.data(), s.counts.data(), s.length()),
            StatusOk);
  return {object, zvpiHaarClassifierFree_32f};
}

// Classifiers of one to four rectangles inside a window of `extent`, whose decisions are balanced.
template <class T>
StageArrays<T> randomStage(unsigned seed, int length, int extent) {
  std::mt19937 engine(seed);
  const auto upTo = [&](int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); };
  StageArrays<T> stage;
  for (int k = 0; k < length; ++k) {
    std::vector<std::pair<Rect, T>> features;
    for (int i = 0, n = 1 + upTo(4); i < n; ++i) {
      const int x = upTo(extent), y = upTo(extent);
      features.push_back({{x, y, 1 + upTo(extent - x), 1 + upTo(extent - y)}, static_cast<T>(upTo(9) - 4)});
    }
    stage.add(static_cast<T>(upTo(41) - 20), static_cast<T>(upTo(100) - 50), static_cast<T>(upTo(100) - 50), features);
  }
  return stage;
}

}  // namespace zvp::test
