// VEXPointGrid: points in squares, to tell quickly that a small box holds none. The points are the caller's and must
// stay while the grid is asked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// Cuts an extent into stretches of equal width. A larger value is never in an earlier stretch, whatever the rounding;
// values beyond the extent are in the first or the last one.
class VEXGridAxis {
 public:
  VEXGridAxis() = default;
  VEXGridAxis(double first, double last, std::size_t count);
  std::size_t at(double value) const {
    const double place = (value - first_) * inverse_;
    if (!(place > 0.0)) return 0;  // or not a number: an infinite distance, on a single stretch
    return place < count_ ? static_cast<std::size_t>(place) : static_cast<std::size_t>(count_) - 1;
  }

 private:
  double first_ = 0.0;
  double inverse_ = 0.0;  // of a stretch's width
  double count_ = 1.0;
};

class VEXPointGrid {
 public:
  struct Point {
    double x = 0.0;
    double y = 0.0;
    std::uint32_t group = 0;
  };

  explicit VEXPointGrid(std::span<const Point> points);
  // False: no point of another group is in the box. A box that is not small against the grid is not searched to the
  // end, but is true.
  bool mayHold(double minX, double minY, double maxX, double maxY, std::uint32_t group) const;

 private:
  std::size_t squareOf(const Point& point) const { return rows_.at(point.y) * side_ + cols_.at(point.x); }

  std::span<const Point> points_;
  std::size_t side_ = 1;  // squares in a row, and rows
  VEXGridAxis cols_, rows_;
  std::vector<std::uint32_t> starts_;  // by square, row by row: where it begins in sorted_
  std::vector<std::uint32_t> sorted_;  // points
};
