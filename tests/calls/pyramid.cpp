// Pyramids: octaves, sizes and records, and layers with states made for sizes of their own.
#include <zvpcv/pyramid.h>

#include <algorithm>
#include <cmath>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

float someRate(Draw& in) {
  if (in.wildly(8)) return in.pick({1.0f, 10.000001f, -2.0f, float(NAN), float(INFINITY)});
  if (in.oneIn(4)) return in.pick({1.0000001f, 2.0f, 1.99999f, 2.00001f, 10.0f});
  return static_cast<float>(in.integer(1, 9000)) / 1000 + 1;
}

void giveRate(Call& c, float rate) {
  c.give(rate);
  c.rejects({1.0f, 10.1f, -2.0f, NAN}, ErrBadArg);
}

void octaveBuffer(Call& c) {
  c.length(80);
  c.rejects({INT_MAX}, ErrSize, kLater + 10);
  c.give(c.in.pick({DataType8u, DataType8s, DataType32f}));
  c.rejects({DataType16u, DataType16s, 0, -1}, ErrDataType, kLater + 9);
  c.give(c.in.pick({1, 3}));
  c.rejects({0, 2, 4, -1}, ErrNumChannels);
  c.scalar();
}

void octave(Call& c) {
  const RoiSize size = c.in.size();
  const bool isDown = c.is("Down");
  const auto result = [=](int n) { return isDown ? std::floor((double(n) + 1) / 2) : 2.0 * n; };
  c.isFinite = true;
  c.image(size);
  c.image(result(size.width) * c.channels(), result(size.height));
  c.give(size, kSize);
  c.scratch(c.bytesFrom(isDown ? "zvpiPyrDownGetBufSize_Gauss5x5" : "zvpiPyrUpGetBufSize_Gauss5x5",
                        {size.width, DataType8u, c.channels()}));
}

void sizes(Call& c) {
  c.give(c.in.size(), kSize);
  while (c.next().depth > 0) c.scalar();
  giveRate(c, someRate(c.in));
}

void record(Call& c) {
  c.object("zvpiPyramidFree");
  c.give(c.in.number(1, 100));
  c.rejects({0, -1, INT_MIN}, ErrBadArg);
  c.give(c.in.size(), kSize);
  c.rejects({RoiSize{INT_MAX, 1}}, ErrNoMemory, kLater + 9);
  const float rate = someRate(c.in);
  giveRate(c, rate);
  const auto made = [&c] { return static_cast<const Pyramid*>(c.made()); };
  c.promise("a level is in the range of its successor, which is the next one", [=, &c] {
    for (int i = 0; i < made()->level; ++i) {
      const RoiSize level = made()->roiSizes[i];
      RoiSize next, least, most;
      if (c.call("zvpiGetPyramidDownROI", {level, &next, rate}) != StatusOk) return false;
      if (std::memcmp(&next, made()->roiSizes + i + 1, sizeof next) != 0) return false;
      if (c.call("zvpiGetPyramidUpROI", {next, &least, &most, rate}) != StatusOk) return false;
      if (least.width > level.width || level.height > most.height) return false;
    }
    return true;
  });
  c.observe([=](auto& bytes) {
    const auto append = [&](const void* p, std::size_t n) {
      const auto* first = static_cast<const std::uint8_t*>(p);
      bytes.insert(bytes.end(), first, first + n);
    };
    const auto levels = std::size_t(made()->level) + 1;
    append(&made()->level, sizeof(int));
    append(made()->roiSizes, levels * sizeof(RoiSize));
    append(made()->rates, levels * sizeof(double));
    append(made()->steps, levels * sizeof(int));
  });
}

