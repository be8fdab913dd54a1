// The geometry operations of features: each moves the coordinates into a line, works there and takes them back.
#include <algorithm>
#include <array>
#include <cmath>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/geomwork.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexline.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;
constexpr double kNoCoordinate = -999999.9999999;
constexpr std::size_t kMostArcPoints = 1'000'000;

VEXFeaturePtr newFeature(int dimension, std::size_t numCoords) {
  if (VEXObjectRecycler::exists()) return VEXObjectRecycler::instance().getFeature(dimension, numCoords);
  return VEXFeaturePtr(new VEXFeature(dimension, numCoords));
}

}  // namespace

// ---- single ordinates ----

VEXStatus VEXFeature::coordAt(std::size_t index, double& x, double& y, double& z) const {
  x = y = z = kNoCoordinate;
  if (index >= numCoords())
    return makeStatus(
        395701, {integerText(static_cast<std::int64_t>(index)), integerText(static_cast<std::int64_t>(numCoords()))});
  x = xCoord_[index];
  y = yCoord_[index];
  z = dimension_ == 3 ? zCoord_[index] : 0.0;
  return nullptr;
}

void VEXFeature::appendOrdinate(int axis, double value) {
  if (axis == 2 && dimension_ != 3) {
    setDimension(3);
    missing_[2] = numCoords();
  }
  std::vector<double>& values = axis == 0 ? xCoord_ : axis == 1 ? yCoord_ : zCoord_;
  if (missing_[axis] > 0 && missing_[axis] <= values.size()) {
    values[values.size() - missing_[axis]] = value;
    --missing_[axis];
    return;
  }
  addCoord(axis == 0 ? value : 0.0, axis == 1 ? value : 0.0, axis == 2 ? value : 0.0);
  for (int other = 0; other < dimension_; ++other)
    if (other != axis) ++missing_[other];
}

// ---- through the line ----

VEXStatus VEXFeature::scale(double x, double y, double z) {
  return extendStatus(changeGeometry(*this, [=](VEXLine& line) { return line.scale(x, y, z); }));
}

VEXStatus VEXFeature::offset(double x, double y, double z) {
  return extendStatus(changeGeometry(*this, [=](VEXLine& line) { return line.offset(x, y, z); }));
}

VEXStatus VEXFeature::rotate2D(double centreX, double centreY, double angleDegrees) {
  return extendStatus(
      changeGeometry(*this, [=](VEXLine& line) { return line.rotate2D(centreX, centreY, angleDegrees); }));
}

VEXStatus VEXFeature::boundingBox(VEXBox& box) const {
  return extendStatus(VEXLine::viewOf(*this).boundingBox(box));
}

VEXStatus VEXFeature::boundingCube(VEXBox& box) const {
  return extendStatus(VEXLine::viewOf(*this).boundingCube(box));
}

VEXStatus VEXFeature::insidePoint(bool careful, VEXPoint& point) const {
  return extendStatus(VEXLine::viewOf(*this).insidePoint(careful, point));
}

VEXStatus VEXFeature::setOrientation(bool counterClockwise) {
  return extendStatus(changeGeometry(*this, [=](VEXLine& line) { return line.orientRings(counterClockwise); }));
}

VEXStatus VEXFeature::getOrientation(bool& isCounterClockwise) const {
  const VEXLine line = VEXLine::viewOf(*this);
  std::vector<VEXLineRange> ranges;
  VEX_TRY(line.leaves(ranges));
  for (const VEXLineRange& range : ranges) {
    if (!isAreaCode(range.code) || range.count < 3) continue;
    const VEXLine area = VEXLine::viewOf(line, range.first, range.first + range.count - 1, range.code);
    std::vector<VEXLineRange> rings;
    area.rings(rings);
    isCounterClockwise = !isRingClockwise(area.xs().subspan(0, rings[0].count), area.ys().subspan(0, rings[0].count));
    return nullptr;
  }
  return makeStatus(244010);
}

// ---- parts ----

VEXStatus VEXFeature::chop(std::size_t maxVertices, bool& wasCut) {
  wasCut = false;
  if (maxVertices == 0) return makeStatus(878004);
  if (numCoords() <= maxVertices) return nullptr;
  VEXLine flat;
  if (geomType_ == VEX_GEOM_AGGREGATE) {
    flat = buildLine();
    VEX_TRY(flat.convertToMulti());
  } else {
    flat = VEXLine::viewOf(*this);
  }
  std::vector<VEXLine> parts;
  std::vector<VEXLine> pieces;
  VEX_TRY(flat.split(kEveryPartMask, parts));
  for (std::size_t i = parts.size(); i-- > 0;) {
    if (parts[i].numCoords() > maxVertices) {
      parts[i].chop(maxVertices, pieces);
      wasCut = true;
    } else {
      pieces.push_back(std::move(parts[i]));
    }
  }
  if (!pieces.empty()) loadFromLine(VEXLine::aggregateOf(pieces));
  return nullptr;
}

