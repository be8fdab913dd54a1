#include "vex/shape/shapeout.h"

#include <cmath>

#include "vex/inc/numtext.h"
#include "vex/shape/shpgeom.h"
#include "vex/src/pointrun.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::size_t kBadPartIndex = 1498;
constexpr std::int64_t kDumpedCoordinates = 20;
constexpr std::int32_t kFirstZType = 11;

void putBox(char* content, const ShapeExtent& box) {
  char* at = content + shp::kRecordBox.offset;
  for (const double value : {box.minX, box.minY, box.maxX, box.maxY}) {
    shp::putReal(at, value);
    at += shp::kValueBytes;
  }
}

bool holdsPoints(std::uint32_t code) {
  return code == VEX_GEOM_POINT || code == VEX_GEOM_MULTI_POINT || code == VEX_GEOM_PIP;
}
bool holdsLines(std::uint32_t code) {
  return code == VEX_GEOM_LINE || code == VEX_GEOM_MULTI_LINE;
}
bool holdsRings(std::uint32_t code) {
  return code == VEX_GEOM_POLYGON || code == VEX_GEOM_DONUT || code == VEX_GEOM_MULTI_POLY;
}

}  // namespace

VEXStatus VEXShapeOutput::open(std::string_view typeName) {
  type_ = typeName.empty() ? nullptr : shp::findType(typeName);
  if (!typeName.empty() && (type_ == nullptr || type_->family == shp::Family::Patch))
    return makeStatus(204009, {typeName, basePath_, shp::typeNames()});
  extent_ = ShapeExtent();
  heights_ = VEXBox();
  return extendStatus(file_.open(basePath_, type_ == nullptr ? 0 : type_->code));
}

// The z range goes into the header of a two-dimensional type only; the others have zeros there.
VEXStatus VEXShapeOutput::close() {
  std::array<double, 8> box{};
  if (!extent_.isEmpty()) box = {extent_.minX, extent_.minY, extent_.maxX, extent_.maxY, 0.0, 0.0, 0.0, 0.0};
  if (type_ != nullptr && type_->code < kFirstZType && !std::isnan(heights_.minX)) {
    box[4] = heights_.minX;
    box[5] = heights_.maxX;
  }
  return extendStatus(file_.close(box));
}

VEXStatus VEXShapeOutput::refuse(std::uint32_t number, const VEXFeature& feature) const {
  const std::string typeName = type_ == nullptr ? "none" : type_->name;
  const std::string code = VEXFeature::geomTypeName(feature.geomType());
  VEXStatus refusal = makeRejection(number, {basePath_, typeName, code, feature.featureType()});
  logText(VEXSeverity::Warn, refusal->message());
  return refusal;
}

VEXStatus VEXShapeOutput::write(const VEXFeature& feature) {
  if (feature.numCoords() == 0) return extendStatus(writeNull());
  VEXStatus failure;
  if (writeSingleRing(feature, failure)) [[likely]]
    return extendStatus(std::move(failure));
  parts_.start(feature);
  VEX_TRY(collect(feature));
  if (!parts_.isFinite()) return refuse(204022, feature);
  if (parts_.numPoints() == 0 && type_->family != shp::Family::Area) return extendStatus(writeNull());
  if (type_->family == shp::Family::Area) VEX_TRY(settleArea(feature));
  findMeasures(feature);
  VEX_TRY(writeParts());
  growBox(feature);
  return nullptr;
}

// ---- from feature to parts ----

VEXStatus VEXShapeOutput::collect(const VEXFeature& feature) {
  switch (type_ == nullptr ? shp::Family::None : type_->family) {
    case shp::Family::Point:
    case shp::Family::MultiPoint:
      return extendStatus(collectPoints(feature));
    case shp::Family::Line:
      return extendStatus(collectLines(feature));
    case shp::Family::Area:
      return extendStatus(collectRings(feature));
    case shp::Family::None:
    case shp::Family::Patch:
      break;
  }
  return refuse(204008, feature);
}

