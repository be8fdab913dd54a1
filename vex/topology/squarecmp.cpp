#include "vex/topology/squarecmp.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>

namespace {

using Entry = VEXSpatialGridCore::Entry;

constexpr std::size_t kFewToScan = 48;       // entries of a square that are compared without being sorted
constexpr std::size_t kFewestOfCrowd = 256;  // entries for which a closer look pays
constexpr std::size_t kFewestOfPart = 64;    // entries that are worth being told apart from the rest
constexpr std::size_t kSample = 32;
constexpr std::size_t kDenseSample = 16;
constexpr std::size_t kPencilTries = 8;
constexpr std::size_t kFamilies = 8;
constexpr double kSparseShare = 0.0625;  // pairs that overlap along an axis, of all: so few are just gone through

bool isRestOfBoxBefore(const Entry& a, const Entry& b) {
  return std::tie(a.minY, a.maxX, a.maxY, a.number) < std::tie(b.minY, b.maxX, b.maxY, b.number);
}

bool isSameBox(const Entry& a, const Entry& b) {
  return a.minX == b.minX && a.minY == b.minY && a.maxX == b.maxX && a.maxY == b.maxY;
}

double angleOf(const VEXSegment& s) {
  const double angle = std::atan2(s.y2 - s.y1, s.x2 - s.x1);
  return angle < 0.0 ? angle + std::numbers::pi : angle;
}

std::size_t leastOfPencil(std::size_t count) {
  return std::max(kFewestOfPart / 2, count / 16);
}

// a - b, and what rounding took from it.
double differenceOf(double a, double b, double& rest) {
  const double difference = a - b;
  const double part = difference - a;
  rest = (a - (difference - part)) - (b + part);
  return difference;
}

// The cross product of a segment and the way from its start to a point, right to nearly the last digit however much of
// it cancels.
double finelyAcross(const VEXSegment& s, double x, double y) {
  double dxRest, dyRest, xRest, yRest;
  const double dx = differenceOf(s.x2, s.x1, dxRest), dy = differenceOf(s.y2, s.y1, dyRest);
  const double px = differenceOf(x, s.x1, xRest), py = differenceOf(y, s.y1, yRest);
  const double one = dx * py, other = dy * px;
  const double oneRest = std::fma(dx, py, -one), otherRest = std::fma(dy, px, -other);
  return (one - other) + ((oneRest - otherRest) + (dx * yRest + dxRest * py - dy * xRest - dyRest * px));
}

}  // namespace

void VEXSquareComparer::compareAll(std::span<Entry> entries) {
  if (entries.size() <= kFewToScan) {
    for (std::size_t i = 1; i < entries.size(); ++i)
      for (std::size_t j = 0; j < i; ++j)
        if (isWanted(entries[j], entries[i])) comparer_.compare(entries[j].number, entries[i].number);
    return;
  }
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return a.minX != b.minX ? a.minX < b.minX : isRestOfBoxBefore(a, b);
  });
  const std::size_t numPlaces = joinEquals(entries);
  compareCrowd(entries.first(numPlaces));
}

// Goes through entries that are sorted by their boxes.
void VEXSquareComparer::sweepFromLeft(std::span<const Entry> entries) {
  const std::size_t count = entries.size();
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t j = i + 1; j < count && entries[j].minX <= entries[i].maxX; ++j)
      if (isWanted(entries[i], entries[j])) comparePlaces(entries[i], entries[j]);
}

// ---- equal segments ----

// Links the segments that have both ends in common, and leaves the first of each place at the head of the entries, in
// the same order. Tells how many there are.
std::size_t VEXSquareComparer::joinEquals(std::span<Entry> entries) {
  equals_.clear();
  equalStarts_.assign(1, 0);
  std::size_t kept = 0;
  for (std::size_t first = 0, last; first < entries.size(); first = last) {
    for (last = first + 1; last < entries.size() && isSameBox(entries[first], entries[last]);) ++last;
    const std::size_t numPlaces = last == first + 1 ? 1 : joinEqualsOfBox(entries.subspan(first, last - first));
    if (kept != first) std::copy_n(entries.data() + first, numPlaces, entries.data() + kept);
    kept += numPlaces;
  }
  return kept;
}

