// Making lines, walking their parts, measuring them.
#include "vex/src/vexline.h"

#include <algorithm>
#include <cmath>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/pointrun.h"

namespace {

constexpr int kDeepestNesting = 1000;  // aggregates within aggregates

std::string countOf(std::size_t count) {
  return integerText(static_cast<std::int64_t>(count));
}

}  // namespace

// ---- making ----

VEXLine::VEXLine(std::vector<double> x, std::vector<double> y, std::uint32_t geomType)
    : ownedX_(std::move(x)), ownedY_(std::move(y)), geomType_(geomType) {
  adopt();
}

VEXLine::VEXLine(std::vector<double> x, std::vector<double> y, std::vector<double> z, std::uint32_t geomType)
    : ownedX_(std::move(x)), ownedY_(std::move(y)), ownedZ_(std::move(z)), hasZ_(true), geomType_(geomType) {
  adopt();
}

VEXLine& VEXLine::operator=(VEXLine&& other) noexcept {
  if (this == &other) return *this;
  ownedX_ = std::move(other.ownedX_);
  ownedY_ = std::move(other.ownedY_);
  ownedZ_ = std::move(other.ownedZ_);
  xCoord_ = other.xCoord_;  // arrays keep their place when their vector moves
  yCoord_ = other.yCoord_;
  zCoord_ = other.zCoord_;
  hasZ_ = other.hasZ_;
  numCoords_ = other.numCoords_;
  boundingBox_ = other.boundingBox_;
  geomType_ = other.geomType_;
  ownedGeom_ = other.ownedGeom_;
  other.xCoord_ = other.yCoord_ = other.zCoord_ = nullptr;
  other.numCoords_ = 0;
  other.boundingBox_.reset();
  return *this;
}

void VEXLine::adopt() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  VEX_ASSERT(ownedX_.size() == ownedY_.size() && (!hasZ_ || ownedX_.size() == ownedZ_.size()));
  xCoord_ = ownedX_.data();
  yCoord_ = ownedY_.data();
  zCoord_ = hasZ_ ? ownedZ_.data() : nullptr;
  numCoords_ = ownedX_.size();
  boundingBox_.reset();
}

VEXLine VEXLine::clone() const {
  std::vector<double> x(xs().begin(), xs().end());
  std::vector<double> y(ys().begin(), ys().end());
  if (!hasZ_) return VEXLine(std::move(x), std::move(y), geomType_);
  return VEXLine(std::move(x), std::move(y), std::vector<double>(zs().begin(), zs().end()), geomType_);
}

VEXLine VEXLine::viewOf(const VEXLine& parent, std::size_t first, std::size_t last, std::uint32_t geomType) {
  return parent.view(VEXLineRange{first, last + 1 - first, geomType});
}

VEXLine VEXLine::view(const VEXLineRange& range) const {
  VEX_ASSERT(range.first <= numCoords_ && range.count <= numCoords_ - range.first);
  VEXLine line;
  line.ownedGeom_ = STK_FALSE;
  line.xCoord_ = xCoord_ + range.first;
  line.yCoord_ = yCoord_ + range.first;
  line.zCoord_ = hasZ_ ? zCoord_ + range.first : nullptr;
  line.hasZ_ = hasZ_;
  line.numCoords_ = range.count;
  line.geomType_ = range.code;
  return line;
}

VEXLine VEXLine::viewOf(const VEXFeature& feature) {
  VEXLine line;
  line.ownedGeom_ = STK_FALSE;
  line.xCoord_ = feature.xs().data();
  line.yCoord_ = feature.ys().data();
  line.zCoord_ = feature.zs().data();
  line.hasZ_ = feature.dimension() == 3;
  line.numCoords_ = feature.numCoords();
  line.geomType_ = feature.geomType();
  return line;
}

VEXLine VEXLine::fromPoint(const VEXPoint& point) {
  if (std::isnan(point.z)) return VEXLine({point.x}, {point.y}, VEX_GEOM_POINT);
  return VEXLine({point.x}, {point.y}, {point.z}, VEX_GEOM_POINT);
}

