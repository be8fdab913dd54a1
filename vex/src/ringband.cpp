#include "vex/src/ringband.h"

#include <algorithm>
#include <cmath>

VEXRingBands::VEXRingBands(VEXOrdinates xs, VEXOrdinates ys) : xs_(xs), ys_(ys) {
  const VEXBox box = boxOf(xs, ys);
  minY_ = box.minY;
  maxY_ = box.maxY;
  const double height = box.maxY - box.minY;
  std::size_t wanted = std::clamp<std::size_t>(xs.size() / 4, 1, 65536);
  if (!(height > 0.0) || !std::isfinite(height)) wanted = 1;
  // Bands are as many as long edges, which stand in each that they cross, leave room for.
  for (;; wanted /= 4) {
    numBands_ = std::max<std::size_t>(wanted, 1);
    perUnit_ = numBands_ > 1 ? static_cast<double>(numBands_) / height : 0.0;
    starts_.assign(numBands_ + 1, 0);
    std::size_t total = 0;
    const auto eachBand = [&](const auto& visit) {
      for (std::size_t at = 0; at < xs_.size(); ++at) {
        const std::size_t next = std::min(at + 1, xs_.size() - 1);
        std::size_t first = bandOf(ys_[at]), last = bandOf(ys_[next]);
        if (first > last) std::swap(first, last);
        for (std::size_t band = first; band <= last; ++band) visit(band, at);
      }
    };
    eachBand([&](std::size_t band, std::size_t) {
      if (++total <= 8 * xs_.size()) ++starts_[band + 1];
    });
    if (total > 8 * xs_.size() && numBands_ > 1) continue;
    for (std::size_t band = 0; band < numBands_; ++band) starts_[band + 1] += starts_[band];
    edges_.resize(total);
    std::vector<std::size_t> places(starts_.begin(), starts_.end() - 1);
    eachBand([&](std::size_t band, std::size_t at) { edges_[places[band]++] = static_cast<std::uint32_t>(at); });
    return;
  }
}

std::size_t VEXRingBands::bandOf(double y) const {
  if (numBands_ == 1) return 0;
  const double at = (y - minY_) * perUnit_;
  if (!(at > 0.0)) return 0;  // NaN, too
  return std::min(static_cast<std::size_t>(std::min(at, 1e9)), numBands_ - 1);
}

bool VEXRingBands::holds(double px, double py) const {
  if (xs_.size() < 2) return false;
  const std::size_t band = bandOf(py);
  bool isInside = false;
  for (std::size_t place = starts_[band]; place < starts_[band + 1]; ++place) {
    const std::size_t i = edges_[place], j = i + 1;
    if (xs_[i] == px && ys_[i] == py) return true;
    if (j == xs_.size() || (ys_[i] <= py) == (ys_[j] <= py)) continue;
    const double crossing = xs_[i] + (py - ys_[i]) * (xs_[j] - xs_[i]) / (ys_[j] - ys_[i]);
    if (crossing > px) isInside = !isInside;
  }
  return isInside;
}
