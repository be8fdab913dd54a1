#include "vex/src/plangeom.h"

#include <algorithm>
#include <cmath>

#include "vex/src/pointrun.h"

namespace {

double lesser(double a, double b) {
  return b < a || std::isnan(a) ? b : a;
}
double greater(double a, double b) {
  return b > a || std::isnan(a) ? b : a;
}

struct Edge {
  double x1, y1, x2, y2;
  double minX() const { return std::min(x1, x2); }
  double maxX() const { return std::max(x1, x2); }
  double minY() const { return std::min(y1, y2); }
  double maxY() const { return std::max(y1, y2); }
};

Edge edgeAt(VEXOrdinates xs, VEXOrdinates ys, std::size_t i) {
  return {xs[i], ys[i], xs[i + 1], ys[i + 1]};
}

// The edges cross in one point that equals no end of either in x and y.
bool crossProperly(const Edge& a, const Edge& b) {
  double dxA = a.x2 - a.x1;
  double dyA = a.y2 - a.y1;
  double dxB = b.x2 - b.x1;
  double dyB = b.y2 - b.y1;
  double det = dxA * dyB - dyA * dxB;
  if (det == 0.0) return false;
  double t = ((b.x1 - a.x1) * dyB - (b.y1 - a.y1) * dxB) / det;
  double u = ((b.x1 - a.x1) * dyA - (b.y1 - a.y1) * dxA) / det;
  if (!(t >= 0.0 && t <= 1.0 && u >= 0.0 && u <= 1.0)) return false;
  double x = a.x1 + t * dxA;
  double y = a.y1 + t * dyA;
  auto isEnd = [x, y](double ex, double ey) { return x == ex && y == ey; };
  if (isEnd(a.x1, a.y1) || isEnd(a.x2, a.y2) || isEnd(b.x1, b.y1) || isEnd(b.x2, b.y2)) return false;
  return t > 0.0 && t < 1.0 && u > 0.0 && u < 1.0;
}

}  // namespace

void VEXBox::add(const VEXBox& other) {
  minX = lesser(minX, other.minX);
  minY = lesser(minY, other.minY);
  minZ = lesser(minZ, other.minZ);
  maxX = greater(maxX, other.maxX);
  maxY = greater(maxY, other.maxY);
  maxZ = greater(maxZ, other.maxZ);
}

VEXBox boxOf(VEXOrdinates xs, VEXOrdinates ys) {
  VEXBox box;
  if (xs.empty()) return box;
  box.minX = box.maxX = xs[0];
  box.minY = box.maxY = ys[0];
  for (std::size_t i = 1; i < xs.size(); ++i) {
    box.minX = lesser(box.minX, xs[i]);
    box.maxX = greater(box.maxX, xs[i]);
    box.minY = lesser(box.minY, ys[i]);
    box.maxY = greater(box.maxY, ys[i]);
  }
  return box;
}

namespace {

using pointrun::Mask;
using pointrun::Pair;
using pointrun::pairAt;

// The area of three coordinates or more, the summands of two edges made at once and added one after the other, which
// settles the last bits. `numFirst` counts downward how often the first x comes again on the edges taken in pairs.
template <bool kCounts>
double addUpArea(const double* x, const double* y, std::size_t count, Mask& numFirst) {
  const Pair x0 = pointrun::both(x[0]);
  const Pair y0 = pointrun::both(y[0]);
  double sum = 0.0;
  std::size_t i = 0;
  for (; i + 2 < count; i += 2) {
    const Pair nextX = pairAt(x + i + 1);
    if constexpr (kCounts) numFirst += pointrun::equal(nextX, x0);
    const Pair summands = pairAt(x + i) * (pairAt(y + i + 1) - y0) - nextX * (pairAt(y + i) - y0);
    sum += summands[0];
    sum += summands[1];
  }
  if (i + 1 < count) sum += x[i] * (y[i + 1] - y[0]) - x[i + 1] * (y[i] - y[0]);
  return sum / 2.0;
}

}  // namespace

double signedRingArea(VEXOrdinates xs, VEXOrdinates ys) {
  Mask ignored{};
  return xs.size() < 3 ? 0.0 : addUpArea<false>(xs.data(), ys.data(), xs.size(), ignored);
}

bool singleRingArea(VEXOrdinates xs, VEXOrdinates ys, double& area) {
  const std::size_t count = xs.size();
  if (count < 4 || !pointrun::isSame(xs[0], ys[0], xs[count - 1], ys[count - 1])) return false;
  Mask numFirst{};
  area = addUpArea<true>(xs.data(), ys.data(), count, numFirst);
  // The last coordinate is among the pairs when the edges are even in number.
  return numFirst[0] + numFirst[1] == (count % 2 == 1 ? -1 : 0);
}

