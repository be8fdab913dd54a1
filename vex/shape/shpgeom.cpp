#include "vex/shape/shpgeom.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "vex/shape/pointrun.h"

using pointrun::isSame;

namespace {

// True when none of the doubles behind each other at `at` is infinite or not a number: those have an exponent of
// ones, which overflows into the sign's place.
bool areFinite(const char* at, std::size_t count) {
  std::uint64_t overflow = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t bits;
    std::memcpy(&bits, at + shp::kValueBytes * i, sizeof bits);
    overflow |= (bits & ~(std::uint64_t{1} << 63)) + (std::uint64_t{1} << 52);
  }
  return overflow >> 63 == 0;
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

bool ShapeDecoder::decode(const shp::Record& record, VEXFeature& feature) {
  const shp::Type& type = *shp::findType(record.type);
  skippedRings_.clear();
  parts_.clear();
  feature_ = &feature;
  at_ = size_ = 0;
  hasThird_ = feature.dimension() == 3;
  hasMeasures_ = record.zs != nullptr && anyMeasure(record);
  if (type.family != shp::Family::Point && !areFinite(record.points, std::size_t{2} * record.numPoints)) return false;
  const Source from{record.points, record.zs != nullptr ? record.zs : record.ms, record.ms};
  switch (type.family) {
    case shp::Family::Point:
      if (!decodePoint(from)) return false;
      break;
    case shp::Family::MultiPoint:
      decodePoints(from, record.numPoints);
      break;
    case shp::Family::Line:
      takeParts(record, from, false);
      break;
    case shp::Family::Area:
      takeParts(record, from, true);
      break;
    case shp::Family::None:
    case shp::Family::Patch:
      break;
  }
  feature.mutableXs().resize(at_);
  feature.mutableYs().resize(at_);
  if (hasThird_) feature.mutableZs().resize(at_);
  if (at_ == 0) return true;
  constexpr std::uint32_t kCodes[] = {VEX_GEOM_UNDEFINED, VEX_GEOM_POINT,       VEX_GEOM_LINE,
                                      VEX_GEOM_POLYGON,   VEX_GEOM_MULTI_POINT, VEX_GEOM_UNDEFINED};
  feature.setGeomType(kCodes[static_cast<std::size_t>(type.family)]);
  if (makesAggregates_) {
    if (type.family == shp::Family::MultiPoint) gatherPoints();
    if (type.family == shp::Family::Line && parts_.size() > 1) gatherLines();
    if (type.family == shp::Family::Area && parts_.size() > 1) gatherRings();
  }
  if (hasMeasures_) setMeasures();
  return true;
}

// Makes room for `count` coordinates in all.
void ShapeDecoder::ensure(std::size_t count) {
  if (count <= size_) return;
  size_ = std::max(count, size_ + size_ / 2);
  feature_->mutableXs().resize(size_);
  feature_->mutableYs().resize(size_);
  x_ = feature_->mutableXs().data();
  y_ = feature_->mutableYs().data();
  if (hasThird_) {
    feature_->mutableZs().resize(size_);
    z_ = feature_->mutableZs().data();
  }
  if (hasMeasures_) measures_.resize(size_);
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

void ShapeDecoder::decodePoints(const Source& from, std::size_t count) {
  const std::size_t times = makesAggregates_ ? 1 : 2;
  ensure(times * count);
  for (std::size_t i = 0; i < count; ++i) {
    const double x = shp::getReal(from.points + shp::kPointBytes * i);
    const double y = shp::getReal(from.points + shp::kPointBytes * i + shp::kValueBytes);
    const double third = hasThird_ ? shp::getReal(from.third + shp::kValueBytes * i) : 0.0;
    const double measure = hasMeasures_ ? shp::getReal(from.measures + shp::kValueBytes * i) : 0.0;
    for (std::size_t n = 0; n < times; ++n) put(at_++, x, y, third, measure);
  }
}

void ShapeDecoder::takeParts(const shp::Record& record, const Source& from, bool isRing) {
  if (record.numParts == 0) return;
  ensure(record.numPoints);
  for (std::uint32_t part = 0; part < record.numParts; ++part) {
    const std::size_t first = shp::getLittle(record.parts + shp::kPartBytes * part);
    const std::size_t next = part + 1 < record.numParts ? shp::getLittle(record.parts + shp::kPartBytes * (part + 1))
                                                        : std::size_t{record.numPoints};
    if (first == next) continue;
    const Source piece{from.points + shp::kPointBytes * first,
                       hasThird_ ? from.third + shp::kValueBytes * first : nullptr,
                       hasMeasures_ ? from.measures + shp::kValueBytes * first : nullptr};
    if (hasMeasures_)
      takePart<true, true>(piece, next - first, isRing);
    else if (hasThird_)
      takePart<true, false>(piece, next - first, isRing);
    else
      takePart<false, false>(piece, next - first, isRing);
  }
}

namespace {

// Takes the axes of a run of points apart. False when some stand twice, see pointrun.
bool spreadPoints(const char* __restrict points, std::size_t count, double* __restrict x, double* __restrict y) {
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(x + i, points + shp::kPointBytes * i, shp::kValueBytes);
    std::memcpy(y + i, points + shp::kPointBytes * i + shp::kValueBytes, shp::kValueBytes);
  }
  return pointrun::hasNoRepeats(x, y, count);
}

}  // namespace

template <bool kThird, bool kMeasure>
void ShapeDecoder::takePart(Source from, std::size_t count, bool isRing) {
  if constexpr (!kThird && !kMeasure) {
    // Nearly every ring: nothing to drop, to add or to close.
    if (isRing && count >= 4 && at_ + count <= size_ && spreadPoints(from.points, count, x_ + at_, y_ + at_) &&
        isSame(x_[at_], y_[at_], x_[at_ + count - 1], y_[at_ + count - 1])) [[likely]] {
      if (makesAggregates_) parts_.push_back({.first = at_, .count = count});
      at_ += count;
      return;
    }
  }
  ensure(at_ + count + 1);
  // The break between two parts of a line: the last coordinate stands twice.
  if (!isRing && !makesAggregates_ && at_ > 0) {
    put(at_, x_[at_ - 1], y_[at_ - 1], kThird ? z_[at_ - 1] : 0.0, kMeasure ? measures_[at_ - 1] : 0.0);
    ++at_;
  }
  const std::size_t start = at_;
  const double firstX = shp::getReal(from.points);
  const double firstY = shp::getReal(from.points + shp::kValueBytes);
  double lastX = kNoZ;  // equals nothing
  double lastY = kNoZ;
  std::size_t at = start;
  double* x = x_;
  double* y = y_;
  for (std::size_t i = 0; i < count; ++i) {
    const double thisX = shp::getReal(from.points + shp::kPointBytes * i);
    const double thisY = shp::getReal(from.points + shp::kPointBytes * i + shp::kValueBytes);
    if (isSame(thisX, thisY, lastX, lastY)) continue;
    if (isSame(lastX, lastY, firstX, firstY) && isRing && at > start + 1) [[unlikely]] {
      // The ring comes back to its first point and goes on: that point stands twice.
      ensure(at + count - i + 2);
      x = x_;
      y = y_;
      put(at, lastX, lastY, kThird ? z_[at - 1] : 0.0, kMeasure ? measures_[at - 1] : 0.0);
      ++at;
    }
    x[at] = thisX;
    y[at] = thisY;
    if constexpr (kThird) z_[at] = shp::getReal(from.third + shp::kValueBytes * i);
    if constexpr (kMeasure) measures_[at] = shp::getReal(from.measures + shp::kValueBytes * i);
    ++at;
    lastX = thisX;
    lastY = thisY;
  }
  if (isRing && !(lastX == firstX && lastY == firstY && at > start + 1)) {
    put(at, firstX, firstY, kThird ? z_[start] : 0.0, kMeasure ? measures_[start] : 0.0);
    ++at;
  }
  if (isRing && at - start <= 3) {
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
