// VEXSpatialIndex: an index over lines, asked by a box or by a polygon that has to contain them. Add all lines, then
// search; adding or removing between searches is possible, the tree is then made anew. Lines get numbers in the order
// in which they come. A line may be a view: its parent has to outlive the index.
#pragma once

#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/rptree/rptree.h"
#include "vex/src/vexline.h"

class VEXSpatialIndex {
 public:
  // The number of the line. One without coordinates is held, but never found.
  std::uint32_t add(VEXLine line);
  VEXStatus remove(std::uint32_t number);  // 322102: it is not held
  std::size_t numLines() const { return numHeld_; }
  const VEXLine& line(std::uint32_t number) const { return lines_[number]; }
  VEXStatus verify(std::size_t expected) const;  // 322101: the index holds another number of lines

  // The numbers, ascending, of lines whose box, widened a little, meets the box. A point set is taken point by point.
  VEXStatus search(const VEXBox& box, RpHits& found);
  // Of lines that the polygon, donut or list of polygons contains; of a point set, every point. 244002, 244003: the
  // index holds a candidate of a kind that it cannot tell of.
  VEXStatus searchContained(const VEXLine& polygon, RpHits& found);

 private:
  VEXStatus build();

  std::vector<VEXLine> lines_;
  std::vector<bool> isHeld_;
  std::size_t numHeld_ = 0;
  RpTree tree_;
  std::vector<std::uint32_t> owners_;  // the line of each entry, an entry for each point of a point set
  bool isBuilt_ = false;
};
