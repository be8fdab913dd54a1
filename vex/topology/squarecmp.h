// Finds where the segments of one square of the grid meet. Owned by a line intersector for one round of noding. A crowd
// is what no grid could part: of equal segments one stands for all, segments that share a point are told apart from the
// rest, and what remains is swept, one family of directions after the other, along the axis that parts it best.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "vex/topology/segcompare.h"
#include "vex/topology/spatialgridcore.h"
#include "vex/topology/vexchain.h"

class VEXSquareComparer {
 public:
  using Entry = VEXSpatialGridCore::Entry;
  // takesAll: every pair counts, as in the first round; otherwise those that have a dirty segment.
  VEXSquareComparer(VEXChainStore& chains, bool takesAll, bool isSingle)
      : chains_(chains), comparer_(chains, takesAll, isSingle), takesAll_(takesAll), isSingle_(isSingle) {}

  void compareAll(std::span<Entry> entries);  // reorders them and changes their flags

 private:
  // Bits of an entry's flags above those of the grid: the number of its place among the equal ones, from 1; 0: no
  // equals.
  static constexpr std::uint32_t kPlaceShift = 4;
  struct Axis {
    double x, y;  // of length 1
  };
  struct Axes {
    Axis main, side;
    double share;  // of all pairs, those that overlap along the main axis, judged by a sample
  };
  struct Reach {  // of an entry along an axis
    double from, to;
  };
  static bool overlap(const Reach& a, const Reach& b) { return a.from <= b.to && b.from <= a.to; }
  struct Swept {
    Reach main, side;
    std::uint32_t at;
  };
  struct Course {  // of an entry, as an angle from 0 to pi
    double angle;
    std::uint32_t at;
  };
  struct Pencil {  // a point that many segments share
    double x, y;
    bool isEnd;             // they end there; otherwise they pass it
    double smallest;        // those that pass: the size of the smaller of the two that gave the point,
    double tolerance;       // how far off the point may be,
    std::uint32_t segment;  // and one of the two
  };

  bool isWanted(const Entry& a, const Entry& b) const {
    return a.minX <= b.maxX && b.minX <= a.maxX && a.minY <= b.maxY && b.minY <= a.maxY &&
           VEXSpatialGridCore::isPairOfSquare(a, b) &&
           (takesAll_ || chains_.isDirty(a.number) || chains_.isDirty(b.number));
  }
  void comparePlaces(const Entry& a, const Entry& b) {
    if (comparer_.compare(a.number, b.number) && ((a.flags | b.flags) >> kPlaceShift) != 0) compareOthers(a, b);
  }
  void sweepFromLeft(std::span<const Entry> entries);

  // ---- equal segments ----
  std::size_t joinEquals(std::span<Entry> entries);
  std::size_t joinEqualsOfBox(std::span<Entry> entries);
  std::span<const std::uint32_t> equalsOf(const Entry& entry) const;
  void compareOthers(const Entry& a, const Entry& b);

  // ---- crowds ----
  void compareCrowd(std::span<Entry> entries);
  bool isDense(std::span<const Entry> entries) const;
  template <class IsIn>
  std::size_t partFirst(std::span<Entry> entries, IsIn&& isIn);
  std::size_t partFamily(std::span<Entry> entries);
  std::size_t partPencil(std::span<Entry> entries);
  bool findPencil(const Entry& a, const Entry& b, Pencil& pencil) const;
  bool isOfPencil(const Entry& entry, const Pencil& pencil) const;
  void joinPencil(std::span<const Entry> entries, const Pencil& pencil);
  void compareNarrow(std::span<const Entry> entries);
  Axis acrossMost(std::span<const Entry> entries) const;
  Axes bestAxes(std::span<const Entry> some, std::span<const Entry> others) const;
  Reach reachOf(const Entry& entry, const Axis& axis) const;
  void findSwept(std::span<const Entry> entries, const Axes& axes, std::vector<Swept>& swept) const;
  void sweep(std::span<const Entry> entries, const Axes& axes);
  void sweepBetween(std::span<const Entry> some, std::span<const Entry> others, const Axes& axes);

  VEXChainStore& chains_;
  VEXSegmentComparer comparer_;
  bool takesAll_;
  bool isSingle_;
  std::vector<std::uint32_t> equals_;       // segments that are equal to others, those of one place side by side
  std::vector<std::uint32_t> equalStarts_;  // of each place in equals_, and the end
  std::vector<Swept> swept_, otherSwept_;
  std::vector<Course> courses_;
  std::vector<Entry> parted_;
};
