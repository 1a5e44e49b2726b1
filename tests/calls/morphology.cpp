// Erosion, dilation and composite morphology.
#include <zvpcv/morphology.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

bool isState(const Call& c) { return c.is("MorphologyInit"); }

// What needs a size of more than 31 bits.
void refuseHuge(Call& c, Argument extent) {
  const bool allocates = c.is("InitAlloc");
  c.rejects({extent}, allocates ? ErrNoMemory : ErrSize, allocates || isState(c) ? kLater + 9 : int{kSize});
}

// What queries and Init take for a region: a size, or only its width.
void giveExtent(Call& c, RoiSize size) {
  if (c.next().isStruct) {
    c.give(size, kSize);
    return refuseHuge(c, RoiSize{INT_MAX, INT_MAX});
  }
  c.give(size.width);
  c.rejects({0, -1, INT_MIN}, ErrSize, kSize);
  refuseHuge(c, INT_MAX);
}

RoiSize someMaskSize(Call& c) { return c.in.otherSize(9, 9); }

void giveMask(Call& c, RoiSize size) {
  const Operand& mask = c.array(size.width > 0 && size.height > 0 ? double(size.width) * size.height : 0);
  const std::int64_t density = c.in.integer(0, 4);
  for (std::size_t i = 0; i < mask.size(); ++i) mask.start()[i] = c.in.integer(0, 3) < density;
  c.give(size, kSize);
  if (!isState(c)) refuseHuge(c, RoiSize{INT_MAX, INT_MAX});  // any anchor lies inside
}

void getSize(Call& c) {
  giveExtent(c, c.in.size());
  if (c.next().depth > 0) c.scalar();  // a mask that is not read
  c.give(someMaskSize(c), kSize);
  refuseHuge(c, RoiSize{INT_MAX, INT_MAX});
  while (c.hasNext()) c.scalar();
}

// Objects for 16-bit elements stand at multiples of 4, others anywhere.
std::size_t objectAlignment(const Call& c) { return c.is("_16") ? 4 : 1; }

// A specification: extent, mask, its size, and the memory.
void initialize(Call& c) {
  const RoiSize size = c.in.size(), mask = someMaskSize(c);
  const bool isComposite = c.is("Adv");
  int specBytes = 0, bufferBytes = 0;
  c.call((isComposite ? "zvpiMorphAdvGetSize" : "zvpiMorphologyBorderGetSize") + c.suffix(),
         {isComposite ? Argument(size) : Argument(size.width), mask, &specBytes, &bufferBytes});
  if (std::max(specBytes, bufferBytes) > kMostScratch) return;
  giveExtent(c, size);
  giveMask(c, mask);
  if (c.is("InitAlloc")) return c.object("zvpiMorphAdvFree");
  c.scratch(specBytes, objectAlignment(c));
  c.scratch(bufferBytes);
}

// A state: width, mask, its size, anchor, and the memory.
void initializeState(Call& c) {
  const RoiSize size = c.in.size(), mask = someMaskSize(c);
  const int bytes = c.bytesFrom("zvpiMorphologyGetSize" + c.suffix(), {size.width, &mask, mask});
  if (bytes > kMostScratch) return;
  giveExtent(c, size);
  giveMask(c, mask);
  const int x = c.in.number(0, std::max(mask.width, 1) - 1);
  c.give(Point{x, c.in.number(0, std::max(mask.height, 1) - 1)});
  c.rejects({Point{-1, 0}, Point{mask.width, 0}, Point{0, -1}, Point{0, mask.height}}, ErrAnchor);
  if (c.is("InitAlloc")) return c.object("zvpiMorphologyFree");
  c.scratch(bytes);
}

void release(Call& c) {
  if (const Call* made = c.prepare(c.is("Adv") ? "zvpiMorphAdvInitAlloc_8u_C1R" : "zvpiMorphologyInitAlloc_8u_C1R")) {
    c.give(made->made());
    c.rejects({nullptr}, ErrNullPtr, kNull);
  }
}

BorderType someBorder(Call& c) {
  if (c.in.wildly(16)) return static_cast<int>(c.in.integer(INT_MIN, INT_MAX));
  return c.in.oneIn(2) ? int{BorderInMemory} : BorderReplicate | int(c.in.integer(0, 15)) << 4;
}