// The same for entries of one box. A segment and its reverse are two places, so that what is found for the one holds
// for the others of its place bit for bit; so are, in later rounds, segments of which not as much is known or asked.
std::size_t VEXSquareComparer::joinEqualsOfBox(std::span<Entry> entries) {
  auto placeOf = [&](const Entry& entry) {
    const VEXSegment s = chains_.segment(entry.number);
    const bool isDirty = !takesAll_ && chains_.isDirty(entry.number);
    return std::tuple(s.x1, s.y1, s.x2, s.y2, isDirty, takesAll_ ? 0.0 : chains_.toleranceOf(entry.number));
  };
  std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
    const auto placeA = placeOf(a), placeB = placeOf(b);
    return placeA != placeB ? placeA < placeB : a.number < b.number;
  });
  std::size_t numPlaces = 0;
  for (std::size_t first = 0, last; first < entries.size(); first = last) {
    const auto place = placeOf(entries[first]);
    for (last = first + 1; last < entries.size() && placeOf(entries[last]) == place;) ++last;
    Entry& kept = entries[numPlaces++] = entries[first];
    if (last == first + 1) continue;
    for (std::size_t i = first; i < last; ++i) equals_.push_back(i == first ? kept.number : entries[i].number);
    kept.flags |= static_cast<std::uint32_t>(equalStarts_.size()) << kPlaceShift;
    equalStarts_.push_back(static_cast<std::uint32_t>(equals_.size()));
    if (!isWanted(kept, kept)) continue;
    for (std::uint32_t number : equalsOf(kept)) comparer_.compare(kept.number, number);
  }
  return numPlaces;
}

// The others of the entry's place.
std::span<const std::uint32_t> VEXSquareComparer::equalsOf(const Entry& entry) const {
  const std::uint32_t place = entry.flags >> kPlaceShift;
  if (place == 0) return {};
  const std::uint32_t first = equalStarts_[place - 1] + 1;
  return std::span(equals_).subspan(first, equalStarts_[place] - first);
}

// What meets the first of a place meets the others of it in the same way. Those of the one place are compared with the
// first of the other, and the other way round: through these two everything comes together.
void VEXSquareComparer::compareOthers(const Entry& a, const Entry& b) {
  for (std::uint32_t number : equalsOf(a)) comparer_.compare(number, b.number);
  for (std::uint32_t number : equalsOf(b)) comparer_.compare(a.number, number);
}

// ---- crowds ----

void VEXSquareComparer::compareCrowd(std::span<Entry> entries) {
  while (entries.size() > kFewestOfCrowd || (entries.size() > kFewestOfPart && isDense(entries))) {
    const Axes axes = bestAxes(entries, entries);
    if (axes.share <= kSparseShare) return sweep(entries, axes);
    std::size_t numFirst = partPencil(entries);
    const bool isPencil = numFirst > 0;
    if (!isPencil) numFirst = partFamily(entries);
    const std::span<const Entry> first = entries.first(numFirst);
    entries = entries.subspan(numFirst);
    if (isPencil)
      compareNarrow(first);
    else
      sweep(first, entries.empty() ? axes : bestAxes(first, first));
    if (!entries.empty()) sweepBetween(first, entries, bestAxes(first, entries));
  }
  sweepFromLeft(entries);
}

// True when the boxes of most entries touch: few of them may be a crowd, too, then.
bool VEXSquareComparer::isDense(std::span<const Entry> entries) const {
  const std::size_t half = entries.size() / 2, step = half / kDenseSample;
  std::size_t numTouching = 0;
  for (std::size_t i = 0; i < kDenseSample; ++i)
    numTouching += isWanted(entries[i * step], entries[i * step + half]) ? 1 : 0;
  return numTouching > kDenseSample / 2;
}

// Puts those of some kind first; both parts keep their order.
template <class IsIn>
std::size_t VEXSquareComparer::partFirst(std::span<Entry> entries, IsIn&& isIn) {
  parted_.clear();
  std::size_t numFirst = 0;
  for (const Entry& entry : entries) {
    if (isIn(entry))
      entries[numFirst++] = entry;
    else
      parted_.push_back(entry);
  }
  std::copy(parted_.begin(), parted_.end(), entries.begin() + static_cast<std::ptrdiff_t>(numFirst));
  return numFirst;
}