// The runs of coordinates of a feature; in an aggregate those of its parts at any depth.
VEXStatus VEXShapeOutput::collectLeaves(const VEXFeature& feature, std::vector<VEXLineRange>& ranges) const {
  VEXStatus failure = VEXLine::viewOf(feature).leaves(ranges);
  if (failure == nullptr) return nullptr;
  VEXStatus refusal = makeRejection(204020, {basePath_, feature.featureType(), failure->message()});
  logText(VEXSeverity::Warn, refusal->message());
  return refusal;
}

VEXStatus VEXShapeOutput::collectPoints(const VEXFeature& feature) {
  const bool isMulti = type_->family == shp::Family::MultiPoint;
  if (feature.geomType() == VEX_GEOM_POINT) {
    parts_.addPoints(0, feature.numCoords(), false);
  } else {
    std::vector<VEXLineRange> ranges;
    VEX_TRY(collectLeaves(feature, ranges));
    for (const VEXLineRange& range : ranges) {
      if (!isMulti && holdsLines(range.code)) return refuse(204011, feature);
      if (range.code == VEX_GEOM_UNDEFINED || (!isMulti && !holdsPoints(range.code))) return refuse(204008, feature);
      parts_.addPoints(range.first, range.count, range.code != VEX_GEOM_POINT);
    }
  }
  if (!isMulti && parts_.numPoints() != 1) return refuse(204008, feature);
  return nullptr;
}

VEXStatus VEXShapeOutput::collectLines(const VEXFeature& feature) {
  if (feature.geomType() == VEX_GEOM_LINE) [[likely]] {
    parts_.addLines(0, feature.numCoords());
    return nullptr;
  }
  std::vector<VEXLineRange> ranges;
  VEX_TRY(collectLeaves(feature, ranges));
  for (const VEXLineRange& range : ranges) {
    if (holdsPoints(range.code)) return refuse(204010, feature);
    if (holdsLines(range.code)) {
      parts_.addLines(range.first, range.count);
    } else if (holdsRings(range.code)) {
      parts_.addRings(range.first, range.count);
    } else if (range.code == VEX_GEOM_MULTI) {
      std::size_t numOfKind[5] = {};
      VEX_TRY(collectMixture(feature, range, VEX_GEOM_LINE | VEX_GEOM_POLYGON, numOfKind));
      if (numOfKind[VEX_GEOM_POINT] > 0) return refuse(204010, feature);
    } else if (range.count > 0) {
      return refuse(204008, feature);
    }
  }
  return nullptr;
}

// Takes the parts of the kinds in the mask, and counts all.
VEXStatus VEXShapeOutput::collectMixture(const VEXFeature& feature, const VEXLineRange& range, std::uint32_t mask,
                                         std::size_t (&numOfKind)[5]) {
  if (range.count == 0) return nullptr;
  const VEXLine whole = VEXLine::viewOf(feature);
  const VEXLine run = VEXLine::viewOf(whole, range.first, range.first + range.count - 1, range.code);
  VEXLinePart part;
  for (std::size_t at = 0; at < range.count; at = part.next) {
    VEX_TRY(run.findPart(at, part));
    ++numOfKind[part.kind];
    if ((part.kind & mask) == 0) continue;
    if (part.kind == VEX_GEOM_POLYGON)
      parts_.addRings(range.first + at, part.last + 1 - at);
    else
      parts_.addLines(range.first + at, part.last + 1 - at);
  }
  return nullptr;
}

