// VEXCoverGraph: tells for the pieces of noded rings how many rings cover either side of each, and which sides lie in
// one region of the plane, without walking a face or holding a coordinate: it reads those of the chain store, which
// must outlive it. Calls: add each piece, build once, then the questions; clear begins anew.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "vex/src/plangeom.h"
#include "vex/topology/course.h"
#include "vex/topology/piececut.h"
#include "vex/topology/vexchain.h"

class VEXCoverGraph {
 public:
  explicit VEXCoverGraph(const VEXChainStore& chains) : chains_(chains) {}

  void clear();
  void reserve(std::size_t numPieces);
  // Pieces are numbered from 0 in the order in which they come. All ends have to meet in the nodes of the store.
  void add(const VEXPieceCourse& course);
  std::size_t numPieces() const { return pieces_.size(); }
  const VEXPieceCourse& course(std::size_t piece) const { return pieces_[piece]; }
  // Before build: what passing the piece from its left to its right changes.
  void addChange(std::size_t piece, std::int32_t by) { pieces_[piece].change += by; }

  // False: the pieces contradict each other, so they cross or overlap somewhere. Then only the fault is told.
  bool build();
  // How many rings that run clockwise have the side inside, less those that run the other way.
  std::int32_t leftCover(std::size_t piece) const { return covers_[piece]; }
  std::int32_t rightCover(std::size_t piece) const { return covers_[piece] + pieces_[piece].change; }
  // Sides that no piece with a change parts have the same number; so have both sides of a piece once they are joined.
  std::uint32_t leftRegion(std::size_t piece) { return find(static_cast<std::uint32_t>(2 * piece)); }
  std::uint32_t rightRegion(std::size_t piece) { return find(static_cast<std::uint32_t>(2 * piece + 1)); }
  void joinSides(std::size_t piece) {
    join(static_cast<std::uint32_t>(2 * piece), static_cast<std::uint32_t>(2 * piece + 1));
  }
  VEXBox extentOf(std::size_t piece) const;
  // Lets go of what only building needs: nothing can be added any more.
  void endBuilding();

  // The node where the first contradiction was met, and the pieces that end there.
  VEXPoint faultPlace() const { return faultPlace_; }
  const std::vector<std::uint32_t>& faultPieces() const { return faultPieces_; }

 private:
  // The two directions of piece i are the half edges 2i and 2i + 1; the number of a half edge is also that of the side
  // to its left.
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
  static constexpr std::int32_t kUnknown = std::numeric_limits<std::int32_t>::min();
  struct Lowest {  // smallest y, then largest x
    std::uint32_t piece = kNone;
    std::uint32_t coord = 0;
  };
  struct Component {
    Lowest lowest;
    std::uint32_t outerSide = 0;
    std::int32_t lift = 0;  // what its covers gain by what holds it
    bool isPlaced = false;
  };
  struct Bounds {  // of the chain that a piece is of
    std::uint32_t first, last;
  };
  struct Course;

  Bounds boundsOf(const VEXPieceCourse& course) const;
  template <class Show>
  void forEachCoord(const VEXPieceCourse& course, Show&& show) const;
  bool isPoint(const VEXPieceCourse& course) const;
  std::uint32_t makeNode(std::uint32_t coord);
  void note(std::uint32_t piece, Lowest& lowest) const;
  std::uint32_t nodeCoord(std::uint32_t half) const {
    return half % 2 == 0 ? pieces_[half / 2].first : pieces_[half / 2].last;
  }
  std::uint32_t nextCoord(std::uint32_t half) const;
  Course courseOf(std::uint32_t half) const;
  void orderEnds();
  std::uint32_t find(std::uint32_t side) {
    while (parents_[side] != side) side = parents_[side] = parents_[parents_[side]];
    return side;
  }
  void join(std::uint32_t a, std::uint32_t b);
  std::uint32_t outerSide(const Lowest& lowest) const;
  std::int32_t coverOf(std::uint32_t side) const { return side % 2 == 0 ? leftCover(side / 2) : rightCover(side / 2); }
  void setCover(std::uint32_t side, std::int32_t cover) {
    covers_[side / 2] = side % 2 == 0 ? cover : cover - pieces_[side / 2].change;
  }
  bool spread(std::uint32_t side, std::int32_t cover);
  bool goAround(std::uint32_t half);
  bool placeOthers();
  bool fail(std::uint32_t half);

  const VEXChainStore& chains_;
  std::vector<VEXPieceCourse> pieces_;
  std::vector<std::uint32_t> nodeOf_;      // by half edge: the node that it leaves, counted from 0; kNone: a point
  std::vector<std::uint32_t> graphNodes_;  // by node of the store
  std::uint32_t numNodes_ = 0;
  Lowest lowest_;                        // of all
  std::vector<std::uint32_t> endStart_;  // by node: where its ends begin in ends_
  std::vector<std::uint32_t> ends_;      // half edges by the node that they leave, counter-clockwise
  std::vector<VEXLineEnd> sorting_;
  std::vector<bool> isPassed_;          // by node
  std::vector<std::int32_t> covers_;    // of the left sides
  std::vector<std::uint32_t> parents_;  // by side
  std::vector<std::uint32_t> spread_;   // pieces in the order in which they became known
  VEXPoint faultPlace_;
  std::vector<std::uint32_t> faultPieces_;
};