// Puts those first that run in the direction of most.
std::size_t VEXSquareComparer::partFamily(std::span<Entry> entries) {
  auto familyOf = [&](const Entry& entry) {  // an axis of the plane lies in the middle of its family
    const double eighths = angleOf(chains_.segment(entry.number)) * (kFamilies / std::numbers::pi) + 0.5;
    return static_cast<std::size_t>(eighths) % kFamilies;
  };
  std::array<std::size_t, kFamilies> counts{};
  for (const Entry& entry : entries) ++counts[familyOf(entry)];
  const auto largest = static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) - counts.begin());
  return partFirst(entries, [&](const Entry& entry) { return familyOf(entry) == largest; });
}

// Puts those first that share a point, if there are many, and joins them there. What is left to compare of them are
// pairs at a narrow angle. 0: no point is found.
std::size_t VEXSquareComparer::partPencil(std::span<Entry> entries) {
  const std::size_t count = entries.size();
  Pencil best{};
  std::size_t most = leastOfPencil(count) - 1;
  for (std::size_t i = 0; i < kPencilTries && most < count - count / 8; ++i) {
    const std::size_t one = (2 * i + 1) * count / (2 * kPencilTries);
    Pencil pencil;
    if (!findPencil(entries[one], entries[(one + count / 2 - count / 11) % count], pencil)) continue;
    const auto size = static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(), [&](const Entry& entry) { return isOfPencil(entry, pencil); }));
    if (size <= most) continue;
    most = size;
    best = pencil;
  }
  if (most < leastOfPencil(count)) return 0;
  const std::size_t numFirst = partFirst(entries, [&](const Entry& entry) { return isOfPencil(entry, best); });
  joinPencil(entries.first(numFirst), best);
  return numFirst;
}

bool VEXSquareComparer::findPencil(const Entry& a, const Entry& b, Pencil& pencil) const {
  const VEXSegment s = chains_.segment(a.number), t = chains_.segment(b.number);
  const double sizeS = sizeOf(s), sizeT = sizeOf(t);
  VEXEndPair pair;
  pencil.smallest = std::min(sizeS, sizeT);
  const VEXMeeting meeting = quickMeeting(s, t, kPlaceTolerance * pencil.smallest, pair);
  pencil.isEnd = meeting == VEXMeeting::Ends;
  pencil.segment = a.number;
  if (pencil.isEnd) {
    pencil.x = pair.firstEnd ? s.x2 : s.x1;
    pencil.y = pair.firstEnd ? s.y2 : s.y1;
    return true;
  }
  if (meeting != VEXMeeting::Cross || pair.isNarrow || !takesAll_) return false;
  const double times = crossingOf(s, t, pencil.x, pencil.y);
  pencil.tolerance = kPlaceTolerance * pencil.smallest * times;
  // What the point lies off the two lines, taken away: others are held against it more strictly than computing goes.
  const double dsx = s.x2 - s.x1, dsy = s.y2 - s.y1, dtx = t.x2 - t.x1, dty = t.y2 - t.y1;
  const double turn = dsx * dty - dsy * dtx;
  const double offS = finelyAcross(s, pencil.x, pencil.y), offT = finelyAcross(t, pencil.x, pencil.y);
  pencil.x += (offS * dtx - offT * dsx) / turn;
  pencil.y += (offS * dty - offT * dsy) / turn;
  return true;
}