// Pixels around a region that a call reads where memory holds them.
struct Margins {
  double top = 0, bottom = 0, left = 0, right = 0;
};

// `steps`: filters that follow each other.
Margins marginsOf(BorderType border, RoiSize mask, int steps) {
  const auto inMemory = [&](int flag) { return (border & 15) == BorderInMemory || (border & flag) != 0 ? steps : 0; };
  const auto before = [](int n) { return (n - 1) >> 1; };
  Margins m{double(inMemory(BorderTopInMemory)) * before(mask.height),
            double(inMemory(BorderBottomInMemory)) * (mask.height - 1 - before(mask.height)),
            double(inMemory(BorderLeftInMemory)) * before(mask.width),
            double(inMemory(BorderRightInMemory)) * (mask.width - 1 - before(mask.width))};
  // Opening and closing use the mask and the turned one: the larger reach bounds both.
  if (steps == 2) m.top = m.bottom = m.top > 0 || m.bottom > 0 ? 2.0 * mask.height : 0;
  if (steps == 2) m.left = m.right = m.left > 0 || m.right > 0 ? 2.0 * mask.width : 0;
  return m;
}

void giveBorder(Call& c, BorderType border) {
  c.give(border);
  c.rejects({0, 2, 3, 4, 5, 7, 15, 0xf0, 0x10, -1}, ErrBorderType);
  if (c.next().depth == 0) return c.give(7);
  c.array(4);
  c.mayBeNull();
}

// A specification of its own, and how to call with it.
struct Prepared {
  const Call* specification;
  RoiSize size;
  BorderType border;
  Margins margins;
};

std::string initializerOf(const Call& c) {
  return (c.is("Morph") ? "zvpiMorphAdvInit" : "zvpiMorphologyBorderInit") + c.suffix();
}

Prepared prepareFilter(Call& c) {
  const bool isComposite = c.is("Morph");
  const Call* spec = c.prepare(initializerOf(c));
  if (spec == nullptr) return {};
  c.isFinite = true;
  Prepared p{spec, c.in.size(), someBorder(c), {}};
  if (!c.in.wildly(4)) p.size.width = spec->argument(0).as<int>();
  if (isComposite && !c.in.wildly(4)) p.size.height = spec->argument(0).as<RoiSize>().height;
  p.margins = marginsOf(p.border, spec->argument(2).as<RoiSize>(), isComposite ? 2 : 1);
  return p;
}

void giveObjects(Call& c, const Call& specification, RoiSize size) {
  c.share(specification.operandOf(3), Access::kRead);
  if (const Call* narrower = c.prepareNarrower(initializerOf(c), size))
    c.rejects({narrower->operandOf(3).start()}, ErrSize, kLater + 30);
  c.share(specification.operandOf(4), Access::kScratch);
}

void filter(Call& c) {
  const auto [specification, size, border, m] = prepareFilter(c);
  if (specification == nullptr) return;
  Spans spans;
  const double width = double(size.width) * c.channels();
  if (size.width > 0 && size.height > 0)
    addRegion(spans, {-m.left * c.channels(), -m.top}, width + (m.left + m.right) * c.channels(),
              size.height + m.top + m.bottom);
  c.image(spans, width);
  c.image(size);
  if (c.in.oneIn(4)) c.inPlace(0);
  c.give(size, kSize);
  giveBorder(c, border);
  giveObjects(c, *specification, size);
}

void filterBits(Call& c) {
  const auto [specification, size, border, m] = prepareFilter(c);
  if (specification == nullptr) return;
  const auto bytesTo = [](double bits) { return std::ceil(bits / 8); };
  const auto giveBit = [&](int bit) {
    c.give(bit);
    c.rejects({-1, INT_MIN}, ErrSize, kSize);
  };
  const int srcBit = c.in.number(0, 20), dstBit = c.in.number(0, 20);
  Spans read;
  if (size.width > 0 && size.height > 0) {
    const double first = std::floor((srcBit - m.left) / 8);
    addRegion(read, {first, -m.top}, bytesTo(double(srcBit) + size.width + m.right) - first,
              size.height + m.top + m.bottom);
  }
  const double rowBytes = bytesTo(size.width);
  c.image(read, rowBytes);
  giveBit(srcBit);
  c.image(size.width > 0 ? region(bytesTo(double(dstBit) + size.width), size.height) : Spans{}, rowBytes);
  c.rejects({c.argument(0)}, ErrInPlaceNotSupported, c.is("Morph") ? kLater + 40 : kLater + 20, 3);
  giveBit(dstBit);
  c.give(size, kSize);
  giveBorder(c, border);
  giveObjects(c, *specification, size);
}

