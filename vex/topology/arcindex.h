// VEXTopologyArcIndex: the arcs of a topology, numbered from 1 in the order of arrival; their coordinates lie one after
// the other in flat arrays. Tells whether an equal arc is there already, in either direction, by a hash of all
// coordinates that does not depend on the direction.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
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
    std::uint32_t lowest = 0;        // index of the lowest point, counted from `first`
    std::uint32_t firstUse = kNone;  // chained
    std::uint32_t lastUse = kNone;
    std::uint32_t attributes = kNone;  // where their count stands
    std::int32_t left = 0;
    std::int32_t right = 0;
    bool isRemoved = false;
  };
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
  // Half edges and coordinates are counted in 32 bits.
  static constexpr std::size_t kMostArcs = (std::size_t{1} << 30) - 1;
  static constexpr std::size_t kMostCoords = kNone - 1;

  void reserve(std::size_t numArcs, std::size_t numCoords, bool withZ);
  std::int32_t count() const { return static_cast<std::int32_t>(records_.size()); }
  bool hasRoomFor(std::size_t numCoords) const {  // in as many arcs as it could be cut into
    return records_.size() + numCoords <= kMostArcs && xs_.size() + 2 * numCoords <= kMostCoords &&
           attributes_.size() + numCoords <= kMostCoords;
  }
  bool hasRoomToJoin() const { return xs_.size() <= kMostCoords / 2; }
  Record& record(std::int32_t id) { return records_[static_cast<std::size_t>(id) - 1]; }
  const Record& record(std::int32_t id) const { return records_[static_cast<std::size_t>(id) - 1]; }
  const double* xs(const Record& record) const { return xs_.data() + record.first; }
  const double* ys(const Record& record) const { return ys_.data() + record.first; }
  const double* zs(const Record& record) const { return zs_.data() + record.first; }
  VEXTopologyArc view(std::int32_t id) const;

  // The arc with these coordinates; a new one, unless it is there: then `wasThere`, and whether it runs the other way.
  std::int32_t findOrAdd(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t startNode,
                         std::int32_t endNode, bool& wasThere, bool& isReversed);
  void addUse(std::int32_t id, std::int32_t userId, bool isReversed);
  void uses(std::int32_t id, std::vector<VEXArcUse>& found) const;
  void setAttributes(std::int32_t id, std::span<const std::int32_t> attributes);
  std::span<const std::int32_t> attributes(const Record& record) const;
  VEXStatus remove(std::int32_t id);  // 320001, 320002

  // Makes one arc of several, which follow each other from node to node: the first of `chain` that has the lowest id
  // becomes the whole, the others are out. Negative ids are walked backward; the lowest is walked forward.
  void join(std::span<const std::int32_t> chain);
  // Takes out of an arc what it runs out and back. False when nothing is left of it.
  bool removeFolds(std::int32_t id);
  bool hasFold(std::int32_t id) const;

 private:
  struct Slot {
    std::uint32_t arc = 0;  // id; 0: free
    std::uint32_t tag = 0;
  };
  struct Use {
    std::int32_t userId;
    bool isReversed;
    std::uint32_t next;
  };
  bool isEqual(const Record& record, VEXOrdinates xs, VEXOrdinates ys, bool backward) const;
  void findLowest(Record& record) const;
  std::uint64_t hashOf(const double* xs, const double* ys, std::size_t count, std::int32_t startNode,
                       std::int32_t endNode) const;
  void grow(std::size_t numSlots);

  std::vector<Record> records_;
  std::vector<double> xs_, ys_, zs_;
  std::vector<Use> uses_;
  std::vector<std::int32_t> attributes_;  // sets, each led by its count
  std::vector<Slot> slots_;
};
