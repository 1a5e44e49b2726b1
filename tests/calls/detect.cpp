// Haar classifiers: stages from arbitrary arrays, perhaps tilted, measured and evaluated.
#include <zvpcv/detect.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

std::string typeOf(const Call& c) { return c.is("_32s_C1RSfs") || c.suffix() == "_32s" ? "_32s" : "_32f"; }

void observeExtent(Call& c, const std::function<void*()>& object) {
  c.observe([=, &c](auto& bytes) {
    RoiSize extent{-1, -1};
    c.call("zvpiGetHaarClassifierSize" + c.suffix(), {object(), &extent});
    for (const int n : {extent.width, extent.height}) bytes.push_back(static_cast<std::uint8_t>(n));
  });
}

// The last rectangle must lie where its corners are no less than 0 and fit 31 bits.
void refuseRects(Call& c, const Operand& rects) {
  std::vector<Rect> bad = {{-1, 0, 1, 1}, {0, -1, 1, 1}, {0, 0, 0, 1}, {0, 0, 1, 0}, {INT_MAX, 0, 1, 1}};
  bad.push_back({0, INT_MAX - (c.is("Tilted") ? 5 : 4), 1, 5});
  for (const Rect& r : bad) {
    const Operand& others = c.add(Operand(c.in, Access::kRead, {1, false}, double(rects.size()), false));
    std::memcpy(others.start(), rects.start(), rects.size());
    std::memcpy(others.start() + rects.size() - sizeof r, &r, sizeof r);
    c.rejects({others.start()}, ErrBadArg, kLater + 20);
  }
}

// pState, pFeature, pWeight, pThreshold, pVal1, pVal2, pNum, length.
void build(Call& c) {
  const int length = c.in.wildly(32) ? -1 : static_cast<int>(c.in.integer(c.in.isWild() ? 0 : 1, 6));
  std::vector<int> counts;
  double rects = 0;
  for (int k = 0; k < length; ++k) {
    // A count that would ask for more rectangles than there are exceeds what an object may hold.
    counts.push_back(c.in.wildly(64) ? c.in.pick({0, -1, 1 << 30, INT_MAX}) : static_cast<int>(c.in.integer(1, 4)));
    if (counts.back() <= 4) rects += std::max(counts.back(), 0);
  }
  c.object("zvpiHaarClassifierFree" + c.suffix());
  const Operand& features = c.array(rects);
  for (int i = 0; i < rects; ++i) {
    const Rect rect = c.in.rect();
    std::memcpy(features.start() + i * int{sizeof rect}, &rect, sizeof rect);
  }
  if (rects > 0 && !c.in.isWild()) refuseRects(c, features);
  c.array(rects);
  for (int i = 0; i < 3; ++i) c.array(length);
  const Operand& numbers = c.array(length);
  for (std::size_t k = 0; k < counts.size(); ++k) numbers.put(k, counts[k]);
  for (const int count : {0, -1, INT_MAX}) {
    const Operand& others = c.add(Operand(c.in, Access::kRead, {sizeof count, false}, length, false, alignof(int)));
    for (std::size_t k = 0; k < counts.size(); ++k) others.put(k, k + 1 < counts.size() ? counts[k] : count);
    c.rejects({others.start()}, count < 1 ? ErrSize : ErrNoMemory, count < 1 ? int{kSize} : kLater + 10);
  }
  c.give(length);
  c.rejects({-1, INT_MIN}, ErrSize, kSize);
  observeExtent(c, [&c] { return c.made(); });
}

// A stage, and which of its classifiers are turned.
struct Stage {
  Call* built;
  std::vector<std::uint8_t> turned;
  bool aboutTop = false;

  int length() const { return built->argument(7).as<int>(); }
  int count(int k) const { return built->operandOf(6).get<int>(std::size_t(k)); }
};

Stage someStage(Call& c, bool isTilted) {
  Stage stage{c.prepare((isTilted ? "zvpiTiltedHaarClassifierInitAlloc" : "zvpiHaarClassifierInitAlloc") + typeOf(c)),
              {}};
  if (stage.built == nullptr) return stage;
  stage.turned.assign(std::size_t(stage.length()), isTilted);
  stage.aboutTop = isTilted;
  return stage;
}

void giveObject(Call& c, const Stage& stage, Access access) {
  double rects = 0;
  for (int k = 0; k < stage.length(); ++k) rects += stage.count(k);
  c.share(Operand(access, stage.built->made(), std::size_t(48 + 24 * stage.length() + 36 * rects)), access);
}

void tilt(Call& c) {
  const Stage stage = someStage(c, c.in.wildly(4));
  if (stage.built == nullptr) return;
  c.array(stage.length());
  c.give(c.in.integer(0, 1));
  giveObject(c, stage, Access::kScratch);
  observeExtent(c, [=] { return stage.built->made(); });
}

void extent(Call& c) {
  const Stage stage = someStage(c, c.in.oneIn(3));
  if (stage.built == nullptr) return;
  giveObject(c, stage, Access::kRead);
  c.scalar();
}

void release(Call& c) {
  const Stage stage = someStage(c, c.in.oneIn(3));
  if (stage.built == nullptr) return;
  c.give(stage.built->made());
}

