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
  VEX_TRY(forEachLeaf([&](const VEXLineRange& range) {
    for (std::size_t i = range.first; i < range.first + range.count; ++i)
      change(ownedX_[i], ownedY_[i], hasZ_ ? &ownedZ_[i] : nullptr);
  }));
  boundingBox_.reset();
  return nullptr;
}

VEXStatus VEXLine::workOnParts(const Work& work) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  if (geomType_ != VEX_GEOM_AGGREGATE) return extendStatus(work(*this));
  std::vector<VEXLineRange> ranges;
  VEX_TRY(leaves(ranges));  // proves that the nesting is sound and not too deep
  VEXLine out = hasZ_ ? VEXLine({}, {}, {}, geomType_) : VEXLine({}, {}, geomType_);
  VEX_TRY(rebuild(0, numCoords_, work, out));
  out.adopt();
  *this = std::move(out);
  return nullptr;
}

VEXStatus VEXLine::rebuild(std::size_t first, std::size_t count, const Work& work, VEXLine& out) const {
  auto push = [&out](const VEXLine& line) {
    out.ownedX_.insert(out.ownedX_.end(), line.xs().begin(), line.xs().end());
    out.ownedY_.insert(out.ownedY_.end(), line.ys().begin(), line.ys().end());
    out.ownedZ_.insert(out.ownedZ_.end(), line.zs().begin(), line.zs().end());
  };
  for (std::size_t spot = first; spot < first + count;) {
    VEXLineRange range;
    VEX_TRY(headerAt(spot, first + count, range));
    const std::size_t header = out.ownedX_.size();
    push(view(VEXLineRange{spot, 1, VEX_GEOM_UNDEFINED}));
    if (range.code == VEX_GEOM_AGGREGATE) {
      VEX_TRY(rebuild(range.first, range.count, work, out));
    } else {
      VEXLine part = view(range).clone();
      VEX_TRY(work(part));
      push(part);
      out.ownedX_[header] = part.geomType_;
    }
    const std::size_t left = out.ownedX_.size() - header - 1;
    out.ownedY_[header] = static_cast<double>(left);
    if (left == 0) {
      out.ownedX_.pop_back();
      out.ownedY_.pop_back();
      if (hasZ_) out.ownedZ_.pop_back();
    }
    spot = range.first + range.count;
  }
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
  double cosA = 0.0;
  double sinA = 0.0;
  exactSinCos(kPi * angleDegrees * 0.005555555555555556, sinA, cosA);
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
    double y = py;
    py = (a * py - d * x + (c * d - a * f)) / (a * e - b * d);
    px = a != 0.0 ? (x - b * py - c) / a : (y - e * py - f) / d;  // a quarter turn has no a
  }));
}

// ---- rounding and duplicates ----

VEXStatus VEXLine::roundAxis(int axis, int decimals) {
  return extendStatus(workOnParts([axis, decimals](VEXLine& line) -> VEXStatus {
    line.roundRun(axis, decimals);
    return nullptr;
  }));
}

namespace {

double roundedTo(double value, int decimals) {
  const double p = std::pow(10.0, std::abs(decimals));
  const double scaled = decimals >= 0 ? value * p : value / p;
  if (!(std::fabs(scaled) < 9007199254740992.0)) return value;  // no fraction is left at 2 to the 53rd
  const double whole = std::trunc(scaled >= 0.0 ? scaled + 0.5 : scaled - 0.5);
  if (whole == 0.0) return 0.0;
  return decimals >= 0 ? whole / p : whole * p;
}

}  // namespace

