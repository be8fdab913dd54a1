#include "vex/topology/pointgrid.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t kMostRows = 16;    // of a small box
constexpr std::size_t kMostPoints = 64;  // that are looked at

}  // namespace

VEXGridAxis::VEXGridAxis(double first, double last, std::size_t count)
    : first_(first), count_(static_cast<double>(count)) {
  inverse_ = count_ / (last - first);
  if (!std::isfinite(inverse_)) inverse_ = 0.0;
}

VEXPointGrid::VEXPointGrid(std::span<const Point> points) : points_(points) {
  side_ = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(points.size()))));
  starts_.assign(side_ * side_ + 1, 0);
  sorted_.resize(points.size());
  if (points.empty()) return;
  const auto [left, right] =
      std::minmax_element(points.begin(), points.end(), [](const Point& a, const Point& b) { return a.x < b.x; });
  const auto [lowest, highest] =
      std::minmax_element(points.begin(), points.end(), [](const Point& a, const Point& b) { return a.y < b.y; });
  cols_ = VEXGridAxis(left->x, right->x, side_);
  rows_ = VEXGridAxis(lowest->y, highest->y, side_);
  for (const Point& point : points) ++starts_[squareOf(point)];
  std::uint32_t sum = 0;
  for (std::uint32_t& start : starts_) start = sum += start;  // where squares end; filling moves it to where they begin
  for (std::size_t i = points.size(); i-- > 0;) sorted_[--starts_[squareOf(points[i])]] = static_cast<std::uint32_t>(i);
}

bool VEXPointGrid::mayHold(double minX, double minY, double maxX, double maxY, std::uint32_t group) const {
  if (points_.empty()) return false;
  const std::size_t firstRow = rows_.at(minY), lastRow = rows_.at(maxY);
  if (lastRow - firstRow >= kMostRows) return true;
  const std::size_t firstCol = cols_.at(minX), lastCol = cols_.at(maxX);
  std::size_t numSeen = 0;
  for (std::size_t row = firstRow; row <= lastRow; ++row) {
    const std::uint32_t end = starts_[row * side_ + lastCol + 1];
    for (std::uint32_t i = starts_[row * side_ + firstCol]; i < end; ++i) {
      if (++numSeen > kMostPoints) return true;
      const Point& point = points_[sorted_[i]];
      if (point.group != group && point.x >= minX && point.x <= maxX && point.y >= minY && point.y <= maxY) return true;
    }
  }
  return false;
}