// Segments that pass the point: so near that any two of them cross within the tolerance of a crossing at their angle,
// and far from their ends, so that nothing but the crossing can be found for the two; of like size, so that no other
// rule holds for it. Two that cross at the angle phi at distances d from the point do so within 2 d / sin(phi) of it,
// and are allowed tolerance / (4 sin(phi)) at least.
bool VEXSquareComparer::isOfPencil(const Entry& entry, const Pencil& pencil) const {
  const VEXSegment s = chains_.segment(entry.number);
  const double x = pencil.x, y = pencil.y;
  if (pencil.isEnd) return (s.x1 == x && s.y1 == y) || (s.x2 == x && s.y2 == y);
  if (x < entry.minX || x > entry.maxX || y < entry.minY || y > entry.maxY) return false;
  const double size = sizeOf(s);
  if (size < 0.875 * pencil.smallest || size > 3.5 * pencil.smallest) return false;
  const double far = 0x1p-20 * size;
  if (std::max(std::fabs(x - s.x1), std::fabs(y - s.y1)) < far) return false;
  if (std::max(std::fabs(x - s.x2), std::fabs(y - s.y2)) < far) return false;
  const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
  return std::fabs(finelyAcross(s, x, y)) <= 0.1 * kPlaceTolerance * pencil.smallest * std::sqrt(dx * dx + dy * dy);
}

void VEXSquareComparer::joinPencil(std::span<const Entry> entries, const Pencil& pencil) {
  auto coordOf = [&](std::uint32_t number) {
    const VEXSegment s = chains_.segment(number);
    return s.x1 == pencil.x && s.y1 == pencil.y ? number : number + 1;
  };
  auto join = [&](std::uint32_t number) {
    if (pencil.isEnd)
      chains_.link(coordOf(pencil.segment), coordOf(number));
    else if (number != pencil.segment)
      chains_.addCrossing(pencil.segment, number, pencil.x, pencil.y, pencil.tolerance, isSingle_);
  };
  for (const Entry& entry : entries) {
    join(entry.number);
    for (std::uint32_t number : equalsOf(entry)) join(number);
  }
}

// Compares those that run nearly in the same direction, or in opposite ones.
void VEXSquareComparer::compareNarrow(std::span<const Entry> entries) {
  constexpr double kWindow =
      2.1 * kNarrow;  // lengths are told by dx + dy there, so that the sine may be twice as large
  courses_.clear();
  for (std::size_t i = 0; i < entries.size(); ++i)
    courses_.push_back({angleOf(chains_.segment(entries[i].number)), static_cast<std::uint32_t>(i)});
  std::sort(courses_.begin(), courses_.end(),
            [](const Course& a, const Course& b) { return a.angle != b.angle ? a.angle < b.angle : a.at < b.at; });
  const std::size_t count = courses_.size();
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t j = i + 1; j < i + count; ++j) {
      const Course& next = courses_[j < count ? j : j - count];
      if (next.angle + (j < count ? 0.0 : std::numbers::pi) - courses_[i].angle > kWindow) break;
      const Entry &a = entries[courses_[i].at], &b = entries[next.at];
      if (isWanted(a, b)) comparePlaces(a, b);
    }
}

// ---- sweeps ----

// Across the direction in which most of them run.
VEXSquareComparer::Axis VEXSquareComparer::acrossMost(std::span<const Entry> entries) const {
  const std::size_t step = (entries.size() + kSample - 1) / kSample;
  double x = 0.0, y = 0.0;  // angles doubled, so that opposite directions are one
  for (std::size_t i = 0; i < entries.size(); i += step) {
    const double angle = 2.0 * angleOf(chains_.segment(entries[i].number));
    x += std::cos(angle);
    y += std::sin(angle);
  }
  const double angle = 0.5 * std::atan2(y, x);
  return {-std::sin(angle), std::cos(angle)};
}

