#include "vex/rptree/spatind.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/rptree/ringgrid.h"

namespace {

constexpr double kWiden = 0.005;    // on each side of a line's box
constexpr double kLeastSide = 1.0;  // of a box that has no width or no height

RpBox widened(const RpBox& box) {
  const auto side = [](double& low, double& high) {
    const double by = high > low ? kWiden : kLeastSide / 2.0;
    low -= by;
    high += by;
  };
  RpBox wide = box;
  side(wide.minX, wide.maxX);
  side(wide.minY, wide.maxY);
  return wide;
}

}  // namespace

std::uint32_t VEXSpatialIndex::add(VEXLine line) {
  lines_.push_back(std::move(line));
  isHeld_.push_back(true);
  ++numHeld_;
  isBuilt_ = false;
  return static_cast<std::uint32_t>(lines_.size() - 1);
}

VEXStatus VEXSpatialIndex::remove(std::uint32_t number) {
  if (number >= lines_.size() || !isHeld_[number]) return makeStatus(322102, {integerText(number)});
  isHeld_[number] = false;
  --numHeld_;
  return nullptr;
}

VEXStatus VEXSpatialIndex::verify(std::size_t expected) const {
  if (expected == numHeld_) return nullptr;
  return makeStatus(
      322101, {integerText(static_cast<std::int64_t>(expected)), integerText(static_cast<std::int64_t>(numHeld_))});
}

VEXStatus VEXSpatialIndex::build() {
  std::vector<RpEntry> entries;
  owners_.clear();
  for (std::uint32_t number = 0; number < lines_.size(); ++number) {
    const VEXLine& line = lines_[number];
    if (!isHeld_[number] || line.numCoords() == 0) continue;
    if (line.geomType() == VEX_GEOM_POINT) {
      for (std::size_t at = 0; at < line.numCoords(); ++at) {
        const double x = line.xs()[at], y = line.ys()[at];
        entries.push_back({RpBox{x, y, x, y}, static_cast<std::uint32_t>(owners_.size())});
        owners_.push_back(number);
      }
      continue;
    }
    VEXBox box;
    VEX_TRY(line.boundingBox(box));
    entries.push_back({widened(RpBox::of(box)), static_cast<std::uint32_t>(owners_.size())});
    owners_.push_back(number);
  }
  tree_.bulkLoad(std::move(entries));
  isBuilt_ = true;
  return nullptr;
}

VEXStatus VEXSpatialIndex::search(const VEXBox& box, RpHits& found) {
  if (!isBuilt_) VEX_TRY(build());
  tree_.searchIntersecting(RpBox::of(box), found);
  std::size_t numKept = 0;
  for (const std::uint32_t entry : found) {  // ascending, and so are their owners
    const std::uint32_t number = owners_[entry];
    if (!isHeld_[number] || (numKept > 0 && found[numKept - 1] == number)) continue;
    found[numKept++] = number;
  }
  found.resize(numKept);
  return nullptr;
}

VEXStatus VEXSpatialIndex::searchContained(const VEXLine& polygon, RpHits& found) {
  VEXBox box;
  VEX_TRY(polygon.boundingBox(box));
  VEX_TRY(search(box, found));
  RingGrid grid;
  if (const std::size_t numCells = RingGrid::cellsFor(found.size(), polygon.numCoords());
      numCells > 0 && isAreaCode(polygon.geomType())) {
    VEX_TRY(grid.build(polygon, numCells));
  }
  std::size_t numKept = 0;
  for (const std::uint32_t number : found) {
    const VEXLine& line = lines_[number];
    VEXBox lineBox;
    VEX_TRY(line.boundingBox(lineBox));
    bool isContained = grid.holds(RpBox::of(lineBox));
    if (!isContained && line.geomType() == VEX_GEOM_POINT) {
      isContained = true;
      for (std::size_t at = 0; at < line.numCoords() && isContained; ++at) {
        VEX_TRY(polygon.containsPoint(line.xs()[at], line.ys()[at], isContained));
      }
    } else if (!isContained) {
      VEX_TRY(polygon.containsLine(line, isContained));
    }
    if (isContained) found[numKept++] = number;
  }
  found.resize(numKept);
  return nullptr;
}
