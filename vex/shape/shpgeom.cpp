#include "vex/shape/shpgeom.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "vex/src/pointrun.h"

using pointrun::isSame;

namespace {

constexpr std::size_t kFewestRingPoints = 4;  // three edges

// Of points that were spread: numbers of which none repeats another; a ring is closed.
template <bool kIsRing>
bool isPlain(const pointrun::Seen& seen, const double* x, const double* y, std::size_t count) {
  if (!seen.isFinite || (kIsRing && !isSame(x[0], y[0], x[count - 1], y[count - 1]))) return false;
  if (!seen.mayRepeat) return true;
  return pointrun::findRepeat(x, y, 1, count) == count &&
         !(kIsRing && pointrun::findSame(x, y, 1, count - 1, x[0], y[0]) < count - 1);
}

bool isMeasure(double value) {
  return value >= shp::kLeastMeasure;
}

bool anyMeasure(const shp::Record& record) {
  if (record.ms == nullptr) return false;
  for (std::uint32_t i = 0; i < record.numPoints; ++i)
    if (isMeasure(shp::getReal(record.ms + shp::kValueBytes * i))) return true;
  return false;
}

}  // namespace

VEXName shapeMeasuresName() {
  static const VEXName name = VEXName::intern("SHAPE_MEASURES");
  return name;
}

int ShapeDecoder::dimensionOf(const shp::Record& record) {
  return record.zs != nullptr || anyMeasure(record) ? 3 : 2;
}

void ShapeDecoder::start(VEXFeature& feature) {
  skippedRings_.clear();
  parts_.clear();
  feature_ = &feature;
  at_ = 0;
  std::vector<double>& xs = feature.mutableXs();
  std::vector<double>& ys = feature.mutableYs();
  size_ = std::min(xs.size(), ys.size());
  x_ = xs.data();
  y_ = ys.data();
  if (hasThird_) {
    size_ = std::min(size_, feature.mutableZs().size());
    z_ = feature.mutableZs().data();
  }
  if (hasMeasures_) measures_.resize(std::max(measures_.size(), size_));
}

bool ShapeDecoder::decodePlainRing(const shp::Points& points, VEXFeature& feature) {
  const std::size_t count = points.count;
  if (count < kFewestRingPoints) return false;
  feature.setNumCoords(count);
  double* const x = feature.mutableXs().data();
  double* const y = feature.mutableYs().data();
  if (!isPlain<true>(pointrun::spread<true>(points.at, count, x, y), x, y, count)) return false;
  feature.setGeomType(VEX_GEOM_POLYGON);
  return true;
}

bool ShapeDecoder::decode(const shp::Record& record, VEXFeature& feature) {
  hasThird_ = feature.dimension() == 3;
  hasMeasures_ = record.zs != nullptr && anyMeasure(record);
  start(feature);
  const shp::Family family = record.family;
  const Source from{record.points, record.zs != nullptr ? record.zs : record.ms, record.ms};
  bool isFinite = true;
  switch (family) {
    case shp::Family::Point:
      isFinite = decodePoint(from);
      break;
    case shp::Family::MultiPoint:
      isFinite = decodePoints(from, record.numPoints);
      break;
    case shp::Family::Line:
      isFinite = takeParts<false>(record, from);
      break;
    case shp::Family::Area:
      isFinite = takeParts<true>(record, from);
      break;
    case shp::Family::None:
    case shp::Family::Patch:
      break;
  }
  if (!isFinite) [[unlikely]]
    return false;
  feature.setNumCoords(at_);
  if (at_ == 0) return true;
  constexpr std::uint32_t kCodes[] = {VEX_GEOM_UNDEFINED, VEX_GEOM_POINT,       VEX_GEOM_LINE,
                                      VEX_GEOM_POLYGON,   VEX_GEOM_MULTI_POINT, VEX_GEOM_UNDEFINED};
  feature.setGeomType(kCodes[static_cast<std::size_t>(family)]);
  if (makesAggregates_) {
    if (family == shp::Family::MultiPoint) gatherPoints();
    if (family == shp::Family::Line && parts_.size() > 1) gatherLines();
    if (family == shp::Family::Area && parts_.size() > 1) gatherRings();
  }
  if (hasMeasures_) setMeasures();
  return true;
}

void ShapeDecoder::grow(std::size_t count) {
  size_ = at_ == 0 ? count : std::max(count, size_ + size_ / 2);
  feature_->mutableXs().resize(size_);
  feature_->mutableYs().resize(size_);
  x_ = feature_->mutableXs().data();
  y_ = feature_->mutableYs().data();
  if (hasThird_) {
    feature_->mutableZs().resize(size_);
    z_ = feature_->mutableZs().data();
  }
  if (hasMeasures_) measures_.resize(std::max(measures_.size(), size_));
}

void ShapeDecoder::put(std::size_t at, double x, double y, double third, double measure) {
  x_[at] = x;
  y_[at] = y;
  if (hasThird_) z_[at] = third;
  if (hasMeasures_) measures_[at] = measure;
}

