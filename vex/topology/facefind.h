// VEXFaceFinder: finds for each of many points the edge of the graph that lies straight below it, and with it the face
// that holds the point. All points are given at once. A vertical line sweeps over them from left to right, with the
// edges that it crosses in a balanced tree from below to above: n log n whatever the edges' lengths. Calls: extend
// where groups may be left out, add each edge, find once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "vex/topology/pointgrid.h"

class VEXFaceFinder {
 public:
  using Point = VEXPointGrid::Point;  // edges of its own group do not count
  static constexpr std::uint32_t kNothing = UINT32_MAX;

  explicit VEXFaceFinder(std::vector<Point> points);
  // Before the edges: all their coordinates, by group. Unless a point of another group is in a group's box the group
  // holds nothing, and its edges are left out: points above them get the edge below them, where there is what is around
  // the group. A group that is not shown here is never left out.
  void extend(std::uint32_t group, double x, double y) {
    if (boxes_.size() <= group) boxes_.resize(group + 1);
    Box& box = boxes_[group];
    box.minX = x < box.minX ? x : box.minX;
    box.maxX = x > box.maxX ? x : box.maxX;
    box.minY = y < box.minY ? y : box.minY;
    box.maxY = y > box.maxY ? y : box.maxY;
  }
  // An edge and what the caller wants to know when a point lies on its left or its right side.
  void addEdge(double x1, double y1, double x2, double y2, std::uint32_t group, std::uint32_t leftSide,
               std::uint32_t rightSide);
  // For each point what lies on the upper side of the highest edge that is not above it; kNothing: no edge. Where edges
  // cross after all, any of them may be found.
  std::vector<std::uint32_t> find();

 private:
  static constexpr std::uint32_t kNone = UINT32_MAX;
  struct Box {
    double minX = std::numeric_limits<double>::infinity(), maxX = -minX, minY = minX, maxY = -minX;
  };
  struct Edge {  // from left to right
    double x1, y1, x2, y2;
    std::uint32_t group;
    std::uint32_t upperSide;
    std::uint32_t end;   // the first of xs_ that it does not reach
    std::uint32_t next;  // of those that begin at the same of xs_; once it is in the tree, of those that end there
    std::uint32_t parent;
    std::uint32_t children[2];
    std::uint32_t weight;  // random; none weighs less than its children, which keeps the tree balanced
  };
  enum Side { kLower, kHigher };
  static bool isBelow(const Edge& a, const Edge& b);
  void leaveOutGroups();
  std::size_t firstFrom(double x) const;
  void setChild(std::uint32_t parent, std::uint32_t before, std::uint32_t after);
  void lift(std::uint32_t edge);
  void insert(std::uint32_t edge);
  void remove(std::uint32_t edge);
  std::uint32_t nextLower(std::uint32_t edge) const;
  std::uint32_t below(const Point& point) const;

  std::vector<Point> points_;
  std::vector<std::uint32_t> order_;  // of the points, by x
  std::vector<double> xs_;            // of the points, ascending, each once
  double highest_ = -std::numeric_limits<double>::infinity();
  VEXGridAxis axis_;                     // cuts their extent into as many stretches
  std::vector<std::uint32_t> firsts_;    // by stretch: where it begins in xs_
  std::vector<Box> boxes_;               // by group; until the first edge
  std::vector<bool> isLeftOut_;          // by group
  std::vector<Edge> edges_;              // those that span a point's x
  std::vector<std::uint32_t> starting_;  // by place in xs_: the first of the edges that begin there
  std::vector<std::uint32_t> ending_;    // the same of those in the tree that end there
  std::uint32_t root_ = kNone;
  std::uint32_t random_ = 1;
};