// The axis along which the fewest of these overlap those, and the one that parts the most of what is left; judged by a
// sample.
VEXSquareComparer::Axes VEXSquareComparer::bestAxes(std::span<const Entry> some, std::span<const Entry> others) const {
  const double half = std::sqrt(0.5);
  const std::array<Axis, 6> choices = {Axis{1.0, 0.0}, {0.0, 1.0},       {half, half},
                                       {half, -half},  acrossMost(some), acrossMost(others)};
  using Sample = std::array<Reach, kSample>;
  auto sampleOf = [&](std::span<const Entry> entries, const Axis& axis, Sample& sample) {
    const std::size_t step = (entries.size() + kSample - 1) / kSample;
    std::size_t count = 0;
    for (std::size_t i = 0; i < entries.size(); i += step) sample[count++] = reachOf(entries[i], axis);
    return count;
  };
  std::array<bool, kSample * kSample> isLeft;
  isLeft.fill(true);
  std::size_t numPairs = 0;
  auto bestOf = [&](std::size_t& numLeft) {
    std::size_t best = 0;
    numLeft = kSample * kSample + 1;
    Sample sample, otherSample;
    for (std::size_t choice = 0; choice <= choices.size(); ++choice) {
      const bool isDone = choice == choices.size();  // then the best one's pairs are what is left
      const Axis& axis = choices[isDone ? best : choice];
      const std::size_t numSome = sampleOf(some, axis, sample), numOthers = sampleOf(others, axis, otherSample);
      numPairs = numSome * numOthers;
      std::size_t numHere = 0;
      for (std::size_t i = 0; i < numSome; ++i)
        for (std::size_t j = 0; j < numOthers; ++j) {
          const bool overlaps = isLeft[i * kSample + j] && overlap(sample[i], otherSample[j]);
          numHere += overlaps ? 1 : 0;
          if (isDone) isLeft[i * kSample + j] = overlaps;
        }
      if (isDone || numHere >= numLeft) continue;
      numLeft = numHere;
      best = choice;
    }
    return choices[best];
  };
  Axes axes;
  std::size_t numLeft;
  axes.main = bestOf(numLeft);
  axes.share = static_cast<double>(numLeft) / static_cast<double>(numPairs);
  axes.side = axes.share > kSparseShare ? bestOf(numLeft) : axes.main;
  return axes;
}

// From where to where an entry reaches along an axis, wide enough for all that can meet to overlap.
VEXSquareComparer::Reach VEXSquareComparer::reachOf(const Entry& entry, const Axis& axis) const {
  const VEXSegment s = chains_.segment(entry.number);
  double slack = 4.0 * kPlaceTolerance * sizeOf(s);
  if (!takesAll_) slack = std::max(slack, 2.0 * chains_.toleranceOf(entry.number));
  const double start = axis.x * s.x1 + axis.y * s.y1, end = axis.x * s.x2 + axis.y * s.y2;
  return {std::min(start, end) - slack, std::max(start, end) + slack};
}

// The entries in the order in which they begin along the main axis.
void VEXSquareComparer::findSwept(std::span<const Entry> entries, const Axes& axes, std::vector<Swept>& swept) const {
  swept.clear();
  for (std::size_t i = 0; i < entries.size(); ++i)
    swept.push_back({reachOf(entries[i], axes.main), reachOf(entries[i], axes.side), static_cast<std::uint32_t>(i)});
  std::sort(swept.begin(), swept.end(), [](const Swept& a, const Swept& b) {
    return a.main.from != b.main.from ? a.main.from < b.main.from : a.at < b.at;
  });
}

void VEXSquareComparer::sweep(std::span<const Entry> entries, const Axes& axes) {
  findSwept(entries, axes, swept_);
  for (std::size_t i = 0; i < swept_.size(); ++i) {
    const Entry& a = entries[swept_[i].at];
    for (std::size_t j = i + 1; j < swept_.size() && swept_[j].main.from <= swept_[i].main.to; ++j)
      if (overlap(swept_[i].side, swept_[j].side) && isWanted(a, entries[swept_[j].at]))
        comparePlaces(a, entries[swept_[j].at]);
  }
}

void VEXSquareComparer::sweepBetween(std::span<const Entry> some, std::span<const Entry> others, const Axes& axes) {
  findSwept(some, axes, swept_);
  findSwept(others, axes, otherSwept_);
  auto compareIf = [&](const Swept& a, const Swept& b) {
    if (overlap(a.side, b.side) && isWanted(some[a.at], others[b.at])) comparePlaces(some[a.at], others[b.at]);
  };
  std::size_t i = 0, j = 0;
  while (i < swept_.size() && j < otherSwept_.size()) {
    const Swept &a = swept_[i], &b = otherSwept_[j];
    if (a.main.from <= b.main.from) {
      for (std::size_t k = j; k < otherSwept_.size() && otherSwept_[k].main.from <= a.main.to; ++k)
        compareIf(a, otherSwept_[k]);
      ++i;
    } else {
      for (std::size_t k = i; k < swept_.size() && swept_[k].main.from <= b.main.to; ++k) compareIf(swept_[k], b);
      ++j;
    }
  }
}
