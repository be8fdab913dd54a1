#include "vex/src/vexdonut.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>

#include "vex/inc/vexassert.h"
#include "vex/rptree/rppacked.h"
#include "vex/src/holemerg.h"
#include "vex/src/ringband.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kLongRing = 64;        // coordinates from which bands pay, when enough points come
constexpr std::size_t kManyTests = 1 << 14;  // points times coordinates

template <class Item>
void rearrange(std::vector<Item>& items, const std::vector<std::size_t>& order) {
  std::vector<Item> moved;
  moved.reserve(items.size());
  for (const std::size_t at : order) moved.push_back(std::move(items[at]));
  items = std::move(moved);
}

// Which of the points a ring holds.
VEXStatus keepHeld(const VEXLine& ring, const std::vector<VEXPoint>& points, std::vector<std::uint32_t>& found) {
  std::size_t numKept = 0;
  std::optional<VEXRingBands> bands;
  if (ring.geomType() == VEX_GEOM_POLYGON && ring.numCoords() >= kLongRing &&
      found.size() * ring.numCoords() >= kManyTests) {
    std::vector<VEXLineRange> ranges;
    ring.rings(ranges);
    if (ranges.size() == 1) bands.emplace(ring.xs(), ring.ys());
  }
  for (const std::uint32_t at : found) {
    bool isHeld = false;
    if (bands.has_value()) {
      isHeld = bands->holds(points[at].x, points[at].y);
    } else {
      VEX_TRY(ring.containsPoint(points[at].x, points[at].y, isHeld));
    }
    if (isHeld) found[numKept++] = at;
  }
  found.resize(numKept);
  return nullptr;
}

// A donut of a shell and its holes, with the shell's dimension.
VEXLine assemble(const VEXLine& shell, const std::vector<VEXLine>& holes) {
  std::vector<double> x(shell.xs().begin(), shell.xs().end()), y(shell.ys().begin(), shell.ys().end());
  std::vector<double> z(shell.zs().begin(), shell.zs().end());
  for (const VEXLine& hole : holes) {
    x.insert(x.end(), hole.xs().begin(), hole.xs().end());
    y.insert(y.end(), hole.ys().begin(), hole.ys().end());
    z.insert(z.end(), hole.zs().begin(), hole.zs().end());
    if (shell.hasZ()) z.resize(x.size(), 0.0);
  }
  if (!shell.hasZ()) return VEXLine(std::move(x), std::move(y), VEX_GEOM_DONUT);
  return VEXLine(std::move(x), std::move(y), std::move(z), VEX_GEOM_DONUT);
}

}  // namespace

VEXStatus sortRings(std::vector<VEXLine>& lines, std::vector<VEXFeaturePtr>* features) {
  VEX_ASSERT(features == nullptr || features->size() == lines.size());
  std::vector<double> areas(lines.size());
  std::vector<std::size_t> order(lines.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  for (std::size_t at = 0; at < lines.size(); ++at) {
    if (lines[at].geomType() == VEX_GEOM_POINT) {
      areas[at] = -1.0;
      continue;
    }
    VEX_TRY(lines[at].area(areas[at]));
    if (!(areas[at] > 0.0)) areas[at] = 0.0;  // NaN, too
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t one, std::size_t other) { return areas[one] < areas[other]; });
  rearrange(lines, order);
  if (features != nullptr) rearrange(*features, order);
  VEX_ASSERT(features == nullptr || features->size() == lines.size());
  return nullptr;
}

// From the smallest ring to the largest. The index shows the inside points of smaller lines that have no parent yet: a
// ring around the parent holds what that holds, and need not be asked again.
VEXStatus findParents(const std::vector<VEXLine>& lines, std::vector<std::size_t>& parents,
                      const std::function<void(std::size_t)>& begins) {
  parents.assign(lines.size(), kNoParent);
  if (lines.size() < 2) return nullptr;
  std::vector<VEXPoint> points(lines.size());
  std::vector<RpEntry> entries;
  entries.reserve(lines.size());
  for (std::size_t at = 0; at + 1 < lines.size(); ++at) {
    const VEXLine& line = lines[at];
    points[at] = {kNaN, kNaN, kNaN};
    if (line.geomType() == VEX_GEOM_POINT) {
      if (line.numCoords() > 0) points[at] = line.point(0);
    } else if (line.numCoords() > 0) {
      VEX_TRY(line.insidePoint(true, points[at]));
    }
    entries.push_back({RpBox{points[at].x, points[at].y, points[at].x, points[at].y}, static_cast<std::uint32_t>(at)});
  }
  RpPacked index(entries);
  std::vector<std::uint32_t> places(lines.size());
  const RpBox hidden = {kNaN, kNaN, kNaN, kNaN};
  for (std::size_t place = 0; place < index.numEntries(); ++place) {
    places[index.entry(place).id] = static_cast<std::uint32_t>(place);
  }
  index.hideAll();
  std::vector<std::uint32_t> found;
  for (std::size_t at = 0; at < lines.size(); ++at) {
    if (begins) begins(at);
    if (lines[at].geomType() != VEX_GEOM_POINT && lines[at].numCoords() > 0) {
      VEXBox box;
      VEX_TRY(lines[at].boundingBox(box));
      found.clear();
      index.search(
          RpBox::of(box), [](const RpBox&) { return true; }, found);
      VEX_TRY(keepHeld(lines[at], points, found));
      for (const std::uint32_t inner : found) {
        parents[inner] = at;
        index.setBox(places[inner], hidden);
      }
    }
    if (at < entries.size()) index.setBox(places[at], entries[at].box);
  }
  return nullptr;
}

VEXStatus makeDonuts(std::vector<VEXLine>& lines, bool keepAll) {
  if (lines.size() < 2) return nullptr;
  VEX_TRY(sortRings(lines, nullptr));
  std::vector<std::size_t> parents;
  VEX_TRY(findParents(lines, parents));
  for (std::size_t at = 0; at < lines.size(); ++at) {
    if (lines[at].geomType() == VEX_GEOM_POINT) parents[at] = kNoParent;  // a point is no hole
  }
  // The lines inside each, in one array: those of ring i from starts[i] to starts[i + 1].
  std::vector<std::size_t> starts(lines.size() + 1, 0), inner(lines.size());
  for (const std::size_t parent : parents) {
    if (parent != kNoParent) ++starts[parent + 1];
  }
  for (std::size_t at = 0; at < lines.size(); ++at) starts[at + 1] += starts[at];
  std::vector<std::size_t> ends(starts.begin(), starts.end() - 1);
  for (std::size_t at = 0; at < lines.size(); ++at) {
    if (parents[at] != kNoParent) inner[ends[parents[at]]++] = at;
  }
  std::vector<bool> isHole(lines.size(), false);
  for (std::size_t at = lines.size(); at-- > 0;) {
    if (parents[at] != kNoParent) isHole[at] = !isHole[parents[at]];
  }
  std::vector<VEXLine> made;
  made.reserve(lines.size());
  for (std::size_t at = 0; at < lines.size(); ++at) {
    if (isHole[at] && !keepAll) continue;
    if (starts[at] == starts[at + 1]) {
      made.push_back(keepAll ? lines[at].clone() : std::move(lines[at]));
      continue;
    }
    std::vector<VEXLine> holes;
    for (std::size_t place = starts[at]; place < starts[at + 1]; ++place) holes.push_back(lines[inner[place]].clone());
    mergeTouchingHoles(holes);
    made.push_back(assemble(lines[at], holes));
  }
  lines = std::move(made);
  return nullptr;
}
