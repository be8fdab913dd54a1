#include "vex/factory/nearblks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

constexpr double kLargest = 1e30;  // products of float values stay finite

// What is near a block may shift places at its rim by single precision, which is part of the coordinates' size. And
// what is near may itself be shifted: so neighbours' neighbours are near, too, by the mean width of boxes.
constexpr float kReachOfSize = 0x1p-19F;
constexpr float kReachOfWidths = 1.25F;

float down(double value) {
  return std::nextafter(static_cast<float>(value), -std::numeric_limits<float>::infinity());
}

float up(double value) {
  return std::nextafter(static_cast<float>(value), std::numeric_limits<float>::infinity());
}

}  // namespace

void VEXNearBlocks::Box::add(const Box& other) {
  minX = std::min(minX, other.minX);
  minY = std::min(minY, other.minY);
  maxX = std::max(maxX, other.maxX);
  maxY = std::max(maxY, other.maxY);
}

void VEXNearBlocks::add(const VEXBox& box, std::size_t weight) {
  boxes_.push_back({down(box.minX), down(box.minY), up(box.maxX), up(box.maxY)});
  weights_.push_back(static_cast<std::uint32_t>(weight));
  weight_ += weight;
  for (double value : {box.minX, box.minY, box.maxX, box.maxY}) largest_ = std::max(largest_, std::fabs(value));
}

// Halves by the number of boxes, across the wider side of their centres' extent.
void VEXNearBlocks::split(std::uint32_t* first, std::uint32_t* last, std::uint32_t depth, std::uint32_t leaf) {
  if (depth == 0) {
    for (std::uint32_t* at = first; at < last; ++at) leafOf_[*at] = static_cast<std::uint8_t>(leaf);
    return;
  }
  auto centreX = [this](std::uint32_t number) { return boxes_[number].minX + boxes_[number].maxX; };
  auto centreY = [this](std::uint32_t number) { return boxes_[number].minY + boxes_[number].maxY; };
  float lowX = std::numeric_limits<float>::max(), highX = -lowX, lowY = lowX, highY = -lowX;
  for (const std::uint32_t* at = first; at < last; ++at) {
    lowX = std::min(lowX, centreX(*at));
    highX = std::max(highX, centreX(*at));
    lowY = std::min(lowY, centreY(*at));
    highY = std::max(highY, centreY(*at));
  }
  std::uint32_t* const middle = first + (last - first) / 2;
  auto halve = [&](auto&& centre) {
    std::nth_element(first, middle, last, [&](std::uint32_t a, std::uint32_t b) {
      return centre(a) != centre(b) ? centre(a) < centre(b) : a < b;
    });
  };
  highX - lowX > highY - lowY ? halve(centreX) : halve(centreY);
  split(first, middle, depth - 1, 2 * leaf);
  split(middle, last, depth - 1, 2 * leaf + 1);
}

void VEXNearBlocks::findReaches() {
  constexpr float kFar = std::numeric_limits<float>::max();
  extents_.assign(numBlocks(), {kFar, kFar, -kFar, -kFar});
  reaches_.clear();
  struct Sum {
    double widths = 0.0, heights = 0.0, count = 0.0;
  };
  std::vector<Sum> sums(numBlocks());
  for (std::uint32_t number = 0; number < boxes_.size(); ++number) {
    const Box& box = boxes_[number];
    Sum& sum = sums[blockOf(number)];
    sum.widths += static_cast<double>(box.maxX - box.minX);
    sum.heights += static_cast<double>(box.maxY - box.minY);
    sum.count += 1.0;
    extents_[blockOf(number)].add(box);
  }
  for (std::size_t block = 0; block < numBlocks(); ++block) {
    const float bySize = static_cast<float>(largest_) * kReachOfSize;
    extents_[block] = extents_[block].grown(bySize, bySize);
    const float byX = kReachOfWidths * static_cast<float>(sums[block].widths / sums[block].count);
    const float byY = kReachOfWidths * static_cast<float>(sums[block].heights / sums[block].count);
    reaches_.push_back(extents_[block].grown(byX, byY));
  }
}

bool VEXNearBlocks::sharesLittle() const {
  std::size_t near = 0;
  for (std::size_t block = 0; block < numBlocks(); ++block)
    for (std::uint32_t number = 0; number < boxes_.size(); ++number)
      if (reaches_[block].meets(boxes_[number])) near += weights_[number];
  return near - weight_ <= weight_ / 2;
}

void VEXNearBlocks::part(std::size_t most) {
  leafOf_.assign(boxes_.size(), 0);
  if (!(largest_ <= kLargest)) return;
  while (depth_ < kMostDepth && weight_ >> depth_ > most && boxes_.size() >> depth_ > 1) ++depth_;
  if (depth_ == 0) return;
  std::vector<std::uint32_t> order(boxes_.size());
  std::iota(order.begin(), order.end(), 0U);
  split(order.data(), order.data() + order.size(), depth_, 0);
  for (findReaches(); above_ < depth_ && !sharesLittle(); findReaches()) ++above_;
}

void VEXNearBlocks::gather(std::size_t block, std::vector<std::uint32_t>& numbers) const {
  numbers.clear();
  for (std::uint32_t number = 0; number < boxes_.size(); ++number)
    if (numBlocks() == 1 || reaches_[block].meets(boxes_[number])) numbers.push_back(number);
}