void replicate(Call& c) {
  const bool isAllocated = c.in.oneIn(2);
  const Call* state = c.prepare((isAllocated ? "zvpiMorphologyInitAlloc" : "zvpiMorphologyInit") + c.suffix());
  if (state == nullptr) return;
  c.isFinite = true;
  RoiSize size = c.in.size();
  if (!c.in.wildly(4)) size.width = state->argument(0).as<int>();
  c.image(size);
  c.image(size);
  if (c.in.oneIn(4)) c.inPlace(0);
  c.give(size, kSize);
  c.give(c.in.wildly(16) ? someBorder(c) : BorderType{BorderReplicate});
  c.rejects({0, 2, 6, 0x11, 0x101, 0xf1}, ErrBadArg);
  if (!isAllocated) {
    c.share(state->operandOf(4), Access::kScratch);
  } else {
    c.give(state->made());
    c.rejects({nullptr}, ErrNullPtr, kNull);
  }
  if (const Call* narrower = c.prepareNarrower("zvpiMorphologyInit" + c.suffix(), size))
    c.rejects({narrower->operandOf(4).start()}, ErrSize, kLater + 30);
}

const Export kExports[] = {
    ZVP_EXPORT(replicate, zvpiDilateBorderReplicate_32f_C1R),
    ZVP_EXPORT(replicate, zvpiDilateBorderReplicate_32f_C3R),
    ZVP_EXPORT(replicate, zvpiDilateBorderReplicate_32f_C4R),
    ZVP_EXPORT(replicate, zvpiDilateBorderReplicate_8u_C1R),
    ZVP_EXPORT(replicate, zvpiDilateBorderReplicate_8u_C3R),
    ZVP_EXPORT(replicate, zvpiDilateBorderReplicate_8u_C4R),
    ZVP_EXPORT(filter, zvpiDilateBorder_16s_C1R),
    ZVP_EXPORT(filter, zvpiDilateBorder_16u_C1R),
    ZVP_EXPORT(filterBits, zvpiDilateBorder_1u_C1R),
    ZVP_EXPORT(filter, zvpiDilateBorder_32f_C1R),
    ZVP_EXPORT(filter, zvpiDilateBorder_32f_C3R),
    ZVP_EXPORT(filter, zvpiDilateBorder_32f_C4R),
    ZVP_EXPORT(filter, zvpiDilateBorder_8u_C1R),
    ZVP_EXPORT(filter, zvpiDilateBorder_8u_C3R),
    ZVP_EXPORT(filter, zvpiDilateBorder_8u_C4R),
    ZVP_EXPORT(replicate, zvpiErodeBorderReplicate_32f_C1R),
    ZVP_EXPORT(replicate, zvpiErodeBorderReplicate_32f_C3R),
    ZVP_EXPORT(replicate, zvpiErodeBorderReplicate_32f_C4R),
    ZVP_EXPORT(replicate, zvpiErodeBorderReplicate_8u_C1R),
    ZVP_EXPORT(replicate, zvpiErodeBorderReplicate_8u_C3R),
    ZVP_EXPORT(replicate, zvpiErodeBorderReplicate_8u_C4R),
    ZVP_EXPORT(filter, zvpiErodeBorder_16s_C1R),
    ZVP_EXPORT(filter, zvpiErodeBorder_16u_C1R),
    ZVP_EXPORT(filterBits, zvpiErodeBorder_1u_C1R),
    ZVP_EXPORT(filter, zvpiErodeBorder_32f_C1R),
    ZVP_EXPORT(filter, zvpiErodeBorder_32f_C3R),
    ZVP_EXPORT(filter, zvpiErodeBorder_32f_C4R),
    ZVP_EXPORT(filter, zvpiErodeBorder_8u_C1R),
    ZVP_EXPORT(filter, zvpiErodeBorder_8u_C3R),
    ZVP_EXPORT(filter, zvpiErodeBorder_8u_C4R),
    ZVP_EXPORT(release, zvpiMorphAdvFree),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_16s_C1R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_16u_C1R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_1u_C1R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_32f_C1R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_32f_C3R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_32f_C4R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_8u_C1R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_8u_C3R),
    ZVP_EXPORT(getSize, zvpiMorphAdvGetSize_8u_C4R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInitAlloc_32f_C1R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInitAlloc_32f_C3R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInitAlloc_32f_C4R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInitAlloc_8u_C1R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInitAlloc_8u_C3R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInitAlloc_8u_C4R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_16s_C1R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_16u_C1R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_1u_C1R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_32f_C1R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_32f_C3R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_32f_C4R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_8u_C1R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_8u_C3R),
    ZVP_EXPORT(initialize, zvpiMorphAdvInit_8u_C4R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_16s_C1R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_16u_C1R),
    ZVP_EXPORT(filterBits, zvpiMorphBlackhatBorder_1u_C1R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_32f_C1R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_32f_C3R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_32f_C4R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_8u_C1R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_8u_C3R),
    ZVP_EXPORT(filter, zvpiMorphBlackhatBorder_8u_C4R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_16s_C1R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_16u_C1R),
    ZVP_EXPORT(filterBits, zvpiMorphCloseBorder_1u_C1R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_32f_C1R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_32f_C3R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_32f_C4R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_8u_C1R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_8u_C3R),
    ZVP_EXPORT(filter, zvpiMorphCloseBorder_8u_C4R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_16s_C1R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_16u_C1R),
    ZVP_EXPORT(filterBits, zvpiMorphGradientBorder_1u_C1R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_32f_C1R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_32f_C3R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_32f_C4R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_8u_C1R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_8u_C3R),
    ZVP_EXPORT(filter, zvpiMorphGradientBorder_8u_C4R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_16s_C1R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_16u_C1R),
    ZVP_EXPORT(filterBits, zvpiMorphOpenBorder_1u_C1R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_32f_C1R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_32f_C3R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_32f_C4R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_8u_C1R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_8u_C3R),
    ZVP_EXPORT(filter, zvpiMorphOpenBorder_8u_C4R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_16s_C1R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_16u_C1R),
    ZVP_EXPORT(filterBits, zvpiMorphTophatBorder_1u_C1R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_32f_C1R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_32f_C3R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_32f_C4R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_8u_C1R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_8u_C3R),
    ZVP_EXPORT(filter, zvpiMorphTophatBorder_8u_C4R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_16s_C1R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_16u_C1R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_1u_C1R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_32f_C1R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_32f_C3R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_32f_C4R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_8u_C1R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_8u_C3R),
    ZVP_EXPORT(getSize, zvpiMorphologyBorderGetSize_8u_C4R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_16s_C1R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_16u_C1R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_1u_C1R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_32f_C1R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_32f_C3R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_32f_C4R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_8u_C1R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_8u_C3R),
    ZVP_EXPORT(initialize, zvpiMorphologyBorderInit_8u_C4R),
    ZVP_EXPORT(release, zvpiMorphologyFree),
    ZVP_EXPORT(getSize, zvpiMorphologyGetSize_32f_C1R),
    ZVP_EXPORT(getSize, zvpiMorphologyGetSize_32f_C3R),
    ZVP_EXPORT(getSize, zvpiMorphologyGetSize_32f_C4R),
    ZVP_EXPORT(getSize, zvpiMorphologyGetSize_8u_C1R),
    ZVP_EXPORT(getSize, zvpiMorphologyGetSize_8u_C3R),
    ZVP_EXPORT(getSize, zvpiMorphologyGetSize_8u_C4R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInitAlloc_32f_C1R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInitAlloc_32f_C3R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInitAlloc_32f_C4R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInitAlloc_8u_C1R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInitAlloc_8u_C3R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInitAlloc_8u_C4R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInit_32f_C1R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInit_32f_C3R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInit_32f_C4R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInit_8u_C1R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInit_8u_C3R),
    ZVP_EXPORT(initializeState, zvpiMorphologyInit_8u_C4R),
};

}  // namespace

Exports morphologyExports() { return kExports; }

}  // namespace zvp::calls