VEXStatus VEXFeature::buildAggregate(VEXFeatureVector& parts) {
  std::vector<VEXLine> lines;
  for (VEXFeaturePtr& part : parts) {
    lines.push_back(part->takeLine());
    part.reset();
  }
  parts.clear();
  loadFromLine(lines.empty() ? VEXLine({}, {}, VEX_GEOM_AGGREGATE) : VEXLine::aggregateOf(lines));
  return nullptr;
}

VEXStatus VEXFeature::splitAggregate(bool recursive, VEXFeatureVector& featureVector) const {
  VEX_ASSERT(featureVector.empty());
  if (geomType_ != VEX_GEOM_AGGREGATE) return makeStatus(878001, {featureType(), geomTypeName(geomType_)});
  const VEXLine line = VEXLine::viewOf(*this);
  std::vector<VEXLineRange> ranges;
  VEX_TRY(recursive ? line.leaves(ranges) : line.directParts(ranges));
  for (const VEXLineRange& range : ranges) {
    VEXFeaturePtr feature = newFeature(dimension_, std::max<std::size_t>(range.count, 2));
    feature->cloneAttributes(*this);
    feature->setCoordSys(coordSys_);
    auto copy = [&range](const std::vector<double>& from, std::vector<double>& to) {
      const auto first = from.begin() + static_cast<std::ptrdiff_t>(range.first);
      to.assign(first, first + static_cast<std::ptrdiff_t>(range.count));
    };
    copy(xCoord_, feature->xCoord_);
    copy(yCoord_, feature->yCoord_);
    if (dimension_ == 3) copy(zCoord_, feature->zCoord_);
    feature->setGeomType(range.code);
    featureVector.push_back(std::move(feature));
  }
  return nullptr;
}

// ---- arcs ----

VEXStatus VEXFeature::arcToPoints(const VEXArc& arc, std::int64_t numEdges) {
  double numPoints = static_cast<double>(numEdges) + 1.0;
  if (numEdges <= 0) {
    double degreesPerEdge = 5.0;
    VEXConfiguration::doubleValue("ORV_ARC_DEGREES_PER_EDGE", degreesPerEdge);
    if (!(degreesPerEdge > 0.0)) return makeStatus(878002, {"ORV_ARC_DEGREES_PER_EDGE", realText(degreesPerEdge)});
    numPoints = std::max(std::trunc(std::fabs(arc.sweep) / degreesPerEdge + 0.5) + 1.0, 2.0);
  }
  if (!(numPoints <= static_cast<double>(kMostArcPoints)))
    return makeStatus(878003, {realText(numPoints), integerText(static_cast<std::int64_t>(kMostArcPoints))});
  const bool hasZ = dimension_ == 3;
  const double z = hasZ && numCoords() > 0 ? zCoord_[0] : 0.0;
  std::vector<double> xs;
  std::vector<double> ys;
  ellipseArc(arc.centreX, arc.centreY, arc.semiPrimary, arc.semiSecondary, arc.rotation * kRadiansPerDegree,
             arc.start * kRadiansPerDegree, arc.sweep * kRadiansPerDegree, static_cast<std::size_t>(numPoints), xs, ys);
  std::vector<double> zs(hasZ ? xs.size() : 0, z);
  VEXLine line = hasZ ? VEXLine(std::move(xs), std::move(ys), std::move(zs), VEX_GEOM_LINE)
                      : VEXLine(std::move(xs), std::move(ys), VEX_GEOM_LINE);
  if (line.isClosed()) line.setGeomType(VEX_GEOM_POLYGON);
  if (line.numCoords() == 1) line.setGeomType(VEX_GEOM_POINT);
  double tolerance = 0.0;
  if (line.numCoords() > 4 && VEXConfiguration::doubleValue("ORV_ARC_EDGE_TOLERANCE", tolerance))
    VEX_TRY(line.simplifyDouglas(tolerance));
  loadFromLine(std::move(line));
  return nullptr;
}

VEXStatus VEXFeature::pointsToArc(std::string_view primaryName, std::string_view secondaryName,
                                  std::string_view startName, std::string_view sweepName) {
  VEXPoint centre;
  double radius = 0.0;
  double start = 0.0;
  double sweep = 0.0;
  VEX_TRY(VEXLine::viewOf(*this).arcThrough(centre, radius, start, sweep));
  setReal(primaryName, radius);
  setReal(secondaryName, radius);
  setReal(startName, start);
  setReal(sweepName, sweep);
  loadFromLine(VEXLine::fromPoint(centre));
  return nullptr;
}

// ---- splines ----

