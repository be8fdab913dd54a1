#include "vex/topology/facefind.h"

#include <algorithm>
#include <bit>

#include "vex/topology/orient.h"

VEXFaceFinder::VEXFaceFinder(std::vector<Point> points) : points_(std::move(points)) {
  xs_.reserve(points_.size());
  for (const Point& point : points_) xs_.push_back(point.x);
  std::sort(xs_.begin(), xs_.end());
  xs_.erase(std::unique(xs_.begin(), xs_.end()), xs_.end());
  numLeaves_ = std::bit_ceil(xs_.size());
  for (const Point& point : points_) highest_ = std::max(highest_, point.y);
}

void VEXFaceFinder::addEdge(double x1, double y1, double x2, double y2, std::uint32_t group, std::uint32_t leftSide,
                            std::uint32_t rightSide) {
  if (x1 == x2 || std::min(y1, y2) > highest_) return;
  // An edge holds its left end and not its right one, so that of two that follow each other one spans the vertex.
  const std::size_t low = firstFrom(std::min(x1, x2));
  if (low == xs_.size() || !(xs_[low] < std::max(x1, x2))) return;
  const std::size_t high = firstFrom(std::max(x1, x2));
  edges_.push_back(x1 < x2 ? Edge{x1, y1, x2, y2, group, leftSide} : Edge{x2, y2, x1, y1, group, rightSide});
  spans_.push_back({static_cast<std::uint32_t>(low), static_cast<std::uint32_t>(high)});
}

std::size_t VEXFaceFinder::firstFrom(double x) const {
  return static_cast<std::size_t>(std::lower_bound(xs_.begin(), xs_.end(), x) - xs_.begin());
}

// Two edges that span a common x and do not cross.
bool VEXFaceFinder::isBelow(const Edge& a, const Edge& b) {
  auto sideOfPoint = [](const Edge& edge, double x, double y) {
    return orientation(edge.x1, edge.y1, edge.x2, edge.y2, x, y);
  };
  int above = a.x1 >= b.x1 ? -sideOfPoint(b, a.x1, a.y1) : sideOfPoint(a, b.x1, b.y1);
  if (above == 0) above = a.x2 <= b.x2 ? -sideOfPoint(b, a.x2, a.y2) : sideOfPoint(a, b.x2, b.y2);
  return above > 0;
}

// Merges bottom-up: where edges cross after all, the order is of no use, but nothing else happens.
void VEXFaceFinder::sortStretch(std::uint32_t* first, std::size_t count) {
  merged_.resize(count);
  std::uint32_t* from = first;
  std::uint32_t* to = merged_.data();
  for (std::size_t run = 1; run < count; run *= 2) {
    for (std::size_t start = 0; start < count; start += 2 * run) {
      const std::size_t middle = std::min(start + run, count);
      const std::size_t end = std::min(start + 2 * run, count);
      std::size_t i = start;
      std::size_t j = middle;
      for (std::size_t at = start; at < end; ++at) {
        const bool takesSecond = i == middle || (j < end && isBelow(edges_[from[j]], edges_[from[i]]));
        to[at] = takesSecond ? from[j++] : from[i++];
      }
    }
    std::swap(from, to);
  }
  if (from != first) std::copy(from, from + count, first);
}

const VEXFaceFinder::Edge* VEXFaceFinder::below(const std::uint32_t* first, std::size_t count,
                                                const Point& point) const {
  auto side = [&](std::size_t at) {
    const Edge& edge = edges_[first[at]];
    return orientation(edge.x1, edge.y1, edge.x2, edge.y2, point.x, point.y);
  };
  std::size_t low = 0;
  std::size_t high = count;
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (side(middle) > 0)
      low = middle + 1;
    else
      high = middle;
  }
  const Edge* found = low > 0 ? &edges_[first[low - 1]] : nullptr;
  if (found != nullptr && found->group == point.group) found = nullptr;  // cannot be, unless edges cross
  for (; low < count && side(low) == 0; ++low)
    if (edges_[first[low]].group != point.group) found = &edges_[first[low]];
  return found;
}

std::vector<std::uint32_t> VEXFaceFinder::find() {
  // Counts, then places: the edges of stretch i lie between starts[i] and starts[i + 1].
  std::vector<std::size_t> starts(2 * numLeaves_ + 1, 0);
  auto forEachStretch = [&](const Span& span, auto&& visit) {
    std::size_t low = span.low + numLeaves_;
    std::size_t high = span.high + numLeaves_;
    for (; low < high; low /= 2, high /= 2) {
      if (low % 2 != 0) visit(low++);
      if (high % 2 != 0) visit(--high);
    }
  };
  for (const Span& span : spans_) forEachStretch(span, [&](std::size_t stretch) { ++starts[stretch + 1]; });
  for (std::size_t i = 1; i < starts.size(); ++i) starts[i] += starts[i - 1];
  std::vector<std::uint32_t> lists(starts.back());
  std::vector<std::size_t> filled(starts.begin(), starts.end() - 1);
  for (std::size_t i = 0; i < spans_.size(); ++i)
    forEachStretch(spans_[i], [&](std::size_t stretch) { lists[filled[stretch]++] = static_cast<std::uint32_t>(i); });
  for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
    if (starts[i + 1] - starts[i] > 1) sortStretch(lists.data() + starts[i], starts[i + 1] - starts[i]);
  }

  std::vector<std::uint32_t> found;
  found.reserve(points_.size());
  for (const Point& point : points_) {
    const Edge* best = nullptr;
    for (std::size_t stretch = firstFrom(point.x) + numLeaves_; stretch > 0; stretch /= 2) {
      const Edge* edge = below(lists.data() + starts[stretch], starts[stretch + 1] - starts[stretch], point);
      if (edge != nullptr && (best == nullptr || isBelow(*best, *edge))) best = edge;
    }
    found.push_back(best == nullptr ? kNothing : best->upperSide);
  }
  return found;
}