VEXLine VEXLine::fromPoints(const VEXPoint& from, const VEXPoint& to) {
  if (from.x == to.x && from.y == to.y) return fromPoint(std::isnan(from.z) ? to : from);
  if (std::isnan(from.z) && std::isnan(to.z)) return VEXLine({from.x, to.x}, {from.y, to.y}, VEX_GEOM_LINE);
  auto orZero = [](double z) { return std::isnan(z) ? 0.0 : z; };
  return VEXLine({from.x, to.x}, {from.y, to.y}, {orZero(from.z), orZero(to.z)}, VEX_GEOM_LINE);
}

VEXLine VEXLine::fromBox(const VEXBox& box) {
  return VEXLine({box.minX, box.maxX, box.maxX, box.minX, box.minX}, {box.minY, box.minY, box.maxY, box.maxY, box.minY},
                 VEX_GEOM_POLYGON);
}

VEXLine VEXLine::aggregateOf(const std::vector<VEXLine>& lines) {
  VEX_ASSERT(lines.size() != 0);
  std::size_t totalCoordSpace = 0;
  bool anyZ = false;
  for (const VEXLine& line : lines) {
    totalCoordSpace += line.numCoords_ + 1;
    anyZ = anyZ || line.hasZ_;
  }
  std::vector<double> x;
  std::vector<double> y;
  std::vector<double> z(anyZ ? totalCoordSpace : 0, 0.0);
  x.reserve(totalCoordSpace);
  y.reserve(totalCoordSpace);
  for (const VEXLine& line : lines) {
    x.push_back(line.geomType_);
    y.push_back(static_cast<double>(line.numCoords_));
    if (line.hasZ_) std::copy(line.zs().begin(), line.zs().end(), z.begin() + static_cast<std::ptrdiff_t>(x.size()));
    x.insert(x.end(), line.xs().begin(), line.xs().end());
    y.insert(y.end(), line.ys().begin(), line.ys().end());
  }
  VEX_ASSERT(x.size() == totalCoordSpace);
  if (anyZ) return VEXLine(std::move(x), std::move(y), std::move(z), VEX_GEOM_AGGREGATE);
  return VEXLine(std::move(x), std::move(y), VEX_GEOM_AGGREGATE);
}

bool VEXLine::isClosed() const {
  return numCoords_ > 1 && xCoord_[0] == xCoord_[numCoords_ - 1] && yCoord_[0] == yCoord_[numCoords_ - 1];
}

std::span<double> VEXLine::mutableXs() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  boundingBox_.reset();
  return ownedX_;
}

std::span<double> VEXLine::mutableYs() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  boundingBox_.reset();
  return ownedY_;
}

std::span<double> VEXLine::mutableZs() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  return ownedZ_;
}

// ---- parts ----

VEXStatus VEXLine::findPart(std::size_t startPos, VEXLinePart& part) const {
  VEX_ASSERT(startPos < numCoords());
  if (geomType_ == VEX_GEOM_AGGREGATE) return makeStatus(244008);
  findPartOrRing(startPos, part);
  return nullptr;
}

void VEXLine::findPartOrRing(std::size_t startPos, VEXLinePart& part) const {
  const std::size_t count = numCoords_;
  for (std::size_t at = startPos + 1; at < count; ++at) {
    if (xCoord_[at] == xCoord_[at - 1] && yCoord_[at] == yCoord_[at - 1]) {
      part = at == startPos + 1 ? VEXLinePart{VEX_GEOM_POINT, startPos, startPos + 2}
                                : VEXLinePart{VEX_GEOM_LINE, at - 1, at + 1};
      return;
    }
    if (xCoord_[at] == xCoord_[startPos] && yCoord_[at] == yCoord_[startPos]) {
      part =
          at - startPos <= 2 ? VEXLinePart{VEX_GEOM_LINE, at - 1, at + 1} : VEXLinePart{VEX_GEOM_POLYGON, at, at + 1};
      return;
    }
  }
  part = VEXLinePart{startPos + 1 == count ? VEX_GEOM_POINT : VEX_GEOM_LINE, count - 1, count};
}

