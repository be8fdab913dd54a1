// Transforming lines.
#include <algorithm>
#include <cmath>

#include "vex/inc/vexassert.h"
#include "vex/src/vexline.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

}  // namespace

template <class Change>
VEXStatus VEXLine::changeEach(Change&& change) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  std::vector<VEXLineRange> ranges;
  VEX_TRY(leaves(ranges));
  for (const VEXLineRange& range : ranges)
    for (std::size_t i = range.first; i < range.first + range.count; ++i)
      change(ownedX_[i], ownedY_[i], hasZ_ ? &ownedZ_[i] : nullptr);
  boundingBox_.reset();
  return nullptr;
}

// Works on each direct part of an aggregate, nested ones included, or on the line itself. Parts that end up
// without coordinates go.
template <class Work>
VEXStatus VEXLine::workOnParts(Work&& work) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  if (geomType_ != VEX_GEOM_AGGREGATE) return extendStatus(work(*this));
  std::vector<VEXLineRange> ranges;
  VEX_TRY(leaves(ranges));  // proves that the nesting is sound and not too deep
  std::vector<VEXLine> views;
  VEX_TRY(split(kEveryPartMask, views));
  std::vector<VEXLine> parts;
  for (const VEXLine& part : views) {
    parts.push_back(part.clone());
    VEX_TRY(parts.back().workOnParts(work));
    if (parts.back().numCoords_ == 0) parts.pop_back();
  }
  if (!parts.empty())
    *this = aggregateOf(parts);
  else
    keepOnly(std::vector<bool>(numCoords_, false));
  return nullptr;
}

VEXStatus VEXLine::scale(double x, double y, double z) {
  return extendStatus(changeEach([=](double& px, double& py, double* pz) {
    px *= x;
    py *= y;
    if (pz != nullptr && !std::isnan(z)) *pz *= z;
  }));
}

VEXStatus VEXLine::offset(double x, double y, double z) {
  return extendStatus(changeEach([=](double& px, double& py, double* pz) {
    px += x;
    py += y;
    if (pz != nullptr && !std::isnan(z)) *pz += z;
  }));
}

VEXStatus VEXLine::rotate2D(double centreX, double centreY, double angleDegrees) {
  double cosA = std::cos(angleDegrees * kPi / 180.0);
  double sinA = std::sin(angleDegrees * kPi / 180.0);
  // Right angles stay exact.
  if (cosA == 1.0 || cosA == -1.0) sinA = 0.0;
  if (sinA == 1.0 || sinA == -1.0) cosA = 0.0;
  return extendStatus(changeEach([=](double& px, double& py, double*) {
    double dx = px - centreX;
    double dy = py - centreY;
    px = dx * cosA + dy * sinA + centreX;
    py = -dx * sinA + dy * cosA + centreY;
  }));
}

VEXStatus VEXLine::transform(const double (&m)[3][3]) {
  const bool changesZ = hasZ_ && !std::isnan(m[2][0]) && !std::isnan(m[2][1]) && !std::isnan(m[2][2]);
  return extendStatus(changeEach([&](double& px, double& py, double* pz) {
    double x = px;
    double y = py;
    double z = pz != nullptr ? *pz : 0.0;
    px = m[0][0] * x + m[0][1] * y + m[0][2] * z;
    py = m[1][0] * x + m[1][1] * y + m[1][2] * z;
    if (changesZ) *pz = m[2][0] * x + m[2][1] * y + m[2][2] * z;
  }));
}

VEXStatus VEXLine::affine(double a, double b, double c, double d, double e, double f) {
  return extendStatus(changeEach([=](double& px, double& py, double*) {
    double x = px;
    px = a * x + b * py + c;
    py = d * x + e * py + f;
  }));
}

VEXStatus VEXLine::inverseAffine(double a, double b, double c, double d, double e, double f) {
  return extendStatus(changeEach([=](double& px, double& py, double*) {
    double x = px;
    py = (a * py - d * x + (c * d - a * f)) / (a * e - b * d);
    px = (x - b * py - c) / a;
  }));
}

// ---- rounding and duplicates ----

