// Dissolving against a plain answer: a place is covered when the rings of some feature turn around it.
#include "vex/factory/dissolve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "tests/unit/support.h"
#include "vex/src/plangeom.h"

namespace {

using Random = std::mt19937_64;

struct Place {
  double x, y;
  double clearance = 0.0;  // from edges, for the answer to be sure
};
using Ring = std::vector<Place>;  // first place again at the end
using Shape = std::vector<Ring>;  // a shell and its holes
using Shapes = std::vector<Shape>;

std::size_t below(Random& random, std::size_t limit) {
  return static_cast<std::size_t>(random() % limit);
}

double part(Random& random) {
  return static_cast<double>(random() >> 11) * 0x1p-53;
}

// ---- the plain answer ----

int turnsAround(const Ring& ring, Place at) {
  int turns = 0;
  for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
    const Place a = ring[i], b = ring[i + 1];
    if ((a.y <= at.y) == (b.y <= at.y)) continue;
    const double side = (b.x - a.x) * (at.y - a.y) - (b.y - a.y) * (at.x - a.x);
    if (b.y > a.y && side > 0.0) ++turns;
    if (b.y <= a.y && side < 0.0) --turns;
  }
  return turns;
}

double doubleArea(const Ring& ring) {
  double sum = 0.0;
  for (std::size_t i = 0; i + 1 < ring.size(); ++i) sum += ring[i].x * ring[i + 1].y - ring[i + 1].x * ring[i].y;
  return sum;
}

bool covers(const Shape& shape, Place at) {
  int turns = 0;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    const bool isReversed = (doubleArea(shape[i]) > 0.0) != (i > 0);  // shells run clockwise
    turns += isReversed ? -turnsAround(shape[i], at) : turnsAround(shape[i], at);
  }
  return turns != 0;
}

bool isNearEdge(const Shapes& shapes, Place at) {
  for (const Shape& shape : shapes)
    for (const Ring& ring : shape)
      for (std::size_t i = 0; i + 1 < ring.size(); ++i)
        if (distanceToSegment(at.x, at.y, ring[i].x, ring[i].y, ring[i + 1].x, ring[i + 1].y) < at.clearance)
          return true;
  return false;
}

// ---- random shapes on a small lattice, where much touches and overlaps ----

Ring box(double x1, double y1, double x2, double y2) {
  return {{x1, y1}, {x1, y2}, {x2, y2}, {x2, y1}, {x1, y1}};
}

Shape randomShape(Random& random, double spread) {
  auto place = [&] {
    Place at{static_cast<double>(below(random, 9)), static_cast<double>(below(random, 9))};
    at.x += spread * part(random);
    at.y += spread * part(random);
    return at;
  };
  auto closed = [](Ring ring) {
    ring.push_back(ring.front());
    return ring;
  };
  const Place a = place();
  const double width = 1.0 + static_cast<double>(below(random, 4)),
               height = 1.0 + static_cast<double>(below(random, 4));
  switch (below(random, 6)) {
    case 0:  // a bow tie
      return {closed({a, {a.x + width, a.y + height}, {a.x + width, a.y}, {a.x, a.y + height}})};
    case 1:  // a curl: the loop at its top runs the other way round, or the same way
      if (below(random, 2) == 0)
        return {closed({a, {a.x, a.y + 2}, {a.x + 3, a.y + 4}, {a.x, a.y + 4}, {a.x + 3, a.y + 2}, {a.x + 3, a.y}})};
      return {closed({a,
                      {a.x + 4, a.y},
                      {a.x + 4, a.y + 3},
                      {a.x + 1, a.y + 3},
                      {a.x + 1, a.y + 1},
                      {a.x + 3, a.y + 1},
                      {a.x + 3, a.y + 4},
                      {a.x, a.y + 4}})};
    case 2: {  // islands and holes; a hole may touch the shell, or lie outside of it
      Shape donut{box(a.x, a.y, a.x + 6, a.y + 6)};
      const double x = a.x + static_cast<double>(below(random, 3)), y = a.y + 1;
      donut.push_back(box(x, y, x + 2, y + 2));
      if (below(random, 3) == 0) donut.push_back(box(a.x + 4, a.y + 4, a.x + 5, a.y + 5));
      if (below(random, 3) == 0) donut.push_back(box(a.x + 7, a.y + 2, a.x + 8, a.y + 4));
      return donut;
    }
    case 3: {
      Ring ring;
      for (std::size_t count = 3 + below(random, 5); count > 0; --count) ring.push_back(place());
      return {closed(ring)};
    }
    default:
      return {box(a.x, a.y, a.x + width, a.y + height)};
  }
}

