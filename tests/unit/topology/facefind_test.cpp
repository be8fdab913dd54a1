// The finder against plain answers: edges that do not cross, on a small lattice, so that points lie on edges and on
// their ends and many share an x; rings in rings; and edges that do cross.
#include "vex/topology/facefind.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace {

using Random = std::mt19937_64;
constexpr std::uint32_t kNothing = VEXFaceFinder::kNothing;

int pick(Random& random, int limit) {
  return static_cast<int>(random() % static_cast<std::uint64_t>(limit));
}

struct LatticeEdge {
  int x1, y1, x2, y2;
  std::uint32_t group;
};

int side(const LatticeEdge& edge, int x, int y) {
  const int cross = (edge.x2 - edge.x1) * (y - edge.y1) - (edge.y2 - edge.y1) * (x - edge.x1);
  return (cross > 0) - (cross < 0);
}

LatticeEdge randomEdge(Random& random, int size) {
  const int reach = pick(random, 4) == 0 ? size : 3;  // a long one now and then
  LatticeEdge edge{};
  do {
    edge.x1 = pick(random, size), edge.y1 = pick(random, size);
    edge.x2 = edge.x1 + pick(random, 2 * reach + 1) - reach;
    edge.y2 = edge.y1 + pick(random, 2 * reach + 1) - reach;
  } while (edge.x1 == edge.x2 && edge.y1 == edge.y2);
  edge.group = static_cast<std::uint32_t>(pick(random, 4));
  return edge;
}

// Edges may end on one another.
bool crossOrOverlap(const LatticeEdge& a, const LatticeEdge& b) {
  const int a1 = side(b, a.x1, a.y1), a2 = side(b, a.x2, a.y2), b1 = side(a, b.x1, b.y1), b2 = side(a, b.x2, b.y2);
  if (a1 != 0 || a2 != 0) return a1 * a2 < 0 && b1 * b2 < 0;
  auto first = [](const LatticeEdge& edge) { return std::min(std::pair(edge.x1, edge.y1), {edge.x2, edge.y2}); };
  auto last = [](const LatticeEdge& edge) { return std::max(std::pair(edge.x1, edge.y1), {edge.x2, edge.y2}); };
  return first(a) < last(b) && first(b) < last(a);
}

// The edge below the point, highest at its x or, where several are there, right of it.
std::uint32_t plainAnswer(const std::vector<LatticeEdge>& edges, int x, int y, std::uint32_t group) {
  std::uint32_t best = kNothing;
  double bestY = 0.0, bestSlope = 0.0;  // far apart against the rounding, on a small lattice, unless they are equal
  for (std::size_t i = 0; i < edges.size(); ++i) {
    LatticeEdge edge = edges[i];
    const bool runsRight = edge.x1 < edge.x2;
    if (!runsRight) edge = {edge.x2, edge.y2, edge.x1, edge.y1, edge.group};
    if (edge.group == group || !(edge.x1 <= x && x < edge.x2) || side(edge, x, y) < 0) continue;
    const double slope = static_cast<double>(edge.y2 - edge.y1) / (edge.x2 - edge.x1);
    const double height = edge.y1 + slope * (x - edge.x1);
    if (best != kNothing && (height < bestY - 1e-9 || (height < bestY + 1e-9 && slope < bestSlope))) continue;
    best = static_cast<std::uint32_t>(2 * i + (runsRight ? 0 : 1));
    bestY = height;
    bestSlope = slope;
  }
  return best;
}

TEST(FaceFinder, FindsTheEdgeBelow) {
  Random random(20);
  for (int round = 0; round < 600; ++round) {
    const int size = 6 + pick(random, 30);
    std::vector<LatticeEdge> edges;
    for (int tries = pick(random, 300); tries > 0; --tries) {
      const LatticeEdge edge = randomEdge(random, size);
      bool isFree = true;
      for (const LatticeEdge& other : edges) isFree = isFree && !crossOrOverlap(edge, other);
      if (isFree) edges.push_back(edge);
    }
    std::vector<std::array<int, 3>> places;  // x, y, group: more groups than the edges have
    for (int count = pick(random, 100); count > 0; --count)
      places.push_back({pick(random, size), pick(random, size), pick(random, 8)});
    // Powers of two, so that nothing is rounded: as they are, as small and as large as numbers can be.
    for (double unit : {1.0, 0x1p-1070, 0x1p1018}) {
      auto at = [&](int place) { return (place - size / 2) * unit; };
      std::vector<VEXFaceFinder::Point> points;
      for (const auto& [x, y, group] : places) points.push_back({at(x), at(y), static_cast<std::uint32_t>(group)});
      VEXFaceFinder finder(points);
      for (std::uint32_t i = 0; i < edges.size(); ++i)
        finder.addEdge(at(edges[i].x1), at(edges[i].y1), at(edges[i].x2), at(edges[i].y2), edges[i].group, 2 * i,
                       2 * i + 1);
      const std::vector<std::uint32_t> found = finder.find();
      ASSERT_EQ(found.size(), places.size());
      for (std::size_t i = 0; i < places.size(); ++i) {
        const auto& [x, y, group] = places[i];
        ASSERT_EQ(found[i], plainAnswer(edges, x, y, static_cast<std::uint32_t>(group)))
            << "round " << round << ", unit " << unit << ", point " << x << " " << y;
      }
    }
  }
}

