#include "vex/shape/shpparts.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "vex/shape/shpcodec.h"
#include "vex/src/pointrun.h"

using pointrun::isSame;

namespace {

using pointrun::both;
using pointrun::Mask;
using pointrun::Pair;
using pointrun::pairAt;

// Twice the area of a run of points that begins a ring, added up point by point; `lastDx` gives how far the last point
// is from the first.
double sumInOrder(const double* xs, const double* ys, std::size_t count, double& lastDx) {
  double sum = 0.0;
  lastDx = 0.0;
  for (std::size_t i = 1; i < count; ++i) {
    const double dx = xs[i] - xs[0];
    sum += (dx + lastDx) * (ys[i] - ys[i - 1]);
    lastDx = dx;
  }
  return sum;
}

}  // namespace

// The summands are those of sumInOrder(), two at a time, but not added in order. A sum in any order is off by
// count * 2^-53 of all magnitudes at most, and each of the count summands is within twice the box's area, so that two
// orders differ by no more than count^2 * 2^-51 box areas. What is nearer to zero than that, or not finite, is not
// plain: any coordinate that is no finite number makes the sum none.
bool measurePlainRing(const double* xs, const double* ys, std::size_t count, PlainRing& ring) {
  const Pair x0 = both(xs[0]);
  Pair minX = x0, maxX = x0, minY = both(ys[0]), maxY = minY;
  Pair sums{};
  Mask same{};
  Mask numFirst{};  // with the x of the first; counts downward
  const auto summand = [&](Pair x, Pair y, Pair lastX, Pair lastY) {
    same |= pointrun::equal(x, lastX);
    minX = pointrun::lesser(minX, x);
    maxX = pointrun::greater(maxX, x);
    minY = pointrun::lesser(minY, y);
    maxY = pointrun::greater(maxY, y);
    return ((x - x0) + (lastX - x0)) * (y - lastY);
  };
  std::size_t i = 1;
  for (; i + 1 < count; i += 2) {
    numFirst += pointrun::equal(pairAt(xs + i), x0);
    sums += summand(pairAt(xs + i), pairAt(ys + i), pairAt(xs + i - 1), pairAt(ys + i - 1));
  }
  const long long numExpected = i < count ? 0 : 1;  // the last one is, but was it among the pairs?
  if (i < count) sums[0] += summand(both(xs[i]), both(ys[i]), both(xs[i - 1]), both(ys[i - 1]))[0];
  ShapeExtent box{std::min(minX[0], minX[1]), std::min(minY[0], minY[1]), std::max(maxX[0], maxX[1]),
                  std::max(maxY[0], maxY[1])};
  const double sum = sums[0] + sums[1];
  const double points = static_cast<double>(count);
  const double bound = (box.maxX - box.minX) * (box.maxY - box.minY) * (points * points);
  if (!(std::fabs(sum) > bound * 0x1p-50)) return false;
  if (pointrun::any(same) && pointrun::findRepeat(xs, ys, 1, count) < count) return false;
  if (numFirst[0] + numFirst[1] != -numExpected && pointrun::findSame(xs, ys, 1, count - 1, xs[0], ys[0]) < count - 1)
    return false;
  // Of 0.0 and -0.0 a box keeps the one that came first.
  if (!(std::fabs(box.minX * box.maxX * box.minY * box.maxY) > 0.0)) [[unlikely]] {
    box = ShapeExtent();
    for (i = 0; i < count; ++i) box.add(xs[i], ys[i]);
  }
  ring = {box, sum / 2.0};
  return true;
}

void ShapeParts::start(const VEXFeature& feature) {
  x_ = feature.xs().data();
  y_ = feature.ys().data();
  z_ = feature.dimension() == 3 ? feature.zs().data() : nullptr;
  m_ = nullptr;
  numCoords_ = feature.numCoords();
  extent_ = ShapeExtent();
  isFinite_ = true;
  numPoints_ = 0;
  hasRepeats_ = hasDropped_ = hasRoughAreas_ = false;
  parts_.clear();
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
  isFinite_ = isFinite_ && pointrun::areFinite(x_ + first, count) && pointrun::areFinite(y_ + first, count);
}

