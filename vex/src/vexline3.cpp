// Comparing lines: equality, containment, a point inside.
#include <algorithm>
#include <cmath>

#include "vex/src/vexline.h"

namespace {

constexpr std::uint32_t kCannotContain = 244002;
constexpr std::uint32_t kCannotTell = 244003;

bool sameAt(const VEXLine& a, std::size_t i, const VEXLine& b, std::size_t j, bool compareZ) {
  return a.xs()[i] == b.xs()[j] && a.ys()[i] == b.ys()[j] && (!compareZ || a.zs()[i] == b.zs()[j]);
}

// True when the cyclic sequence of n elements b holds the sequence a of n; in linear time, whatever repeats.
template <class SameInA, class SameInB>
bool occursIn(std::size_t n, SameInA&& sameInA, SameInB&& sameInB) {
  std::vector<std::size_t> fallBack(n, 0);
  for (std::size_t i = 1, k = 0; i < n; ++i) {
    while (k > 0 && !sameInA(i, k)) k = fallBack[k - 1];
    if (sameInA(i, k)) ++k;
    fallBack[i] = k;
  }
  for (std::size_t i = 0, k = 0; i < 2 * n; ++i) {
    while (k > 0 && !sameInB(k, i % n)) k = fallBack[k - 1];
    if (sameInB(k, i % n)) ++k;
    if (k == n) return true;
  }
  return false;
}

// Both closed, of one count: b begins anywhere and runs either way.
bool sameRing(const VEXLine& a, const VEXLine& b, bool compareZ) {
  const std::size_t n = a.numCoords() - 1;
  auto inA = [&](std::size_t i, std::size_t j) { return sameAt(a, i, a, j, compareZ); };
  return occursIn(n, inA, [&](std::size_t i, std::size_t j) { return sameAt(a, i, b, j, compareZ); }) ||
         occursIn(n, inA, [&](std::size_t i, std::size_t j) { return sameAt(a, i, b, n - 1 - j, compareZ); });
}

}  // namespace

bool VEXLine::equals(const VEXLine& other, bool compareZ) const {
  if (this == &other) return true;
  if (numCoords_ != other.numCoords_ || geomType_ != other.geomType_) return false;
  if (compareZ && hasZ_ != other.hasZ_) return false;
  compareZ = compareZ && hasZ_;
  if (geomType_ == VEX_GEOM_POLYGON && isClosed() && other.isClosed()) return sameRing(*this, other, compareZ);
  bool forward = true;
  bool backward = geomType_ != VEX_GEOM_AGGREGATE;  // an aggregate's header rows have their places
  for (std::size_t i = 0; i < numCoords_ && (forward || backward); ++i) {
    forward = forward && sameAt(*this, i, other, i, compareZ);
    backward = backward && sameAt(*this, i, other, numCoords_ - 1 - i, compareZ);
  }
  return forward || backward;
}

std::size_t VEXLine::comparePrefix(const VEXLine& other, int dimensions, double tolerance) const {
  const bool compareZ = dimensions == 3 && hasZ_ && other.hasZ_;
  auto isNear = [&](const VEXLine& line, std::size_t at, const VEXLine& base, std::size_t from, std::size_t to) {
    return distanceToSegment(line.xCoord_[at], line.yCoord_[at], base.xCoord_[from], base.yCoord_[from],
                             base.xCoord_[to], base.yCoord_[to]) <= tolerance;
  };
  // Where `ahead`'s point `from` comes again further along `skipped`, all points between within the tolerance.
  auto skipTo = [&](const VEXLine& skipped, std::size_t at, const VEXLine& ahead, std::size_t from) -> std::size_t {
    if (from == 0 || at == 0) return at;
    for (std::size_t next = at + 1; next < skipped.numCoords_; ++next) {
      if (!isNear(skipped, next - 1, ahead, from - 1, from)) return at;
      if (sameAt(skipped, next, ahead, from, compareZ)) return next;
    }
    return at;
  };
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < numCoords_ && j < other.numCoords_) {
    if (!sameAt(*this, i, other, j, compareZ)) {
      if (!(tolerance > 0.0)) return i;
      std::size_t further = skipTo(other, j, *this, i);
      if (further != j) {
        j = further;
      } else if ((further = skipTo(*this, i, other, j)) != i) {
        i = further;
      } else {
        double dz = compareZ ? zCoord_[i] - other.zCoord_[j] : 0.0;
        if (!(std::hypot(xCoord_[i] - other.xCoord_[j], yCoord_[i] - other.yCoord_[j], dz) <= tolerance)) return i;
      }
    }
    ++i;
    ++j;
  }
  return i;
}