double ringArea(VEXOrdinates xs, VEXOrdinates ys) {
  return std::fabs(signedRingArea(xs, ys));
}

bool isRingClockwise(VEXOrdinates xs, VEXOrdinates ys) {
  return signedRingArea(xs, ys) < 0.0;
}

bool isPointInRing(VEXOrdinates xs, VEXOrdinates ys, double px, double py) {
  if (xs.size() < 2) return false;
  bool isInside = false;
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    std::size_t j = i + 1;
    if (xs[i] == px && ys[i] == py) return true;
    if ((ys[i] <= py) == (ys[j] <= py)) continue;
    double crossing = xs[i] + (py - ys[i]) * (xs[j] - xs[i]) / (ys[j] - ys[i]);
    if (crossing > px) isInside = !isInside;
  }
  return isInside || (xs.back() == px && ys.back() == py);
}

bool ringsCross(VEXOrdinates xs1, VEXOrdinates ys1, VEXOrdinates xs2, VEXOrdinates ys2) {
  const VEXBox other = boxOf(xs2, ys2);
  for (std::size_t i = 0; i + 1 < xs1.size(); ++i) {
    const Edge a = edgeAt(xs1, ys1, i);
    if (a.maxX() < other.minX || a.minX() > other.maxX || a.maxY() < other.minY || a.minY() > other.maxY) continue;
    for (std::size_t j = 0; j + 1 < xs2.size(); ++j) {
      const Edge b = edgeAt(xs2, ys2, j);
      if (a.maxX() < b.minX() || a.minX() > b.maxX() || a.maxY() < b.minY() || a.minY() > b.maxY()) continue;
      if (crossProperly(a, b)) return true;
    }
  }
  return false;
}

bool isRingInRing(VEXOrdinates outerXs, VEXOrdinates outerYs, VEXOrdinates innerXs, VEXOrdinates innerYs) {
  for (std::size_t i = 0; i + 1 < innerXs.size(); ++i)
    if (!isPointInRing(outerXs, outerYs, innerXs[i], innerYs[i])) return false;
  return innerXs.size() > 1 && !ringsCross(outerXs, outerYs, innerXs, innerYs);
}

void exactSinCos(double radians, double& sine, double& cosine) {
  sine = std::sin(radians);
  cosine = std::cos(radians);
  if (cosine == 1.0 || cosine == -1.0) sine = 0.0;
  if (sine == 1.0 || sine == -1.0) cosine = 0.0;
}

double distanceToSegment(double px, double py, double x1, double y1, double x2, double y2) {
  double dx = x2 - x1;
  double dy = y2 - y1;
  double squared = dx * dx + dy * dy;
  double t = squared > 0.0 ? ((px - x1) * dx + (py - y1) * dy) / squared : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  return std::hypot(px - (x1 + t * dx), py - (y1 + t * dy));
}

double lengthOf(VEXOrdinates xs, VEXOrdinates ys) {
  double length = 0.0;
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    double dx = xs[i + 1] - xs[i];
    double dy = ys[i + 1] - ys[i];
    length += std::sqrt(dx * dx + dy * dy);
  }
  return length;
}

double lengthOf3D(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs) {
  double length = 0.0;
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    double dx = xs[i + 1] - xs[i];
    double dy = ys[i + 1] - ys[i];
    double dz = zs[i + 1] - zs[i];
    length += std::sqrt(dx * dx + dy * dy + dz * dz);
  }
  return length;
}

void ellipseArc(double centreX, double centreY, double semiPrimary, double semiSecondary, double rotation, double start,
                double sweep, std::size_t count, std::vector<double>& xs, std::vector<double>& ys) {
  xs.clear();
  ys.clear();
  double cosR = 0.0;
  double sinR = 0.0;
  exactSinCos(-rotation, sinR, cosR);
  double lastX = 0.0;
  double lastY = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    double t = count > 1 ? start + static_cast<double>(i) * sweep / static_cast<double>(count - 1) : start;
    double sine = 0.0;
    double cosine = 0.0;
    exactSinCos(t, sine, cosine);
    double x = semiPrimary * cosine;
    double y = semiSecondary * sine;
    if (i > 0 && x == lastX && y == lastY) continue;
    lastX = x;
    lastY = y;
    xs.push_back(centreX + x * cosR + y * sinR);
    ys.push_back(centreY - x * sinR + y * cosR);
  }
}
