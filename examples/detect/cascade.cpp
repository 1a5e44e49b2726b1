#include "cascade.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "common/error.h"
#include "common/file.h"

namespace examples {
namespace {

using Json = nlohmann::json;

// --- Single values ---------------------------------------------------------------------------------------------------

const Json& member(const Json& object, const char* key) {
  if (!object.is_object()) throw Error("expected an object");
  const auto found = object.find(key);
  if (found == object.end()) throw Error(std::string("missing \"") + key + "\"");
  return *found;
}

const Json& arrayMember(const Json& object, const char* key) {
  const Json& array = member(object, key);
  if (!array.is_array() || array.empty()) throw Error(std::string("\"") + key + "\" is not a list with entries");
  return array;
}

const Json& arrayMember(const Json& object, const char* key, size_t size) {
  const Json& array = arrayMember(object, key);
  if (array.size() != size) throw Error(std::string("\"") + key + "\" needs " + std::to_string(size) + " numbers");
  return array;
}

float toFloat(const Json& value) {
  if (!value.is_number()) throw Error("expected a number, found " + std::string(value.type_name()));
  const double number = value.get<double>();
  if (!(std::abs(number) <= std::numeric_limits<float>::max())) throw Error("number out of range");
  return static_cast<float>(number);
}

// An integer from min to max.
int toInt(const Json& value, int min, int max, const char* what) {
  if (!value.is_number_integer()) throw Error(std::string(what) + ": expected an integer");
  const int64_t number = value.get<int64_t>();
  if (number < min || number > max) throw Error(std::string(what) + " is out of range");
  return static_cast<int>(number);
}

// The rectangle in the first four entries, which must lie inside the window.
Rect toRect(const Json& numbers, int window) {
  constexpr const char* kOutside = "a rectangle's position or size in the window";
  const int x = toInt(numbers[0], 0, window - 1, kOutside), y = toInt(numbers[1], 0, window - 1, kOutside);
  return {x, y, toInt(numbers[2], 1, window - x, kOutside), toInt(numbers[3], 1, window - y, kOutside)};
}

// --- Stages ----------------------------------------------------------------------------------------------------------

// Runs one part of the reading; says in a failure's message where in the file it happened.
template <class Read>
void locate(const std::string& where, Read read) {
  try {
    read();
  } catch (const Error& error) {
    throw Error(where + ": " + error.what());
  }
}

// A stage's stumps, in the arrays that the library builds its object from.
struct StageArrays {
  std::vector<Rect> rects;
  std::vector<float> weights, thresholds, left, right;
  std::vector<int> rectCounts;

  void addStump(const Json& stump, int window) {
    const Json& list = arrayMember(stump, "rects");
    for (const Json& rect : list) {
      if (!rect.is_array() || rect.size() != 5) throw Error("a rectangle needs 5 numbers");
      rects.push_back(toRect(rect, window));
      weights.push_back(toFloat(rect[4]));
    }
    rectCounts.push_back(static_cast<int>(list.size()));
    thresholds.push_back(toFloat(member(stump, "threshold")));
    left.push_back(toFloat(member(stump, "left")));
    right.push_back(toFloat(member(stump, "right")));
  }

  ClassifierPtr build() const {
    HaarClassifier* classifier = nullptr;
    require(zvpiHaarClassifierInitAlloc_32f(&classifier, rects.data(), weights.data(), thresholds.data(), left.data(),
                                            right.data(), rectCounts.data(), static_cast<int>(rectCounts.size())),
            "zvpiHaarClassifierInitAlloc_32f");
    return ClassifierPtr(classifier);
  }
};

Stage toStage(const Json& json, int window) {
  StageArrays arrays;
  for (const Json& stump : arrayMember(json, "stumps"))
    locate("stump " + std::to_string(arrays.rectCounts.size()), [&] { arrays.addStump(stump, window); });
  const float threshold = toFloat(member(json, "threshold"));
  return {arrays.build(), threshold};
}

int toWindow(const Json& json) {
  const Json& window = arrayMember(json, "window", 2);
  const int side = toInt(window[0], 1, kMaxWindow, "\"window\"");
  if (window[1] != window[0]) throw Error("\"window\" is not square");
  return side;
}

Cascade toCascade(const Json& json) {
  Cascade cascade{toWindow(json), {}, {}};
  locate("\"norm_rect\"", [&] { cascade.normRect = toRect(arrayMember(json, "norm_rect", 4), cascade.window); });
  for (const Json& stage : arrayMember(json, "stages"))
    locate("stage " + std::to_string(cascade.stages.size()),
           [&] { cascade.stages.push_back(toStage(stage, cascade.window)); });
  return cascade;
}

Json parse(const Bytes& bytes) {
  try {
    return Json::parse(bytes);
  } catch (const Json::exception& error) {
    throw Error(std::string("malformed JSON: ") + error.what());
  }
}

}  // namespace

Cascade loadCascade(const std::string& path) {
  const Bytes bytes = readFile(path);
  Cascade cascade;
  locate(path, [&] { cascade = toCascade(parse(bytes)); });
  return cascade;
}

}  // namespace examples
