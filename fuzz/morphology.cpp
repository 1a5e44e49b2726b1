// Erosion, dilation and composite morphology: every call makes its own specification.
#include <zvpcv/morphology.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

// Objects for 16-bit elements stand at multiples of 4, others anywhere.
template <class T>
constexpr std::size_t kObjectAlignment = sizeof(T) == 2 ? 4 : 1;

struct Mask {
  explicit Mask(Bytes& in) : size{number(in, 1, 9), number(in, 1, 9)} {
    const double members = size.width > 0 && size.height > 0 ? double(size.width) * size.height : 0;
    bytes = readsArray<std::uint8_t>(in, members);
    const int density = in.ConsumeIntegralInRange(0, 255);
    for (int i = 0; members <= kMostBytes && i < members; ++i) bytes.start()[i] = bytes.start()[i] < density;
    bytes.remember();
  }
  Point centre() const { return {(size.width - 1) >> 1, (size.height - 1) >> 1}; }

  RoiSize size;
  Operand bytes;
};

BorderType someBorder(Bytes& in) {
  if (oneIn(16, in)) return in.ConsumeIntegral<int>();
  return in.ConsumeBool() ? BorderInMemory : BorderReplicate | (in.ConsumeIntegralInRange(0, 15) << 4);
}

// Pixels around a region that a call reads where memory holds them.
struct Margins {
  Margins(BorderType border, const Mask& mask, Point anchor, int times) {
    const auto inMemory = [&](int flag) { return (border & 15) == BorderInMemory || (border & flag) != 0 ? times : 0; };
    top = double(inMemory(BorderTopInMemory)) * anchor.y;
    bottom = double(inMemory(BorderBottomInMemory)) * (double(mask.size.height) - 1 - anchor.y);
    left = double(inMemory(BorderLeftInMemory)) * anchor.x;
    right = double(inMemory(BorderRightInMemory)) * (double(mask.size.width) - 1 - anchor.x);
    // Opening and closing use the mask and the turned one: the larger reach bounds both.
    if (times == 2) top = bottom = top > 0 || bottom > 0 ? 2.0 * mask.size.height : 0;
    if (times == 2) left = right = left > 0 || right > 0 ? 2.0 * mask.size.width : 0;
  }

  double top, bottom, left, right;
};

template <class T>
Operand sourceWithMargins(Bytes& in, RoiSize size, int channels, Margins m) {
  Spans spans;
  if (size.width > 0 && size.height > 0)
    addRegion(spans, {-m.left * channels, -m.top}, (size.width + m.left + m.right) * channels,
              size.height + m.top + m.bottom);
  return reads<T>(in, spans, double(size.width) * channels);
}

// call(src, dst) on images of one type, sometimes in place.
template <int channels, class T, class Call>
void onImages(Bytes& in, RoiSize size, Margins margins, const Operand& object, const Operand& buffer, Call call) {
  const auto src = sourceWithMargins<T>(in, size, channels, margins);
  auto dst = writesImage<T>(in, double(size.width) * channels, size.height);
  if (oneIn(4, in)) dst.alias(src);
  const Status status = call(src, dst);
  require(dst.isIntact(status < 0) && object.isIntact(true), "only the destination changes");
  require(buffer.isIntact(status < 0), "a failing call leaves the work memory");
}

template <class Value>
Value borderValue() {
  if constexpr (std::is_pointer_v<Value>) {
    return nullptr;
  } else {
    return 7;
  }
}

// What queries and Init take for a region: a size, or only its width.
struct Extent {
  RoiSize size;

  operator RoiSize() const { return size; }
  operator int() const { return size.width; }
};

// Draws a region, a mask and a border, makes a specification and its work memory, and calls
// call(size, border, margins, spec, buffer) unless they are too large; `steps`: filters that follow each other.
template <class T, class E, class Spec, class Call>
void withSpec(Bytes& in, int steps, Status (*query)(E, RoiSize, int*, int*),
              Status (*init)(E, const std::uint8_t*, RoiSize, Spec*, std::uint8_t*), Call call) {
  const RoiSize size = someSize(in);
  const Mask mask(in);
  const E extent = Extent{size};
  int specBytes = 0, bufferBytes = 0;
  const Status sized = query(extent, mask.size, &specBytes, &bufferBytes);
  if (sized != StatusOk || std::max(specBytes, bufferBytes) > kMostBytes) return;
  auto spec = block(in, specBytes, kObjectAlignment<T>), buffer = block(in, bufferBytes);
  if (init(extent, mask.bytes, mask.size, spec, buffer) != StatusOk) return;
  spec.remember(), buffer.remember();
  const BorderType type = someBorder(in);
  call(size, type, Margins{type, mask, mask.centre(), steps}, spec, buffer);
}

template <int channels, class T, class Value, class Spec>
void filter(Bytes& in, int steps, auto* query, auto* init,
            Status (*f)(const T*, int, T*, int, RoiSize, BorderType, Value, const Spec*, std::uint8_t*)) {
  withSpec<T>(in, steps, query, init, [&](RoiSize size, BorderType type, Margins margins, auto& spec, auto& buffer) {
    onImages<channels, T>(in, size, margins, spec, buffer, [&](auto& src, auto& dst) {
      return f(src, src.step, dst, dst.step, size, type, borderValue<Value>(), spec, buffer);
    });
  });
}