// ---- containment ----

namespace {

bool ringHolds(const VEXLine& line, const VEXLineRange& ring, double x, double y) {
  return isPointInRing(line.xs().subspan(ring.first, ring.count), line.ys().subspan(ring.first, ring.count), x, y);
}

bool ringHolds(const VEXLine& line, const VEXLineRange& ring, const VEXLine& inner, const VEXLineRange& innerRing) {
  return isRingInRing(line.xs().subspan(ring.first, ring.count), line.ys().subspan(ring.first, ring.count),
                      inner.xs().subspan(innerRing.first, innerRing.count),
                      inner.ys().subspan(innerRing.first, innerRing.count));
}

bool edgesCross(const VEXLine& line, const VEXLineRange& ring, const VEXLine& inner, const VEXLineRange& innerRing) {
  return ringsCross(line.xs().subspan(ring.first, ring.count), line.ys().subspan(ring.first, ring.count),
                    inner.xs().subspan(innerRing.first, innerRing.count),
                    inner.ys().subspan(innerRing.first, innerRing.count));
}

// An area's shells and holes.
struct Rings {
  Rings(const VEXLine& of, bool withHoles) : line(of) {
    std::vector<VEXLineRange> all;
    std::vector<bool> isHole;
    of.rings(all);
    of.findHoles(all, isHole);
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (!isHole[i] || !withHoles)
        shells.push_back(all[i]);
      else
        holes.push_back(all[i]);
    }
  }
  const VEXLine& line;
  std::vector<VEXLineRange> shells;
  std::vector<VEXLineRange> holes;
};

// A hole of ours leaves the other alone when it lies in a hole of theirs, or when it neither crosses nor holds nor
// lies in the shell.
bool sparesShell(const Rings& ours, const VEXLineRange& hole, const Rings& theirs, const VEXLineRange& shell) {
  for (const VEXLineRange& theirHole : theirs.holes)
    if (ringHolds(theirs.line, theirHole, ours.line, hole)) return true;
  return !edgesCross(ours.line, hole, theirs.line, shell) && !ringHolds(ours.line, hole, theirs.line, shell) &&
         !ringHolds(theirs.line, shell, ours.line, hole);
}

}  // namespace

VEXStatus VEXLine::containsPoint(double x, double y, bool& contained) const {
  contained = false;
  VEXBox box;
  VEX_TRY(boundingBox(box));
  if (!(x >= box.minX && x <= box.maxX && y >= box.minY && y <= box.maxY)) return nullptr;
  std::vector<VEXLineRange> ranges;
  if (geomType_ == VEX_GEOM_AGGREGATE) {
    VEX_TRY(leaves(ranges));
    for (std::size_t i = 0; i < ranges.size() && !contained; ++i)
      VEX_TRY(view(ranges[i]).containsPoint(x, y, contained));
    return nullptr;
  }
  if (!isAreaCode(geomType_)) return nullptr;
  rings(ranges);
  if (geomType_ == VEX_GEOM_MULTI_POLY) {
    for (const VEXLineRange& ring : ranges) contained = contained || ringHolds(*this, ring, x, y);
    return nullptr;
  }
  // A polygon of several rings is told by crossings alone: in an odd number of them is inside.
  if (geomType_ == VEX_GEOM_POLYGON) {
    for (const VEXLineRange& ring : ranges) contained = contained != ringHolds(*this, ring, x, y);
    return nullptr;
  }
  contained = !ranges.empty() && ringHolds(*this, ranges[0], x, y);
  for (std::size_t i = 1; i < ranges.size() && contained; ++i) contained = !ringHolds(*this, ranges[i], x, y);
  return nullptr;
}

