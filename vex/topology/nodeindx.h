// VEXTopologyNodeIndex: the nodes of a topology, numbered from 0 in the order of arrival, and the only way from a point
// to its node. Open addressing on the bits of x and y; numbers never depend on the order in the table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class VEXTopologyNodeIndex {
 public:
  void reserve(std::size_t numNodes);
  std::int32_t count() const { return static_cast<std::int32_t>(points_.size()); }
  double x(std::int32_t node) const { return points_[static_cast<std::size_t>(node)].x; }
  double y(std::int32_t node) const { return points_[static_cast<std::size_t>(node)].y; }
  std::int32_t find(double x, double y) const;  // -1: no node there
  std::int32_t findOrAdd(double x, double y);
  bool flag(std::int32_t node) const { return flags_[static_cast<std::size_t>(node)] != 0; }
  void setFlag(std::int32_t node, bool flag) { flags_[static_cast<std::size_t>(node)] = flag ? 1 : 0; }

 private:
  struct Point {
    double x, y;
  };
  struct Slot {
    std::uint32_t node = 0;  // its number and 1; 0: free
    std::uint32_t tag = 0;   // upper half of the hash: most mismatches are seen without a look at the node
  };
  void grow(std::size_t numSlots);
  std::size_t slotOf(double x, double y, std::uint64_t hash) const;  // its own, or the free one where it belongs

  std::vector<Point> points_;
  std::vector<std::uint8_t> flags_;
  std::vector<Slot> slots_;  // a power of two, at most three fifths taken
};