template <int channels, class T>
void replicate(Bytes& in, Status (*query)(int, const std::uint8_t*, RoiSize, int*),
               Status (*init)(int, const std::uint8_t*, RoiSize, Point, MorphState*),
               Status (*filter)(const T*, int, T*, int, RoiSize, BorderType, MorphState*)) {
  const RoiSize size = someSize(in);
  const Mask mask(in);
  const int x = number(in, 0, std::max(mask.size.width, 1) - 1);
  const Point anchor{x, number(in, 0, std::max(mask.size.height, 1) - 1)};
  int bytes = 0;
  if (query(size.width, mask.bytes, mask.size, &bytes) != StatusOk || bytes > kMostBytes) return;
  auto state = block(in, bytes);
  if (init(size.width, mask.bytes, mask.size, anchor, state) != StatusOk) return;
  state.remember();
  const BorderType type = oneIn(16, in) ? someBorder(in) : BorderType{BorderReplicate};
  const auto src = readsImage<T>(in, double(size.width) * channels, size.height);
  const auto dst = writesImage<T>(in, double(size.width) * channels, size.height);
  const Status status = filter(src, src.step, dst, dst.step, size, type, state);
  checkCall(status, src, dst);
  require(state.isIntact(status < 0), "a failing call leaves the state");
}

// Bits: call(src, its bit, dst, its bit).
template <class Call>
void onBits(Bytes& in, RoiSize size, Margins m, const Operand& object, Call call) {
  const int srcBit = number(in, 0, 20), dstBit = number(in, 0, 20);
  const auto bytesTo = [](double bits) { return std::ceil(bits / 8); };
  Spans spans;
  if (size.width > 0 && size.height > 0) {
    const double first = std::floor((srcBit - m.left) / 8);
    addRegion(spans, {first, -m.top}, bytesTo(double(srcBit) + size.width + m.right) - first,
              size.height + m.top + m.bottom);
  }
  const double rowBytes = bytesTo(size.width);
  const auto src = reads<std::uint8_t>(in, spans, rowBytes);
  const Spans written = size.width > 0 ? region(bytesTo(double(dstBit) + size.width), size.height) : Spans{};
  const auto dst = Operand::make(in, Access::kWrite, written, rowBytes, std::uint8_t{});
  checkCall(call(src, srcBit, dst, dstBit), src, dst);
  require(object.isIntact(true), "a filter leaves its specification");
}

void bits(Bytes& in, int steps, auto* query, auto* init, auto* f) {
  const auto call = [&](RoiSize size, BorderType type, Margins margins, auto& spec, auto& buffer) {
    onBits(in, size, margins, spec, [&](auto& src, int srcBit, auto& dst, int dstBit) {
      return f(src, src.step, srcBit, dst, dst.step, dstBit, size, type, 0, spec, buffer);
    });
  };
  withSpec<std::uint8_t>(in, steps, query, init, call);
}

#define ZVP_BORDER_ARGUMENTS(form)                                            \
  in, 1, zvpiMorphologyBorderGetSize_##form, zvpiMorphologyBorderInit_##form, \
      in.ConsumeBool() ? zvpiErodeBorder_##form : zvpiDilateBorder_##form
#define ZVP_COMPOSITE_ARGUMENTS(form)                                                                             \
  in, 2, zvpiMorphAdvGetSize_##form, zvpiMorphAdvInit_##form,                                                     \
      in.PickValueInArray({zvpiMorphOpenBorder_##form, zvpiMorphCloseBorder_##form, zvpiMorphTophatBorder_##form, \
                           zvpiMorphBlackhatBorder_##form, zvpiMorphGradientBorder_##form})
#define ZVP_BORDER(channels, form) [](Bytes& in) { filter<channels>(ZVP_BORDER_ARGUMENTS(form)); }
#define ZVP_COMPOSITE(channels, form) [](Bytes& in) { filter<channels>(ZVP_COMPOSITE_ARGUMENTS(form)); }
#define ZVP_REPLICATE(channels, form)                                                                           \
  [](Bytes& in) {                                                                                               \
    replicate<channels>(in, zvpiMorphologyGetSize_##form, zvpiMorphologyInit_##form,                            \
                        in.ConsumeBool() ? zvpiErodeBorderReplicate_##form : zvpiDilateBorderReplicate_##form); \
  }
#define ZVP_FORMS(TARGET) \
  TARGET(1, 8u_C1R), TARGET(3, 8u_C3R), TARGET(4, 8u_C4R), TARGET(1, 32f_C1R), TARGET(3, 32f_C3R), TARGET(4, 32f_C4R)

constexpr Target kTargets[] = {
    ZVP_FORMS(ZVP_BORDER),
    ZVP_BORDER(1, 16u_C1R),
    ZVP_BORDER(1, 16s_C1R),
    ZVP_FORMS(ZVP_REPLICATE),
    ZVP_FORMS(ZVP_COMPOSITE),
    ZVP_COMPOSITE(1, 16u_C1R),
    ZVP_COMPOSITE(1, 16s_C1R),
    [](Bytes& in) { bits(ZVP_BORDER_ARGUMENTS(1u_C1R)); },
    [](Bytes& in) { bits(ZVP_COMPOSITE_ARGUMENTS(1u_C1R)); },
};

}  // namespace

Targets morphologyTargets() { return kTargets; }

}  // namespace fuzz
