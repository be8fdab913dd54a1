#include "vex/shape/shpparts.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include "vex/shape/pointrun.h"
#include "vex/shape/shpcodec.h"

using pointrun::isSame;

namespace {

bool isFiniteRun(const double* values, std::size_t count) {
  std::uint64_t overflow = 0;
  for (std::size_t i = 0; i < count; ++i)
    overflow |= (std::bit_cast<std::uint64_t>(values[i]) & ~(std::uint64_t{1} << 63)) + (std::uint64_t{1} << 52);
  return overflow >> 63 == 0;
}

}  // namespace

void ShapeParts::start(const VEXFeature& feature) {
  x_ = feature.xs().data();
  y_ = feature.ys().data();
  z_ = feature.dimension() == 3 ? feature.zs().data() : nullptr;
  m_ = nullptr;
  numCoords_ = feature.numCoords();
  extent_ = ShapeExtent();
  isFinite_ = true;
  numPoints_ = 0;
  hasRepeats_ = hasDropped_ = false;
  parts_.clear();
  areas_.clear();
}

bool ShapeParts::loadMeasures(std::string_view text) {
  measures_.clear();
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    if (*at == ' ') {
      ++at;
      continue;
    }
    double value = shp::kNoMeasure;
    const auto [next, error] = std::from_chars(at, end, value);
    if (error != std::errc() && *at != '-') return false;
    if (error != std::errc()) value = shp::kNoMeasure;
    at = error == std::errc() ? next : at + 1;
    if (at < end && *at != ' ') return false;
    measures_.push_back(value);
  }
  if (measures_.size() != numCoords_) return false;
  m_ = measures_.data();
  return true;
}

void ShapeParts::addExtent(std::size_t first, std::size_t count) {
  ShapeExtent extent = extent_;
  for (std::size_t i = first; i < first + count; ++i) extent.add(x_[i], y_[i]);
  extent_ = extent;
  isFinite_ = isFinite_ && isFiniteRun(x_ + first, count) && isFiniteRun(y_ + first, count);
}

void ShapeParts::addLines(std::size_t first, std::size_t count) {
  if (count == 0) return;
  addExtent(first, count);
  std::size_t start = first;
  const std::size_t end = first + count;
  for (std::size_t i = start + 1; i < end; ++i) {
    if (!isSame(x_[i], y_[i], x_[i - 1], y_[i - 1])) continue;
    push({.first = start, .count = i - start});
    start = ++i;
  }
  if (start < end) push({.first = start, .count = end - start});
}

void ShapeParts::addPoints(std::size_t first, std::size_t count, bool standTwice) {
  addExtent(first, count);
  for (std::size_t i = first; i < first + count; ++i) {
    push({.first = i, .count = 1});
    if (standTwice && i + 1 < first + count && x_[i] == x_[i + 1] && y_[i] == y_[i + 1]) ++i;
  }
}

// One ring in which nothing stands twice, which is what nearly every feature brings.
bool ShapeParts::addPlainRing(std::size_t first, std::size_t count) {
  const double* const xs = x_ + first;
  const double* const ys = y_ + first;
  if (count < 4 || !isSame(xs[0], ys[0], xs[count - 1], ys[count - 1])) return false;
  double minX = xs[0], maxX = xs[0], minY = ys[0], maxY = ys[0];
  double sum = 0.0;  // twice the area, from the first point
  double lastDx = 0.0;
  for (std::size_t i = 1; i < count; ++i) {
    const double dx = xs[i] - xs[0];
    sum += (dx + lastDx) * (ys[i] - ys[i - 1]);
    lastDx = dx;
    minX = xs[i] < minX ? xs[i] : minX;
    maxX = xs[i] > maxX ? xs[i] : maxX;
    minY = ys[i] < minY ? ys[i] : minY;
    maxY = ys[i] > maxY ? ys[i] : maxY;
  }
  if (!std::isfinite(sum) || !pointrun::hasNoRepeats(xs, ys, count)) return false;
  extent_.add(minX, minY);
  extent_.add(maxX, maxY);
  push({.first = first, .count = count});
  areas_.push_back(sum / 2.0);
  return true;
}

