// VEXTopologyNode: one node of the planar graph as a caller sees it, with its arc ends in rotational order, counter-
// clockwise. A view into the arrays of the topology that owns it, valid as long as that of an arc.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexpoint.h"

// One end of an arc at a node. A loop has two ends at its node.
struct VEXArcEnd {
  std::int32_t arc = 0;  // id, from 1
  bool isStart = false;  // the arc begins at this node
};

class VEXTopologyNode {
 public:
  std::int32_t id() const { return id_; }  // from 0
  const VEXPoint& point() const { return point_; }
  std::size_t numEnds() const { return ends_.size(); }
  VEXArcEnd end(std::size_t at) const { return {static_cast<std::int32_t>(ends_[at] / 2) + 1, ends_[at] % 2 == 0}; }
  bool flag() const { return flag_; }
  // The position of one arc end. 323007: the arc is not in the node's list.
  VEXStatus positionOf(const VEXArcEnd& end, std::size_t& at) const;

 private:
  friend class VEXTopology;
  std::int32_t id_ = -1;
  bool flag_ = false;
  VEXPoint point_;
  std::span<const std::uint32_t> ends_;  // half edges that leave the node: twice the arc's index, odd ones backward
};
