#include "vex/topology/spatialgridcore.h"

#include <algorithm>
#include <cmath>

#include "vex/inc/vexassert.h"

VEXSpatialGridCore::VEXSpatialGridCore(VEXOrdinates xs, VEXOrdinates ys, const VEXGridParms& parms)
    : xs_(xs), ys_(ys), parms_(parms), fewest_(parms.maxEntries) {}

void VEXSpatialGridCore::Grid::span(const VEXBox& extent, const VEXGridParms& parms, std::size_t numEntries) {
  auto within = [](std::uint32_t count) { return std::clamp(count, std::uint32_t{1}, std::uint32_t{65536}); };
  rows = within(parms.rows);
  cols = within(parms.cols);
  // Far more squares than entries would cost memory and bring nothing.
  const std::size_t most = std::max<std::size_t>(4096, 4 * numEntries);
  while (numSquares() > most) (rows > cols ? rows : cols) /= 2;
  VEX_ASSERT(rows > 0);
  VEX_ASSERT(cols > 0);
  originX = extent.minX;
  originY = extent.minY;
  width = (extent.maxX - extent.minX) / cols;
  height = (extent.maxY - extent.minY) / rows;
  if (!(width > 0.0)) width = 1.0 / cols;
  if (!(height > 0.0)) height = 1.0 / rows;
  inverseX = 1.0 / width;
  inverseY = 1.0 / height;
}

VEXBox VEXSpatialGridCore::Grid::extentOf(std::size_t square) const {
  const double col = static_cast<double>(square % cols);
  const double row = static_cast<double>(square / cols);
  VEXBox box;
  box.minX = originX + col * width;
  box.maxX = originX + (col + 1.0) * width;
  box.minY = originY + row * height;
  box.maxY = originY + (row + 1.0) * height;
  return box;
}

// The columns that a segment passes in one row, one more on either side where rounding could tell otherwise.
void VEXSpatialGridCore::walk(const Grid& grid, const Entry& entry, std::uint32_t firstCol, std::uint32_t lastCol,
                              std::uint32_t row, std::uint32_t& from, std::uint32_t& to) const {
  const double x1 = xs_[entry.number], x2 = xs_[entry.number + 1];
  const double y1 = ys_[entry.number], y2 = ys_[entry.number + 1];
  const double slackX = 1e-6 * grid.width + (std::fabs(x1) + std::fabs(x2)) * kPlaceTolerance;
  const double slackY = 1e-6 * grid.height + (std::fabs(y1) + std::fabs(y2)) * kPlaceTolerance;
  const double low = grid.originY + row * grid.height - slackY;
  const double high = grid.originY + (row + 1.0) * grid.height + slackY;
  const double slope = (x2 - x1) / (y2 - y1);  // the segment passes two rows at least, so it rises
  auto xAt = [&](double y) { return std::clamp(x1 + (y - y1) * slope, std::min(x1, x2), std::max(x1, x2)); };
  const double xLow = xAt(low), xHigh = xAt(high);
  from = std::max(firstCol, grid.colOf(std::min(xLow, xHigh) - slackX));
  to = std::min(lastCol, grid.colOf(std::max(xLow, xHigh) + slackX));
}

void VEXSpatialGridCore::dumpSquare(const Grid& grid, std::size_t square, std::uint32_t gridId, std::uint32_t depth,
                                    std::size_t count, bool isSubdivided) const {
  VEXGridSquare told;
  told.extent = grid.extentOf(square);
  told.key = static_cast<std::uint32_t>((square / grid.cols) << 16) + static_cast<std::uint32_t>(square % grid.cols);
  told.gridId = gridId;
  told.depth = depth;
  told.numEntries = count;
  told.isSubdivided = isSubdivided;
  dump_(told);
}

void VEXSpatialGridCore::visit(const SquareVisitor& show, const std::function<void(std::size_t done)>& progress) {
  std::vector<Entry> entries;
  for (std::size_t square = 0; square + 1 < starts_.size(); ++square) {
    const std::size_t count = starts_[square + 1] - starts_[square];
    if (count == 0 || (count == 1 && !dump_)) continue;
    entries.clear();
    entries.reserve(count);
    for (std::size_t i = starts_[square]; i < starts_[square + 1]; ++i) {
      entries.push_back(entryOf(entries_[i] & 0x1fffffffU));
      entries.back().flags = entries_[i] >> 29;
    }
    if (dump_) dumpSquare(top_, square, 1, 0, count, count > parms_.maxEntries && parms_.maxDepth > 0);
    divide(entries, top_.extentOf(square), 0, show);
    if (progress) progress(count);
  }
}