VEXStatus VEXLine::roundAxis(int axis, int decimals) {
  const double p = std::pow(10.0, decimals);
  auto round = [p](double value) {
    double scaled = p * value;
    scaled = scaled >= 0.0 ? scaled + 0.5 : scaled - 0.5;
    return std::trunc(scaled) / p;
  };
  return extendStatus(workOnParts([&](VEXLine& line) -> VEXStatus {
    // What is a break before the rounding stays one; coordinates that the rounding makes equal are duplicates.
    std::vector<VEXLineRange> runs;
    VEXLinePart part;
    const bool breaks = line.hasBreaks();
    for (std::size_t at = 0; breaks && at < line.numCoords_; at = part.next) {
      line.findBreak(at, part);
      runs.push_back(VEXLineRange{at, part.last + 1 - at, part.next > part.last + 1 ? 1U : 0U});
    }
    if (runs.empty()) runs.push_back(VEXLineRange{0, line.numCoords_, 0});
    VEX_TRY(line.changeEach([&](double& px, double& py, double* pz) {
      if (axis == 0) px = round(px);
      if (axis == 1) py = round(py);
      if (axis == 2 && pz != nullptr) *pz = round(*pz);
    }));
    VEXLine joinedLine = line.clone();
    std::vector<bool> none(line.numCoords_, false);
    joinedLine.keepOnly(none);
    for (const VEXLineRange& run : runs) {
      VEXLine piece = line.view(run).clone();
      piece.dropRepeated();
      for (std::size_t i = 0; i < piece.numCoords_; ++i)
        joinedLine.append(piece.xCoord_[i], piece.yCoord_[i], piece.hasZ_ ? piece.zCoord_[i] : kNoZ);
      if (run.code == 1 && piece.numCoords_ > 0) {
        VEXPoint end = piece.point(piece.numCoords_ - 1);
        joinedLine.append(end.x, end.y, end.z);
      }
    }
    line = std::move(joinedLine);
    return nullptr;
  }));
}

VEXStatus VEXLine::toIntegers() {
  VEX_TRY(changeEach([](double& px, double& py, double* pz) {
    px = std::trunc(px + 0.5);  // negative values move toward zero: image formats depend on it
    py = std::trunc(py + 0.5);
    if (pz != nullptr) *pz = std::trunc(*pz);
  }));
  return extendStatus(removeDuplicates());
}

VEXStatus VEXLine::removeDuplicates() {
  return extendStatus(workOnParts([](VEXLine& line) -> VEXStatus {
    line.dropRepeated();
    return nullptr;
  }));
}

bool VEXLine::hasBreaks() const {
  return geomType_ == VEX_GEOM_LINE || geomType_ == VEX_GEOM_MULTI || geomType_ == VEX_GEOM_MULTI_POINT ||
         geomType_ == VEX_GEOM_MULTI_LINE;
}

void VEXLine::dropRepeated() {
  std::size_t used = 0;
  for (std::size_t i = 0; i < ownedX_.size(); ++i) {
    if (used > 0 && ownedX_[i] == ownedX_[used - 1] && ownedY_[i] == ownedY_[used - 1]) {
      if (hasZ_) ownedZ_[used - 1] = ownedZ_[i];
      continue;
    }
    ownedX_[used] = ownedX_[i];
    ownedY_[used] = ownedY_[i];
    if (hasZ_) ownedZ_[used] = ownedZ_[i];
    ++used;
  }
  ownedX_.resize(used);
  ownedY_.resize(used);
  if (hasZ_) ownedZ_.resize(used);
  adopt();
}

void VEXLine::keepOnly(const std::vector<bool>& kept) {
  std::size_t used = 0;
  for (std::size_t i = 0; i < ownedX_.size(); ++i) {
    if (!kept[i]) continue;
    ownedX_[used] = ownedX_[i];
    ownedY_[used] = ownedY_[i];
    if (hasZ_) ownedZ_[used] = ownedZ_[i];
    ++used;
  }
  ownedX_.resize(used);
  ownedY_.resize(used);
  if (hasZ_) ownedZ_.resize(used);
  adopt();
}

