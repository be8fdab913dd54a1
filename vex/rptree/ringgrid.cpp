#include "vex/rptree/ringgrid.h"

#include <algorithm>
#include <cmath>

namespace {

enum Cell : std::uint8_t { Outside, Inside, Border };
constexpr double kCandidateShare = 0.06666666666666667;  // a cell to 15 candidates
constexpr std::size_t kMostCells = 1000;                 // along a side
constexpr double kSlack = 1e-6;  // of a cell: an edge this near makes a border, whatever rounding says

}  // namespace

std::size_t RingGrid::cellsFor(std::size_t numCandidates, std::size_t numCoords) {
  const auto wanted = static_cast<std::size_t>(std::sqrt(static_cast<double>(numCandidates) * kCandidateShare));
  const std::size_t numCells = std::min(wanted, kMostCells);
  return numCells > 4 && numCoords > numCells * numCells * 5 ? numCells : 0;
}

// The box is divided into two more than the cells: the outermost ones never lie inside.
VEXStatus RingGrid::build(const VEXLine& polygon, std::size_t numCells) {
  numCells_ = 0;
  VEXBox box;
  VEX_TRY(polygon.boundingBox(box));
  const auto numDivisions = static_cast<double>(numCells + 2);
  cellWidth_ = (box.maxX - box.minX) / numDivisions;
  cellHeight_ = (box.maxY - box.minY) / numDivisions;
  originX_ = box.minX + cellWidth_;
  originY_ = box.minY + cellHeight_;
  if (!(cellWidth_ > 0.0 && cellHeight_ > 0.0 && std::isfinite(cellWidth_) && std::isfinite(cellHeight_))) {
    return nullptr;
  }
  numCells_ = numCells;
  cells_.assign(numCells * numCells, Outside);
  const VEXOrdinates xs = polygon.xs(), ys = polygon.ys();
  std::vector<VEXLineRange> rings;
  polygon.rings(rings);
  for (const VEXLineRange& ring : rings) {
    for (std::size_t at = ring.first; at + 1 < ring.first + ring.count; ++at) {
      markEdge(xs[at], ys[at], xs[at + 1], ys[at + 1]);
    }
  }
  // Cells of one row with no border between them lie on the same side.
  for (std::size_t row = 0; row < numCells; ++row) {
    bool isKnown = false, isInside = false;
    for (std::size_t column = 0; column < numCells; ++column) {
      std::uint8_t& cell = cells_[row * numCells + column];
      if (cell == Border) {
        isKnown = false;
        continue;
      }
      if (!isKnown) {
        VEX_TRY(polygon.containsPoint(originX_ + (static_cast<double>(column) + 0.5) * cellWidth_,
                                      originY_ + (static_cast<double>(row) + 0.5) * cellHeight_, isInside));
        isKnown = true;
      }
      if (isInside) cell = Inside;
    }
  }
  return nullptr;
}

void RingGrid::markEdge(double x1, double y1, double x2, double y2) {
  if (!(std::isfinite(x1 + x2) && std::isfinite(y1 + y2))) {
    std::fill(cells_.begin(), cells_.end(), Border);
    return;
  }
  if (y1 > y2) {
    std::swap(x1, x2);
    std::swap(y1, y2);
  }
  const auto last = static_cast<double>(numCells_);
  const double firstRow = std::floor((y1 - originY_) / cellHeight_ - kSlack);
  const double lastRow = std::floor((y2 - originY_) / cellHeight_ + kSlack);
  for (double row = std::max(firstRow, 0.0); row <= std::min(lastRow, last - 1.0); row += 1.0) {
    // the part of the edge in this row
    const double low = std::max(y1, originY_ + (row - kSlack) * cellHeight_);
    const double high = std::min(y2, originY_ + (row + 1.0 + kSlack) * cellHeight_);
    double from = x1, to = x2;
    if (y2 > y1) {
      from = x1 + (x2 - x1) * std::clamp((low - y1) / (y2 - y1), 0.0, 1.0);
      to = x1 + (x2 - x1) * std::clamp((high - y1) / (y2 - y1), 0.0, 1.0);
    }
    const double firstColumn = std::floor((std::min(from, to) - originX_) / cellWidth_ - kSlack);
    const double lastColumn = std::floor((std::max(from, to) - originX_) / cellWidth_ + kSlack);
    for (double column = std::max(firstColumn, 0.0); column <= std::min(lastColumn, last - 1.0); column += 1.0) {
      cells_[static_cast<std::size_t>(row) * numCells_ + static_cast<std::size_t>(column)] = Border;
    }
  }
}

bool RingGrid::place(double value, double origin, double size, std::size_t& cell) const {
  const double at = (value - origin) / size;
  if (!(at >= 0.0 && at < static_cast<double>(numCells_))) return false;
  cell = static_cast<std::size_t>(at);
  return true;
}

bool RingGrid::holds(const RpBox& box) const {
  std::size_t firstColumn = 0, lastColumn = 0, firstRow = 0, lastRow = 0;
  if (numCells_ == 0 || !place(box.minX, originX_, cellWidth_, firstColumn) ||
      !place(box.maxX, originX_, cellWidth_, lastColumn) || !place(box.minY, originY_, cellHeight_, firstRow) ||
      !place(box.maxY, originY_, cellHeight_, lastRow)) {
    return false;
  }
  for (std::size_t row = firstRow; row <= lastRow; ++row) {
    const auto first = cells_.begin() + static_cast<std::ptrdiff_t>(row * numCells_ + firstColumn);
    const auto end = first + static_cast<std::ptrdiff_t>(lastColumn - firstColumn + 1);
    if (std::any_of(first, end, [](std::uint8_t cell) { return cell != Inside; })) return false;
  }
  return true;
}