VEXStatus VEXLine::containsLine(const VEXLine& other, bool& contained) const {
  contained = false;
  VEXBox box;
  VEXBox otherBox;
  VEX_TRY(boundingBox(box));
  VEX_TRY(other.boundingBox(otherBox));
  if (!box.encloses(otherBox)) return nullptr;
  if (geomType_ == VEX_GEOM_AGGREGATE) {
    std::vector<VEXLineRange> parts;
    VEX_TRY(leaves(parts));
    for (const VEXLineRange& part : parts)
      if (isAreaCode(part.code) && !contained) VEX_TRY(view(part).containsLine(other, contained));
    return nullptr;
  }
  const char* ourName = VEXFeature::geomTypeName(geomType_);
  const char* theirName = VEXFeature::geomTypeName(other.geomType_);
  if (!isAreaCode(geomType_)) return makeStatus(kCannotContain, {ourName, theirName});
  if (other.geomType_ == VEX_GEOM_POINT && other.numCoords_ > 0)
    return extendStatus(containsPoint(other.xCoord_[0], other.yCoord_[0], contained));
  if (!isAreaCode(other.geomType_))
    return makeStatus(geomType_ == VEX_GEOM_POLYGON ? kCannotTell : kCannotContain, {ourName, theirName});
  // A larger line is inside for sure when its box is.
  if (other.numCoords_ > 5) {
    VEX_TRY(containsLine(fromBox(otherBox), contained));
    if (contained) return nullptr;
  }
  const Rings ours(*this, geomType_ != VEX_GEOM_MULTI_POLY);
  const Rings theirs(other, other.geomType_ != VEX_GEOM_MULTI_POLY);
  contained = !theirs.shells.empty();
  for (const VEXLineRange& shell : theirs.shells) {
    contained = contained &&
                std::any_of(ours.shells.begin(), ours.shells.end(),
                            [&](const VEXLineRange& our) { return ringHolds(*this, our, other, shell); }) &&
                std::all_of(ours.holes.begin(), ours.holes.end(),
                            [&](const VEXLineRange& hole) { return sparesShell(ours, hole, theirs, shell); });
  }
  return nullptr;
}

// ---- a point inside ----

VEXStatus VEXLine::insidePoint(bool careful, VEXPoint& point) const {
  if (geomType_ == VEX_GEOM_AGGREGATE || geomType_ == VEX_GEOM_MULTI_POLY) {
    std::vector<VEXLine> parts;
    VEX_TRY(split(kEveryPartMask, parts));
    if (parts.empty() || parts[0].geomType_ == VEX_GEOM_AGGREGATE)
      return makeStatus(244001, {VEXFeature::geomTypeName(geomType_)});
    return extendStatus(parts[0].insidePoint(careful, point));
  }
  if ((geomType_ != VEX_GEOM_POLYGON && geomType_ != VEX_GEOM_DONUT) || numCoords_ == 0)
    return makeStatus(244001, {VEXFeature::geomTypeName(geomType_)});
  double z = kNoZ;
  if (hasZ_) {
    z = 0.0;
    for (double height : zs()) z += height;
    z /= static_cast<double>(numCoords_);
  }
  VEXBox box;
  double size = 0.0;
  VEX_TRY(boundingBox(box));
  VEX_TRY(area(size));
  point = VEXPoint{xCoord_[0], yCoord_[0], z};
  if (size == 0.0 || !(box.minX < box.maxX) || !(box.minY < box.maxY)) return nullptr;
  if (!careful) {
    VEX_TRY(insideByScan(point));
  } else if (numCoords_ == 4) {
    point.x = (xCoord_[0] + xCoord_[1] + xCoord_[2]) / 3.0;
    point.y = (yCoord_[0] + yCoord_[1] + yCoord_[2]) / 3.0;
  } else if (!insideByAxes(box, point)) {
    VEXPoint scanned;
    VEXStatus failure = insideByScan(scanned);
    if (failure == nullptr) point = scanned;
    ignoreStatus(std::move(failure));  // the first coordinate serves then
  }
  point.z = z;
  return nullptr;
}

