// The state of the layer operations: how levels follow from each other, and working rows.
#pragma once

#include <stdint.h>

#include <algorithm>

#include "core/carver.h"
#include "pyramid/row_ring.h"
#include "zvpcv/pyramid.h"

// How a level follows from the one before.
enum class LayerPath {
  kAnyRate = 0,
  kHalving = 1,          // the rate is 2: every second sample
  kHalvingBinomial = 11  // and the kernel is 1 4 6 4 1 of integers
};

struct PyramidLayerState {
  float* taps;  // normalised and symmetric; those of an integer kernel are multiples of 2^-13
  int32_t tapCount;
  DataType type;
  int32_t channels;
  RoiSize base;
  float rate;
  LayerPath path;

  // Rows of base.width pixels and more.
  float* padded;         // one with room for `reach` pixels before it and behind its end
  float* whole;          // one on its way
  float* pair;           // a ring of two
  float* ring;           // a ring of tapCount (or all, where there are fewer)
  int64_t stride;        // from row to row in the rings, in elements
  const float** inRow;   // where each tap meets a row's first result
  const float** inRows;  // the rows that the taps meet
  int32_t* from;         // for every element of a result: the first of the two elements between which it lies,
  float* share;          // and how much of the second enters it

  int reach() const { return tapCount / 2; }
  int64_t ringRows() const { return std::min(tapCount, base.height); }
  float* paddedRow() const { return padded + int64_t{reach()} * channels; }
  zvp::pyramid::FixedRing<float, 2> pairRing() const { return {pair, stride}; }
  zvp::pyramid::RowRing<float> tapRing() const { return {ring, stride, ringRows()}; }

  // Finds the places of the arrays, and returns that of the state itself.
  PyramidLayerState* place(zvp::Carver& memory);
};