bool ShapeDecoder::decodePoint(const Source& from) {
  const double x = shp::getReal(from.points);
  const double y = shp::getReal(from.points + shp::kValueBytes);
  if (std::isnan(x) || std::isnan(y)) return true;
  if (std::isinf(x) || std::isinf(y)) return false;
  ensure(1);
  put(at_++, x, y, hasThird_ ? shp::getReal(from.third) : 0.0, hasMeasures_ ? shp::getReal(from.measures) : 0.0);
  return true;
}

bool ShapeDecoder::decodePoints(const Source& from, std::size_t count) {
  if (!pointrun::areFinite(from.points, 2 * count)) return false;
  const std::size_t times = makesAggregates_ ? 1 : 2;
  ensure(times * count);
  for (std::size_t i = 0; i < count; ++i) {
    const double x = shp::getReal(from.points + shp::kPointBytes * i);
    const double y = shp::getReal(from.points + shp::kPointBytes * i + shp::kValueBytes);
    const double third = hasThird_ ? shp::getReal(from.third + shp::kValueBytes * i) : 0.0;
    const double measure = hasMeasures_ ? shp::getReal(from.measures + shp::kValueBytes * i) : 0.0;
    for (std::size_t n = 0; n < times; ++n) put(at_++, x, y, third, measure);
  }
  return true;
}

template <bool kIsRing>
bool ShapeDecoder::takeParts(const shp::Record& record, const Source& from) {
  const std::size_t numPoints = record.numPoints;
  std::size_t first = record.numParts == 0 ? numPoints : shp::getLittle(record.parts);
  if (!pointrun::areFinite(from.points, 2 * first)) return false;  // points of no part
  ensure(numPoints + (kIsRing ? 0 : std::min<std::size_t>(record.numParts, numPoints)));
  for (std::uint32_t part = 0; part < record.numParts; ++part) {
    const std::size_t next =
        part + 1 < record.numParts ? shp::getLittle(record.parts + shp::kPartBytes * (part + 1)) : numPoints;
    if (first == next) continue;
    const Source piece{from.points + shp::kPointBytes * first,
                       hasThird_ ? from.third + shp::kValueBytes * first : nullptr,
                       hasMeasures_ ? from.measures + shp::kValueBytes * first : nullptr};
    if (!takePart<kIsRing>(piece, next - first)) return false;
    first = next;
  }
  return true;
}

template <bool kIsRing>
bool ShapeDecoder::takePart(const Source& from, std::size_t count) {
  std::size_t start = at_;
  if (!kIsRing && !makesAggregates_ && at_ > 0) {
    // The break between two parts of a line: the last coordinate stands twice.
    ensure(at_ + 1);
    put(at_, x_[at_ - 1], y_[at_ - 1], hasThird_ ? z_[at_ - 1] : 0.0, hasMeasures_ ? measures_[at_ - 1] : 0.0);
    ++start;
  }
  bool isFinite = true;
  if (!takePlainPart<kIsRing>(from, count, start, isFinite) && isFinite) [[unlikely]]
    takeOddPart<kIsRing>(from, count, start);
  return isFinite;
}

// Nearly every part: nothing to drop, to add or to close. False: another kind of part, of which nothing was taken.
template <bool kIsRing>
bool ShapeDecoder::takePlainPart(const Source& from, std::size_t count, std::size_t start, bool& isFinite) {
  constexpr std::size_t kFewest = kIsRing ? kFewestRingPoints : 2;
  if (count < kFewest || count > size_ - start) [[unlikely]] {
    isFinite = pointrun::areFinite(from.points, 2 * count);
    return false;
  }
  double* const x = x_ + start;
  double* const y = y_ + start;
  const pointrun::Seen seen = pointrun::spread<kIsRing>(from.points, count, x, y);
  isFinite = seen.isFinite;
  if (!isPlain<kIsRing>(seen, x, y, count)) return false;
  if (hasThird_) std::memcpy(z_ + start, from.third, shp::kValueBytes * count);
  if (hasMeasures_) std::memcpy(measures_.data() + start, from.measures, shp::kValueBytes * count);
  if (makesAggregates_) parts_.push_back({.first = start, .count = count});
  at_ = start + count;
  return true;
}

// Any part, coordinate by coordinate.
template <bool kIsRing>
void ShapeDecoder::takeOddPart(const Source& from, std::size_t count, std::size_t start) {
  ensure(start + count + 1);
  const auto third = [&](std::size_t i) { return hasThird_ ? shp::getReal(from.third + shp::kValueBytes * i) : 0.0; };
  const auto measure = [&](std::size_t i) {
    return hasMeasures_ ? shp::getReal(from.measures + shp::kValueBytes * i) : 0.0;
  };
  const auto repeat = [this](std::size_t to, std::size_t coordinate) {
    put(to, x_[coordinate], y_[coordinate], hasThird_ ? z_[coordinate] : 0.0,
        hasMeasures_ ? measures_[coordinate] : 0.0);
  };
  const double firstX = shp::getReal(from.points);
  const double firstY = shp::getReal(from.points + shp::kValueBytes);
  double lastX = kNoZ;  // equals nothing
  double lastY = kNoZ;
  std::size_t at = start;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = shp::getReal(from.points + shp::kPointBytes * i);
    const double y = shp::getReal(from.points + shp::kPointBytes * i + shp::kValueBytes);
    if (isSame(x, y, lastX, lastY)) continue;
    if (kIsRing && isSame(lastX, lastY, firstX, firstY) && at > start + 1) [[unlikely]] {
      // The ring comes back to its first point and goes on: that point stands twice.
      ensure(at + count - i + 2);
      repeat(at, at - 1);
      ++at;
    }
    put(at++, x, y, third(i), measure(i));
    lastX = x;
    lastY = y;
  }
  if (kIsRing && !(isSame(lastX, lastY, firstX, firstY) && at > start + 1)) repeat(at++, start);
  if (kIsRing && at - start <= 3) {
    skippedRings_.push_back(static_cast<std::uint32_t>(count));
    return;
  }
  at_ = at;
  if (makesAggregates_) parts_.push_back({.first = start, .count = at - start});
}

