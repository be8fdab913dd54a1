// The chains of an intersector and the places where they meet, in flat arrays. A chain is a row that tells where its
// coordinates begin; one that nothing touches costs its coordinates only. A place where chains meet is a node, and
// each coordinate knows its own. Calls of a round: link and thread as meetings are found, then rebuild, which makes
// coordinates of all nodes.
#pragma once

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "vex/src/vexline.h"
#include "vex/topology/segmeet.h"

inline constexpr std::uint32_t kNoNode = 0xffffffffU;

// A tolerance in 16 bits, larger than what it was made from by a part in 32 at most. It has the range of a double,
// which a float has not: places of large coordinates would all be one.
class VEXTolerance {
 public:
  VEXTolerance() = default;
  explicit VEXTolerance(double value)
      : bits_(static_cast<std::uint16_t>((std::bit_cast<std::uint64_t>(value) + (kUnit - 1)) / kUnit)) {}
  double value() const { return std::bit_cast<double>(bits_ * kUnit); }
  auto operator<=>(const VEXTolerance&) const = default;

 private:
  static constexpr std::uint64_t kUnit = std::uint64_t{1} << 47;
  std::uint16_t bits_ = 0;
};

// A place where chains meet. Places that turn out to be one and the same are united: one of them is the root, the
// others lead to it, and the root's position is that of all, bit for bit.
struct VEXChainNode {
  double x = 0.0;
  double y = 0.0;
  VEXTolerance tolerance;        // how far off any of the positions that are united here may be,
  VEXTolerance ownTolerance;     // and the one that is kept; 0 for a coordinate
  std::uint32_t sameAs : 30;     // towards the root; itself: this is the root
  std::uint32_t isCrossing : 1;  // computed, not a coordinate of a chain
  std::uint32_t isSettled : 1;   // lay there at the end of the round before
};

struct VEXChain {
  std::uint32_t first = 0;  // its first coordinate; it ends where the next one begins
  std::int32_t input = 0;   // number of the input line; negative for a clockwise ring of a donut
  bool hasZ = false;
  bool isRing = false;  // begins and ends in one place, so that its start is no end
};

class VEXChainStore {
 public:
  static constexpr std::size_t kMostCoords = (std::size_t{1} << 29) - 2;

  // ---- chains ----
  void addChain(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t input);  // zs may be empty
  void reserve(std::size_t numChains, std::size_t numCoords);
  std::size_t numChains() const { return chains_.size(); }
  std::size_t numCoords() const { return xs_.size(); }
  const VEXChain& chain(std::size_t at) const { return chains_[at]; }
  std::uint32_t endOf(std::size_t at) const {
    return at + 1 < chains_.size() ? chains_[at + 1].first : static_cast<std::uint32_t>(xs_.size());
  }
  std::size_t chainOf(std::uint32_t coord) const;
  VEXOrdinates xs() const { return xs_; }
  VEXOrdinates ys() const { return ys_; }
  VEXOrdinates zs() const { return zs_; }  // empty when no chain has any
  VEXSegment segment(std::uint32_t at) const { return {xs_[at], ys_[at], xs_[at + 1], ys_[at + 1]}; }
  // Shows each segment that has a length, by the number of its first coordinate.
  template <class Show>
  void forEachSegment(Show&& show) const;

  // Multiplies x and y by a power of two.
  void scale(int exponent);

  // ---- meetings; numbers of coordinates and of segments' first coordinates ----
  std::uint32_t nodeAt(std::uint32_t coord) const { return coordNodes_[coord]; }
  // A node where this coordinate lies, the one that it has or a new one.
  std::uint32_t makeNodeAt(std::uint32_t coord);
  // Two segments cross in a computed point.
  void addCrossing(std::uint32_t one, std::uint32_t other, double x, double y, double tolerance, bool single);
  // Two coordinates are one place.
  void link(std::uint32_t coord, std::uint32_t other);
  // A segment passes the point of a node: at one of its ends, if that is equal within the tolerance or, with `single`,
  // in single precision, otherwise between them.
  void thread(std::uint32_t node, double x, double y, std::uint32_t segment, double tolerance, bool single);
  // How far off the nodes at a segment's ends may be.
  double toleranceOf(std::uint32_t segment) const {
    const std::uint32_t start = coordNodes_[segment], end = coordNodes_[segment + 1];
    const VEXTolerance atStart = start == kNoNode ? VEXTolerance() : nodes_[start].tolerance;
    const VEXTolerance atEnd = end == kNoNode ? VEXTolerance() : nodes_[end].tolerance;
    return (atStart > atEnd ? atStart : atEnd).value();
  }
  void markDirty(std::uint32_t segment) { dirty_[segment] |= kMarked; }  // for the next round

  // ---- rounds ----
  void beginRounds();
  bool isDirty(std::uint32_t segment) const { return (dirty_[segment] & kDirty) != 0; }
  std::size_t numDirty() const { return numDirty_; }
  // Since the last rebuild: places found, attached or united.
  std::size_t numChanges() const { return numChanges_; }
  // Puts the nodes into the chains. Segments that were marked, bent, moved or left very short are dirty afterwards.
  void rebuild();

  // ---- after the last round ----
  std::size_t numNodes() const { return numNodes_; }
  // Lets go of what only rounds need, the nodes' places among it: the coordinates have them.
  void endRounds();

 private:
  static constexpr std::uint8_t kDirty = 1, kMarked = 2;
  struct Threading {
    std::uint32_t segment;
    std::uint32_t node;
  };
  struct Stop {  // a node on a segment
    double along;
    std::uint32_t node;
  };
  std::uint32_t rootOf(std::uint32_t node);
  void unite(std::uint32_t one, std::uint32_t other);
  bool isLastThreaded(std::uint32_t segment, double x, double y, double tolerance);
  void attach(std::uint32_t coord, std::uint32_t node);
  void sortThreadings();
  void stopsOf(std::size_t first, std::size_t last);
  void uniteNearStops();
  void settle();
  void compact();
  void uniteRepeated();

  std::vector<VEXChain> chains_;
  std::vector<double> xs_, ys_, zs_;
  std::vector<std::uint32_t> coordNodes_;  // kNoNode: nothing meets there
  std::vector<std::uint8_t> dirty_;        // by segment
  std::vector<VEXChainNode> nodes_;
  std::vector<Threading> threadings_;        // nodes between the ends of segments
  std::vector<std::uint32_t> lastThreaded_;  // the newest of each segment
  std::vector<Stop> stops_;                  // of the segment at work
  std::size_t settleAbove_ = 0;
  std::size_t numNodes_ = 0;
  std::size_t numDirty_ = 0;
  std::size_t numChanges_ = 0;
};

template <class Show>
void VEXChainStore::forEachSegment(Show&& show) const {
  for (std::size_t c = 0; c < chains_.size(); ++c)
    for (std::uint32_t at = chains_[c].first, end = endOf(c); at + 1 < end; ++at)
      if (xs_[at] != xs_[at + 1] || ys_[at] != ys_[at + 1]) show(at);
}
