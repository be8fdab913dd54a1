#include "vex/rptree/rppacked.h"

#include <cmath>
#include <limits>

namespace {

constexpr float kFar = std::numeric_limits<float>::infinity();
constexpr float kMost = std::numeric_limits<float>::max();

float roundedDown(double value) {
  if (value > kMost) return kMost;
  if (value < -kMost) return -kFar;
  const float rounded = static_cast<float>(value);
  return rounded > value ? std::nextafter(rounded, -kFar) : rounded;
}

float roundedUp(double value) {
  return -roundedDown(-value);
}

// The middle of a box on one axis, for ordering only.
float placeOf(double low, double high) {
  const double middle = low * 0.5 + high * 0.5;
  return middle == middle ? roundedDown(middle) : 0.0f;
}

}  // namespace

RpPacked::Cover::Cover(const RpBox& box)
    : minX(roundedDown(box.minX)), minY(roundedDown(box.minY)), maxX(roundedUp(box.maxX)), maxY(roundedUp(box.maxY)) {}

RpPacked::RpPacked(const std::vector<RpEntry>& entries) {
  std::vector<Place> places(entries.size());
  for (std::size_t at = 0; at < entries.size(); ++at) {
    const RpBox& box = entries[at].box;
    places[at] = {placeOf(box.minX, box.maxX), placeOf(box.minY, box.maxY), static_cast<std::uint32_t>(at)};
  }
  order(places.data(), places.size());
  boxes_.reserve(entries.size());
  ids_.reserve(entries.size());
  for (const Place& place : places) {
    boxes_.push_back(entries[place.at].box);
    ids_.push_back(entries[place.at].id);
  }
  std::vector<RpBox> below, above;
  do {
    const std::vector<RpBox>& boxes = levels_.empty() ? boxes_ : below;
    above.clear();
    for (std::size_t start = 0; start < boxes.size(); start += kRun) {
      RpBox cover = RpBox::nothing();
      for (std::size_t at = start; at < std::min(start + kRun, boxes.size()); ++at) cover.add(boxes[at]);
      above.push_back(cover);
    }
    below.swap(above);
    levels_.emplace_back(below.begin(), below.end());
  } while (below.size() > kRun);
}

void RpPacked::setBox(std::size_t at, const RpBox& box) {
  boxes_[at] = box;
  for (std::size_t level = 0; level < levels_.size(); ++level) {
    at /= kRun;
    const std::size_t below = level == 0 ? boxes_.size() : levels_[level - 1].size();
    RpBox cover = RpBox::nothing();
    for (std::size_t under = at * kRun; under < std::min((at + 1) * kRun, below); ++under) {
      if (level == 0) {
        cover.add(boxes_[under]);
      } else {
        const Cover& lower = levels_[level - 1][under];
        cover.add({lower.minX, lower.minY, lower.maxX, lower.maxY});
      }
    }
    levels_[level][at] = Cover(cover);
  }
}

void RpPacked::hideAll() {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  std::fill(boxes_.begin(), boxes_.end(), RpBox{kNaN, kNaN, kNaN, kNaN});
  for (std::vector<Cover>& covers : levels_) std::fill(covers.begin(), covers.end(), Cover(RpBox::nothing()));
}

// Halves across the longer side, at whole runs of the highest level that has more than one: all runs are then full but
// the last ones.
void RpPacked::order(Place* places, std::size_t count) {
  while (count > kRun) {
    Place least = places[0], most = places[0];
    for (std::size_t at = 1; at < count; ++at) {
      least.x = std::min(least.x, places[at].x);
      least.y = std::min(least.y, places[at].y);
      most.x = std::max(most.x, places[at].x);
      most.y = std::max(most.y, places[at].y);
    }
    std::size_t unit = kRun;
    while (unit * kRun < count) unit *= kRun;
    const std::size_t half = ((count + unit - 1) / unit + 1) / 2 * unit;
    if (most.x - least.x >= most.y - least.y) {
      std::nth_element(places, places + half, places + count,
                       [](const Place& one, const Place& other) { return one.x < other.x; });
    } else {
      std::nth_element(places, places + half, places + count,
                       [](const Place& one, const Place& other) { return one.y < other.y; });
    }
    order(places, half);
    places += half;
    count -= half;
  }
}
