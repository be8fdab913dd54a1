// VEXNodedRings: rings that share their boundaries vertex for vertex, and which rings run along each stretch of them.
// Calls: for each area beginArea, addRing for its rings and endArea, join for those that belong together; pair once;
// then emit, after which only the rings' numbers and what was joined are left.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/src/blockvec.h"
#include "vex/src/plangeom.h"
#include "vex/src/vexline.h"
#include "vex/topology/topology.h"

class VEXNodedRings {
 public:
  bool hasRoomFor(std::size_t numCoords) const { return numCoords < UINT32_MAX / 2 - ringPoints_.size() / 2; }
  void beginArea();
  // A closed ring with the area on its right, of the feature `number`; z may be empty. Rings are numbered from 0.
  void addRing(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t number);
  // True: some of the area's rings touched in a point. Then others stand in their place, and those of each part of the
  // area that hangs together by more than points are joined. A ring without area may be gone.
  bool endArea();
  std::size_t numRings() const { return rings_.size(); }
  std::int32_t numberOf(std::int32_t ring) const { return rings_[static_cast<std::size_t>(ring)].number; }
  void join(std::int32_t a, std::int32_t b);
  std::int32_t find(std::int32_t ring);  // the representative of joined rings

  // Rings that share a segment are joined. One that rings run along both ways lies between areas. Rings that run along
  // it the same way overlap: the first one stands for all.
  void pair();
  std::size_t numOutlineSegments() const { return numOutlineSegments_; }
  // Puts the stretches that lie between no areas into `outline`, with the number of their ring and 1 for a user id, and
  // counts those between two rings; `interior` gets them, unless it is null.
  VEXStatus emit(VEXTopology& outline, std::vector<VEXLine>* interior, std::int64_t& numInterior);

 private:
  struct Point {
    double x, y;
  };
  struct Ring {
    std::int32_t number;
    std::uint32_t firstPoint;  // in ringPoints_
    std::uint32_t numPoints;   // the first one stands at the end once more, not counted
    std::uint32_t lowest;      // of its points
  };
  struct Side {  // a segment as a ring has it, in the list of its lower point
    std::uint32_t at;
    std::uint32_t next;
  };
  struct Sharer {
    std::uint32_t high;
    std::uint32_t at;
  };
  // What lies on the other side of a segment; above 0 that ring and 1.
  static constexpr std::int32_t kOutline = -1;
  static constexpr std::int32_t kNothing = 0;  // another ring tells it

  std::uint32_t pointOf(double x, double y, double z, std::uint64_t hash);  // that of x and y
  void growPoints();
  void endRing(std::int32_t number, std::uint32_t start);
  void pairAround(std::uint32_t low);
  bool isBreak(const Ring& ring, std::uint32_t at) const;
  VEXStatus emitRing(std::size_t number, VEXTopology& outline, std::vector<VEXLine>* interior,
                     std::int64_t& numInterior);
  void gather(const Ring& ring, std::uint32_t at, std::uint32_t length);

  std::vector<Ring> rings_;
  std::vector<std::int32_t> parents_;  // of joined rings
  VEXBlockVector<Point> points_;
  bool hasZ_ = false;
  std::vector<double> pointZs_;
  std::vector<std::uint32_t> pointTable_;  // numbers of points by hash
  std::vector<std::uint8_t> tags_;         // of the slots of pointTable_; 0: free
  VEXBlockVector<std::uint32_t> lastAt_;   // by point: where the newest ring has it
  std::size_t firstOfArea_ = 0;            // of its rings
  std::uint32_t startOfArea_ = 0;          // in ringPoints_
  bool isTouching_ = false;                // a point of the area stands twice
  VEXBlockVector<std::uint32_t> ringPoints_;
  VEXBlockVector<std::int32_t> kinds_;  // by ring point, of the segment behind it; before that is known its ring and 1
  std::vector<std::uint8_t> outlineEnds_;  // by point: segments of the outline that end there, 3 for more
  std::vector<std::uint64_t> hashes_;      // of the ring at work
  std::vector<Sharer> sharers_;            // of the point at work
  std::size_t numOutlineSegments_ = 0;
  std::vector<double> runX_, runY_, runZ_;
};