void VEXLine::partAt(std::size_t startPos, VEXLinePart& part) const {
  if (geomType_ == VEX_GEOM_LINE)
    findBreak(startPos, part);
  else
    findPartOrRing(startPos, part);
}

void VEXLine::runAt(std::size_t startPos, VEXLinePart& part) const {
  if (!isAreaCode(geomType_)) return partAt(startPos, part);
  const std::size_t next = startPos + ringAt(startPos, numCoords_).count;
  part = VEXLinePart{VEX_GEOM_POLYGON, next - 1, next};
}

// The part of a polyline: it ends at a coordinate that stands twice; a loop in it is no end.
void VEXLine::findBreak(std::size_t startPos, VEXLinePart& part) const {
  for (std::size_t at = startPos + 1; at < numCoords_; ++at) {
    if (xCoord_[at] != xCoord_[at - 1] || yCoord_[at] != yCoord_[at - 1]) continue;
    part = VEXLinePart{at == startPos + 1 ? VEX_GEOM_POINT : VEX_GEOM_LINE, at - 1, at + 1};
    return;
  }
  part = VEXLinePart{startPos + 1 == numCoords_ ? VEX_GEOM_POINT : VEX_GEOM_LINE, numCoords_ - 1, numCoords_};
}

VEXStatus VEXLine::headerAt(std::size_t spot, std::size_t end, VEXLineRange& part) const {
  const double code = xCoord_[spot];
  const double count = yCoord_[spot];
  const std::size_t room = end - spot - 1;
  bool fits = code >= 0.0 && code <= 512.0 && count >= 0.0 && count <= static_cast<double>(room);
  if (fits) part = VEXLineRange{spot + 1, static_cast<std::size_t>(count), static_cast<std::uint32_t>(code)};
  if (!fits || !VEXFeature::isKnownGeomType(part.code))
    return makeStatus(244023, {countOf(spot), realText(code), realText(count), countOf(room)});
  return nullptr;
}

VEXStatus VEXLine::collectLeaves(std::size_t first, std::size_t count, int depth,
                                 std::vector<VEXLineRange>& ranges) const {
  if (depth > kDeepestNesting) return makeStatus(244024, {integerText(kDeepestNesting)});
  for (std::size_t spot = first; spot < first + count;) {
    VEXLineRange part;
    VEX_TRY(headerAt(spot, first + count, part));
    if (part.code == VEX_GEOM_AGGREGATE)
      VEX_TRY(collectLeaves(part.first, part.count, depth + 1, ranges));
    else
      ranges.push_back(part);
    spot = part.first + part.count;
  }
  return nullptr;
}

VEXStatus VEXLine::leaves(std::vector<VEXLineRange>& ranges) const {
  ranges.clear();
  if (geomType_ == VEX_GEOM_AGGREGATE) return extendStatus(collectLeaves(0, numCoords_, 0, ranges));
  ranges.push_back(VEXLineRange{0, numCoords_, geomType_});
  return nullptr;
}

VEXStatus VEXLine::directParts(std::vector<VEXLineRange>& ranges) const {
  if (geomType_ != VEX_GEOM_AGGREGATE) return extendStatus(leaves(ranges));
  ranges.clear();
  VEXLineRange part;
  for (std::size_t spot = 0; spot < numCoords_; spot = part.first + part.count) {
    VEX_TRY(headerAt(spot, numCoords_, part));
    ranges.push_back(part);
  }
  return nullptr;
}

VEXStatus VEXLine::split(std::uint32_t mask, std::vector<VEXLine>& parts, bool recursive) const {
  if (geomType_ == VEX_GEOM_AGGREGATE) {
    std::vector<VEXLineRange> ranges;
    VEX_TRY(recursive ? leaves(ranges) : directParts(ranges));
    for (const VEXLineRange& range : ranges)
      if ((range.code & mask) != 0) parts.push_back(view(range));
    return nullptr;
  }
  VEXLinePart part;
  for (std::size_t at = 0; at < numCoords_; at = part.next) {
    partAt(at, part);
    if ((part.kind & mask) != 0) parts.push_back(view(VEXLineRange{at, part.last + 1 - at, part.kind}));
  }
  return nullptr;
}