VEXStatus VEXShapeOutput::collectRings(const VEXFeature& feature) {
  const std::uint32_t code = feature.geomType();
  const bool isAggregate = code == VEX_GEOM_AGGREGATE;
  if (!isAggregate) {
    if (feature.numCoords() < 3) return refuse(204018, feature);
    if (holdsPoints(code)) return refuse(204010, feature);
    if (holdsLines(code)) return refuse(204011, feature);
    if (holdsRings(code)) {
      parts_.addRings(0, feature.numCoords());
      return nullptr;
    }
    if (code != VEX_GEOM_MULTI) return refuse(204008, feature);
  }
  std::vector<VEXLineRange> ranges;
  VEX_TRY(collectLeaves(feature, ranges));
  std::size_t numOthers = 0;
  bool hasRings = false;
  for (const VEXLineRange& range : ranges) {
    std::size_t numOfKind[5] = {};
    if (holdsRings(range.code))
      parts_.addRings(range.first, range.count);
    else if (range.code == VEX_GEOM_MULTI)
      VEX_TRY(collectMixture(feature, range, VEX_GEOM_POLYGON, numOfKind));
    else
      ++numOthers;
    hasRings |= holdsRings(range.code) || numOfKind[VEX_GEOM_POLYGON] > 0;
    numOthers += numOfKind[VEX_GEOM_POINT] + numOfKind[VEX_GEOM_LINE];
  }
  if (hasRings) {
    if (numOthers > 0)
      logMessage(VEXSeverity::Warn, 204024,
                 {basePath_, feature.featureType(), integerText(static_cast<std::int64_t>(numOthers))});
    return nullptr;
  }
  // An outline without rings serves as one.
  logMessage(VEXSeverity::Warn, 204019, {basePath_, feature.featureType()});
  logFeature(feature, VEXSeverity::Inform, kDumpedCoordinates);
  for (const VEXLineRange& range : ranges)
    if (range.count >= 3) parts_.addRings(range.first, range.count);
  return nullptr;
}

VEXStatus VEXShapeOutput::settleArea(const VEXFeature& feature) {
  if (!parts_.settleRings()) {
    logMessage(VEXSeverity::Warn, 204012, {basePath_, feature.featureType()});
    logFeature(feature, VEXSeverity::Inform, kDumpedCoordinates);
  }
  if (parts_.parts().empty()) return refuse(204018, feature);
  return nullptr;
}

// A z type has a block of measures when there are any; a single point with z always has its place for one.
void VEXShapeOutput::findMeasures(const VEXFeature& feature) {
  writesM_ = type_->hasM || (type_->hasZ && type_->family == shp::Family::Point);
  if (!type_->hasM && !type_->hasZ) return;
  if (const VEXText* text = feature.findAttribute(shapeMeasuresName()); text != nullptr && !text->empty()) {
    if (parts_.loadMeasures(*text)) {
      writesM_ = true;
      return;
    }
    logMessage(VEXSeverity::Warn, 204023, {basePath_, feature.featureType()});
  }
  if (type_->hasM) parts_.takeMeasuresFromZ();
}

// Nearly every area: one plain ring, to be written without z and measures. False, with nothing written: anything else.
bool VEXShapeOutput::writeSingleRing(const VEXFeature& feature, VEXStatus& failure) {
  const std::size_t count = feature.numCoords();
  if (type_ == nullptr || type_->code != shp::kPlainAreaType || feature.geomType() != VEX_GEOM_POLYGON ||
      feature.dimension() != 2 || count < 4)
    return false;
  const double* const xs = feature.xs().data();
  const double* const ys = feature.ys().data();
  PlainRing ring;
  if (!pointrun::isSame(xs[0], ys[0], xs[count - 1], ys[count - 1]) || !measurePlainRing(xs, ys, count, ring))
    return false;
  char* content = nullptr;
  failure = file_.startRecord(shp::kParts + shp::kPartBytes + shp::kPointBytes * count, content);
  if (failure != nullptr) return true;
  shp::putLittle(content, static_cast<std::uint32_t>(shp::kPlainAreaType));
  putBox(content, ring.box);
  shp::putLittle(content + shp::kPartCount.offset, 1);
  shp::putLittle(content + shp::kPointCount.offset, static_cast<std::uint32_t>(count));
  shp::putLittle(content + shp::kParts, 0);
  char* const points = content + shp::kParts + shp::kPartBytes;
  if (ring.area > 0.0)
    pointrun::joinReversed(xs, ys, count, points);
  else
    pointrun::join(xs, ys, count, points);
  extent_.add(ring.box);
  failure = file_.endRecord();
  return true;
}

// ---- from parts to bytes ----

VEXStatus VEXShapeOutput::writeNull() {
  char* content = nullptr;
  VEX_TRY(file_.startRecord(shp::kShapeType.width, content));
  shp::putLittle(content, 0);
  return extendStatus(file_.endRecord());
}