namespace {

// The value at t of the quadratic through three values at t0, t1, t2.
double lagrange(double t, const double (&at)[3], const double (&values)[3]) {
  double sum = 0.0;
  for (int i = 0; i < 3; ++i) {
    const int j = (i + 1) % 3;
    const int k = (i + 2) % 3;
    sum += values[i] * (t - at[j]) * (t - at[k]) / ((at[i] - at[j]) * (at[i] - at[k]));
  }
  return sum;
}

// Two values in front of the first, the nearer one first, as far from it as the second and the third. Two values alone
// go on straight.
std::array<double, 2> valuesInFront(const std::vector<double>& values, double firstStep, double secondStep) {
  if (values.size() < 3) return {2.0 * values[0] - values[1], 3.0 * values[0] - 2.0 * values[1]};
  const double at[3] = {0.0, firstStep, firstStep + secondStep};
  const double of[3] = {values[0], values[1], values[2]};
  return {lagrange(-firstStep, at, of), lagrange(-firstStep - secondStep, at, of)};
}

void extrapolateEnds(std::vector<double>& values, const std::vector<double>& steps) {
  const std::size_t last = steps.size() - 1;
  const std::vector<double> turned(values.rbegin(), values.rend());
  const auto front = valuesInFront(values, steps[0], steps[std::min<std::size_t>(1, last)]);
  const auto back = valuesInFront(turned, steps[last], steps[last > 0 ? last - 1 : 0]);
  values.insert(values.begin(), {front[1], front[0]});
  values.insert(values.end(), back.begin(), back.end());
}

// Points from the third to the third last of `values`, at the steps between them: on each segment base + t * slope +
// t * t * curvature, the curvature being the mean of the second differences at its ends.
std::vector<double> splineOf(const std::vector<double>& values, const std::vector<double>& steps,
                             std::size_t perSegment) {
  std::vector<double> out;
  auto secondDifference = [&](std::size_t i) {
    return ((values[i + 1] - values[i]) / steps[i] - (values[i] - values[i - 1]) / steps[i - 1]) /
           (steps[i] + steps[i - 1]);
  };
  for (std::size_t i = 2; i + 3 < values.size(); ++i) {
    const double step = steps[i];
    const double curvature = (secondDifference(i) + secondDifference(i + 1)) / 2.0;
    const double slope = (values[i + 1] - values[i]) / step - curvature * step;
    for (std::size_t k = 0; k < perSegment; ++k) {
      const double t = step * static_cast<double>(k) / static_cast<double>(perSegment);
      out.push_back(values[i] + t * slope + t * t * curvature);
    }
  }
  out.push_back(values[values.size() - 3]);
  return out;
}

}  // namespace

VEXStatus VEXFeature::interpolateSpline(std::size_t perSegment, bool extrapolate) {
  VEXLine line = buildLine();
  std::vector<double> ordinates[3];
  std::vector<double> steps;  // how far each point is from the one before it
  for (std::size_t i = 0; i < line.numCoords(); ++i) {
    const VEXPoint p = line.point(i);
    if (!ordinates[0].empty()) {
      const double dz = dimension_ == 3 ? p.z - ordinates[2].back() : 0.0;
      const double step = std::hypot(p.x - ordinates[0].back(), p.y - ordinates[1].back(), dz);
      if (step == 0.0) continue;
      steps.push_back(step);
    }
    const double values[3] = {p.x, p.y, p.z};
    for (int axis = 0; axis < dimension_; ++axis) ordinates[axis].push_back(values[axis]);
  }
  const std::size_t numPoints = ordinates[0].size();
  if (numPoints < (extrapolate ? 2U : 6U))
    return makeStatus(878005, {integerText(static_cast<std::int64_t>(numPoints)), extrapolate ? "2" : "6"});
  const std::size_t numSegments = extrapolate ? numPoints - 1 : numPoints - 5;
  if (perSegment == 0 || perSegment > VEXLine::kMostNewCoords / numSegments)
    return makeStatus(878006, {integerText(static_cast<std::int64_t>(perSegment))});
  if (extrapolate) {
    for (int axis = 0; axis < dimension_; ++axis) extrapolateEnds(ordinates[axis], steps);
    const std::size_t last = steps.size() - 1;
    const double ends[4] = {steps[std::min<std::size_t>(1, last)], steps[0], steps[last],
                            steps[last > 0 ? last - 1 : 0]};
    steps.insert(steps.begin(), {ends[0], ends[1]});
    steps.insert(steps.end(), {ends[2], ends[3]});
  }
  std::vector<double> xs = splineOf(ordinates[0], steps, perSegment);
  std::vector<double> ys = splineOf(ordinates[1], steps, perSegment);
  loadFromLine(dimension_ == 3
                   ? VEXLine(std::move(xs), std::move(ys), splineOf(ordinates[2], steps, perSegment), VEX_GEOM_LINE)
                   : VEXLine(std::move(xs), std::move(ys), VEX_GEOM_LINE));
  return nullptr;
}
