// The fill members as one table, plain models of them, and the images that make a fill hard.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "support/image.h"
#include "zvpcv/distance.h"

namespace zvp::test {

enum class FillRule { kEqual, kRange, kGradient };

template <class T>
struct FillMember {
  std::string name;
  FillRule rule;
  bool diagonal;
  int channels;
  // Values are three elements each.
  std::function<Status(T*, int, RoiSize, Point, const T* newVal, const T* minDelta, const T* maxDelta,
                       ConnectedComponent*, uint8_t*)>
      fill;
};

template <class F>
void forEachFill(F f) {
#define ZVP_EQUAL(con, type, T)                                                                               \
  f(FillMember<T>{                                                                                            \
      #con "Con_" #type "_C1IR", FillRule::kEqual, con == 8, 1,                                               \
      [](T* p, int step, RoiSize roi, Point at, const T* v, const T*, const T*, auto* region, auto* buffer) { \
        return zvpiFloodFill_##con##Con_##type##_C1IR(p, step, roi, at, *v, region, buffer);                  \
      }});                                                                                                    \
  f(FillMember<T>{                                                                                            \
      #con "Con_" #type "_C3IR", FillRule::kEqual, con == 8, 3,                                               \
      [](T* p, int step, RoiSize roi, Point at, const T* v, const T*, const T*, auto* region, auto* buffer) { \
        return zvpiFloodFill_##con##Con_##type##_C3IR(p, step, roi, at, v, region, buffer);                   \
      }})
#define ZVP_NEAR(family, kind, con, type, T)                                                                        \
  f(FillMember<T>{                                                                                                  \
      #family #con "Con_" #type "_C1IR", kind, con == 8, 1,                                                         \
      [](T* p, int step, RoiSize roi, Point at, const T* v, const T* lo, const T* hi, auto* region, auto* buffer) { \
        return zvpiFloodFill_##family##con##Con_##type##_C1IR(p, step, roi, at, *v, *lo, *hi, region, buffer);      \
      }});                                                                                                          \
  f(FillMember<T>{                                                                                                  \
      #family #con "Con_" #type "_C3IR", kind, con == 8, 3,                                                         \
      [](T* p, int step, RoiSize roi, Point at, const T* v, const T* lo, const T* hi, auto* region, auto* buffer) { \
        return zvpiFloodFill_##family##con##Con_##type##_C3IR(p, step, roi, at, v, lo, hi, region, buffer);         \
      }})
#define ZVP_BOTH(type, T)                          \
  ZVP_EQUAL(4, type, T);                           \
  ZVP_EQUAL(8, type, T);                           \
  ZVP_NEAR(Range, FillRule::kRange, 4, type, T);   \
  ZVP_NEAR(Range, FillRule::kRange, 8, type, T);   \
  ZVP_NEAR(Grad, FillRule::kGradient, 4, type, T); \
  ZVP_NEAR(Grad, FillRule::kGradient, 8, type, T)
  ZVP_BOTH(8u, uint8_t);
  ZVP_BOTH(16u, uint16_t);
  ZVP_BOTH(32f, float);
#undef ZVP_BOTH
#undef ZVP_NEAR
#undef ZVP_EQUAL
}

// What a fill makes of an image.
template <class T>
struct Filled {
  std::vector<bool> joined;
  ConnectedComponent component;
};

// A call as the models see it.
template <class T>
struct FillCase {
  const FillMember<T>& member;
  const Image<T>& image;
  RoiSize roi;
  Point seed;
  T newVal[3], minDelta[3], maxDelta[3];

  T pixel(Point p, int c) const { return image.get(p.y, p.x * member.channels + c); }

