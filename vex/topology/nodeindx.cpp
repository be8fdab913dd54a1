#include "vex/topology/nodeindx.h"

#include <bit>

#include "vex/topology/pointhash.h"

void VEXTopologyNodeIndex::reserve(std::size_t numNodes) {
  points_.reserve(numNodes);
  flags_.reserve(numNodes);
  grow(std::bit_ceil(numNodes * 5 / 3 + 16));
}

std::size_t VEXTopologyNodeIndex::slotOf(double x, double y, std::uint64_t hash) const {
  const std::uint32_t tag = static_cast<std::uint32_t>(hash >> 32);
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = static_cast<std::size_t>(hash) & mask;
  for (; slots_[at].node != 0; at = (at + 1) & mask) {
    if (slots_[at].tag != tag) continue;
    const Point& point = points_[slots_[at].node - 1];
    if (point.x == x && point.y == y) break;
  }
  return at;
}

std::int32_t VEXTopologyNodeIndex::find(double x, double y) const {
  if (slots_.empty()) return -1;
  return static_cast<std::int32_t>(slots_[slotOf(x, y, pointHash(x, y))].node) - 1;
}

std::int32_t VEXTopologyNodeIndex::findOrAdd(double x, double y) {
  if ((points_.size() + 1) * 5 > slots_.size() * 3) grow(slots_.empty() ? 64 : slots_.size() * 2);
  const std::uint64_t hash = pointHash(x, y);
  Slot& slot = slots_[slotOf(x, y, hash)];
  if (slot.node == 0) {
    points_.push_back({x, y});
    flags_.push_back(0);
    slot = {static_cast<std::uint32_t>(points_.size()), static_cast<std::uint32_t>(hash >> 32)};
  }
  return static_cast<std::int32_t>(slot.node) - 1;
}

void VEXTopologyNodeIndex::grow(std::size_t numSlots) {
  if (numSlots <= slots_.size()) return;
  slots_.assign(numSlots, Slot{});
  const std::size_t mask = numSlots - 1;
  for (std::size_t i = 0; i < points_.size(); ++i) {
    const std::uint64_t hash = pointHash(points_[i].x, points_[i].y);
    std::size_t at = static_cast<std::size_t>(hash) & mask;
    while (slots_[at].node != 0) at = (at + 1) & mask;
    slots_[at] = {static_cast<std::uint32_t>(i + 1), static_cast<std::uint32_t>(hash >> 32)};
  }
}