VEXStatus VEXShapeOutput::writeParts() {
  if (aiFix_ && type_->family == shp::Family::Area && parts_.insertMidpointBefore(kBadPartIndex))
    logMessage(VEXSeverity::Warn, 204014, {basePath_, integerText(kBadPartIndex)});
  const std::size_t numParts = parts_.parts().size();
  const std::size_t numPoints = parts_.numPoints();
  char* content = nullptr;
  VEX_TRY(file_.startRecord(shp::contentBytes(*type_, numParts, numPoints, writesM_), content));
  shp::putLittle(content, static_cast<std::uint32_t>(type_->code));
  char* at = content + shp::kPoint.offset;
  if (type_->family != shp::Family::Point) {
    putBox(content, parts_.extent());
    if (type_->family == shp::Family::MultiPoint) {
      shp::putLittle(content + shp::kMultiCount.offset, static_cast<std::uint32_t>(numPoints));
      at = content + shp::kMultiPoints;
    } else {
      shp::putLittle(content + shp::kPartCount.offset, static_cast<std::uint32_t>(numParts));
      shp::putLittle(content + shp::kPointCount.offset, static_cast<std::uint32_t>(numPoints));
      at = content + shp::kParts;
      std::uint32_t first = 0;
      for (const ShapePart& part : parts_.parts()) {
        shp::putLittle(at, first);
        at += shp::kPartBytes;
        first += static_cast<std::uint32_t>(part.numPoints());
      }
    }
  }
  at = encodePoints(at);
  if (type_->hasZ) at = encodeBlock(at, parts_.zs(), 0.0, false);
  if (writesM_) encodeBlock(at, parts_.ms(), shp::kNoMeasure, true);
  return extendStatus(file_.endRecord());
}

namespace {

// Visits a part's coordinates in the order in which they are written.
template <class Visit>
void walkPart(const ShapePart& part, Visit&& visit) {
  if (part.isReversed) {
    if (part.closes) visit(part.first);
    for (std::size_t i = part.first + part.count; i > part.first; --i) visit(i - 1);
    return;
  }
  for (std::size_t i = part.first; i < part.first + part.count; ++i) visit(i);
  if (part.closes) visit(part.first);
}

}  // namespace

char* VEXShapeOutput::encodePoints(char* at) const {
  for (const ShapePart& part : parts_.parts()) {
    const double* const xs = parts_.xs() + part.first;
    const double* const ys = parts_.ys() + part.first;
    if (part.isReversed) {
      if (part.closes) at = pointrun::join(xs, ys, 1, at);
      at = pointrun::joinReversed(xs, ys, part.count, at);
    } else {
      at = pointrun::join(xs, ys, part.count, at);
      if (part.closes) at = pointrun::join(xs, ys, 1, at);
    }
  }
  return at;
}

// A range and a value for each point; a point has its value only.
char* VEXShapeOutput::encodeBlock(char* at, const double* values, double missing, bool isMeasure) const {
  char* const range = at;
  if (type_->family != shp::Family::Point) at += shp::kRangeBytes;
  bool any = false;
  double least = missing;
  double most = missing;
  for (const ShapePart& part : parts_.parts()) {
    walkPart(part, [&](std::size_t i) {
      const double value = values == nullptr ? missing : values[i];
      shp::putReal(at, value);
      at += shp::kValueBytes;
      if (std::isnan(value) || (isMeasure && value < shp::kLeastMeasure)) return;
      least = !any || value < least ? value : least;
      most = !any || value > most ? value : most;
      any = true;
    });
  }
  if (type_->family != shp::Family::Point) {
    shp::putReal(range, least);
    shp::putReal(range + shp::kValueBytes, most);
  }
  return at;
}

void VEXShapeOutput::growBox(const VEXFeature& feature) {
  extent_.add(parts_.extent());
  if (feature.dimension() != 3 || type_->code >= kFirstZType) return;
  for (const ShapePart& part : parts_.parts()) {
    const VEXOrdinates zs(parts_.zs() + part.first, part.count);
    heights_.add(boxOf(zs, zs));
  }
}
