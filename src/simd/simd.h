// The vector vocabulary: everything the kernels need beyond the operators of the compilers' vector types.
//
//   Pack<T, N>           N elements of T; Pack<T, 1> is T itself, so that a kernel's tail is the kernel with N = 1
//   lanes<T>             elements of T in one register of this build
//   broadcast<T, N>      N times the same
//
//   load<V>, store       from and to memory of any alignment
//   loadBetween, storeBetween
//                        some elements in the middle of a pack; no other memory is touched
//   storeStream, fence   stores that pass the caches by
//
//   convert<T>           element by element; double to int32_t rounds to nearest even
//   nearest              float to int32_t, rounded to nearest even; the argument must fit
//   loadAs<T, N>         N elements of another type, converted to T
//   loadNonZero<N>       the mask of the bytes that are not 0: elements of 32 bits, all set or all clear
//
//   min, max, absolute, squareRoot, + - * & | ^ < > ?: as usual
//   addOrdered, mulOrdered
//                        + and * of floats with every bit defined: of two NaNs the left one is kept, made quiet
//   maskBits             one bit for each element of a comparison
//   mulSigned32          64-bit products of the low signed halves
//   addSaturated         unsigned sums that stop at the type's maximum
//   mulAddBytes, mulAddWords
//                        products of adjacent elements, added in pairs
//
//   prefixSum            element i becomes the sum of the elements 0..i
//   prefixSumOfBytes     the same for the bytes at an address, which is faster than widening them first
//   broadcastLast        every element becomes the last one
//   slideUp<n>, slideDown<n>
//                        elements move up (down) by n places; the free places take the last (first) n of another pack
//
// Each is one function for all widths of a build; a width that the build lacks does not compile. The headers beside
// this one have the words of single families. This folder is the only place with intrinsics and processor macros.
#pragma once

#include "simd/arithmetic.h"
#include "simd/convert.h"
#include "simd/memory.h"
#include "simd/prefix.h"
#include "simd/registers.h"