VEXStatus VEXLine::partList(std::vector<std::size_t>& starts) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  starts.clear();
  std::vector<bool> kept(numCoords_, true);
  std::uint32_t code = VEX_GEOM_UNDEFINED;
  std::size_t dropped = 0;
  VEXLinePart part;
  for (std::size_t at = 0; at < numCoords_; at = part.next) {
    VEX_TRY(findPart(at, part));
    starts.push_back(at - dropped);
    if (part.kind == VEX_GEOM_POINT && part.next == at + 2) {
      kept[at + 1] = false;
      ++dropped;
    }
    if (starts.size() == 1)
      code = part.kind;
    else if (code == part.kind || code == part.kind * 32)
      code = part.kind * 32;  // point, line and ring become their lists: 32, 64, 128
    else
      code = VEX_GEOM_MULTI;
  }
  keepOnly(kept);
  geomType_ = code;
  return nullptr;
}

// A ring ends at the first later coordinate equal to its first; one that repeats the first at once is no end.
std::size_t VEXLine::ringEnd(std::size_t start, std::size_t end) const {
  if (start >= end) return end;
  const double x = xCoord_[start];
  const double y = yCoord_[start];
  std::size_t at = start + 1;
  while (at < end && pointrun::isSame(xCoord_[at], yCoord_[at], x, y)) ++at;
  at = pointrun::findSame(xCoord_, yCoord_, at, end, x, y);
  return std::min(at + 1, end);
}

VEXLineRange VEXLine::ringAt(std::size_t start, std::size_t end) const {
  return VEXLineRange{start, ringEnd(start, end) - start, VEX_GEOM_POLYGON};
}

void VEXLine::rings(std::vector<VEXLineRange>& ranges) const {
  ranges.clear();
  for (std::size_t start = 0; start < numCoords_; start += ranges.back().count)
    ranges.push_back(ringAt(start, numCoords_));
}

void VEXLine::findHoles(const std::vector<VEXLineRange>& ranges, std::vector<bool>& isHole) const {
  isHole.assign(ranges.size(), geomType_ == VEX_GEOM_DONUT);
  if (ranges.size() < 2) isHole.assign(ranges.size(), false);
  if (!isHole.empty()) isHole[0] = false;
  if (geomType_ == VEX_GEOM_DONUT || ranges.size() < 2) return;
  struct Ring {
    VEXLine line;
    VEXBox box;
    VEXPoint inside;
    double area;
  };
  std::vector<Ring> rings;
  rings.reserve(ranges.size());
  for (const VEXLineRange& range : ranges) {
    Ring ring{view(range), {}, {}, 0.0};
    ring.box = boxOf(ring.line.xs(), ring.line.ys());
    ring.area = ringArea(ring.line.xs(), ring.line.ys());
    ring.inside = ring.line.point(0);
    ignoreStatus(ring.line.insideByScan(ring.inside));  // its first vertex serves then
    rings.push_back(std::move(ring));
  }
  for (std::size_t i = 0; i < rings.size(); ++i) {
    bool isInside = false;
    const VEXPoint p = rings[i].inside;
    for (const Ring& other : rings) {
      if (other.area <= rings[i].area || p.x < other.box.minX || p.x > other.box.maxX || p.y < other.box.minY ||
          p.y > other.box.maxY)
        continue;
      if (isPointInRing(other.line.xs(), other.line.ys(), p.x, p.y)) isInside = !isInside;
    }
    isHole[i] = isInside;
  }
}

VEXStatus VEXLine::numHoles(std::size_t& count) const {
  count = 0;
  return extendStatus(forEachLeaf([&](const VEXLineRange& range) {
    if (!isAreaCode(range.code)) return;
    std::vector<VEXLineRange> ranges;
    std::vector<bool> isHole;
    const VEXLine part = view(range);
    part.rings(ranges);
    part.findHoles(ranges, isHole);
    count += static_cast<std::size_t>(std::count(isHole.begin(), isHole.end(), true));
  }));
}