void addTo(VEXDissolver& dissolver, const Shape& shape, std::int32_t number) {
  VEXFeature feature;
  for (const Ring& ring : shape)
    for (const Place& at : ring) feature.addCoord(at.x, at.y);
  feature.restoreGeometry(shape.size() > 1 ? VEX_GEOM_DONUT : VEX_GEOM_POLYGON, 2);
  ASSERT_EQ(dissolver.add(feature, number), nullptr);
}

TEST(Dissolver, CoversWhatAnyFeatureTurnsAround) {
  constexpr std::uint64_t kSeed = 60606;
  constexpr double kBeside = 1e-4, kClear = 0.5 * kBeside;
  std::size_t numCovered = 0, numHeld = 0, numTurned = 0;
  for (std::uint64_t round = 0; round < 1200; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed + round));
    Random random(kSeed + round);
    const double spread = below(random, 2) == 0 ? 0.0 : 0.3;
    Shapes shapes;
    VEXDissolver dissolver(false, false);
    for (std::size_t count = 1 + below(random, 7); shapes.size() < count;) {
      shapes.push_back(randomShape(random, spread));
      addTo(dissolver, shapes.back(), static_cast<std::int32_t>(shapes.size()) - 1);
    }
    ASSERT_EQ(dissolver.dissolve(), nullptr);
    ASSERT_TRUE(dissolver.faults().empty());
    // Places anywhere, inside of each polygon, and close to both sides of every edge.
    std::vector<Place> places;
    for (int i = 0; i < 60; ++i) places.push_back({16.0 * part(random) - 1.0, 16.0 * part(random) - 1.0, kClear});
    for (const Shape& shape : shapes)
      for (const Ring& ring : shape)
        for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
          const double dx = ring[i + 1].x - ring[i].x, dy = ring[i + 1].y - ring[i].y;
          const double length = std::hypot(dx, dy);
          for (int k = 0; length > 0.0 && k < 12; ++k) {
            const double along = part(random), beside = (k % 2 == 0 ? kBeside : -kBeside) / length;
            places.push_back({ring[i].x + along * dx - beside * dy, ring[i].y + along * dy + beside * dx, kClear});
          }
        }
    for (const VEXLine& polygon : dissolver.polygons()) {  // some are very small
      VEXPoint inside;
      ASSERT_EQ(polygon.insidePoint(true, inside), nullptr);
      places.push_back({inside.x, inside.y, 1e-9});
    }
    std::set<std::pair<std::int32_t, std::size_t>> memberships;
    for (const Place& at : places) {
      if (isNearEdge(shapes, at)) continue;
      std::vector<std::int32_t> coverers;
      for (std::size_t i = 0; i < shapes.size(); ++i)
        if (covers(shapes[i], at)) coverers.push_back(static_cast<std::int32_t>(i));
      std::vector<std::size_t> holders;
      for (std::size_t i = 0; i < dissolver.polygons().size(); ++i) {
        bool isHeld = false;
        ASSERT_EQ(dissolver.polygons()[i].containsPoint(at.x, at.y, isHeld), nullptr);
        if (isHeld) holders.push_back(i);
      }
      ASSERT_EQ(holders.size(), coverers.empty() ? 0U : 1U) << at.x << " " << at.y;
      for (std::int32_t coverer : coverers) memberships.emplace(coverer, holders[0]);
      if (!coverers.empty()) ++numCovered;
    }
    const auto& found = dissolver.memberships();
    ASSERT_EQ((std::set<std::pair<std::int32_t, std::size_t>>(found.begin(), found.end())), memberships);
    numHeld += memberships.size();
    for (const Shape& shape : shapes)
      numTurned += shape.size() == 1 && shape[0].size() == 5 && doubleArea(shape[0]) == 0.0 ? 1 : 0;
  }
  EXPECT_GT(numCovered, 100000U);
  EXPECT_GT(numHeld, 3000U);
  EXPECT_GT(numTurned, 200U);  // bow ties
}

// What runs out and back inside of a polygon covers nothing, whether it meets something on the way or not.
TEST(Dissolver, WhatHasNoAreaIsAMemberOfNothing) {
  VEXDissolver dissolver(false, false);
  const Ring square = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}};
  const Shapes shapes = {{square}, {{{4, 4}, {6, 4}, {4, 4}}}, {{{8, 8}, {12, 8}, {8, 8}}}, {{{5, 3}, {5, 5}, {5, 3}}}};
  for (std::size_t i = 0; i < shapes.size(); ++i) addTo(dissolver, shapes[i], static_cast<std::int32_t>(i));
  ASSERT_EQ(dissolver.dissolve(), nullptr);
  EXPECT_EQ(dissolver.polygons().size(), 1U);
  EXPECT_EQ(dissolver.memberships(), (std::vector<std::pair<std::int32_t, std::size_t>>{{0, 0}}));
}

