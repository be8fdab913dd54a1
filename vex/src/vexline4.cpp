// Fewer vertices, more vertices, pieces, arcs, keys.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <ctime>
#include <random>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/deveau.h"
#include "vex/src/vexline.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

constexpr double kMostCounted = 4503599627370496.0;  // 2 to the 52nd: a double above it may not see one more

std::string countOf(std::size_t count) {
  return integerText(static_cast<std::int64_t>(count));
}

}  // namespace

// ---- fewer vertices ----

// Marks the vertices between two kept ones that the tolerance does not allow to drop. Worked off a list of spans:
// the depth of a recursion would be in the hands of the data.
void VEXLine::thinRun(std::size_t first, std::size_t last, double tolerance, std::vector<bool>& kept) const {
  std::vector<std::pair<std::size_t, std::size_t>> spans = {{first, last}};
  while (!spans.empty()) {
    auto [from, to] = spans.back();
    spans.pop_back();
    kept[from] = kept[to] = true;
    const double x0 = xCoord_[from];
    const double y0 = yCoord_[from];
    const double dx = xCoord_[to] - x0;
    const double dy = yCoord_[to] - y0;
    double most = -1.0;  // the chord's length times the distance; of a closed chord the square of the distance
    std::size_t at = from;
    auto consider = [&](double value, std::size_t i) {
      if (!(value > most)) return;
      most = value;
      at = i;
    };
    double farthest = 0.0;
    if (dx == 0.0 && dy == 0.0) {
      for (std::size_t i = from + 1; i < to; ++i) {
        const double px = xCoord_[i] - x0;
        const double py = yCoord_[i] - y0;
        consider(px * px + py * py, i);
      }
      farthest = std::sqrt(most);
    } else {
      for (std::size_t i = from + 1; i < to; ++i)
        consider(std::fabs(dx * (yCoord_[i] - y0) - dy * (xCoord_[i] - x0)), i);
      farthest = most / std::hypot(dx, dy);
    }
    if (most < 0.0 || farthest < tolerance) continue;
    spans.emplace_back(at, to);
    spans.emplace_back(from, at);
  }
}

void VEXLine::thin(double tolerance) {
  std::vector<bool> kept(numCoords_, false);
  auto bit = [&kept](std::size_t i) { return kept.begin() + static_cast<std::ptrdiff_t>(i); };
  VEXLinePart part;
  for (std::size_t at = 0; at < numCoords_; at = part.next) {
    runAt(at, part);
    std::fill(bit(part.last), bit(part.next), true);
    kept[at] = true;
    if (part.last < at + 2) continue;
    thinRun(at, part.last, tolerance, kept);
    keepFour(at, part.last, kept);
  }
  keepOnly(kept);
}

// A ring keeps four coordinates: the vertices that stand out farthest come back.
void VEXLine::keepFour(std::size_t first, std::size_t last, std::vector<bool>& kept) const {
  auto bit = [&kept](std::size_t i) { return kept.begin() + static_cast<std::ptrdiff_t>(i); };
  const bool isRing = xCoord_[first] == xCoord_[last] && yCoord_[first] == yCoord_[last];
  while (isRing && std::count(bit(first), bit(last) + 1, true) < 4) {
    const auto other = static_cast<std::size_t>(std::find(bit(first + 1), bit(last), true) - kept.begin());
    double farthest = -1.0;
    std::size_t chosen = first;
    for (std::size_t i = first + 1; i < last; ++i) {
      const double distance =
          distanceToSegment(xCoord_[i], yCoord_[i], xCoord_[first], yCoord_[first], xCoord_[other], yCoord_[other]);
      if (kept[i] || !(distance > farthest)) continue;
      farthest = distance;
      chosen = i;
    }
    if (kept[chosen]) break;
    kept[chosen] = true;
  }
}

void VEXLine::thinByWalk(double tolerance, double sharpAngleDegrees, int fanSize) {
  std::vector<bool> kept(numCoords_, false);
  VEXDeveau walk;
  walk.start(tolerance, sharpAngleDegrees, fanSize);
  VEXLinePart part;
  for (std::size_t at = 0; at < numCoords_; at = part.next) {
    runAt(at, part);
    std::fill(kept.begin() + static_cast<std::ptrdiff_t>(part.last),
              kept.begin() + static_cast<std::ptrdiff_t>(part.next), true);
    kept[at] = true;
    if (part.last < at + 2) continue;
    const VEXPoint end = point(part.last);
    const auto drain = [&] {
      VEXDeveau::Output output;
      while (walk.takeOutput(output)) {
        const std::size_t i = at + output.number;
        if (i <= at || i >= part.last) continue;  // the ends of a part stay where they are
        kept[i] = true;
        ownedX_[i] = output.x;
        ownedY_[i] = output.y;
      }
    };
    walk.firstPoint(xCoord_[at], yCoord_[at]);
    drain();
    for (std::size_t i = at + 1; i <= part.last; ++i) {
      walk.nextPoint(xCoord_[i], yCoord_[i]);
      drain();
    }
    walk.firstPoint(end.x, end.y);
    drain();
    walk.start(tolerance, sharpAngleDegrees, fanSize);
    keepFour(at, part.last, kept);
  }
  keepOnly(kept);
}

