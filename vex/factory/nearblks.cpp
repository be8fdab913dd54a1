#include "vex/factory/nearblks.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kLargest = 1e30;  // products of float values stay finite
constexpr float kFar = std::numeric_limits<float>::max();

// What is near a block may shift places at its rim by single precision, which is part of the coordinates' size. And
// what is near may itself be shifted: so neighbours' neighbours are gathered, too, by the mean width of boxes.
constexpr float kReachOfSize = 0x1p-19F;
constexpr float kReachOfWidths = 1.25F;

float down(double value) {
  return std::nextafter(static_cast<float>(value), -std::numeric_limits<float>::infinity());
}

float up(double value) {
  return std::nextafter(static_cast<float>(value), std::numeric_limits<float>::infinity());
}

struct Mean {
  double widths = 0.0, heights = 0.0, count = 0.0;
  void add(float width, float height) {
    widths += static_cast<double>(width);
    heights += static_cast<double>(height);
    count += 1.0;
  }
  float width() const { return count > 0.0 ? static_cast<float>(widths / count) : 0.0F; }
  float height() const { return count > 0.0 ? static_cast<float>(heights / count) : 0.0F; }
};

}  // namespace

void VEXNearBlocks::Box::add(const Box& other) {
  minX = std::min(minX, other.minX);
  minY = std::min(minY, other.minY);
  maxX = std::max(maxX, other.maxX);
  maxY = std::max(maxY, other.maxY);
}

VEXNearBlocks::Box VEXNearBlocks::boxOf(const VEXBox& box) {
  return {down(box.minX), down(box.minY), up(box.maxX), up(box.maxY)};
}

void VEXNearBlocks::add(const VEXBox& box, std::size_t weight) {
  boxes_.push_back(boxOf(box));
  weights_.push_back(static_cast<std::uint32_t>(weight));
  weight_ += weight;
  for (double value : {box.minX, box.minY, box.maxX, box.maxY}) largest_ = std::max(largest_, std::fabs(value));
}

VEXNearBlocks::Box VEXNearBlocks::extentOfAll() const {
  Box extent{kFar, kFar, -kFar, -kFar};
  for (const Box& box : boxes_) extent.add(box);
  return extent;
}

// ---- the net ----

void VEXNearBlocks::Net::span(const Box& extent) {
  extent_ = extent;
  sums_.assign(std::size_t{kSide + 1} * (kSide + 1), 0);
}

VEXNearBlocks::Net::Squares VEXNearBlocks::Net::squaresOf(const Box& box) const {
  auto indexOf = [](float value, float origin, float width) {
    const float place = width > 0.0F ? (value - origin) / width * static_cast<float>(kSide) : 0.0F;
    return static_cast<std::uint32_t>(std::clamp(place, 0.0F, static_cast<float>(kSide - 1)));
  };
  return {indexOf(box.minX, extent_.minX, extent_.width()), indexOf(box.minY, extent_.minY, extent_.height()),
          indexOf(box.maxX, extent_.minX, extent_.width()), indexOf(box.maxY, extent_.minY, extent_.height())};
}

// Stretch by stretch, each about as long as a square is wide. Until all are added up a sum is 1 or 0, that of the
// square before it.
void VEXNearBlocks::Net::mark(const VEXSegment& segment) {
  const double dx = segment.x2 - segment.x1, dy = segment.y2 - segment.y1;
  const double squaresX = extent_.width() > 0.0F ? std::fabs(dx) / static_cast<double>(extent_.width()) : 0.0;
  const double squaresY = extent_.height() > 0.0F ? std::fabs(dy) / static_cast<double>(extent_.height()) : 0.0;
  const double count = std::floor(std::min(std::max(squaresX, squaresY), 1.0) * kSide) + 1.0;
  for (double i = 0.0; i < count; i += 1.0) {
    const double x1 = segment.x1 + dx * (i / count), x2 = segment.x1 + dx * ((i + 1.0) / count);
    const double y1 = segment.y1 + dy * (i / count), y2 = segment.y1 + dy * ((i + 1.0) / count);
    const VEXBox box{std::min(x1, x2), std::min(y1, y2), kNoZ, std::max(x1, x2), std::max(y1, y2), kNoZ};
    const Squares squares = squaresOf(boxOf(box));
    for (std::uint32_t row = squares.row1; row <= squares.row2; ++row)
      for (std::uint32_t col = squares.col1; col <= squares.col2; ++col) sums_[at(row + 1, col + 1)] = 1;
  }
}

void VEXNearBlocks::Net::addUp() {
  for (std::uint32_t row = 1; row <= kSide; ++row)
    for (std::uint32_t col = 1; col <= kSide; ++col)
      sums_[at(row, col)] += sums_[at(row - 1, col)] + sums_[at(row, col - 1)] - sums_[at(row - 1, col - 1)];
}

bool VEXNearBlocks::Net::meets(const Box& box) const {
  const Squares squares = squaresOf(box);
  return sums_[at(squares.row2 + 1, squares.col2 + 1)] - sums_[at(squares.row1, squares.col2 + 1)] !=
         sums_[at(squares.row2 + 1, squares.col1)] - sums_[at(squares.row1, squares.col1)];
}

// ---- parting ----