// ---- aggregates ----

void ShapeDecoder::startGathering() {
  gatheredX_.clear();
  gatheredY_.clear();
  gatheredZ_.clear();
  gatheredM_.clear();
}

void ShapeDecoder::addHeaderRow(std::uint32_t code, std::size_t count) {
  gatheredX_.push_back(code);
  gatheredY_.push_back(static_cast<double>(count));
  if (hasThird_) gatheredZ_.push_back(0.0);
  if (hasMeasures_) gatheredM_.push_back(shp::kNoMeasure);
}

void ShapeDecoder::addRange(const ShapeRing& range) {
  const auto append = [&](std::vector<double>& to, const double* from) {
    to.insert(to.end(), from + range.first, from + range.first + range.count);
  };
  append(gatheredX_, feature_->xs().data());
  append(gatheredY_, feature_->ys().data());
  if (hasThird_) append(gatheredZ_, feature_->zs().data());
  if (hasMeasures_) append(gatheredM_, measures_.data());
}

void ShapeDecoder::finishGathering() {
  feature_->mutableXs().swap(gatheredX_);
  feature_->mutableYs().swap(gatheredY_);
  if (hasThird_) feature_->mutableZs().swap(gatheredZ_);
  if (hasMeasures_) measures_.swap(gatheredM_);
  at_ = feature_->numCoords();
}

void ShapeDecoder::gatherLines() {
  startGathering();
  for (const ShapeRing& part : parts_) {
    addHeaderRow(VEX_GEOM_LINE, part.count);
    addRange(part);
  }
  finishGathering();
  feature_->setGeomType(VEX_GEOM_AGGREGATE);
}

void ShapeDecoder::gatherPoints() {
  if (at_ == 1) {
    feature_->setGeomType(VEX_GEOM_POINT);
    return;
  }
  startGathering();
  for (std::size_t i = 0; i < at_; ++i) {
    addHeaderRow(VEX_GEOM_POINT, 1);
    addRange({.first = i, .count = 1});
  }
  finishGathering();
  feature_->setGeomType(VEX_GEOM_AGGREGATE);
}

// Each shell with its holes; a hole whose shell cannot be told is a polygon of its own.
void ShapeDecoder::gatherRings() {
  for (ShapeRing& ring : parts_)
    ring.area =
        signedRingArea(feature_->xs().subspan(ring.first, ring.count), feature_->ys().subspan(ring.first, ring.count));
  ringOrder_.order(feature_->xs(), feature_->ys(), parts_);
  holes_.resize(std::max(holes_.size(), parts_.size()));
  for (std::size_t i = 0; i < parts_.size(); ++i) holes_[i].clear();
  const auto isHoleOfShell = [this](const ShapeRing& ring) {
    return ring.isHole() && ring.parent >= 0 && !parts_[static_cast<std::size_t>(ring.parent)].isHole();
  };
  std::size_t numAreas = 0;
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    if (isHoleOfShell(parts_[i]))
      holes_[static_cast<std::size_t>(parts_[i].parent)].push_back(i);
    else
      ++numAreas;
  }
  startGathering();
  std::uint32_t code = VEX_GEOM_AGGREGATE;
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    if (isHoleOfShell(parts_[i])) continue;
    std::size_t count = parts_[i].count;
    for (const std::size_t hole : holes_[i]) count += parts_[hole].count;
    const std::uint32_t partCode = holes_[i].empty() ? VEX_GEOM_POLYGON : VEX_GEOM_DONUT;
    if (numAreas > 1)
      addHeaderRow(partCode, count);
    else
      code = partCode;
    addRange(parts_[i]);
    for (const std::size_t hole : holes_[i]) addRange(parts_[hole]);
  }
  finishGathering();
  feature_->setGeomType(code);
}

void ShapeDecoder::setMeasures() {
  std::string& text = measuresText_;
  text.clear();
  char number[32];
  for (std::size_t i = 0; i < at_; ++i) {
    if (i > 0) text += ' ';
    if (isMeasure(measures_[i]))
      text.append(number, std::to_chars(number, number + sizeof number, measures_[i]).ptr);
    else
      text += '-';
  }
  feature_->setAttribute(shapeMeasuresName(), text);
}
