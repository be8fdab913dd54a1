// Rings that came apart from each other become polygons with holes.
#pragma once

#include <functional>
#include <vector>

#include "vex/inc/vexfeat.h"
#include "vex/src/vexline.h"

// Points first, in their order, then the rings, smallest area first; equal areas keep their order. Features, when
// given, are as many as the lines and move with them. On a failure nothing has moved.
VEXStatus sortRings(std::vector<VEXLine>& lines, std::vector<VEXFeaturePtr>* features);

// What lies directly in what. `lines` has to be sorted by sortRings. parents[i] is the smallest later ring that holds
// an inside point of line i, or kNoParent. `begins` is told the number of each line before what lies in it is sought.
inline constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);
VEXStatus findParents(const std::vector<VEXLine>& lines, std::vector<std::size_t>& parents,
                      const std::function<void(std::size_t)>& begins = {});

// Sorts the lines as sortRings does. A ring with rings directly inside becomes a donut with these as holes; the holes
// go, and what lies directly in them is a shell again. With keepAll every ring stays, those with rings inside as donuts
// of their own. Holes that touch along edges are
// merged, points stay as they are. On a failure no line is lost.
VEXStatus makeDonuts(std::vector<VEXLine>& lines, bool keepAll);
