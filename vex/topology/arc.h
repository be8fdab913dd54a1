// VEXTopologyArc: one arc of the planar graph as a caller sees it, a line between two nodes. A view into the arrays of
// the topology that owns it: valid until the topology gets another line or is built.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexpoint.h"
#include "vex/src/plangeom.h"

class VEXLine;

// One line that gave the arc: the caller's number for it, and whether it ran against the arc.
struct VEXArcUse {
  std::int32_t userId = 0;
  bool isReversed = false;
};

class VEXTopologyArc {
 public:
  std::int32_t id() const { return id_; }  // from 1
  std::int32_t startNode() const { return startNode_; }
  std::int32_t endNode() const { return endNode_; }
  // The end that is not `node`; of a loop the same node. 319001: the arc does not end there.
  VEXStatus otherNode(std::int32_t node, std::int32_t& other) const;

  std::size_t numCoords() const { return xs_.size(); }
  VEXOrdinates xs() const { return xs_; }
  VEXOrdinates ys() const { return ys_; }
  VEXOrdinates zs() const { return zs_; }  // empty in 2D
  VEXPoint point(std::size_t at) const { return {xs_[at], ys_[at], zs_.empty() ? kNoZ : zs_[at]}; }
  bool firstPointIs(const VEXPoint& p) const { return xs_.front() == p.x && ys_.front() == p.y; }
  bool lastPointIs(const VEXPoint& p) const { return xs_.back() == p.x && ys_.back() == p.y; }
  // Where the lowest point stands: smallest y, then largest x, then the last.
  std::size_t lowestIndex() const { return lowestIndex_; }
  VEXLine line() const;  // a copy, of code VEX_GEOM_LINE

  // Positions of the polygons to the left and right in the last build's output, counted from 1; 0: none.
  std::int32_t leftPolygon() const { return left_; }
  std::int32_t rightPolygon() const { return right_; }
  bool isRemoved() const { return isRemoved_; }  // taken out by the caller or as a dangle, spike, corridor or merged
  // Crossing ids, as they came with the line that made the arc.
  std::span<const std::int32_t> attributes() const { return attributes_; }

 private:
  friend class VEXTopologyArcIndex;
  std::int32_t id_ = 0;
  std::int32_t startNode_ = -1;
  std::int32_t endNode_ = -1;
  std::int32_t left_ = 0;
  std::int32_t right_ = 0;
  bool isRemoved_ = false;
  std::size_t lowestIndex_ = 0;
  VEXOrdinates xs_;
  VEXOrdinates ys_;
  VEXOrdinates zs_;
  std::span<const std::int32_t> attributes_;
};