void ShapeParts::addLines(std::size_t first, std::size_t count) {
  if (count == 0) return;
  addExtent(first, count);
  const std::size_t end = first + count;
  for (std::size_t start = first; start < end;) {
    const std::size_t repeat = pointrun::findRepeat(x_, y_, start + 1, end);
    push({.first = start, .count = repeat - start});
    start = repeat + 1;
  }
}

void ShapeParts::addPoints(std::size_t first, std::size_t count, bool standTwice) {
  addExtent(first, count);
  for (std::size_t i = first; i < first + count; ++i) {
    push({.first = i, .count = 1});
    if (standTwice && i + 1 < first + count && x_[i] == x_[i + 1] && y_[i] == y_[i + 1]) ++i;
  }
}

bool ShapeParts::addPlainRing(std::size_t first, std::size_t count) {
  PlainRing ring;
  if (!measurePlainRing(x_ + first, y_ + first, count, ring)) return false;
  extent_.add(ring.box);
  push({.first = first, .count = count, .area = ring.area});
  hasRoughAreas_ = true;
  return true;
}

void ShapeParts::addRings(std::size_t first, std::size_t count) {
  const std::size_t end = first + count;
  for (std::size_t start = first; start < end;) {
    const std::size_t closing = pointrun::findSame(x_, y_, start + 1, end, x_[start], y_[start]);
    if (closing < end && closing - start >= 3 && addPlainRing(start, closing + 1 - start)) [[likely]]
      start = closing + 1;
    else
      start = addAnyRing(start, end);
  }
}

// Ring, box, area and repeats come out of one loop. Gives where the next ring begins.
std::size_t ShapeParts::addAnyRing(std::size_t start, std::size_t end) {
  const double x0 = x_[start];
  const double y0 = y_[start];
  extent_.add(x0, y0);
  double lastX = x0;
  double lastY = y0;
  double lastDx = 0.0;
  double sum = 0.0;  // twice the area, from the first point
  bool isClosed = false;
  bool repeats = false;
  std::size_t at = start + 1;
  for (; at < end; ++at) {
    const double x = x_[at];
    const double y = y_[at];
    const double dx = x - x0;
    sum += (dx + lastDx) * (y - lastY);
    if (isSame(x, y, x0, y0)) {
      isClosed = true;
      break;
    }
    if (isSame(x, y, lastX, lastY)) repeats = true;
    extent_.add(x, y);
    lastX = x;
    lastY = y;
    lastDx = dx;
  }
  const std::size_t edges = isClosed ? at - start : end - start;
  if (!std::isfinite(sum)) [[unlikely]]
    isFinite_ = isFinite_ && pointrun::areFinite(x_ + start, edges) && pointrun::areFinite(y_ + start, edges);
  if (edges < 3) {
    // Too few edges: a first coordinate that stands twice, a spike, or an end without a ring.
    hasDropped_ |= !isClosed || edges == 2;
    return !isClosed ? end : edges == 1 ? at : at + 1;
  }
  if (!isClosed) sum += lastDx * (y0 - lastY);
  push({.first = start, .count = isClosed ? edges + 1 : edges, .area = sum / 2.0, .closes = !isClosed});
  hasRepeats_ |= repeats;
  return isClosed ? at + 1 : end;
}

// Of several rings the areas are compared: there they are to the last bit what adding in order gives.
void ShapeParts::settleAreas() {
  for (ShapePart& part : parts_) {
    const double* const ys = y_ + part.first;
    double lastDx = 0.0;
    double sum = sumInOrder(x_ + part.first, ys, part.count, lastDx);
    if (part.closes) sum += lastDx * (ys[0] - ys[part.count - 1]);
    part.area = sum / 2.0;
  }
}

bool ShapeParts::settleRings() {
  if (hasRoughAreas_ && parts_.size() > 1) settleAreas();
  if (hasRepeats_) dropRepeats();
  if (hasDropped_) {
    extent_ = ShapeExtent();
    for (const ShapePart& part : parts_) addExtent(part.first, part.count);
  }
  if (parts_.size() == 1) [[likely]] {
    parts_[0].isReversed = parts_[0].area > 0.0;
    return true;
  }
  rings_.clear();
  for (const ShapePart& part : parts_) rings_.push_back({.first = part.first, .count = part.count, .area = part.area});
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
  numPoints_ = 0;
  for (ShapePart part : parts_) {
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
    numPoints_ += part.numPoints();
  }
  parts_ = std::move(kept);
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