// Where a position's corners are, of the classifiers that are turned or not. They wrap modulo 2^32.
std::vector<Corner> corners(const Stage& stage, bool ofTurned) {
  const auto at = [](std::int64_t column, std::int64_t row) {
    return Corner{double(static_cast<std::int32_t>(column)), double(static_cast<std::int32_t>(row))};
  };
  std::vector<Corner> out;
  const Operand& rects = stage.built->operandOf(1);
  std::size_t next = 0;
  for (int k = 0; k < stage.length(); ++k) {
    const bool isTurned = stage.turned[std::size_t(k)] != 0;
    for (int i = 0; i < stage.count(k); ++i) {
      const Rect r = rects.get<Rect>(next++);
      const std::int64_t x = r.x, y = r.y, w = r.width, h = r.height;
      if (isTurned != ofTurned) continue;
      if (!isTurned) {
        out.insert(out.end(), {at(x + w, y + h), at(x, y + h), at(x + w, y), at(x, y)});
      } else if (stage.aboutTop) {
        out.insert(out.end(), {at(x + w - h, y + h + w), at(x - h, y + h), at(x + w, y + w), at(x, y)});
      } else {
        out.insert(out.end(), {at(x, y + h), at(x - h, y), at(x + w, y + h - w), at(x + w - h, y - w)});
      }
    }
  }
  return out;
}

// Turns some classifiers of a stage that stands upright.
void turnSome(Call& c, Stage& stage) {
  for (auto& t : stage.turned) t = c.in.oneIn(2);
  stage.aboutTop = c.in.oneIn(2);
  c.call("zvpiTiltHaarFeatures" + typeOf(c), {stage.turned.data(), stage.aboutTop, stage.built->made()});
}

// Mask bytes, and for every row the range of positions between selected ones.
struct Positions {
  std::vector<std::uint8_t> mask;
  Spans rows;
};

Positions somePositions(Call& c, RoiSize size) {
  Positions p;
  if (size.width < 1 || size.height < 1 || double(size.width) * size.height > kMostBytes) return p;
  const std::int64_t sparseness = c.in.integer(1, 40);
  std::minstd_rand engine(unsigned(c.in.integer(1, UINT16_MAX)));
  for (int y = 0; y < size.height; ++y) {
    int first = size.width, end = 0;
    for (int x = 0; x < size.width; ++x) {
      p.mask.push_back(engine() % std::uint64_t(sparseness) == 0 ? std::uint8_t(engine() % 255 + 1) : 0);
      if (p.mask.back() != 0) first = std::min(first, x), end = x + 1;
    }
    if (end > 0) p.rows.push_back({double(y), double(first), double(end)});
  }
  return p;
}

Spans entriesOf(const Spans& positions, const std::vector<Corner>& corners, int offset) {
  Spans spans;
  for (const Span& p : positions)
    for (const Corner& c : corners)
      spans.push_back({p.row + c.y + offset, p.first + c.x + offset, p.end + c.x + offset});
  return spans;
}

void apply(Call& c) {
  const bool isTilted = c.in.oneIn(3), isMixed = c.is("Mixed");
  Stage stage = someStage(c, isTilted);
  if (stage.built == nullptr) return;
  if (!isTilted && c.in.oneIn(2)) turnSome(c, stage);
  const RoiSize size = c.in.size();
  const Positions positions = somePositions(c, size);
  std::vector<Corner> upright = corners(stage, false);
  const std::vector<Corner> turned = corners(stage, true);
  if (!isMixed) upright.insert(upright.end(), turned.begin(), turned.end());
  c.image(entriesOf(positions.rows, upright, 0), size.width);
  if (isMixed) c.image(entriesOf(positions.rows, turned, 1), size.width);
  c.image(size);
  const Operand& mask = c.image(size);
  if (mask.size() > 0)
    for (std::size_t i = 0; i < positions.mask.size(); ++i)
      mask.start()[i / std::size_t(size.width) * std::size_t(mask.step()) + i % std::size_t(size.width)] =
          positions.mask[i];
  c.give(size, kSize);
  c.scalar();
  c.value();
  giveObject(c, stage, Access::kRead);
  if (c.hasNext()) c.give(c.in.number(-70, 70));
}

const Export kExports[] = {
    ZVP_EXPORT(apply, zvpiApplyHaarClassifier_32f_C1R),
    ZVP_EXPORT(apply, zvpiApplyHaarClassifier_32s32f_C1R),
    ZVP_EXPORT(apply, zvpiApplyHaarClassifier_32s_C1RSfs),
    ZVP_EXPORT(apply, zvpiApplyMixedHaarClassifier_32f_C1R),
    ZVP_EXPORT(apply, zvpiApplyMixedHaarClassifier_32s32f_C1R),
    ZVP_EXPORT(apply, zvpiApplyMixedHaarClassifier_32s_C1RSfs),
    ZVP_EXPORT(extent, zvpiGetHaarClassifierSize_32f),
    ZVP_EXPORT(extent, zvpiGetHaarClassifierSize_32s),
    ZVP_EXPORT(release, zvpiHaarClassifierFree_32f),
    ZVP_EXPORT(release, zvpiHaarClassifierFree_32s),
    ZVP_EXPORT(build, zvpiHaarClassifierInitAlloc_32f),
    ZVP_EXPORT(build, zvpiHaarClassifierInitAlloc_32s),
    ZVP_EXPORT(tilt, zvpiTiltHaarFeatures_32f),
    ZVP_EXPORT(tilt, zvpiTiltHaarFeatures_32s),
    ZVP_EXPORT(build, zvpiTiltedHaarClassifierInitAlloc_32f),
    ZVP_EXPORT(build, zvpiTiltedHaarClassifierInitAlloc_32s),
};

}  // namespace

Exports detectExports() { return kExports; }

}  // namespace zvp::calls
