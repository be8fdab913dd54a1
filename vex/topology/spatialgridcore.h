// The recursive grid under the search for segments that may meet. It reads segments from coordinate arrays, puts them
// into squares by counting, divides crowded squares while that pays, and shows the squares that are left one after
// the other; nothing of a square outlives its visit. A pair that meets is shown at least once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "vex/src/plangeom.h"
#include "vex/topology/segmeet.h"

// Row and column share one key, so a grid has at most 65536 of either.
struct VEXGridParms {
  std::uint32_t rows = 25;
  std::uint32_t cols = 25;
  std::uint32_t maxDepth = 12;    // levels that a square may be divided
  std::uint32_t maxEntries = 40;  // entries before a square is divided
};

// A square as the dump of a grid tells it.
struct VEXGridSquare {
  VEXBox extent;
  std::uint32_t key = 0;     // (row << 16) + column in its own grid
  std::uint32_t gridId = 0;  // 1 for the top grid, others in the order in which they are made
  std::uint32_t depth = 0;   // 0 in the top grid
  std::size_t numEntries = 0;
  bool isSubdivided = false;
};

// What computed points may be off, as a part of the coordinates' size: some 32 units in the last place. Points nearer
// to each other than this are one point, and an end nearer to a segment lies on it.
inline constexpr double kPlaceTolerance = 0x1p-48;

class VEXSpatialGridCore {
 public:
  // A segment in a square: its box, widened by the tolerance, and its number, which is that of its first coordinate.
  struct Entry {
    double minX, minY, maxX, maxY;
    std::uint32_t number;
    std::uint32_t flags;
  };
  // Two entries whose flags share a bit of kBefore meet in another square as well, at the lower corner of the common
  // box; they are left to that one. A long segment is entered along its course only: there is no telling. Nor is there
  // when one of an entry's squares may be divided: in a finer grid it may be long.
  static constexpr std::uint32_t kBeforeX = 1, kBeforeY = 2, kBefore = 3, kLong = 4;
  static bool isPairOfSquare(const Entry& a, const Entry& b) {
    return (a.flags & b.flags & kBefore) == 0 || ((a.flags | b.flags) & kLong) != 0;
  }

  using SquareVisitor = std::function<void(std::span<Entry> entries)>;  // may reorder them
  using DumpVisitor = std::function<void(const VEXGridSquare&)>;
  // Which parameters divide a crowded square; null: it is not divided.
  using ParmsChooser = std::function<const VEXGridParms*(std::span<const Entry> entries, std::uint32_t depth)>;

  VEXSpatialGridCore(VEXOrdinates xs, VEXOrdinates ys, const VEXGridParms& parms);

  // `fewest`: no parameters that are chosen divide a square of so many entries or fewer.
  void setChooser(ParmsChooser chooser, std::uint32_t fewest) {
    chooser_ = std::move(chooser);
    fewest_ = fewest;
  }
  void setDump(DumpVisitor dump) { dump_ = std::move(dump); }
  // Enters the segments that forEach shows, each by the number of its first coordinate; none may be of length 0. Called
  // three times, to measure, to count and to enter: it must show the same each time.
  template <class ForEach>  // forEach(enter) calls enter(number)
  void fill(ForEach&& forEach);
  // Shows every square that is not divided and holds two entries or more; tells how many entries of the top grid are
  // done.
  void visit(const SquareVisitor& show, const std::function<void(std::size_t done)>& progress = {});
  std::size_t numEntered() const { return entries_.size(); }
  // The box of a segment as squares hold it.
  static Entry entryOf(const VEXSegment& segment, std::uint32_t number);

 private:
  struct Grid {
    double originX = 0, originY = 0, width = 1, height = 1, inverseX = 1, inverseY = 1;
    std::uint32_t rows = 1, cols = 1;
    void span(const VEXBox& extent, const VEXGridParms& parms, std::size_t numEntries);
    std::uint32_t colOf(double x) const { return indexOf((x - originX) * inverseX, cols); }
    std::uint32_t rowOf(double y) const { return indexOf((y - originY) * inverseY, rows); }
    static std::uint32_t indexOf(double q, std::uint32_t count) {
      const double last = static_cast<double>(count - 1);
      return static_cast<std::uint32_t>(static_cast<std::int32_t>(q > 0.0 ? (q < last ? q : last) : 0.0));
    }
    std::size_t numSquares() const { return std::size_t{rows} * cols; }
    VEXBox extentOf(std::size_t square) const;
  };
  Entry entryOf(std::uint32_t number) const {
    return entryOf({xs_[number], ys_[number], xs_[number + 1], ys_[number + 1]}, number);
  }
  // Calls put(square) for each square of the grid that the entry's segment passes.
  template <class Put>
  void squaresOf(const Grid& grid, const Entry& entry, Put&& put) const {
    flaggedSquaresOf(
        grid, entry, [](std::size_t) { return false; }, [&](std::size_t at, std::uint32_t) { put(at); });
  }
  // Calls put(square, flags); mayBeDivided(square) is asked of entries in several squares.
  template <class MayBeDivided, class Put>
  void flaggedSquaresOf(const Grid& grid, const Entry& entry, MayBeDivided&& mayBeDivided, Put&& put) const;
  void walk(const Grid& grid, const Entry& entry, std::uint32_t firstCol, std::uint32_t lastCol, std::uint32_t row,
            std::uint32_t& from, std::uint32_t& to) const;
  void divide(std::vector<Entry>& entries, const VEXBox& square, std::uint32_t depth, const SquareVisitor& show);
  void dumpSquare(const Grid& grid, std::size_t square, std::uint32_t gridId, std::uint32_t depth, std::size_t count,
                  bool isSubdivided) const;