VEXStatus VEXLine::simplifyDeveau(double tolerance, double sharpAngleDegrees, int fanSize) {
  return extendStatus(workOnParts([=](VEXLine& line) -> VEXStatus {
    line.thinByWalk(tolerance, sharpAngleDegrees, fanSize);
    return nullptr;
  }));
}

VEXStatus VEXLine::simplifyDouglas(double tolerance) {
  return extendStatus(workOnParts([tolerance](VEXLine& line) -> VEXStatus {
    line.thin(tolerance);
    return nullptr;
  }));
}

// ---- more vertices ----

// Divide(length, from, places) appends where, between 0 and 1, the segment of that length that begins `from` behind
// its part's start gets new vertices, or gives false when there would be too many.
template <class Divide>
VEXStatus VEXLine::divideSegments(Divide&& divide) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  std::size_t numNew = 0;
  return extendStatus(workOnParts([&](VEXLine& line) -> VEXStatus {
    VEXLine out = line.hasZ_ ? VEXLine({}, {}, {}, line.geomType_) : VEXLine({}, {}, line.geomType_);
    auto push = [&out](double x, double y, double z) {
      out.ownedX_.push_back(x);
      out.ownedY_.push_back(y);
      if (out.hasZ_) out.ownedZ_.push_back(z);
    };
    std::vector<double> places;
    VEXLinePart part;
    for (std::size_t at = 0; at < line.numCoords_; at = part.next) {
      line.runAt(at, part);
      double from = 0.0;
      for (std::size_t i = at; i <= part.last; ++i) {
        const VEXPoint a = line.point(i);
        push(a.x, a.y, a.z);
        if (i == part.last) break;
        const VEXPoint b = line.point(i + 1);
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        places.clear();
        if (!divide(length, from, kMostNewCoords - numNew, places))
          return makeStatus(244025, {countOf(kMostNewCoords)});
        numNew += places.size();
        for (double t : places) push(a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), a.z + t * (b.z - a.z));
        from += length;
      }
      for (std::size_t i = part.last + 1; i < part.next; ++i) push(line.xCoord_[i], line.yCoord_[i], line.point(i).z);
    }
    out.adopt();
    line = std::move(out);
    return nullptr;
  }));
}

namespace {

// Equal pieces; false when they are too many, or not a number.
bool divideEqually(double numPieces, std::size_t room, std::vector<double>& places) {
  if (!(numPieces <= static_cast<double>(room))) return false;
  for (double i = 1.0; i < numPieces; i += 1.0) places.push_back(i / numPieces);
  return true;
}

}  // namespace

VEXStatus VEXLine::addVerticesByCount(std::size_t perSegment) {
  return extendStatus(divideSegments([perSegment](double, double, std::size_t room, std::vector<double>& places) {
    return divideEqually(static_cast<double>(perSegment) + 1.0, room, places);
  }));
}

VEXStatus VEXLine::addVerticesByInterval(double longest) {
  return extendStatus(divideSegments([longest](double length, double, std::size_t room, std::vector<double>& places) {
    return !(length > longest) || divideEqually(std::ceil(length / longest), room, places);
  }));
}

VEXStatus VEXLine::addVerticesByDistance(double distance) {
  return extendStatus(
      divideSegments([distance](double length, double from, std::size_t room, std::vector<double>& places) {
        const double first = std::floor(from / distance) + 1.0;
        if (length > 0.0 && !(length / distance <= static_cast<double>(room) && first < kMostCounted)) return false;
        for (double i = first; i * distance < from + length; i += 1.0) {
          const double t = (i * distance - from) / length;
          if (t > 0.0 && t < 1.0) places.push_back(t);
        }
        return true;
      }));
}

// ---- pieces, arcs, keys ----

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
  if (numCoords_ != 3) return makeStatus(244018, {countOf(numCoords_)});
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

VEXStatus VEXLine::gridKey(std::array<std::uint32_t, 4>& words) const {
  static std::atomic<std::uint32_t> serial{0};
  std::size_t at = 0;
  std::size_t count = numCoords_;
  if (geomType_ == VEX_GEOM_AGGREGATE) {
    count = 0;
    VEX_TRY(forEachLeaf([&](const VEXLineRange& range) {
      if (count > 0) return;
      at = range.first;
      count = range.count;
    }));
  }
  if (count == 0) return makeStatus(244014);
  double x = xCoord_[at];
  double y = yCoord_[at];
  if (count > 1) {
    x += (xCoord_[at + 1] - x) / 3.0;
    y += (yCoord_[at + 1] - y) / 3.0;
  }
  auto cut = [](double degrees) -> std::uint32_t {
    const double scaled = degrees * 1e7;
    if (!(std::fabs(scaled) < 2147483648.0)) return 0x80000000U;  // no place on the earth
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled));
  };
  auto interleave = [](std::uint32_t high, std::uint32_t low) {
    std::uint32_t word = 0;
    for (int bit = 15; bit >= 0; --bit) word = (word << 2) | (((high >> bit) & 1U) << 1) | ((low >> bit) & 1U);
    return word;
  };
  const std::uint32_t xBits = cut(x);
  const std::uint32_t yBits = cut(y);
  words[0] = interleave(xBits >> 16, yBits >> 16);
  words[1] = interleave(xBits & 0xFFFFU, yBits & 0xFFFFU);
  words[2] = static_cast<std::uint32_t>(std::time(nullptr));
  words[3] = ((serial++ & 0xFFFFU) << 16) | ((std::random_device{}() & 0xFFU) << 8);
  return nullptr;
}
