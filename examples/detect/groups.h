// From the many windows that a cascade accepts around one object to one box.
#ifndef ZVP_EXAMPLES_DETECT_GROUPS_H
#define ZVP_EXAMPLES_DETECT_GROUPS_H

#include <vector>

namespace examples {

// A square in the pixels of the photograph.
struct Square {
  double x, y, side;
};

struct Group {
  Square mean;
  int hits;
};

// The area that both cover, divided by the area that at least one covers.
double intersectionOverUnion(const Square& a, const Square& b);

// Splits the hits into groups, each a set of squares connected by overlaps (intersection over union) of more than 0.3,
// and returns those of at least minHits hits, the largest first.
std::vector<Group> groupHits(const std::vector<Square>& hits, int minHits);

}  // namespace examples

#endif