// What the rounding makes equal is dropped, part by part: a part keeps its first coordinate and the break behind it,
// a ring its end. A hole that has no four coordinates left goes.
void VEXLine::roundRun(int axis, int decimals) {
  std::vector<VEXLinePart> parts;
  const bool isArea = isAreaCode(geomType_);
  VEXLinePart part;
  for (std::size_t at = 0; at < numCoords_; at = part.next) {
    runAt(at, part);
    parts.push_back(part);
  }
  std::vector<double>& values = axis == 0 ? ownedX_ : axis == 1 ? ownedY_ : ownedZ_;
  for (double& value : values) value = roundedTo(value, decimals);
  std::size_t used = 0;
  auto keep = [&](std::size_t i) {
    ownedX_[used] = ownedX_[i];
    ownedY_[used] = ownedY_[i];
    if (hasZ_) ownedZ_[used] = ownedZ_[i];
    ++used;
  };
  std::size_t start = 0;
  std::size_t numRings = 0;
  for (const VEXLinePart& run : parts) {
    const std::size_t first = used;
    for (std::size_t i = start; i <= run.last; ++i) {
      if (used > first && ownedX_[i] == ownedX_[used - 1] && ownedY_[i] == ownedY_[used - 1]) {
        if (hasZ_) ownedZ_[used - 1] = ownedZ_[i];
        continue;
      }
      keep(i);
    }
    if (isArea && numRings > 0 && used - first < 4)
      used = first;
    else
      ++numRings;
    if (run.next > run.last + 1) keep(run.last);
    start = run.next;
  }
  if (geomType_ == VEX_GEOM_DONUT && numRings == 1) geomType_ = VEX_GEOM_POLYGON;
  keepFirst(used);
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
  keepFirst(used);
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
  keepFirst(used);
}

void VEXLine::keepFirst(std::size_t count) {
  ownedX_.resize(count);
  ownedY_.resize(count);
  if (hasZ_) ownedZ_.resize(count);
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
  if (numCoords_ < 2 || isClosed()) return;
  append(xCoord_[0], yCoord_[0], hasZ_ ? zCoord_[0] : kNoZ);
}

void VEXLine::closeParts() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  VEXLine closed = hasZ_ ? VEXLine({}, {}, {}, VEX_GEOM_POLYGON) : VEXLine({}, {}, VEX_GEOM_POLYGON);
  VEXLinePart part;
  for (std::size_t at = 0; at < numCoords_; at = part.next) {
    findBreak(at, part);
    VEXLine ring = view(VEXLineRange{at, part.last + 1 - at, VEX_GEOM_POLYGON}).clone();
    ring.close();
    for (std::size_t i = 0; i < ring.numCoords_; ++i) closed.append(ring.xCoord_[i], ring.yCoord_[i], ring.point(i).z);
  }
  *this = std::move(closed);
}

void VEXLine::append(double x, double y, double z) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  ownedX_.push_back(x);
  ownedY_.push_back(y);
  if (hasZ_) ownedZ_.push_back(z);
  adopt();
}

// ---- rings and holes ----

VEXStatus VEXLine::reverseParts() {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  return extendStatus(forEachLeaf([&](const VEXLineRange& range) {
    const std::size_t end = range.first + range.count;
    if (isAreaCode(range.code)) {
      VEXLineRange ring;
      for (std::size_t start = range.first; start < end; start += ring.count) {
        ring = ringAt(start, end);
        reverse(start, start + ring.count - 1);
      }
      return;
    }
    if (range.code == VEX_GEOM_UNDEFINED || range.code == VEX_GEOM_MULTI_POINT) {
      if (range.count > 0) reverse(range.first, end - 1);
      return;
    }
    const VEXLine run = view(range);
    VEXLinePart part;
    for (std::size_t at = 0; at < range.count; at = part.next) {
      run.partAt(at, part);
      const std::size_t last = range.first + part.last;
      const bool hasBreak = part.next > part.last + 1 && part.kind != VEX_GEOM_POINT;
      reverse(range.first + at, last);
      if (!hasBreak) continue;
      ownedX_[last + 1] = ownedX_[last];  // the break behind a part stands on its last coordinate
      ownedY_[last + 1] = ownedY_[last];
      if (hasZ_) ownedZ_[last + 1] = ownedZ_[last];
    }
  }));
}