// The middle of the longest stretch of the box's two middle axes that lies inside.
bool VEXLine::insideByAxes(const VEXBox& box, VEXPoint& point) const {
  const double midX = (box.minX + box.maxX) / 2.0;
  const double midY = (box.minY + box.maxY) / 2.0;
  std::vector<double> onHorizontal;
  std::vector<double> onVertical;
  std::vector<VEXLineRange> found;
  rings(found);
  for (const VEXLineRange& ring : found) {
    for (std::size_t i = ring.first; i + 1 < ring.first + ring.count; ++i) {
      double x1 = xCoord_[i], y1 = yCoord_[i], x2 = xCoord_[i + 1], y2 = yCoord_[i + 1];
      if ((y1 <= midY) != (y2 <= midY)) onHorizontal.push_back(x1 + (midY - y1) * (x2 - x1) / (y2 - y1));
      if ((x1 <= midX) != (x2 <= midX)) onVertical.push_back(y1 + (midX - x1) * (y2 - y1) / (x2 - x1));
    }
  }
  auto longest = [](std::vector<double>& crossings, double& middle) {
    std::sort(crossings.begin(), crossings.end());
    double best = -1.0;
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
      if (crossings[i + 1] - crossings[i] <= best) continue;
      best = crossings[i + 1] - crossings[i];
      middle = (crossings[i] + crossings[i + 1]) / 2.0;
    }
    return best;
  };
  double x = midX;
  double y = midY;
  double horizontal = longest(onHorizontal, x);
  double vertical = longest(onVertical, y);
  if (horizontal < 0.0 && vertical < 0.0) return false;
  VEXPoint candidate = horizontal >= vertical ? VEXPoint{x, midY, kNoZ} : VEXPoint{midX, y, kNoZ};
  bool contained = false;
  ignoreStatus(containsPoint(candidate.x, candidate.y, contained));  // not contained then
  if (contained) point = candidate;
  return contained;
}

VEXStatus VEXLine::insideByScan(VEXPoint& point) const {
  VEXBox box;
  VEX_TRY(boundingBox(box));
  const double middle = (box.minX + box.maxX) / 2.0;
  std::vector<VEXLineRange> found;
  rings(found);
  // The vertex nearest to the middle and the neighbour farther from it in x; what stands upright has no width.
  double low = 0.0;
  double high = 0.0;
  double nearest = INFINITY;
  for (const VEXLineRange& ring : found) {
    for (std::size_t i = 0; i < ring.count; ++i) {
      const double x = xCoord_[ring.first + i];
      const double before = xCoord_[ring.first + (i > 0 ? i - 1 : ring.count > 1 ? ring.count - 2 : 0)];
      const double after = xCoord_[ring.first + (i + 1 < ring.count ? i + 1 : ring.count > 1 ? 1 : 0)];
      const double neighbour = std::fabs(after - x) >= std::fabs(before - x) ? after : before;
      if (!(std::fabs(x - middle) < nearest) || neighbour == x) continue;
      nearest = std::fabs(x - middle);
      low = std::min(x, neighbour);
      high = std::max(x, neighbour);
    }
  }
  // No vertex stays strictly inside: each takes the place of the end that it is nearer to.
  for (double x : xs()) {
    if (!(x > low && x < high)) continue;
    (x - low < high - x ? low : high) = x;
  }
  const double m = (low + high) / 2.0;
  if (!(m > low && m < high)) return makeStatus(244020);
  double first = INFINITY;
  double second = INFINITY;
  for (const VEXLineRange& ring : found) {
    for (std::size_t i = ring.first; i + 1 < ring.first + ring.count; ++i) {
      double x1 = xCoord_[i], y1 = yCoord_[i], x2 = xCoord_[i + 1], y2 = yCoord_[i + 1];
      if ((x1 <= m) == (x2 <= m)) continue;
      double y = y1 + (m - x1) * (y2 - y1) / (x2 - x1);
      if (y < first) {
        second = first;
        first = y;
      } else if (y < second) {
        second = y;
      }
    }
  }
  if (!std::isfinite(first) || !std::isfinite(second)) return makeStatus(244022);
  if (first == second) return makeStatus(244021);
  point = VEXPoint{m, (first + second) / 2.0, kNoZ};
  return nullptr;
}
