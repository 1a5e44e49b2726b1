// One body for the argument checks that every image function makes, in their order.
#pragma once

#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "support/image.h"

namespace zvp::test {

// An address that passes for whatever type of pointer a function takes.
struct Address {
  const void* at;

  template <class T>
  operator T*() const {
    return static_cast<T*>(const_cast<void*>(at));
  }
};

struct Operand {
  const void* data;
  int step;
  int elementSize;  // its steps must be multiples of this
};

template <class T>
Operand operandOf(const Image<T>& image) {
  return {image.address(), image.step(), sizeof(T)};
}

// A valid call with everything that the checks look at laid open. Steps must be the smallest allowed ones, and
// multiples of the element size.
struct Call {
  std::string name;
  std::vector<Operand> operands;
  std::vector<const void*> otherPointers;
  RoiSize roi;
  std::function<Status(const std::vector<Operand>&, const std::vector<const void*>&, RoiSize)> invoke;
  size_t leading = 0;  // the first operands, whose steps are checked for multiples, too, before the others' steps

  Status operator()() const { return invoke(operands, otherPointers, roi); }
};

// A call of f with these arguments: an Operand stands for its address and its step, every RoiSize for the region.
template <class F, class... A>
Call callOf(std::string name, F f, A... arguments) {
  Call call{std::move(name), {}, {}, {}, {}};
  const auto collect = [&call]<class T>(T a) {
    if constexpr (std::is_same_v<T, Operand>) call.operands.push_back(a);
    if constexpr (std::is_same_v<T, RoiSize>) call.roi = a;
    if constexpr (std::is_pointer_v<T>) call.otherPointers.push_back(a);
  };
  (collect(arguments), ...);
  call.invoke = [=](const std::vector<Operand>& operands, const std::vector<const void*>& others, RoiSize roi) {
    auto operand = operands.begin();
    auto other = others.begin();
    const auto given = [&]<class T>(T a) {
      if constexpr (std::is_same_v<T, Operand>) {
        const Operand& o = *operand++;
        return std::tuple(Address{o.data}, o.step);
      } else if constexpr (std::is_same_v<T, RoiSize>) {
        return std::tuple(roi);
      } else if constexpr (std::is_pointer_v<T>) {
        return std::tuple(Address{*other++});
      } else {
        return std::tuple(a);
      }
    };
    const auto joined = [](auto... parts) { return std::tuple_cat(parts...); };
    return std::apply(f, std::apply(joined, std::tuple{given(arguments)...}));
  };
  return call;
}

// Each fault is planted together with all faults that later checks find, so that the order shows.
inline void expectStandardChecks(const Call& valid) {
  SCOPED_TRACE(valid.name);
  Call stepsTooSmall = valid;
  for (Operand& o : stepsTooSmall.operands) o.step = 1 - o.elementSize;
  Call empty = stepsTooSmall;
  empty.roi = {0, 0};

  for (size_t i = 0; i < valid.operands.size(); ++i) {
    Call c = empty;
    c.operands[i].data = nullptr;
    EXPECT_EQ(c(), ErrNullPtr) << "operand " << i;
  }
  for (size_t i = 0; i < valid.otherPointers.size(); ++i) {
    Call c = empty;
    c.otherPointers[i] = nullptr;
    EXPECT_EQ(c(), ErrNullPtr) << "pointer " << i;
  }
  for (const RoiSize roi : {RoiSize{0, 1}, RoiSize{1, 0}, RoiSize{-5, 1}, RoiSize{1, INT32_MIN}, RoiSize{0, 0}}) {
    Call c = stepsTooSmall;
    c.roi = roi;
    EXPECT_EQ(c(), ErrSize) << roi.width << "x" << roi.height;
  }
  for (size_t i = 0; i < valid.operands.size(); ++i) {
    const Operand& operand = valid.operands[i];
    const bool leads = i < valid.leading;
    Call c = valid;
    for (size_t k = valid.leading; leads && k < c.operands.size(); ++k) c.operands[k].step = 0;
    if (operand.elementSize > 1) {
      Call odd = c;
      odd.operands[i].step += operand.elementSize / 2;
      EXPECT_EQ(odd(), ErrStepNotMultiple) << "operand " << i;
    }
    for (size_t k = leads ? 0 : valid.leading; k < c.operands.size(); ++k)
      c.operands[k].step += c.operands[k].elementSize > 1 ? 1 : 0;
    for (const int step : {operand.step - 1, 0, -operand.step, INT32_MIN}) {
      c.operands[i].step = step;
      EXPECT_EQ(c(), ErrStep) << "operand " << i << ", step " << step;
    }
  }
  for (const int width : {INT32_MAX, INT32_MAX / 2 + 1, 1 << 29}) {  // would wrap in 32 bits
    Call c = valid;
    c.roi.width = width;
    EXPECT_EQ(c(), ErrStep) << width;
  }
}

// call(data and step of each image, roi)
template <class F, class... T>
Status callOnImages(F call, RoiSize roi, const Image<T>&... images) {
  return std::apply(call, std::tuple_cat(std::tuple(images.data(), images.step())..., std::tuple(roi)));
}

// The standard checks of call(data and step of each image, roi), and that the images are not written to. The images'
// steps are the smallest allowed ones.
template <class F, class... T>
void expectImageChecks(const std::string& name, F call, RoiSize roi, const Image<T>&... images) {
  const std::vector<std::vector<uint8_t>> before = {images.bytes()...};
  expectStandardChecks(callOf(name, call, operandOf(images)..., roi));
  EXPECT_EQ((std::vector<std::vector<uint8_t>>{images.bytes()...}), before) << name;
}

// What one check finds, in each of its forms.
template <class Arguments>
struct Fault {
  Status status;
  std::vector<std::function<void(Arguments&)>> forms;
};

// A form of a fault: one argument with another value.
template <class Arguments, class M>
std::function<void(Arguments&)> set(M Arguments::*member, std::type_identity_t<M> value) {
  return [=](Arguments& a) { a.*member = value; };
}

// Faults in the opposite order of the checks: every form is planted on top of the last form of all those before.
template <class Arguments, class F>
void expectFaultsInOrder(Arguments arguments, F call, const std::vector<Fault<Arguments>>& faults) {
  for (size_t i = 0; i < faults.size(); ++i) {
    const Arguments before = arguments;
    for (size_t k = 0; k < faults[i].forms.size(); ++k) {
      arguments = before;
      faults[i].forms[k](arguments);
      EXPECT_EQ(call(arguments), faults[i].status) << "fault " << i << ", form " << k;
    }
  }
}

}  // namespace zvp::test
