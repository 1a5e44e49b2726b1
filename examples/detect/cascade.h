// A cascade of Haar-like features, read from its file and turned into the library's classifier objects.
#ifndef ZVP_EXAMPLES_DETECT_CASCADE_H
#define ZVP_EXAMPLES_DETECT_CASCADE_H

#include <zvpcv/detect.h>

#include <memory>
#include <string>
#include <vector>

namespace examples {

struct FreeClassifier {
  void operator()(HaarClassifier* classifier) const { zvpiHaarClassifierFree_32f(classifier); }
};
using ClassifierPtr = std::unique_ptr<HaarClassifier, FreeClassifier>;

struct Stage {
  ClassifierPtr classifier;
  float threshold;
};

struct Cascade {
  int window;     // side of the square that the cascade judges, in pixels
  Rect normRect;  // the part of the window whose standard deviation scales the thresholds
  std::vector<Stage> stages;
};

// The largest window that is accepted.
inline constexpr int kMaxWindow = 128;

// Throws Error where the file cannot be read, is no JSON, or describes no cascade that could be evaluated.
Cascade loadCascade(const std::string& path);

}  // namespace examples

#endif
