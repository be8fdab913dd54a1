#include "vex/topology/facefind.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "vex/src/letgo.h"
#include "vex/topology/orient.h"

VEXFaceFinder::VEXFaceFinder(std::vector<Point> points) : points_(std::move(points)), order_(points_.size()) {
  std::iota(order_.begin(), order_.end(), 0U);
  std::sort(order_.begin(), order_.end(), [this](std::uint32_t i, std::uint32_t j) {
    return points_[i].x != points_[j].x ? points_[i].x < points_[j].x : i < j;
  });
  xs_.reserve(points_.size());
  for (std::uint32_t at : order_) {
    if (xs_.empty() || xs_.back() != points_[at].x) xs_.push_back(points_[at].x);
    highest_ = std::max(highest_, points_[at].y);
  }
  starting_.assign(xs_.size(), kNone);
  if (xs_.empty()) return;
  axis_ = VEXGridAxis(xs_.front(), xs_.back(), xs_.size());
  firsts_.assign(xs_.size() + 1, 0);
  for (double x : xs_) ++firsts_[axis_.at(x) + 1];
  std::partial_sum(firsts_.begin(), firsts_.end(), firsts_.begin());
}

std::size_t VEXFaceFinder::firstFrom(double x) const {
  const std::size_t stretch = axis_.at(x);
  return static_cast<std::size_t>(
      std::lower_bound(xs_.begin() + firsts_[stretch], xs_.begin() + firsts_[stretch + 1], x) - xs_.begin());
}

void VEXFaceFinder::leaveOutGroups() {
  const VEXPointGrid grid(points_);
  isLeftOut_.reserve(boxes_.size());
  for (std::uint32_t group = 0; group < boxes_.size(); ++group) {
    const Box& box = boxes_[group];
    const bool isShown = box.minX <= box.maxX;
    isLeftOut_.push_back(isShown && !grid.mayHold(box.minX, box.minY, box.maxX, box.maxY, group));
  }
  letGo(boxes_);
}

void VEXFaceFinder::addEdge(double x1, double y1, double x2, double y2, std::uint32_t group, std::uint32_t leftSide,
                            std::uint32_t rightSide) {
  if (!boxes_.empty()) leaveOutGroups();
  if (x1 == x2 || !(std::min(y1, y2) <= highest_)) return;
  if (group < isLeftOut_.size() && isLeftOut_[group]) return;
  // An edge holds its left end and not its right one, so that of two that follow each other one spans the vertex.
  const std::size_t start = firstFrom(std::min(x1, x2));
  const std::size_t end = firstFrom(std::max(x1, x2));
  if (start >= end) return;
  Edge& edge = edges_.emplace_back();
  const bool runsRight = x1 < x2;
  edge.x1 = runsRight ? x1 : x2;
  edge.y1 = runsRight ? y1 : y2;
  edge.x2 = runsRight ? x2 : x1;
  edge.y2 = runsRight ? y2 : y1;
  edge.group = group;
  edge.upperSide = runsRight ? leftSide : rightSide;
  edge.end = static_cast<std::uint32_t>(end);
  edge.next = starting_[start];
  starting_[start] = static_cast<std::uint32_t>(edges_.size() - 1);
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

// ---- the tree ----
// It is descended by comparing, but changed by its links alone: when edges cross, the order is of no use, but nothing
// else happens.

void VEXFaceFinder::setChild(std::uint32_t parent, std::uint32_t before, std::uint32_t after) {
  if (parent == kNone)
    root_ = after;
  else
    edges_[parent].children[edges_[parent].children[kHigher] == before ? kHigher : kLower] = after;
  if (after != kNone) edges_[after].parent = parent;
}

// Puts an edge in its parent's place; the parent becomes its child.
void VEXFaceFinder::lift(std::uint32_t edge) {
  const std::uint32_t parent = edges_[edge].parent;
  const Side other = edges_[parent].children[kHigher] == edge ? kLower : kHigher;
  setChild(edges_[parent].parent, parent, edge);
  setChild(parent, edge, edges_[edge].children[other]);
  edges_[edge].children[other] = parent;
  edges_[parent].parent = edge;
}

void VEXFaceFinder::insert(std::uint32_t added) {
  Edge& edge = edges_[added];
  random_ = random_ * 1664525U + 1013904223U;
  edge.weight = random_;
  edge.parent = edge.children[kLower] = edge.children[kHigher] = kNone;
  Side side = kLower;
  for (std::uint32_t at = root_; at != kNone; at = edges_[at].children[side]) {
    edge.parent = at;
    side = isBelow(edges_[at], edge) ? kHigher : kLower;
  }
  if (edge.parent == kNone)
    root_ = added;
  else
    edges_[edge.parent].children[side] = added;
  while (edge.parent != kNone && edges_[edge.parent].weight < edge.weight) lift(added);
}

void VEXFaceFinder::remove(std::uint32_t removed) {
  const Edge& edge = edges_[removed];
  const std::uint32_t &lower = edge.children[kLower], &higher = edge.children[kHigher];
  while (lower != kNone && higher != kNone) lift(edges_[lower].weight > edges_[higher].weight ? lower : higher);
  setChild(edge.parent, removed, lower != kNone ? lower : higher);
}

std::uint32_t VEXFaceFinder::nextLower(std::uint32_t edge) const {
  std::uint32_t at = edges_[edge].children[kLower];
  if (at != kNone) {
    while (edges_[at].children[kHigher] != kNone) at = edges_[at].children[kHigher];
    return at;
  }
  for (at = edges_[edge].parent; at != kNone && edges_[at].children[kLower] == edge; at = edges_[at].parent) edge = at;
  return at;
}

// ---- the sweep ----

std::uint32_t VEXFaceFinder::below(const Point& point) const {
  std::uint32_t found = kNone;
  for (std::uint32_t at = root_; at != kNone;) {
    const Edge& edge = edges_[at];
    const bool isAbove = orientation(edge.x1, edge.y1, edge.x2, edge.y2, point.x, point.y) < 0;
    if (!isAbove) found = at;
    at = edge.children[isAbove ? kLower : kHigher];
  }
  while (found != kNone && edges_[found].group == point.group) found = nextLower(found);
  return found;
}

std::vector<std::uint32_t> VEXFaceFinder::find() {
  std::vector<std::uint32_t> found(points_.size(), kNothing);
  ending_.assign(xs_.size() + 1, kNone);
  std::size_t i = 0;
  for (std::size_t place = 0; place < xs_.size(); ++place) {
    for (std::uint32_t at = ending_[place]; at != kNone; at = edges_[at].next) remove(at);
    for (std::uint32_t at = starting_[place], next = kNone; at != kNone; at = next) {
      insert(at);
      std::uint32_t& first = ending_[edges_[at].end];
      next = std::exchange(edges_[at].next, first);
      first = at;
    }
    for (; i < order_.size() && points_[order_[i]].x == xs_[place]; ++i) {
      const std::uint32_t edge = below(points_[order_[i]]);
      if (edge != kNone) found[order_[i]] = edges_[edge].upperSide;
    }
  }
  return found;
}
