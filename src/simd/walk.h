// Walks along a row, in registers as long as they fit.
//
// Every form calls f.template operator()<N>(i), which handles the N elements from i on. N is a constant: the lanes of a
// register, of a narrower one down to 16 bytes, or 1, so that the tail of a row is the same expression at width 1.
//
//   transformRow(n, f, dst, src...)
//       dst[i] = f(src[i]...). The first choice: whatever is element by element. transformRowBy<N> where the widest
//       type of the expression is not that of dst.
//   forEachPack<N, elementSize>(first, end, f)
//       every element exactly once, from left to right: for updates in place, for results that are counted or appended.
//   coverRow<T>(n, f)
//       registers, the last one overlapping the one before it, so that no row of at least 16 bytes has a tail of single
//       elements: the faster one on short rows, where f does not care about being applied twice. If f returns a bool,
//       false ends the walk, and coverRow returns false. coverRow<T, kPacks>(n, f) calls <N, kPacks>(i) for kPacks
//       registers at once where they fit.
//   forEachStretch<N>(first, end, f)
//       f.template operator()<N>(i, stop) once for all whole packs, then <1>(stop, end): for loops that carry something
//       from pack to pack in a register, as prefix sums do.
//   padRow<N>(n, f)
//       whole packs only, so that up to N - 1 elements behind the row are handled too: for scratch rows with room.
//   sweep<Widths>(first, x, kernel)
//       for kernels whose packs make fewer outputs than they have elements, or touch elements beyond those.
//
// Searches are not walks: those of runs of pixels are in distance/flood/runs.h.
#pragma once

#include "simd/simd.h"

namespace zvp::simd {

// The next narrower width: half of it, or single elements where that is less than 16 bytes.
template <int N, int elementSize>
inline constexpr int kNarrower = N / 2 * elementSize >= 16 ? N / 2 : 1;

template <int N, int elementSize, class F>
ZVP_INLINE void forEachPack(int first, int end, F f) {
  int i = first;
  for (; i <= end - N; i += N) f.template operator()<N>(i);
  if constexpr (N > 1) forEachPack<kNarrower<N, elementSize>, elementSize>(i, end, f);
}

// dst may be one of the sources.
template <int N, class T, class F, class... S>
ZVP_INLINE void transformRowBy(int n, F f, T* dst, const S*... src) {
  forEachPack<N, sizeof(T)>(
      0, n, [=]<int W>(int i) __attribute__((always_inline)) {
        store(dst + i, Pack<T, W>(f(load<Pack<S, W>>(src + i)...)));
      });
}

template <class T, class F, class... S>
ZVP_INLINE void transformRow(int n, F f, T* dst, const S*... src) {
  transformRowBy<lanes<T>>(n, f, dst, src...);
}

template <class T, int kPacks, class Index, class F>
struct Cover {
  F f;
  Index skew;

  template <int N>
  ZVP_INLINE bool call(Index i) const {
    if constexpr (std::is_void_v<decltype(f.template operator()<N>(i))>) {
      f.template operator()<N>(i);
      return true;
    } else {
      return f.template operator()<N>(i);
    }
  }

  template <int N>
  ZVP_INLINE bool over(Index n) const {
    if constexpr (N == 1) {
      for (Index i = 0; i < n; ++i)
        if (!call<1>(i)) return false;
      return true;
    } else if (n >= N) {
      if (skew > 0 && !call<N>(0)) return false;
      Index i = skew;
      if constexpr (kPacks > 1)
        for (; i <= n - kPacks * N; i += kPacks * N) f.template operator()<N, kPacks>(i);
      for (; i <= n - N; i += N)
        if (!call<N>(i)) return false;
      return i >= n || call<N>(n - N);
    } else {
      return Cover{f, 0}.template over<kNarrower<N, sizeof(T)>>(n);
    }
  }
};

// All packs but the first and the last start `skew` elements (less than a pack) behind a multiple of the pack.
template <class T, int kPacks = 1, class Index, class F>
ZVP_INLINE bool coverRow(Index n, F f, std::type_identity_t<Index> skew = 0) {
  return Cover<T, kPacks, Index, F>{f, skew}.template over<lanes<T>>(n);
}

template <int N, class F>
ZVP_INLINE void forEachStretch(int first, int end, F f) {
  const int stop = end - first < N ? first : end - (end - first) % N;
  if (first < stop) f.template operator()<N>(first, stop);
  if (stop < end) f.template operator()<1>(stop, end);
}

template <int N, class F>
ZVP_INLINE void padRow(int n, F f) {
  for (int i = 0; i < n; i += N) f.template operator()<N>(i);
}

// Runs a kernel from output `first` on as far as its packs stay where they may, and returns the first output after
// those. kernel.template run<N>(x) makes the outputs of a pack and may spoil some that follow; the last place to start
// is kernel.template last<N>(). x is the first output not made yet; a last pack may overlap those before.
//
// Widths: mostLanes, fewestLanes, narrower<N>, and outputs<N>, which a pack of N elements makes.
template <class Widths, int N = Widths::mostLanes, class Kernel>
ZVP_INLINE int64_t sweep(int64_t first, int64_t x, const Kernel& kernel) {
  constexpr int kOutputs = Widths::template outputs<N>;
  const int64_t last = kernel.template last<N>();
  for (; x <= last; x += kOutputs) kernel.template run<N>(x);
  if (last >= first && x < last + kOutputs) {
    kernel.template run<N>(last);
    x = last + kOutputs;
  }
  if constexpr (N > Widths::fewestLanes) {
    return sweep<Widths, Widths::template narrower<N>>(first, x, kernel);
  } else {
    return x;
  }
}

}  // namespace zvp::simd