// ppState, size, rate, kernel, its length, mode. A reduction's kernel is narrower than the image.
void layerState(Call& c) {
  RoiSize size = c.in.size();
  if (!c.in.isWild()) size.width = std::max(size.width, 4);
  const float rate = someRate(c.in);
  const int most = c.in.isWild() ? 4 : std::min(4, (size.width - 4) / 2);
  const int taps = c.in.wildly(16) ? c.in.number(-1, 40) : 3 + 2 * int(c.in.integer(0, most));
  if (taps > 100) return;  // no memory holds so many
  c.isFinite = true;
  c.object("zvpiPyramidLayerDownFree" + c.suffix());
  c.give(size, kSize);
  c.rejects({RoiSize{INT_MAX, INT_MAX}}, ErrNoMemory, kLater + 9);
  giveRate(c, rate);
  c.array(taps);
  c.give(taps);
  c.rejects({1, 0, -3, 2}, ErrBadArg);
  c.rejects({INT_MAX}, c.is("Down") ? ErrSize : ErrNoMemory, c.is("Down") ? int{kSize} : kLater + 9);
  c.give(c.in.wildly(64) ? 1 : 2);
  c.rejects({0, 1, 3, -1}, ErrBadArg);
}

// The sizes of source and result mostly belong together.
void layer(Call& c) {
  const bool isDown = c.is("Down");
  const std::string maker = isDown ? "zvpiPyramidLayerDownInitAlloc" : "zvpiPyramidLayerUpInitAlloc";
  const Call* state = c.prepare(maker + c.suffix());
  if (state == nullptr) return;
  RoiSize larger = state->argument(1).as<RoiSize>(), smaller = c.in.size();
  if (c.in.wildly(4)) larger = c.in.size();
  if (!c.in.isWild() && c.in.oneIn(4)) larger = {int(c.in.integer(1, larger.width)), (larger.height + 1) / 2};
  if (!c.in.wildly(8)) c.call("zvpiGetPyramidDownROI", {larger, &smaller, state->argument(2)});
  const RoiSize from = isDown ? larger : smaller, to = isDown ? smaller : larger;
  c.isFinite = true;
  c.image(from);
  c.give(from, kSize);
  c.image(to);
  c.give(to);
  RoiSize least = to, most = to;
  if (!isDown) c.call("zvpiGetPyramidUpROI", {from, &least, &most, state->argument(2)});
  for (const int height : {0, INT_MIN, INT_MAX, std::max(least.height, 1) - 1, std::min(most.height, INT_MAX - 1) + 1})
    c.rejects({RoiSize{to.width, height}}, ErrSize, kLater + 9);
  c.give(state->made());
  c.rejects({nullptr}, ErrNullPtr, kNull);
  if (const Call* narrower = c.prepareNarrower(maker + c.suffix(), larger, 4))
    c.rejects({narrower->made()}, ErrSize, kLater + 9);
  if (const Call* other = c.prepare(maker + (c.is("_8u_C1R") ? "_16u_C1R" : "_8u_C1R")))
    c.rejects({other->made()}, ErrBadArg, kLater + 8);
}

// An object that is made by the InitAlloc of the same name.
void release(Call& c) {
  std::string maker(c.name());
  const Call* made =
      c.prepare(c.is("PyramidFree") ? "zvpiPyramidInitAlloc" : maker.replace(maker.find("Free"), 4, "InitAlloc"));
  if (made == nullptr) return;
  c.give(made->made());
  c.rejects({nullptr}, ErrNullPtr, kNull);
}

