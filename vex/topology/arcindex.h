// VEXTopologyArcIndex: the arcs of a topology, numbered from 1 in the order of arrival; their coordinates lie one after
// the other in flat arrays. Tells whether an equal arc is there already, in either direction, by a hash of all
// coordinates that does not depend on the direction.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/topology/arc.h"

class VEXTopologyArcIndex {
 public:
  struct Record {
    std::uint32_t first = 0;  // of its coordinates
    std::uint32_t count = 0;
    std::int32_t startNode = -1;
    std::int32_t endNode = -1;
    std::uint32_t lowest = 0;    // index of the lowest point, counted from `first`
    std::uint32_t firstUse = 0;  // in uses_
    std::uint32_t lastUse = 0;
    std::uint32_t attributes = 0;  // set of attributes
    std::int32_t left = 0;
    std::int32_t right = 0;
    bool isRemoved = false;
  };

  void reserve(std::size_t numArcs, std::size_t numCoords, bool withZ);
  std::int32_t count() const { return static_cast<std::int32_t>(records_.size()); }
  Record& record(std::int32_t id) { return records_[static_cast<std::size_t>(id) - 1]; }
  const Record& record(std::int32_t id) const { return records_[static_cast<std::size_t>(id) - 1]; }
  VEXTopologyArc view(std::int32_t id) const;
  void uses(std::int32_t id, std::vector<VEXArcUse>& found) const;
  VEXStatus remove(std::int32_t id);  // 320001, 320002

 private:
  std::vector<Record> records_;
  std::vector<double> xs_, ys_, zs_;
};