// Squares that do not meet, askew. What holds one is the inside that its lowest point is in, or what holds the square
// beside which that is.
TEST(FaceFinder, LeavesOutGroupsThatHoldNothing) {
  struct Square {
    double x, y, width;
    bool holds(const Square& other) const {
      return x < other.x && y < other.y && other.x + other.width < x + width && other.y + other.width < y + width;
    }
    bool isApart(const Square& other) const {
      return x + width < other.x || other.x + other.width < x || y + width < other.y || other.y + other.width < y;
    }
  };
  Random random(21);
  for (int round = 0; round < 200; ++round) {
    std::vector<Square> squares;
    if (round % 3 == 0) squares.push_back({-1e9, 1e9, 10.0});  // all others are in one place against this
    const bool isLarge = round % 20 == 1;
    const double extent = isLarge ? 800.0 : 50.0 + pick(random, 200);
    if (isLarge) squares.push_back({-10.0, -10.0, 1100.0});  // around them all
    for (int tries = isLarge ? 3000 : 400; tries > 0; --tries) {
      const double width = pick(random, 8) == 0 ? pick(random, 200) + 1 : pick(random, 12) + 1;
      const Square square{std::floor(extent * (random() % 1000) / 1000), std::floor(extent * (random() % 1000) / 1000),
                          width};
      bool isFree = true;
      for (const Square& other : squares)
        isFree = isFree && (square.isApart(other) || square.holds(other) || other.holds(square));
      if (isFree) squares.push_back(square);
    }
    auto cornersOf = [](const Square& square) {  // counter-clockwise from the lowest
      std::vector<std::pair<double, double>> corners;
      for (const auto& [dx, dy] : {std::pair(1, 0), {1, 1}, {0, 1}, {0, 0}, {1, 0}}) {
        const double x = square.x + dx * square.width, y = square.y + dy * square.width;
        corners.emplace_back(x + 3 * y, 2 * y - x);
      }
      return corners;
    };
    for (bool isExtended : {false, true}) {
      std::vector<VEXFaceFinder::Point> points;
      for (std::uint32_t i = 0; i < squares.size(); ++i) {
        const auto [x, y] = cornersOf(squares[i]).front();
        points.push_back({x, y, i});
      }
      VEXFaceFinder finder(points);
      for (std::uint32_t i = 0; isExtended && i < squares.size(); ++i)
        for (const auto& [x, y] : cornersOf(squares[i])) finder.extend(i, x, y);
      for (std::uint32_t i = 0; i < squares.size(); ++i) {
        const auto corners = cornersOf(squares[i]);
        for (std::size_t k = 0; k + 1 < corners.size(); ++k)
          finder.addEdge(corners[k].first, corners[k].second, corners[k + 1].first, corners[k + 1].second, i, 2 * i,
                         2 * i + 1);
      }
      const std::vector<std::uint32_t> found = finder.find();
      for (std::size_t i = 0; i < squares.size(); ++i) {
        std::uint32_t at = found[i];
        while (at != kNothing && at % 2 != 0) at = found[at / 2];  // outside of a lower one
        std::uint32_t expected = kNothing;
        for (std::uint32_t j = 0; j < squares.size(); ++j)
          if (squares[j].holds(squares[i]) && (expected == kNothing || squares[expected / 2].width > squares[j].width))
            expected = 2 * j;
        ASSERT_EQ(at, expected) << "round " << round << ", square " << i << ", extended " << isExtended;
      }
    }
  }
}

TEST(FaceFinder, EndsWhenEdgesCross) {
  Random random(22);
  for (int round = 0; round < 100; ++round) {
    std::vector<VEXFaceFinder::Point> points;
    for (int i = 0; i < 200; ++i)
      points.push_back({1.0 * pick(random, 40), 1.0 * pick(random, 40), static_cast<std::uint32_t>(pick(random, 6))});
    VEXFaceFinder finder(points);
    const std::uint32_t numEdges = 1000;
    for (std::uint32_t i = 0; i < numEdges; ++i) {
      const LatticeEdge edge = randomEdge(random, 40);
      finder.addEdge(edge.x1, edge.y1, edge.x2, edge.y2, edge.group, i, i);
    }
    const std::vector<std::uint32_t> found = finder.find();
    ASSERT_EQ(found.size(), points.size());
    for (std::uint32_t at : found) EXPECT_TRUE(at == kNothing || at < numEdges) << at;
  }
}

}  // namespace