VEXStatus VEXLine::orientRings(bool counterClockwise) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  bool hasRing = false;
  VEX_TRY(forEachLeaf([&](const VEXLineRange& range) {
    if (!isAreaCode(range.code) || range.count < 3) return;
    hasRing = true;
    const VEXLine area = view(range);
    std::vector<VEXLineRange> found;
    std::vector<bool> isHole;
    area.rings(found);
    area.findHoles(found, isHole);
    for (std::size_t i = 0; i < found.size(); ++i) {
      VEXOrdinates xs = area.xs().subspan(found[i].first, found[i].count);
      VEXOrdinates ys = area.ys().subspan(found[i].first, found[i].count);
      const std::size_t first = range.first + found[i].first;
      if (isRingClockwise(xs, ys) == (counterClockwise != isHole[i])) reverse(first, first + found[i].count - 1);
    }
  }));
  return hasRing ? nullptr : makeStatus(244010);
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
  if (box.isEmpty()) {  // no coordinate is a number, or there is none
    keepFirst(geomType_ == VEX_GEOM_AGGREGATE ? 0 : std::min<std::size_t>(numCoords_, 1));
    return nullptr;
  }
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
    const bool isArea = isAreaCode(range.code);
    const bool isLineOrPoint = range.code == VEX_GEOM_POINT || range.code == VEX_GEOM_LINE;
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
    const bool isRing = end < numCoords_ && end - start >= 3;
    end = std::min(end, numCoords_ - 1);
    parts.push_back(view(VEXLineRange{start, end + 1 - start, isRing ? VEX_GEOM_POLYGON : VEX_GEOM_UNDEFINED}));
    start = end + 1;
  }
}

// ---- hull ----

std::vector<std::size_t> hullIndices(VEXOrdinates xs, VEXOrdinates ys) {
  std::vector<std::size_t> order;
  for (std::size_t at = 0; at < xs.size(); ++at) {
    if (std::isfinite(xs[at]) && std::isfinite(ys[at])) order.push_back(at);
  }
  std::sort(order.begin(), order.end(), [&](std::size_t one, std::size_t other) {
    if (xs[one] != xs[other]) return xs[one] < xs[other];
    return ys[one] != ys[other] ? ys[one] < ys[other] : one < other;
  });
  const auto isSame = [&](std::size_t one, std::size_t other) { return xs[one] == xs[other] && ys[one] == ys[other]; };
  order.erase(std::unique(order.begin(), order.end(), isSame), order.end());
  if (order.empty()) return order;
  if (order.size() == 1) return {order[0], order[0]};
  std::vector<std::size_t> chain;
  const auto extend = [&](std::size_t p, std::size_t first) {
    while (chain.size() > first + 1) {
      const std::size_t a = chain[chain.size() - 2], b = chain.back();
      const double side = (ys[a] - ys[b]) * (xs[p] - xs[b]) - (xs[a] - xs[b]) * (ys[p] - ys[b]);
      if (side > 0.0) break;  // a turn to the left
      chain.pop_back();
    }
    chain.push_back(p);
  };
  for (const std::size_t at : order) extend(at, 0);
  const std::size_t turn = chain.size() - 1;
  for (std::size_t at = order.size() - 1; at-- > 0;) extend(order[at], turn);
  return chain;
}

VEXStatus VEXLine::convexHull(VEXLine& hull) const {
  if (numCoords_ < 3) {
    hull = clone();
    return nullptr;
  }
  std::vector<VEXLineRange> ranges = {{0, numCoords_, geomType_}};
  if (geomType_ == VEX_GEOM_DONUT) ranges[0] = ringAt(0, numCoords_);
  if (geomType_ == VEX_GEOM_AGGREGATE) VEX_TRY(leaves(ranges));
  std::vector<double> x, y, z;
  for (const VEXLineRange& range : ranges) {
    const auto first = static_cast<std::ptrdiff_t>(range.first), count = static_cast<std::ptrdiff_t>(range.count);
    x.insert(x.end(), xCoord_ + first, xCoord_ + first + count);
    y.insert(y.end(), yCoord_ + first, yCoord_ + first + count);
    if (hasZ_) z.insert(z.end(), zCoord_ + first, zCoord_ + first + count);
  }
  const std::vector<std::size_t> chosen = hullIndices(x, y);
  if (chosen.empty()) return makeStatus(244031);
  std::vector<double> hullX, hullY, hullZ;
  for (const std::size_t at : chosen) {
    hullX.push_back(x[at]);
    hullY.push_back(y[at]);
    if (hasZ_) hullZ.push_back(z[at]);
  }
  hull = hasZ_ ? VEXLine(std::move(hullX), std::move(hullY), std::move(hullZ), VEX_GEOM_POLYGON)
               : VEXLine(std::move(hullX), std::move(hullY), VEX_GEOM_POLYGON);
  return nullptr;
}