void VEXLine::reverse(std::size_t first, std::size_t last) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  VEX_ASSERT(first <= last && last < numCoords_);
  auto turn = [first, last](std::vector<double>& values) {
    std::reverse(values.begin() + static_cast<std::ptrdiff_t>(first),
                 values.begin() + static_cast<std::ptrdiff_t>(last) + 1);
  };
  turn(ownedX_);
  turn(ownedY_);
  if (hasZ_) turn(ownedZ_);
}

void VEXLine::close() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  if (numCoords_ == 0 || isClosed()) return;
  append(xCoord_[0], yCoord_[0], hasZ_ ? zCoord_[0] : kNoZ);
}

void VEXLine::append(double x, double y, double z) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  ownedX_.push_back(x);
  ownedY_.push_back(y);
  if (hasZ_) ownedZ_.push_back(z);
  adopt();
}

// ---- rings and holes ----

namespace {

// How many other rings hold the first vertex of ring i.
std::size_t depthOf(const VEXLine& line, const std::vector<VEXLineRange>& rings, std::size_t i) {
  std::size_t depth = 0;
  for (std::size_t j = 0; j < rings.size(); ++j) {
    if (j == i) continue;
    VEXOrdinates xs = line.xs().subspan(rings[j].first, rings[j].count);
    VEXOrdinates ys = line.ys().subspan(rings[j].first, rings[j].count);
    if (isPointInRing(xs, ys, line.xs()[rings[i].first], line.ys()[rings[i].first])) ++depth;
  }
  return depth;
}

}  // namespace

VEXStatus VEXLine::orientRings(bool counterClockwise) {
  return extendStatus(workOnParts([counterClockwise](VEXLine& line) -> VEXStatus {
    std::vector<VEXLineRange> found;
    line.rings(found);
    if (found.empty() || line.numCoords_ < 3) return makeStatus(244010);
    for (std::size_t i = 0; i < found.size(); ++i) {
      bool isHole = line.geomType_ == VEX_GEOM_DONUT ? i > 0 : found.size() > 1 && depthOf(line, found, i) % 2 == 1;
      VEXOrdinates xs = line.xs().subspan(found[i].first, found[i].count);
      VEXOrdinates ys = line.ys().subspan(found[i].first, found[i].count);
      if (isRingClockwise(xs, ys) == (counterClockwise != isHole))
        line.reverse(found[i].first, found[i].first + found[i].count - 1);
    }
    line.boundingBox_.reset();
    return nullptr;
  }));
}

VEXStatus VEXLine::addHole(const VEXLine& hole) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  if (geomType_ != VEX_GEOM_POLYGON && geomType_ != VEX_GEOM_DONUT)
    return makeStatus(244012, {VEXFeature::geomTypeName(geomType_)});
  if (hole.geomType_ != VEX_GEOM_POLYGON) return makeStatus(244013, {VEXFeature::geomTypeName(hole.geomType_)});
  ownedX_.insert(ownedX_.end(), hole.xs().begin(), hole.xs().end());
  ownedY_.insert(ownedY_.end(), hole.ys().begin(), hole.ys().end());
  if (hasZ_ && hole.hasZ_) ownedZ_.insert(ownedZ_.end(), hole.zs().begin(), hole.zs().end());
  if (hasZ_ && !hole.hasZ_) ownedZ_.resize(ownedX_.size(), 0.0);
  geomType_ = VEX_GEOM_DONUT;
  adopt();
  return nullptr;
}

VEXStatus VEXLine::collapseToCentre() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  VEXBox box;
  VEX_TRY(boundingCube(box));
  if (box.isEmpty()) return nullptr;
  ownedX_.assign(1, (box.minX + box.maxX) / 2.0);
  ownedY_.assign(1, (box.minY + box.maxY) / 2.0);
  if (hasZ_) ownedZ_.assign(1, (box.minZ + box.maxZ) / 2.0);
  adopt();
  return nullptr;
}

