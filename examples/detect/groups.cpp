#include "groups.h"

#include <algorithm>
#include <cstddef>

namespace examples {
namespace {

constexpr double kMinOverlap = 0.3;

// Moves all squares that are connected with the first one from rest to the result.
std::vector<Square> takeConnected(std::vector<Square>& rest) {
  std::vector<Square> connected{rest.back()};
  rest.pop_back();
  for (size_t i = 0; i < connected.size(); ++i) {
    const Square member = connected[i];
    const auto apart = [&](const Square& other) { return intersectionOverUnion(member, other) <= kMinOverlap; };
    const auto neighbours = std::stable_partition(rest.begin(), rest.end(), apart);
    connected.insert(connected.end(), neighbours, rest.end());
    rest.erase(neighbours, rest.end());
  }
  return connected;
}

Square meanOf(const std::vector<Square>& squares) {
  Square sum{0, 0, 0};
  for (const Square& square : squares) sum = {sum.x + square.x, sum.y + square.y, sum.side + square.side};
  const auto count = static_cast<double>(squares.size());
  return {sum.x / count, sum.y / count, sum.side / count};
}

}  // namespace

double intersectionOverUnion(const Square& a, const Square& b) {
  const double width = std::min(a.x + a.side, b.x + b.side) - std::max(a.x, b.x);
  const double height = std::min(a.y + a.side, b.y + b.side) - std::max(a.y, b.y);
  if (width <= 0 || height <= 0) return 0;
  const double common = width * height;
  return common / (a.side * a.side + b.side * b.side - common);
}

std::vector<Group> groupHits(const std::vector<Square>& hits, int minHits) {
  std::vector<Group> groups;
  for (std::vector<Square> rest = hits; !rest.empty();) {
    const std::vector<Square> connected = takeConnected(rest);
    const int count = static_cast<int>(connected.size());
    if (count >= minHits) groups.push_back({meanOf(connected), count});
  }
  std::stable_sort(groups.begin(), groups.end(), [](const Group& a, const Group& b) { return a.hits > b.hits; });
  return groups;
}

}  // namespace examples