  // Whether a value of channel k lies within the deltas about that of a pixel.
  bool near(T value, Point about, int k) const {
    using Wide = std::conditional_t<std::is_same_v<T, float>, float, int>;
    const bool exact = member.rule == FillRule::kEqual;
    const Wide base = pixel(about, k), low = base - (exact ? T(0) : minDelta[k]),
               high = base + (exact ? T(0) : maxDelta[k]);
    return value >= low && value <= high;
  }
  // Whether p joins from its neighbour q.
  bool joins(Point p, Point q) const {
    bool all = true;
    for (int k = 0; k < member.channels; ++k)
      all = all && near(pixel(p, k), member.rule == FillRule::kGradient ? q : seed, k);
    return all;
  }
  bool newValJoins() const {
    bool all = true;
    for (int k = 0; k < member.channels; ++k) all = all && near(newVal[k], seed, k);
    return all;
  }
};

// Collects pixels.
template <class T>
class Collected {
 public:
  explicit Collected(const FillCase<T>& c)
      : case_(c), joined_(static_cast<size_t>(c.roi.width) * static_cast<size_t>(c.roi.height)) {}

  std::vector<bool>::reference at(Point p) {
    return joined_[static_cast<size_t>(p.y) * static_cast<size_t>(case_.roi.width) + static_cast<size_t>(p.x)];
  }
  bool inside(Point p) const { return p.x >= 0 && p.y >= 0 && p.x < case_.roi.width && p.y < case_.roi.height; }
  void surround(Point p) {
    left_ = std::min(left_, p.x), right_ = std::max(right_, p.x);
    top_ = std::min(top_, p.y), bottom_ = std::max(bottom_, p.y);
  }
  Filled<T> result() const {
    Filled<T> filled{joined_, {}};
    for (const bool joined : joined_) filled.component.area += joined;
    for (int c = 0; c < case_.member.channels; ++c) filled.component.value[c] = case_.newVal[c];
    filled.component.rect = {left_, top_, right_ - left_ + 1, bottom_ - top_ + 1};
    return filled;
  }

 private:
  const FillCase<T>& case_;
  std::vector<bool> joined_;
  int left_ = INT32_MAX, right_ = -1, top_ = INT32_MAX, bottom_ = -1;
};

template <class T>
Filled<T> breadthFirst(const FillCase<T>& c) {
  Collected<T> pixels(c);
  std::deque<Point> queue = {c.seed};
  pixels.at(c.seed) = true;
  while (!queue.empty()) {
    const Point q = queue.front();
    queue.pop_front();
    pixels.surround(q);
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const Point p{q.x + dx, q.y + dy};
        if ((!c.member.diagonal && dx != 0 && dy != 0) || !pixels.inside(p) || pixels.at(p) || !c.joins(p, q)) continue;
        pixels.at(p) = true;
        queue.push_back(p);
      }
  }
  return pixels.result();
}

// The range rule's walk over runs, record by record, with the stack that forgets.
template <class T>
Filled<T> depthFirstRuns(const FillCase<T>& c, bool& forgot) {
  struct Record {
    int y, l, r, pl, pr, d;
  };
  Collected<T> pixels(c);
  std::vector<Record> stack;
  const auto capacity = std::max<size_t>(1, static_cast<size_t>(c.roi.width) * static_cast<size_t>(c.roi.height) / 4);
  const auto open = [&](Point p) { return pixels.inside(p) && !pixels.at(p) && c.joins(p, c.seed); };
  const auto run = [&](int x, int y) {
    int l = x, r = x;
    pixels.at({x, y}) = true;
    while (open({l - 1, y})) pixels.at({--l, y}) = true;
    while (open({r + 1, y})) pixels.at({++r, y}) = true;
    return std::pair{l, r};
  };
  const auto see = [&](int y, int l, int r) { pixels.surround({l, y}), pixels.surround({r, y}); };
  const auto [seedLeft, seedRight] = run(c.seed.x, c.seed.y);
  see(c.seed.y, seedLeft, seedRight);
  forgot = false;
  if (c.roi.height > 1)
    stack.push_back({c.seed.y, seedLeft, seedRight, seedRight + 1, seedRight, c.seed.y == c.roi.height - 1 ? -1 : 1});
  while (!stack.empty()) {
    const Record p = stack.back();
    stack.pop_back();
    see(p.y, p.l, p.r);
    const auto scan = [&](int y, int from, int to, int d) {
      for (int x = from; x <= to; ++x) {
        if (!open({x, y})) continue;
        const auto [l, r] = run(x, y);
        if (stack.size() == capacity) {
          stack.clear();
          forgot = true;
        } else {
          stack.push_back({y, l, r, p.l, p.r, d});
        }
        x = r + 1;
      }
    };
    const int wider = c.member.diagonal ? 1 : 0;
    scan(p.y - p.d, p.l - wider, p.r + wider, p.d);
    scan(p.y + p.d, p.l - wider, p.pl - 1, -p.d);
    scan(p.y + p.d, p.pr + 1, p.r + wider, -p.d);
  }
  return pixels.result();
}