VEXStatus VEXLine::dropHoles() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  if (geomType_ != VEX_GEOM_DONUT) return nullptr;
  std::size_t end = 1;
  while (end < numCoords_ && (xCoord_[end] != xCoord_[0] || yCoord_[end] != yCoord_[0])) ++end;
  if (end >= numCoords_) return makeStatus(244004);
  ownedX_.resize(end + 1);
  ownedY_.resize(end + 1);
  if (hasZ_) ownedZ_.resize(end + 1);
  geomType_ = VEX_GEOM_POLYGON;
  adopt();
  return nullptr;
}

VEXStatus VEXLine::convertToMulti() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  if (geomType_ != VEX_GEOM_AGGREGATE) return nullptr;
  std::vector<VEXLineRange> ranges;
  VEX_TRY(leaves(ranges));
  VEXLine multi = hasZ_ ? VEXLine({}, {}, {}, VEX_GEOM_MULTI) : VEXLine({}, {}, VEX_GEOM_MULTI);
  for (const VEXLineRange& range : ranges) {
    bool isArea = range.code == VEX_GEOM_POLYGON || range.code == VEX_GEOM_DONUT || range.code == VEX_GEOM_MULTI_POLY;
    bool isLineOrPoint = range.code == VEX_GEOM_POINT || range.code == VEX_GEOM_LINE;
    if (!isArea && !isLineOrPoint) return makeStatus(244009, {VEXFeature::geomTypeName(range.code)});
    const VEXLine part = view(range);
    for (std::size_t i = 0; i < part.numCoords_; ++i) {
      VEXPoint p = part.point(i);
      multi.append(p.x, p.y, p.z);
    }
    // The repeated coordinate is the break that the part finder sees; a ring needs none.
    if (isLineOrPoint && part.numCoords_ > 0 && !part.isClosed()) {
      VEXPoint p = part.point(part.numCoords_ - 1);
      multi.append(p.x, p.y, p.z);
    }
  }
  *this = std::move(multi);
  return nullptr;
}

void VEXLine::splitAtRepeated(std::vector<VEXLine>& parts) const {
  VEX_ASSERT(geomType() == VEX_GEOM_POLYGON);
  VEX_ASSERT(xCoord_[0] == xCoord_[numCoords() - 1]);
  VEX_ASSERT(yCoord_[0] == yCoord_[numCoords() - 1]);
  for (std::size_t start = 0; start + 1 < numCoords_;) {
    std::size_t end = start + 1;
    while (end < numCoords_ && (xCoord_[end] != xCoord_[start] || yCoord_[end] != yCoord_[start])) ++end;
    if (end >= numCoords_) end = numCoords_ - 1;
    parts.push_back(
        view(VEXLineRange{start, end + 1 - start, end - start >= 3 ? VEX_GEOM_POLYGON : VEX_GEOM_UNDEFINED}));
    start = end + 1;
  }
}

// ---- thinning ----

// Marks the vertices between two kept ones that the tolerance does not allow to drop. Worked off a list of spans:
// the depth of a recursion would be in the hands of the data.
void VEXLine::thinRun(std::size_t first, std::size_t last, double tolerance, std::vector<bool>& kept) const {
  std::vector<std::pair<std::size_t, std::size_t>> spans = {{first, last}};
  while (!spans.empty()) {
    auto [from, to] = spans.back();
    spans.pop_back();
    kept[from] = kept[to] = true;
    const bool isClosedChord = xCoord_[from] == xCoord_[to] && yCoord_[from] == yCoord_[to];
    double farthest = -1.0;
    std::size_t at = from;
    const double dx = xCoord_[to] - xCoord_[from];
    const double dy = yCoord_[to] - yCoord_[from];
    const double chord = std::hypot(dx, dy);
    for (std::size_t i = from + 1; i < to; ++i) {
      double px = xCoord_[i] - xCoord_[from];
      double py = yCoord_[i] - yCoord_[from];
      double distance = isClosedChord ? std::hypot(px, py) : std::fabs(dx * py - dy * px) / chord;
      if (distance > farthest) {
        farthest = distance;
        at = i;
      }
    }
    if (farthest < 0.0 || farthest < tolerance) continue;
    spans.emplace_back(at, to);
    spans.emplace_back(from, at);
  }
}