// As large as a block would be if all boxes were of one size: a square, unless all lie in a strip that is narrower.
VEXNearBlocks::Box VEXNearBlocks::blockOfAll() const {
  const Box all = extentOfAll();
  const double numBlocks = std::exp2(static_cast<double>(depth_));
  const double width = static_cast<double>(all.width()), height = static_cast<double>(all.height());
  const double side = std::sqrt(width * height / numBlocks);
  Box block{0.0F, 0.0F, static_cast<float>(side), static_cast<float>(side)};
  if (height < side) block = {0.0F, 0.0F, static_cast<float>(width / numBlocks), kFar};
  if (width < side) block = {0.0F, 0.0F, kFar, static_cast<float>(height / numBlocks)};
  return block;
}

// Those that are larger than a block. Should they be many, the others do not matter.
void VEXNearBlocks::setLargeApart() {
  const Box block = blockOfAll();
  Mean small;
  for (std::uint32_t number = 0; number < boxes_.size(); ++number) {
    const Box& box = boxes_[number];
    const bool isLarge = box.width() > block.maxX || box.height() > block.maxY;
    leafOf_[number] = isLarge ? kLargeLeaf : 0;
    hasLarge_ = hasLarge_ || isLarge;
    if (!isLarge) small.add(box.width(), box.height());
  }
  reach_ = static_cast<float>(largest_) * kReachOfSize;
  gatherX_ = reach_ + kReachOfWidths * small.width();
  gatherY_ = reach_ + kReachOfWidths * small.height();
}

void VEXNearBlocks::markLarge(const ShowSegments& showSegments) {
  if (!hasLarge_) return;
  largeLines_.span(extentOfAll());
  for (std::uint32_t number = 0; number < boxes_.size(); ++number)
    if (leafOf_[number] == kLargeLeaf)
      showSegments(number, [this](const VEXSegment& segment) { largeLines_.mark(segment); });
  largeLines_.addUp();
}

// Halves by the number of boxes, across the wider side of their centres' extent.
void VEXNearBlocks::split(std::uint32_t* first, std::uint32_t* last, std::uint32_t depth, std::uint32_t leaf) {
  if (depth == 0) {
    for (std::uint32_t* at = first; at < last; ++at) leafOf_[*at] = static_cast<std::uint8_t>(leaf);
    return;
  }
  auto centreX = [this](std::uint32_t number) { return boxes_[number].minX + boxes_[number].maxX; };
  auto centreY = [this](std::uint32_t number) { return boxes_[number].minY + boxes_[number].maxY; };
  float lowX = kFar, highX = -kFar, lowY = kFar, highY = -kFar;
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

void VEXNearBlocks::findExtents() {
  extents_.assign(numHalves(), {kFar, kFar, -kFar, -kFar});
  reaches_.clear();
  std::vector<Mean> means(numHalves());
  for (std::uint32_t number = 0; number < boxes_.size(); ++number) {
    if (leafOf_[number] == kLargeLeaf) continue;
    extents_[blockOf(number)].add(boxes_[number]);
    means[blockOf(number)].add(boxes_[number].width(), boxes_[number].height());
  }
  for (std::size_t block = 0; block < numHalves(); ++block) {
    extents_[block] = extents_[block].grown(reach_, reach_);
    const Mean& mean = means[block];
    reaches_.push_back(extents_[block].grown(kReachOfWidths * mean.width(), kReachOfWidths * mean.height()));
  }
}

bool VEXNearBlocks::sharesLittle() const {
  std::size_t near = 0;
  for (std::size_t block = 0; block < numBlocks(); ++block)
    for (std::uint32_t number = 0; number < boxes_.size(); ++number)
      if (isGathered(number, block)) near += weights_[number];
  return near - weight_ <= weight_ / 2;
}

void VEXNearBlocks::part(std::size_t most, const ShowSegments& showSegments) {
  leafOf_.assign(boxes_.size(), 0);
  if (!(largest_ <= kLargest)) return;
  while (depth_ < kMostDepth && weight_ >> depth_ > most) ++depth_;
  if (depth_ == 0) return;
  setLargeApart();
  std::vector<std::uint32_t> order;
  order.reserve(boxes_.size());
  for (std::uint32_t number = 0; number < boxes_.size(); ++number)
    if (leafOf_[number] != kLargeLeaf) order.push_back(number);
  while (depth_ > 0 && order.size() >> depth_ == 0) --depth_;
  if (depth_ == 0) return;
  markLarge(showSegments);
  split(order.data(), order.data() + order.size(), depth_, 0);
  for (findExtents(); above_ < depth_ && !sharesLittle(); findExtents()) ++above_;
}

// ---- questions ----

bool VEXNearBlocks::isNear(std::uint32_t number, std::size_t block) const {
  if (block < numHalves()) return extents_[block].meets(boxes_[number]);
  return leafOf_[number] == kLargeLeaf || largeLines_.meets(boxes_[number].grown(reach_, reach_));
}

bool VEXNearBlocks::isGathered(std::uint32_t number, std::size_t block) const {
  if (numBlocks() == 1) return true;
  if (block < numHalves()) return reaches_[block].meets(boxes_[number]);
  return leafOf_[number] == kLargeLeaf || largeLines_.meets(boxes_[number].grown(gatherX_, gatherY_));
}

void VEXNearBlocks::gather(std::size_t block, std::vector<std::uint32_t>& numbers) const {
  numbers.clear();
  for (std::uint32_t number = 0; number < boxes_.size(); ++number)
    if (isGathered(number, block)) numbers.push_back(number);
}