  VEXOrdinates xs_;
  VEXOrdinates ys_;
  VEXGridParms parms_;
  ParmsChooser chooser_;
  std::uint32_t fewest_;
  DumpVisitor dump_;
  Grid top_;
  std::vector<std::uint32_t> starts_;   // of each square of the top grid in entries_, and the end
  std::vector<std::uint32_t> entries_;  // number, flags in the three highest bits
  std::uint32_t numGrids_ = 1;
};

inline VEXSpatialGridCore::Entry VEXSpatialGridCore::entryOf(const VEXSegment& s, std::uint32_t number) {
  Entry entry{s.x1 < s.x2 ? s.x1 : s.x2,
              s.y1 < s.y2 ? s.y1 : s.y2,
              s.x1 < s.x2 ? s.x2 : s.x1,
              s.y1 < s.y2 ? s.y2 : s.y1,
              number,
              0};
  double size = entry.maxX > -entry.minX ? entry.maxX : -entry.minX;
  if (entry.maxY > size) size = entry.maxY;
  if (-entry.minY > size) size = -entry.minY;
  const double tolerance = size * kPlaceTolerance;
  entry.minX -= tolerance;
  entry.minY -= tolerance;
  entry.maxX += tolerance;
  entry.maxY += tolerance;
  return entry;
}

template <class MayBeDivided, class Put>
void VEXSpatialGridCore::flaggedSquaresOf(const Grid& grid, const Entry& entry, MayBeDivided&& mayBeDivided,
                                          Put&& put) const {
  const std::uint32_t col1 = grid.colOf(entry.minX), col2 = grid.colOf(entry.maxX);
  const std::uint32_t row1 = grid.rowOf(entry.minY), row2 = grid.rowOf(entry.maxY);
  const std::uint32_t inherited = entry.flags;
  if (col1 == col2 && row1 == row2) return put(std::size_t{row1} * grid.cols + col1, inherited);
  const bool isWalked = col1 != col2 && row1 != row2 && (col2 - col1 + 1) * (row2 - row1 + 1) > 4;
  bool isLong = isWalked;
  for (std::uint32_t row = row1; row <= row2 && !isLong; ++row)
    for (std::uint32_t col = col1; col <= col2 && !isLong; ++col)
      isLong = mayBeDivided(std::size_t{row} * grid.cols + col);
  for (std::uint32_t row = row1; row <= row2; ++row) {
    std::uint32_t from = col1, to = col2;
    if (isWalked) walk(grid, entry, col1, col2, row, from, to);
    const std::uint32_t flags = inherited | (row > row1 ? kBeforeY : 0) | (isLong ? kLong : 0);
    for (std::uint32_t col = from; col <= to; ++col)
      put(std::size_t{row} * grid.cols + col, flags | (col > col1 ? kBeforeX : 0));
  }
}

template <class ForEach>
void VEXSpatialGridCore::fill(ForEach&& forEach) {
  VEXBox box{};
  box.minX = box.minY = 1e300;
  box.maxX = box.maxY = -1e300;
  std::size_t numSegments = 0;
  forEach([&](std::uint32_t number) {
    const Entry entry = entryOf(number);
    if (entry.minX < box.minX) box.minX = entry.minX;
    if (entry.minY < box.minY) box.minY = entry.minY;
    if (entry.maxX > box.maxX) box.maxX = entry.maxX;
    if (entry.maxY > box.maxY) box.maxY = entry.maxY;
    ++numSegments;
  });
  if (numSegments == 0) box.minX = box.minY = box.maxX = box.maxY = 0.0;
  // The extent of the data, a little wider, so that nothing lies on its border.
  const double width = box.maxX > box.minX ? box.maxX - box.minX : 1.0;
  const double height = box.maxY > box.minY ? box.maxY - box.minY : 1.0;
  box.minX -= 0.005 * width;
  box.minY -= 0.005 * height;
  box.maxX += 0.005 * width;
  box.maxY += 0.005 * height;
  top_.span(box, parms_, numSegments);
  starts_.assign(top_.numSquares() + 1, 0);
  forEach([&](std::uint32_t number) {
    squaresOf(top_, entryOf(number), [&](std::size_t square) { ++starts_[square + 1]; });
  });
  for (std::size_t square = 0; square + 1 < starts_.size(); ++square) starts_[square + 1] += starts_[square];
  entries_.resize(starts_.back());
  std::vector<std::uint32_t> next(starts_.begin(), starts_.end() - 1);
  auto mayBeDivided = [&](std::size_t square) { return starts_[square + 1] - starts_[square] > fewest_; };
  forEach([&](std::uint32_t number) {
    flaggedSquaresOf(top_, entryOf(number), mayBeDivided,
                     [&](std::size_t square, std::uint32_t flags) { entries_[next[square]++] = number | flags << 29; });
  });
}