const Export kExports[] = {
    ZVP_EXPORT(sizes, zvpiGetPyramidDownROI),
    ZVP_EXPORT(sizes, zvpiGetPyramidUpROI),
    ZVP_EXPORT(octaveBuffer, zvpiPyrDownGetBufSize_Gauss5x5),
    ZVP_EXPORT(octave, zvpiPyrDown_Gauss5x5_32f_C1R),
    ZVP_EXPORT(octave, zvpiPyrDown_Gauss5x5_32f_C3R),
    ZVP_EXPORT(octave, zvpiPyrDown_Gauss5x5_8s_C1R),
    ZVP_EXPORT(octave, zvpiPyrDown_Gauss5x5_8s_C3R),
    ZVP_EXPORT(octave, zvpiPyrDown_Gauss5x5_8u_C1R),
    ZVP_EXPORT(octave, zvpiPyrDown_Gauss5x5_8u_C3R),
    ZVP_EXPORT(octaveBuffer, zvpiPyrUpGetBufSize_Gauss5x5),
    ZVP_EXPORT(octave, zvpiPyrUp_Gauss5x5_32f_C1R),
    ZVP_EXPORT(octave, zvpiPyrUp_Gauss5x5_32f_C3R),
    ZVP_EXPORT(octave, zvpiPyrUp_Gauss5x5_8s_C1R),
    ZVP_EXPORT(octave, zvpiPyrUp_Gauss5x5_8s_C3R),
    ZVP_EXPORT(octave, zvpiPyrUp_Gauss5x5_8u_C1R),
    ZVP_EXPORT(octave, zvpiPyrUp_Gauss5x5_8u_C3R),
    ZVP_EXPORT(release, zvpiPyramidFree),
    ZVP_EXPORT(record, zvpiPyramidInitAlloc),
    ZVP_EXPORT(release, zvpiPyramidLayerDownFree_16u_C1R),
    ZVP_EXPORT(release, zvpiPyramidLayerDownFree_16u_C3R),
    ZVP_EXPORT(release, zvpiPyramidLayerDownFree_32f_C1R),
    ZVP_EXPORT(release, zvpiPyramidLayerDownFree_32f_C3R),
    ZVP_EXPORT(release, zvpiPyramidLayerDownFree_8u_C1R),
    ZVP_EXPORT(release, zvpiPyramidLayerDownFree_8u_C3R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerDownInitAlloc_16u_C1R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerDownInitAlloc_16u_C3R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerDownInitAlloc_32f_C1R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerDownInitAlloc_32f_C3R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerDownInitAlloc_8u_C1R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerDownInitAlloc_8u_C3R),
    ZVP_EXPORT(layer, zvpiPyramidLayerDown_16u_C1R),
    ZVP_EXPORT(layer, zvpiPyramidLayerDown_16u_C3R),
    ZVP_EXPORT(layer, zvpiPyramidLayerDown_32f_C1R),
    ZVP_EXPORT(layer, zvpiPyramidLayerDown_32f_C3R),
    ZVP_EXPORT(layer, zvpiPyramidLayerDown_8u_C1R),
    ZVP_EXPORT(layer, zvpiPyramidLayerDown_8u_C3R),
    ZVP_EXPORT(release, zvpiPyramidLayerUpFree_16u_C1R),
    ZVP_EXPORT(release, zvpiPyramidLayerUpFree_16u_C3R),
    ZVP_EXPORT(release, zvpiPyramidLayerUpFree_32f_C1R),
    ZVP_EXPORT(release, zvpiPyramidLayerUpFree_32f_C3R),
    ZVP_EXPORT(release, zvpiPyramidLayerUpFree_8u_C1R),
    ZVP_EXPORT(release, zvpiPyramidLayerUpFree_8u_C3R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerUpInitAlloc_16u_C1R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerUpInitAlloc_16u_C3R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerUpInitAlloc_32f_C1R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerUpInitAlloc_32f_C3R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerUpInitAlloc_8u_C1R),
    ZVP_EXPORT(layerState, zvpiPyramidLayerUpInitAlloc_8u_C3R),
    ZVP_EXPORT(layer, zvpiPyramidLayerUp_16u_C1R),
    ZVP_EXPORT(layer, zvpiPyramidLayerUp_16u_C3R),
    ZVP_EXPORT(layer, zvpiPyramidLayerUp_32f_C1R),
    ZVP_EXPORT(layer, zvpiPyramidLayerUp_32f_C3R),
    ZVP_EXPORT(layer, zvpiPyramidLayerUp_8u_C1R),
    ZVP_EXPORT(layer, zvpiPyramidLayerUp_8u_C3R),
};

}  // namespace

Exports pyramidExports() { return kExports; }

}  // namespace zvp::calls