VEXStatus VEXLine::simplifyDouglas(double tolerance) {
  return extendStatus(workOnParts([tolerance](VEXLine& line) -> VEXStatus {
    std::vector<bool> kept(line.numCoords_, false);
    VEXLinePart part;
    for (std::size_t at = 0; at < line.numCoords_; at = part.next) {
      if (line.geomType_ == VEX_GEOM_LINE)
        line.findBreak(at, part);
      else
        VEX_TRY(line.findPart(at, part));
      std::fill(kept.begin() + static_cast<std::ptrdiff_t>(part.last),
                kept.begin() + static_cast<std::ptrdiff_t>(part.next), true);
      if (part.kind == VEX_GEOM_POINT) {
        kept[at] = true;
        continue;
      }
      line.thinRun(at, part.last, tolerance, kept);
      // A ring keeps two more vertices than its ends: those that stand out farthest.
      auto numKept = [&] {
        return std::count(kept.begin() + static_cast<std::ptrdiff_t>(at),
                          kept.begin() + static_cast<std::ptrdiff_t>(part.last) + 1, true);
      };
      while (part.kind == VEX_GEOM_POLYGON && numKept() < 4) {
        std::size_t other = at;
        for (std::size_t i = at + 1; i < part.last; ++i)
          if (kept[i]) other = i;
        double farthest = -1.0;
        std::size_t chosen = at + 1;
        for (std::size_t i = at + 1; i < part.last; ++i) {
          double distance = distanceToSegment(line.xCoord_[i], line.yCoord_[i], line.xCoord_[at], line.yCoord_[at],
                                              line.xCoord_[other], line.yCoord_[other]);
          if (!kept[i] && distance > farthest) {
            farthest = distance;
            chosen = i;
          }
        }
        if (kept[chosen]) break;
        kept[chosen] = true;
      }
    }
    line.keepOnly(kept);
    return nullptr;
  }));
}

void VEXLine::chop(std::size_t n, std::vector<VEXLine>& pieces) const {
  VEX_ASSERT(n > 0);
  if (n == 1) {
    for (std::size_t i = 0; i < numCoords_; ++i) pieces.push_back(view(VEXLineRange{i, 1, VEX_GEOM_POINT}));
    return;
  }
  for (std::size_t start = 0; start + 1 < numCoords_; start += n - 1)
    pieces.push_back(view(VEXLineRange{start, std::min(n, numCoords_ - start), VEX_GEOM_LINE}));
}

VEXStatus VEXLine::arcThrough(VEXPoint& centre, double& radius, double& startDegrees, double& sweepDegrees) const {
  if (numCoords_ != 3) return makeStatus(244018, {std::to_string(numCoords_)});
  // Bisectors meet where the circle's centre is; taken relative to the first point.
  const double ax = xCoord_[1] - xCoord_[0];
  const double ay = yCoord_[1] - yCoord_[0];
  const double bx = xCoord_[2] - xCoord_[0];
  const double by = yCoord_[2] - yCoord_[0];
  const double det = 2.0 * (ax * by - ay * bx);
  if (det == 0.0 || !std::isfinite(det)) return makeStatus(244019);
  const double a2 = ax * ax + ay * ay;
  const double b2 = bx * bx + by * by;
  const double cx = (by * a2 - ay * b2) / det;
  const double cy = (ax * b2 - bx * a2) / det;
  centre = VEXPoint{xCoord_[0] + cx, yCoord_[0] + cy, hasZ_ ? zCoord_[0] : kNoZ};
  radius = std::hypot(cx, cy);
  auto direction = [&](std::size_t i) {
    double degrees = std::atan2(yCoord_[i] - centre.y, xCoord_[i] - centre.x) * 180.0 / kPi;
    return degrees < 0.0 ? degrees + 360.0 : degrees;
  };
  auto turnFromStart = [&](double degrees) {
    double turn = degrees - startDegrees;
    return turn < 0.0 ? turn + 360.0 : turn;
  };
  startDegrees = direction(0);
  sweepDegrees = turnFromStart(direction(2));
  if (turnFromStart(direction(1)) > sweepDegrees) sweepDegrees -= 360.0;
  return nullptr;
}
