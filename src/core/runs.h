// Runs of consecutive elements: fill, copy, convert. Pointers may have any alignment; source and destination are apart.
// Each returns ErrNullPtr for a null pointer, then ErrSize for n < 1, and writes nothing then.
#pragma once

#include <stdint.h>

#include "zvpcv/types.h"

namespace zvp {

// Every element becomes value; T is uint8_t, uint16_t, int32_t, float or double.
template <class T>
Status fillRun(T* dst, int n, T value);

template <class T>
Status zeroRun(T* dst, int n) {
  return fillRun(dst, n, T{0});
}

Status copyRun(const uint8_t* src, uint8_t* dst, int n);

// S is uint8_t, uint16_t or int16_t; exact.
template <class S>
Status convertRun(const S* src, float* dst, int n);

}  // namespace zvp
