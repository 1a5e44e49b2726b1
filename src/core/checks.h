// Argument checks: pure functions that return a Status; a family lists them in its documented order.
#pragma once

#include <stdint.h>

#include <type_traits>

#include "core/rows.h"
#include "zvpcv/types.h"

namespace zvp {

// The first status that is not StatusOk. Pass one check's result per argument.
template <class... S>
constexpr Status firstFailure(S... statuses) {
  Status first = StatusOk;
  ((first = first == StatusOk ? statuses : first), ...);
  return first;
}

constexpr Status check(bool holds, Status otherwise) { return holds ? Status{StatusOk} : otherwise; }

// Pointers and operands, in any mixture.
template <class... A>
constexpr Status nonNull(const A&... arguments) {
  const auto isNull = []<class P>(const P& p) {
    if constexpr (std::is_pointer_v<P>) {
      return p == nullptr;
    } else {
      return p.data == nullptr;
    }
  };
  return check(!(isNull(arguments) || ...), ErrNullPtr);
}

constexpr Status nonEmpty(RoiSize roi) { return check(roi.width >= 1 && roi.height >= 1, ErrSize); }

// Every operand's step holds a row of that many elements. 64 bits: no width can wrap.
template <class... T>
constexpr Status rowsFit(int64_t elements, Rows<T>... operands) {
  return check(((operands.step >= elements * int64_t{sizeof(T)}) && ...), ErrStep);
}

// Every operand's step is a multiple of its element size.
template <class... T>
constexpr Status wholeElements(Rows<T>... operands) {
  return check(((operands.step % int{sizeof(T)} == 0) && ...), ErrStepNotMultiple);
}

}  // namespace zvp