// Which pixels belong to the figure, row by row.
using Figure = std::vector<bool>;

inline Figure spiral(RoiSize roi) {
  const auto w = static_cast<size_t>(roi.width), h = static_cast<size_t>(roi.height);
  Figure figure(w * h);
  const auto set = [&](int x, int y) {
    return x >= 0 && y >= 0 && x < roi.width && y < roi.height &&
           figure[static_cast<size_t>(y) * w + static_cast<size_t>(x)];
  };
  int x = 0, y = 0, dx = 1, dy = 0;
  for (int turns = 0; turns < 2;) {
    figure[static_cast<size_t>(y) * w + static_cast<size_t>(x)] = true;
    const int nx = x + dx, ny = y + dy;
    if (nx < 0 || ny < 0 || nx >= roi.width || ny >= roi.height || set(nx, ny) || set(nx + dx, ny + dy)) {
      const int turned = dx;
      dx = -dy, dy = turned, ++turns;
      continue;
    }
    x = nx, y = ny, turns = 0;
  }
  return figure;
}

// Corridors between walls, opened by a random walk that goes back where it is stuck.
inline Figure maze(RoiSize roi, std::mt19937& engine) {
  const auto w = static_cast<size_t>(roi.width), h = static_cast<size_t>(roi.height);
  Figure figure(w * h);
  const auto cell = [&](Point p) { return figure[static_cast<size_t>(p.y) * w + static_cast<size_t>(p.x)]; };
  const auto open = [&](Point p) { figure[static_cast<size_t>(p.y) * w + static_cast<size_t>(p.x)] = true; };
  std::vector<Point> path = {{0, 0}};
  open({0, 0});
  while (!path.empty()) {
    const Point at = path.back();
    bool moved = false;
    for (unsigned i = 0, first = engine() % 4; i < 4 && !moved; ++i) {
      const int dx[] = {1, 0, -1, 0};
      const unsigned k = (first + i) % 4;
      const Point wall{at.x + dx[k], at.y + dx[(k + 1) % 4]}, next{at.x + 2 * dx[k], at.y + 2 * dx[(k + 1) % 4]};
      if (next.x < 0 || next.y < 0 || next.x >= roi.width || next.y >= roi.height || cell(next)) continue;
      open(wall), open(next);
      path.push_back(next);
      moved = true;
    }
    if (!moved) path.pop_back();
  }
  return figure;
}

inline constexpr int kFigures = 7;
inline Figure figure(int kind, RoiSize roi, std::mt19937& engine) {
  if (kind == 0) return spiral(roi);
  if (kind == 1) return maze(roi, engine);
  Figure f;
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const bool random = engine() % 3 != 0;
      f.push_back(kind == 2   ? random
                  : kind == 3 ? (x + y) % 2 == 0
                  : kind == 4 ? x % 2 == 0 || y == roi.height / 2
                  : kind == 5 ? y % 2 == 0 || x == roi.width / 2
                              : true);
    }
  return f;
}

}  // namespace zvp::test