// ---- measures ----

VEXStatus VEXLine::boundingBox(VEXBox& box) const {
  if (!boundingBox_.has_value()) {
    VEXBox all;
    VEX_TRY(forEachLeaf([&](const VEXLineRange& range) {
      if (range.count > 0)
        all.add(boxOf(xs().subspan(range.first, range.count), ys().subspan(range.first, range.count)));
    }));
    boundingBox_ = all;
  }
  box = *boundingBox_;
  return nullptr;
}

VEXStatus VEXLine::boundingCube(VEXBox& box) const {
  VEX_TRY(boundingBox(box));
  if (!hasZ_) return nullptr;
  return extendStatus(forEachLeaf([&](const VEXLineRange& range) {
    if (range.count == 0) return;
    VEXOrdinates z = zs().subspan(range.first, range.count);
    VEXBox heights = boxOf(z, z);
    VEXBox part;
    part.minZ = heights.minX;
    part.maxZ = heights.maxX;
    box.add(part);
  }));
}

double VEXLine::areaOf(const VEXLineRange& range) const {
  if (!isAreaCode(range.code)) return 0.0;
  double area = 0.0;
  if (singleRingArea({xCoord_ + range.first, range.count}, {yCoord_ + range.first, range.count}, area)) [[likely]]
    return std::fabs(area);
  area = 0.0;
  const std::size_t end = range.first + range.count;
  for (std::size_t start = range.first, next = start; start < end; start = next) {
    next = ringEnd(start, end);
    const double ringed = signedRingArea({xCoord_ + start, next - start}, {yCoord_ + start, next - start});
    if (range.code == VEX_GEOM_POLYGON)
      area += ringed;
    else
      area += range.code == VEX_GEOM_DONUT && start > range.first ? -std::fabs(ringed) : std::fabs(ringed);
  }
  return range.code == VEX_GEOM_POLYGON ? std::fabs(area) : area;
}

VEXStatus VEXLine::area(double& area) const {
  area = 0.0;
  return extendStatus(forEachLeaf([&](const VEXLineRange& range) { area += areaOf(range); }));
}

double VEXLine::lengthIn(const VEXLineRange& range, bool in3D) const {
  const VEXLine run = view(range);
  auto measure = [&](std::size_t first, std::size_t count) {
    VEXOrdinates x = run.xs().subspan(first, count);
    VEXOrdinates y = run.ys().subspan(first, count);
    return in3D ? lengthOf3D(x, y, run.zs().subspan(first, count)) : lengthOf(x, y);
  };
  if (range.code == VEX_GEOM_POINT || range.code == VEX_GEOM_MULTI_POINT) return 0.0;
  if (range.code == VEX_GEOM_UNDEFINED) return measure(0, run.numCoords_);
  double length = 0.0;
  if (isAreaCode(range.code)) {
    for (std::size_t start = 0; start < run.numCoords_;) {
      VEXLineRange ring = run.ringAt(start, run.numCoords_);
      length += measure(ring.first, ring.count);
      start += ring.count;
    }
    return length;
  }
  VEXLinePart part;
  for (std::size_t at = 0; at < run.numCoords_; at = part.next) {
    run.partAt(at, part);
    length += measure(at, part.last + 1 - at);
  }
  return length;
}

VEXStatus VEXLine::length2D(double& length) const {
  length = 0.0;
  return extendStatus(forEachLeaf([&](const VEXLineRange& range) { length += lengthIn(range, false); }));
}

VEXStatus VEXLine::length3D(double& length) const {
  length = 0.0;
  return extendStatus(forEachLeaf([&](const VEXLineRange& range) { length += lengthIn(range, hasZ_); }));
}

std::size_t VEXLine::lowestPoint() const {
  std::size_t lowest = 0;
  for (std::size_t i = 1; i < numCoords_; ++i)
    if (yCoord_[i] < yCoord_[lowest] || (yCoord_[i] == yCoord_[lowest] && xCoord_[i] >= xCoord_[lowest])) lowest = i;
  return lowest;
}