// One that comes first without z takes it from no other.
TEST(Dissolver, KeepsTheZOfThoseThatHaveAny) {
  for (const bool isNoded : {false, true}) {
    VEXDissolver dissolver(isNoded, false);
    addTo(dissolver, {box(0, 0, 1, 1)}, 0);
    VEXFeature high(3);
    for (const Place& at : box(5, 5, 6, 6)) high.addCoord(at.x, at.y, 10.0 + at.x);
    high.restoreGeometry(VEX_GEOM_POLYGON, 3);
    ASSERT_EQ(dissolver.add(high, 1), nullptr);
    ASSERT_EQ(dissolver.dissolve(), nullptr);
    ASSERT_EQ(dissolver.polygons().size(), 2U);
    for (const VEXLine& polygon : dissolver.polygons()) {
      ASSERT_TRUE(polygon.hasZ());
      for (std::size_t i = 0; i < polygon.numCoords(); ++i)
        EXPECT_EQ(polygon.zs()[i], polygon.xs()[i] > 4.0 ? 10.0 + polygon.xs()[i] : 0.0);
    }
  }
}

// Shapes hardly larger than a step of single precision: the places that become one turn some of them inside out. That
// takes nothing from a square around them.
TEST(Dissolver, WhatNodingTurnsInsideOutCoversStill) {
  std::size_t numPolygons = 0;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    VEXDissolver alone(false, false), inSquare(false, false);
    constexpr std::int32_t kCount = 300;
    for (std::int32_t number = 0; number < kCount; ++number) {
      const double x = 100.0 + 2e-5 * part(random), y = 70.0 + 2e-5 * part(random);
      const double size = 1e-7 + 6e-7 * part(random), angle = 3.0 * part(random);
      const double dx = size * std::cos(angle), dy = size * std::sin(angle);
      const Ring ring = {{x + dx, y + dy}, {x - dy, y + dx}, {x - dx, y - dy}, {x + dy, y - dx}, {x + dx, y + dy}};
      addTo(alone, {ring}, number);
      addTo(inSquare, {ring}, number);
    }
    addTo(inSquare, {box(99, 69, 101, 71)}, kCount);
    ASSERT_EQ(alone.dissolve(), nullptr);
    std::set<std::size_t> withMembers;
    for (const auto& [number, polygon] : alone.memberships()) withMembers.insert(polygon);
    EXPECT_EQ(withMembers.size(), alone.polygons().size());
    numPolygons += alone.polygons().size();
    ASSERT_EQ(inSquare.dissolve(), nullptr);
    ASSERT_EQ(inSquare.polygons().size(), 1U);
    EXPECT_EQ(inSquare.polygons()[0].numCoords(), 5U);
  }
  EXPECT_GT(numPolygons, 20U);
}

// Lines that cross spoil the faces on either side of them; that is one fault.
TEST(Dissolver, TellsAFaultOnce) {
  struct Row {
    Shapes shapes;
    std::size_t numFaults;
    std::vector<std::int32_t> faulty;
  };
  // Two that share a vertex, cross nearby, and are said to be noded.
  const Ring one = {{2, 0}, {1, 0}, {2, 3}, {2, 0}};
  const Ring two = {{4, 4}, {0, 1}, {2, 3}, {4, 4}};
  auto moved = [](Ring ring, double by) {
    for (Place& at : ring) at.x += by;
    return ring;
  };
  for (const Row& row : {Row{{{one}}, 0, {}}, Row{{{one}, {two}}, 1, {0, 1}},
                         Row{{{one}, {moved(one, 40)}, {moved(two, 20)}, {moved(one, 20)}, {two}}, 2, {0, 2, 3, 4}}}) {
    VEXDissolver dissolver(true, false);
    for (std::size_t i = 0; i < row.shapes.size(); ++i) addTo(dissolver, row.shapes[i], static_cast<std::int32_t>(i));
    ASSERT_EQ(dissolver.dissolve(), nullptr);
    EXPECT_EQ(dissolver.faults().size(), row.numFaults);
    EXPECT_EQ(dissolver.faulty(), row.faulty);
  }
}

}  // namespace
