// VEXFaceFinder: finds for each of many points the edge of the graph that lies straight below it, and with it the face
// that holds the point. All points are given at once: edges are put on the stretches of a binary tree over the points'
// x that they span from side to side; on one stretch they have an order from below to above, in which each point
// is searched. n log n whatever the edges' lengths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

class VEXFaceFinder {
 public:
  struct Point {
    double x = 0.0;
    double y = 0.0;
    std::uint32_t group = 0;  // edges of this group that touch the point do not count
  };
  static constexpr std::uint32_t kNothing = UINT32_MAX;

  explicit VEXFaceFinder(std::vector<Point> points);
  // An edge and what the caller wants to know when a point lies on its left or its right side.
  void addEdge(double x1, double y1, double x2, double y2, std::uint32_t group, std::uint32_t leftSide,
               std::uint32_t rightSide);
  // For each point what lies on the upper side of the highest edge that is not above it; kNothing: no edge.
  std::vector<std::uint32_t> find();

 private:
  struct Edge {  // from left to right
    double x1, y1, x2, y2;
    std::uint32_t group;
    std::uint32_t upperSide;
  };
  struct Span {  // of xs_
    std::uint32_t low, high;
  };
  static bool isBelow(const Edge& a, const Edge& b);
  std::size_t firstFrom(double x) const;
  void sortStretch(std::uint32_t* first, std::size_t count);
  const Edge* below(const std::uint32_t* first, std::size_t count, const Point& point) const;

  std::vector<Point> points_;
  std::vector<double> xs_;  // of the points, ascending, each once
  double highest_ = -std::numeric_limits<double>::infinity();
  std::size_t numLeaves_ = 1;  // of the tree, a power of two
  std::vector<Edge> edges_;    // those that span a point's x
  std::vector<Span> spans_;    // the points that they span
  std::vector<std::uint32_t> merged_;
};
