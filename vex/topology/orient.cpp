#include "vex/topology/orient.h"

#include <algorithm>
#include <cmath>

namespace {

// The sum of the terms in exact arithmetic, as numbers whose bits do not overlap, smallest first: the last one that is
// not 0 has its sign.
class ExactSum {
 public:
  void add(double term) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count_; ++i) {
      const double sum = term + parts_[i];
      const double virtualPart = sum - term;
      const double rest = (term - (sum - virtualPart)) + (parts_[i] - virtualPart);
      if (rest != 0.0) parts_[kept++] = rest;
      term = sum;
    }
    parts_[kept++] = term;
    count_ = kept;
  }
  void addProduct(double a, double b) {
    const double product = a * b;
    add(std::fma(a, b, -product));
    add(product);
  }
  int sign() const {
    for (std::size_t i = count_; i-- > 0;)
      if (parts_[i] != 0.0) return parts_[i] > 0.0 ? 1 : -1;
    return 0;
  }

 private:
  double parts_[16];
  std::size_t count_ = 0;
};

int exactOrientation(double ax, double ay, double bx, double by, double cx, double cy) {
  // Scaled by a power of two, products neither overflow nor lose their lower half.
  int exponent = 0;
  std::frexp(std::max({std::fabs(ax), std::fabs(ay), std::fabs(bx), std::fabs(by), std::fabs(cx), std::fabs(cy)}),
             &exponent);
  for (double* value : {&ax, &ay, &bx, &by, &cx, &cy}) *value = std::ldexp(*value, -exponent);
  ExactSum sum;
  sum.addProduct(ax, by);
  sum.addProduct(-ax, cy);
  sum.addProduct(bx, cy);
  sum.addProduct(-bx, ay);
  sum.addProduct(cx, ay);
  sum.addProduct(-cx, by);
  return sum.sign();
}

}  // namespace

int orientation(double ax, double ay, double bx, double by, double cx, double cy) {
  constexpr double kRoundingBound = 3.3306690738754716e-16;  // (3 + 16 e) e with e = 2^-53
  constexpr double kUnderflow = 1e-280;                      // products below have lost bits
  const double left = (bx - ax) * (cy - ay);
  const double right = (by - ay) * (cx - ax);
  const double difference = left - right;
  const double size = std::fabs(left) + std::fabs(right);
  if (size > kUnderflow && std::isfinite(size) && std::fabs(difference) > kRoundingBound * size)
    return difference > 0.0 ? 1 : -1;
  return exactOrientation(ax, ay, bx, by, cx, cy);
}

bool inSameDirection(double fromX, double fromY, double ax, double ay, double bx, double by) {
  return (ax > fromX) == (bx > fromX) && (ax < fromX) == (bx < fromX) && (ay > fromY) == (by > fromY) &&
         (ay < fromY) == (by < fromY) && orientation(fromX, fromY, ax, ay, bx, by) == 0;
}

int ringDirection(std::span<const double> xs, std::span<const double> ys) {
  const std::size_t count = xs.size();
  if (count < 4) return 0;
  std::size_t lowest = 0;  // of the leftmost
  for (std::size_t at = 1; at < count; ++at)
    if (xs[at] < xs[lowest] || (xs[at] == xs[lowest] && ys[at] < ys[lowest])) lowest = at;
  auto isThere = [&](std::size_t at) { return xs[at] == xs[lowest] && ys[at] == ys[lowest]; };
  std::size_t before = lowest, after = lowest;
  for (std::size_t steps = 0; isThere(before); before = before == 0 ? count - 1 : before - 1)
    if (steps++ == count) return 0;
  while (isThere(after)) after = after + 1 == count ? 0 : after + 1;
  return orientation(xs[before], ys[before], xs[lowest], ys[lowest], xs[after], ys[after]);
}
