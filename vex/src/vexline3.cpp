// Comparing lines: equality, containment, a point inside.
#include <algorithm>
#include <cmath>

#include "vex/src/vexline.h"

namespace {

bool sameAt(const VEXLine& a, std::size_t i, const VEXLine& b, std::size_t j, bool compareZ) {
  return a.xs()[i] == b.xs()[j] && a.ys()[i] == b.ys()[j] && (!compareZ || a.zs()[i] == b.zs()[j]);
}

// Both closed, of one count: b begins anywhere and runs either way.
bool sameRing(const VEXLine& a, const VEXLine& b, bool compareZ) {
  const std::size_t n = a.numCoords() - 1;
  for (std::size_t shift = 0; shift < n; ++shift) {
    if (!sameAt(a, 0, b, shift, compareZ)) continue;
    bool forward = true;
    bool backward = true;
    for (std::size_t i = 1; i < n && (forward || backward); ++i) {
      forward = forward && sameAt(a, i, b, (shift + i) % n, compareZ);
      backward = backward && sameAt(a, i, b, (shift + n - i) % n, compareZ);
    }
    if (forward || backward) return true;
  }
  return false;
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

bool isAreaType(std::uint32_t code) {
  return code == VEX_GEOM_POLYGON || code == VEX_GEOM_DONUT || code == VEX_GEOM_MULTI_POLY;
}

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

// No hole of ours is crossed by the ring, holds it, or (unless the ring is a hole itself) lies in it.
bool isOutsideHoles(const VEXLine& line, const std::vector<VEXLineRange>& rings, const VEXLine& inner,
                    const VEXLineRange& innerRing, bool isHole) {
  for (std::size_t hole = 1; hole < rings.size(); ++hole) {
    if (edgesCross(line, rings[hole], inner, innerRing) || ringHolds(line, rings[hole], inner, innerRing)) return false;
    if (!isHole && ringHolds(inner, innerRing, line, rings[hole])) return false;
  }
  return true;
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
  if (geomType_ != VEX_GEOM_POLYGON && geomType_ != VEX_GEOM_DONUT && geomType_ != VEX_GEOM_MULTI_POLY) return nullptr;
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
      if (isAreaType(part.code) && !contained) VEX_TRY(view(part).containsLine(other, contained));
    return nullptr;
  }
  const char* ourName = VEXFeature::geomTypeName(geomType_);
  const char* theirName = VEXFeature::geomTypeName(other.geomType_);
  if (!isAreaType(geomType_)) return makeStatus(244002, {ourName, theirName});
  if (other.geomType_ == VEX_GEOM_POINT && other.numCoords_ > 0)
    return extendStatus(containsPoint(other.xCoord_[0], other.yCoord_[0], contained));
  if (!isAreaType(other.geomType_)) return makeStatus(244003, {ourName, theirName});
  // A larger line is inside for sure when its box is.
  if (other.numCoords_ > 5) {
    VEX_TRY(containsLine(fromBox(otherBox), contained));
    if (contained) return nullptr;
  }
  std::vector<VEXLineRange> ours;
  std::vector<VEXLineRange> theirs;
  rings(ours);
  other.rings(theirs);
  if (other.geomType_ == VEX_GEOM_DONUT && geomType_ == VEX_GEOM_POLYGON)
    theirs.resize(std::min<std::size_t>(theirs.size(), 1));
  contained = !theirs.empty() && !ours.empty();
  for (std::size_t i = 0; i < theirs.size() && contained; ++i) {
    if (geomType_ == VEX_GEOM_MULTI_POLY)
      contained = std::any_of(ours.begin(), ours.end(),
                              [&](const VEXLineRange& ring) { return ringHolds(*this, ring, other, theirs[i]); });
    else
      contained = ringHolds(*this, ours[0], other, theirs[i]) && isOutsideHoles(*this, ours, other, theirs[i], i > 0);
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
  // An interval of x near the middle that holds no vertex strictly inside.
  double low = box.minX;
  double high = box.maxX;
  const double middle = (low + high) / 2.0;
  for (double x : xs()) {
    if (x <= middle && x > low) low = x;
    if (x > middle && x < high) high = x;
  }
  if (!(low < high)) return makeStatus(244020);
  // Of the gaps on either side of the nearest vertex the wider one serves better.
  double below = box.minX;
  for (double x : xs())
    if (x < low && x > below) below = x;
  if (low - below > 2.0 * (high - low)) {
    high = low;
    low = below;
  }
  const double m = (low + high) / 2.0;
  if (!(m > low && m < high)) return makeStatus(244020);
  double first = INFINITY;
  double second = INFINITY;
  std::vector<VEXLineRange> found;
  rings(found);
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