// Shows the entries of a square of a grid at this depth, divided when they are many and that spares comparisons.
void VEXSpatialGridCore::divide(std::vector<Entry>& entries, const VEXBox& square, std::uint32_t depth,
                                const SquareVisitor& show) {
  const std::size_t count = entries.size();
  const VEXGridParms* parms = &parms_;
  if (chooser_ && count > 2) parms = chooser_(entries, depth);
  if (count < 2 || parms == nullptr || count <= parms->maxEntries || depth >= parms->maxDepth) {
    if (count > 1) show(entries);
    return;
  }
  VEXBox extent{1e300, 1e300, kNoZ, -1e300, -1e300, kNoZ};
  for (const Entry& entry : entries) {
    extent.minX = std::min(extent.minX, entry.minX);
    extent.minY = std::min(extent.minY, entry.minY);
    extent.maxX = std::max(extent.maxX, entry.maxX);
    extent.maxY = std::max(extent.maxY, entry.maxY);
  }
  // What the entries leave empty of the square need not be divided.
  extent.minX = std::max(extent.minX, square.minX);
  extent.minY = std::max(extent.minY, square.minY);
  extent.maxX = std::min(extent.maxX, square.maxX);
  extent.maxY = std::min(extent.maxY, square.maxY);
  Grid grid;
  grid.span(extent, *parms, count);
  std::vector<std::uint32_t> starts(grid.numSquares() + 1, 0);
  // Lines that all pass one point, or lie on each other, are not parted by squares: then they are compared as they are.
  const std::size_t mostPlaced = 2 * count * std::max<std::size_t>(8, count / 64);
  std::size_t numPlaced = 0;
  for (std::size_t i = 0; i < count && numPlaced <= mostPlaced; ++i)
    squaresOf(grid, entries[i], [&](std::size_t at) {
      ++starts[at + 1];
      ++numPlaced;
    });
  double pairs = 0.0;
  for (std::uint32_t inSquare : starts) pairs += 0.5 * inSquare * inSquare;
  const double allPairs = 0.5 * static_cast<double>(count) * static_cast<double>(count);
  if (numPlaced > mostPlaced || pairs + 4.0 * static_cast<double>(numPlaced) > 0.7 * allPairs) {
    show(entries);
    return;
  }
  for (std::size_t at = 0; at + 1 < starts.size(); ++at) starts[at + 1] += starts[at];
  std::vector<Entry> placed(numPlaced);
  {
    std::vector<std::uint32_t> next(starts.begin(), starts.end() - 1);
    auto mayBeDivided = [&](std::size_t at) { return starts[at + 1] - starts[at] > fewest_; };
    for (const Entry& entry : entries)
      flaggedSquaresOf(grid, entry, mayBeDivided, [&](std::size_t at, std::uint32_t flags) {
        Entry& target = placed[next[at]++];
        target = entry;
        target.flags = flags;
      });
  }
  entries = std::vector<Entry>();
  const std::uint32_t gridId = ++numGrids_;
  std::vector<Entry> inSquare;
  std::size_t largest = 0;  // goes last, when the others need no room any more
  for (std::size_t at = 0; at + 1 < starts.size(); ++at)
    if (starts[at + 1] - starts[at] > starts[largest + 1] - starts[largest]) largest = at;
  auto enter = [&](std::size_t at) {
    const std::size_t size = starts[at + 1] - starts[at];
    const bool isCrowded = size > parms->maxEntries && depth + 1 < parms->maxDepth;
    if (dump_ && size > 0) dumpSquare(grid, at, gridId, depth + 1, size, isCrowded);
    if (size < 2) return;
    const std::span<Entry> members(placed.data() + starts[at], size);
    if (!isCrowded) return show(members);
    inSquare.assign(members.begin(), members.end());
    if (at == largest) placed = std::vector<Entry>();
    divide(inSquare, grid.extentOf(at), depth + 1, show);
  };
  for (std::size_t at = 0; at + 1 < starts.size(); ++at)
    if (at != largest) enter(at);
  enter(largest);
}