// The loop over the coordinates is the hot one: ring, box, area and repeats come out of it together.
void ShapeParts::addRings(std::size_t first, std::size_t count) {
  if (addPlainRing(first, count)) return;
  const std::size_t end = first + count;
  const double* const xs = x_;
  const double* const ys = y_;
  ShapeExtent extent = extent_;
  for (std::size_t start = first; start < end;) {
    const double x0 = xs[start];
    const double y0 = ys[start];
    extent.add(x0, y0);
    double lastX = x0;
    double lastY = y0;
    double lastDx = 0.0;
    double sum = 0.0;  // twice the area, from the first point
    bool isClosed = false;
    bool repeats = false;
    std::size_t at = start + 1;
    for (; at < end; ++at) {
      const double x = xs[at];
      const double y = ys[at];
      const double dx = x - x0;
      sum += (dx + lastDx) * (y - lastY);
      if (isSame(x, y, x0, y0)) {
        isClosed = true;
        break;
      }
      if (isSame(x, y, lastX, lastY)) repeats = true;
      extent.add(x, y);
      lastX = x;
      lastY = y;
      lastDx = dx;
    }
    const std::size_t edges = isClosed ? at - start : end - start;
    if (!std::isfinite(sum)) [[unlikely]]
      isFinite_ = isFinite_ && isFiniteRun(xs + start, edges) && isFiniteRun(ys + start, edges);
    if (edges >= 3) {
      if (!isClosed) sum += lastDx * (y0 - lastY);
      push({.first = start, .count = isClosed ? edges + 1 : edges, .closes = !isClosed});
      areas_.push_back(sum / 2.0);
      hasRepeats_ |= repeats;
      start = isClosed ? at + 1 : end;
    } else {
      // Too few edges: a first coordinate that stands twice, a spike, or an end without a ring.
      hasDropped_ |= !isClosed || edges == 2;
      start = !isClosed ? end : edges == 1 ? at : at + 1;
    }
  }
  extent_ = extent;
}

bool ShapeParts::settleRings() {
  if (hasRepeats_) dropRepeats();
  if (hasDropped_) {
    extent_ = ShapeExtent();
    for (const ShapePart& part : parts_) addExtent(part.first, part.count);
  }
  if (parts_.size() == 1) [[likely]] {
    parts_[0].isReversed = areas_[0] > 0.0;
    return true;
  }
  rings_.clear();
  for (std::size_t i = 0; i < parts_.size(); ++i)
    rings_.push_back({.first = parts_[i].first, .count = parts_[i].count, .area = areas_[i]});
  if (!ringOrder_.order({x_, numCoords_}, {y_, numCoords_}, rings_)) return false;
  for (std::size_t i = 0; i < parts_.size(); ++i)
    parts_[i].isReversed = rings_[i].isHole() ? rings_[i].area < 0.0 : rings_[i].area > 0.0;
  return true;
}

// Moves to arrays of our own, with the coordinates of the parts alone and room for more.
void ShapeParts::copyCoordinates(std::size_t extra) {
  const auto copy = [&](std::vector<double>& to, const double*& view) {
    if (view == nullptr) return;
    std::vector<double> values;
    values.reserve(numPoints_ + extra);
    for (const ShapePart& part : parts_) values.insert(values.end(), view + part.first, view + part.first + part.count);
    to = std::move(values);
    view = to.data();
  };
  copy(copyX_, x_);
  copy(copyY_, y_);
  copy(copyZ_, z_);
  copy(copyM_, m_);
  numCoords_ = 0;
  for (ShapePart& part : parts_) {
    part.first = numCoords_;
    numCoords_ += part.count;
  }
}

void ShapeParts::dropRepeats() {
  copyCoordinates(0);
  std::vector<ShapePart> kept;
  std::vector<double> keptAreas;
  numPoints_ = 0;
  for (std::size_t p = 0; p < parts_.size(); ++p) {
    ShapePart part = parts_[p];
    std::size_t used = part.first;
    for (std::size_t i = part.first + 1; i < part.first + part.count; ++i) {
      if (copyX_[i] == copyX_[used] && copyY_[i] == copyY_[used]) continue;
      ++used;
      copyX_[used] = copyX_[i];
      copyY_[used] = copyY_[i];
      if (z_ != nullptr) copyZ_[used] = copyZ_[i];
      if (m_ != nullptr) copyM_[used] = copyM_[i];
    }
    part.count = used + 1 - part.first;
    hasDropped_ |= part.numPoints() < 4;
    if (part.numPoints() < 4) continue;
    kept.push_back(part);
    keptAreas.push_back(areas_[p]);
    numPoints_ += part.numPoints();
  }
  parts_ = std::move(kept);
  areas_ = std::move(keptAreas);
}

bool ShapeParts::insertMidpointBefore(std::size_t secondPartIndex) {
  if (parts_.size() < 2 || parts_[0].numPoints() != secondPartIndex || parts_[0].count < 2) return false;
  copyCoordinates(1);
  // The first two points as they are written.
  ShapePart& part = parts_[0];
  const std::size_t lower = part.isReversed ? part.first + part.count - (part.closes ? 1 : 2) : part.first;
  const bool isAtEnd = part.isReversed && part.closes;
  const std::size_t upper = isAtEnd ? part.first : lower + 1;
  const auto insert = [&](std::vector<double>& values, const double*& view) {
    if (view == nullptr) return;
    const double middle = (values[lower] + values[upper]) * 0.5;
    values.insert(values.begin() + static_cast<std::ptrdiff_t>(lower + 1), middle);
    view = values.data();
  };
  insert(copyX_, x_);
  insert(copyY_, y_);
  insert(copyZ_, z_);
  insert(copyM_, m_);
  ++numCoords_;
  ++part.count;
  for (std::size_t i = 1; i < parts_.size(); ++i) ++parts_[i].first;
  ++numPoints_;
  return true;
}
