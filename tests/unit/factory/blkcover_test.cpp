// Blocks computed one by one give the same pieces as all computed at once.
#include "vex/factory/blkcover.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <string>

namespace {

using Random = std::mt19937_64;

double part(Random& random) {
  return static_cast<double>(random() >> 11) * 0x1p-53;
}

struct Ring {
  std::vector<double> xs, ys, zs;
  std::int32_t feature = 0;
  bool isDoubtful = false;
  void add(double x, double y) {
    xs.push_back(x);
    ys.push_back(y);
  }
};
using Rings = std::vector<Ring>;

// ---- fields of small shapes ----

struct Field {
  const char* name;
  double origin, unit;    // of coordinates
  double spread, jitter;  // of parcels, in units
  double oddShare;        // of other shapes among the parcels
  bool hasZ;
  bool isExact;  // single precision is fine beside the shapes: then pieces are the same to the byte
};

// The same for all that ask for the same corner.
double corner(std::size_t at, std::uint64_t seed) {
  Random random(at * 7919 + seed);
  return part(random) - 0.5;
}

void addOddShape(Rings& rings, Random& random, double x, double y, std::int32_t feature) {
  const double a = part(random), b = part(random);
  auto put = [&](std::initializer_list<std::pair<double, double>> places, bool isDoubtful = false) {
    Ring& ring = rings.emplace_back();
    ring.feature = feature;
    ring.isDoubtful = isDoubtful;
    for (const auto& [dx, dy] : places) ring.add(x + dx, y + dy);
    ring.add(ring.xs.front(), ring.ys.front());
  };
  switch (random() % 6) {
    case 0:  // a bow tie
      return put({{0, 0}, {1, 1 + a}, {1, 0}, {0, 1 + b}});
    case 1:  // two squares that touch in a point
      return put({{0, 0}, {0, 0.5}, {0.5, 0.5}, {0.5, 1}, {1, 1}, {1, 0.5}, {0.5, 0.5}, {0.5, 0}});
    case 2:  // a curl
      return put({{0, 0}, {0, 2 + a}, {3, 4}, {0, 4}, {3, 2 + b}, {3, 0}});
    case 3:  // a donut
      put({{0, 0}, {0, 3}, {3, 3}, {3, 0}});
      return put({{1, 1}, {2, 1}, {2, 2 + 0.5 * a}, {1, 2}});
    case 4:  // a hole that touches the shell in two points parts the area
      put({{0, 0}, {0, 2}, {2, 2}, {2, 0}});
      return put({{0, 1}, {1, 0.5}, {2, 1}, {1, 1.5}});
    default:  // a hole outside of its shell; and out and back
      put({{0, 0}, {0, 1}, {1, 1}, {1, 0}});
      put({{2 + a, 0}, {3, 0}, {3, 1}}, true);
      return put({{-1, -1}, {-1, b}, {-1, -0.5}});
  }
}

Rings makeField(const Field& field, std::size_t side, std::uint64_t seed) {
  Rings rings;
  Random random(seed);
  std::int32_t feature = 0;
  for (std::size_t column = 0; column < side; ++column) {
    for (std::size_t row = 0; row < side; ++row, ++feature) {
      const std::size_t before = rings.size();
      if (part(random) < field.oddShare) {
        addOddShape(rings, random, static_cast<double>(column), static_cast<double>(row), feature);
      } else if (part(random) < 0.9) {
        Ring& ring = rings.emplace_back();
        ring.feature = feature;
        for (const auto& [dx, dy] : {std::pair(0, 0), {0, 1}, {1, 1}, {1, 0}, {0, 0}}) {
          const std::size_t at = (column + static_cast<std::size_t>(dx)) * 4096 + row + static_cast<std::size_t>(dy);
          const double x = static_cast<double>(column) + dx + 0.3 * corner(at, 1) + field.jitter * (part(random) - 0.5);
          const double y = static_cast<double>(row) + dy + 0.3 * corner(at, 2) + field.jitter * (part(random) - 0.5);
          ring.add(x + field.spread * (dx - 0.5), y + field.spread * (dy - 0.5));
        }
        ring.xs.back() = ring.xs.front();
        ring.ys.back() = ring.ys.front();
      }
      for (std::size_t at = before; at < rings.size(); ++at) {
        Ring& ring = rings[at];
        for (double& x : ring.xs) x = field.origin + field.unit * x;
        for (double& y : ring.ys) y = 10.0 * field.origin + field.unit * y;
        double area = 0.0;
        for (std::size_t i = 0; i + 1 < ring.xs.size(); ++i)
          area += (ring.xs[i] - ring.xs[0]) * (ring.ys[i + 1] - ring.ys[0]) -
                  (ring.xs[i + 1] - ring.xs[0]) * (ring.ys[i] - ring.ys[0]);
        if ((area > 0.0) != (at > before)) {  // shells clockwise
          std::reverse(ring.xs.begin(), ring.xs.end());
          std::reverse(ring.ys.begin(), ring.ys.end());
        }
        if (field.hasZ && feature % 3 == 0)
          for (double x : ring.xs) ring.zs.push_back(std::sin(x));
      }
    }
  }
  return rings;
}

// Rings around the middle of the field, of its own size and smaller, that cross hundreds of shapes.
void addLargeRings(Rings& rings, double side, std::size_t count) {
  for (std::size_t at = 0; at < count; ++at) {
    const std::int32_t feature = rings.back().feature + 1;
    Ring& ring = rings.emplace_back();
    ring.feature = feature;
    for (int step = 0; step < 60; ++step) {
      const double radius = side * (0.1 + 0.4 / static_cast<double>(at + 1)) * (step % 2 == 0 ? 1.0 : 0.98);
      const double angle = -step * 6.283185307179586 / 60.0;
      ring.add(0.5 * side + radius * std::cos(angle), 0.5 * side + radius * std::sin(angle));
    }
    ring.add(ring.xs.front(), ring.ys.front());
  }
}

// ---- what comes of it, as text ----

struct Outcome {
  std::size_t numBlocks = 0;
  std::vector<std::string> pieces;
  std::set<std::vector<std::int32_t>> groups;
  std::int64_t numInterior = 0;
  double area = 0.0;
};

Outcome outcomeOf(const Rings& rings, std::size_t blockCoords, bool keepsInterior) {
  VEXBlockCover cover(keepsInterior, blockCoords);
  for (const Ring& ring : rings) {
    cover.addRing(ring.xs, ring.ys, ring.zs, ring.feature);
    if (ring.isDoubtful) cover.doubt(ring.feature);
  }
  EXPECT_EQ(cover.compute(), nullptr);
  EXPECT_TRUE(cover.faults().empty());
  Outcome outcome;
  outcome.numBlocks = cover.numBlocks();
  outcome.numInterior = cover.numInterior();
  std::vector<std::pair<std::int32_t, std::int32_t>> members;
  cover.members(members);
  std::map<std::int32_t, std::vector<std::int32_t>> membersOf;
  for (const auto& [region, feature] : members) membersOf[region].push_back(feature);
  for (const auto& [region, features] : membersOf) outcome.groups.insert(features);
  for (VEXKeptPiece piece; cover.next(piece);) {
    std::string& text = outcome.pieces.emplace_back();
    auto put = [&text](const auto& values) {
      text.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
      text.push_back('|');
    };
    put(piece.xs);
    put(piece.ys);
    put(piece.zs);
    put(piece.chainIds);
    text.push_back(piece.isInterior ? 'i' : piece.coversRight ? 'r' : 'l');
    if (piece.isInterior) continue;
    put(std::span(membersOf[piece.region]).first(1));
    double area = 0.0;
    for (std::size_t i = 0; i + 1 < piece.xs.size(); ++i)
      area += (piece.xs[i + 1] - piece.xs[i]) *
              (0.5 * (piece.ys[i] - rings[0].ys[0]) + 0.5 * (piece.ys[i + 1] - rings[0].ys[0]));
    outcome.area += piece.coversRight ? area : -area;
  }
  return outcome;
}

TEST(BlockCover, BlocksGiveWhatTheWholeGives) {
  const Field fields[] = {
      {"parcels", 0, 1, 0.01, 0, 0, false, true},
      {"without gaps", 0, 1, 0, 0, 0, false, true},
      {"islands", 1000, 1, -0.4, 0, 0, false, true},
      {"odd", 0, 1, -0.02, 0, 0.1, false, true},
      {"odd, many alone", 0, 5, -0.9, 0, 0.1, true, true},
      {"slivers", 500000, 20, 0, 0.002, 0, false, true},
      {"fine slivers", 500000, 3, 0, 0.01, 0, false, false},
      {"odd, at the same places", 100, 1, 0, 0, 0.2, true, false},
      {"heaps", 7, 0.001, 1.5, 0.5, 0.1, true, false},
  };
  for (const Field& field : fields) {
    std::size_t numParted = 0;
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
      SCOPED_TRACE(std::string(field.name) + ", seed " + std::to_string(seed));
      const Rings rings = makeField(field, 40, seed);
      const bool keepsInterior = seed % 2 == 0;
      const Outcome whole = outcomeOf(rings, SIZE_MAX, keepsInterior);
      const Outcome parted = outcomeOf(rings, 800, keepsInterior);
      EXPECT_EQ(whole.numBlocks, 1U);
      EXPECT_FALSE(whole.pieces.empty());
      numParted += parted.numBlocks > 1 ? 1 : 0;
      EXPECT_TRUE(parted.groups == whole.groups);
      EXPECT_NEAR(parted.area, whole.area, field.isExact ? 1e-9 * whole.area : 1e-5 * whole.area);
      if (!field.isExact) continue;
      EXPECT_TRUE(parted.pieces == whole.pieces);
      EXPECT_EQ(parted.numInterior, whole.numInterior);
    }
    EXPECT_GE(numParted, 2U) << field.name;
  }
}

// Large shapes are a block of their own: they do not keep the others from being parted.
TEST(BlockCover, LargeShapesAmongSmallOnes) {
  for (const Field& field :
       {Field{"close", 0, 1, 0.01, 0, 0, false, true}, Field{"islands", 0, 1, -0.4, 0, 0.02, false, true}}) {
    for (std::uint64_t seed = 1; seed <= 2; ++seed) {
      SCOPED_TRACE(std::string(field.name) + ", seed " + std::to_string(seed));
      Rings rings = makeField(field, 80, seed);
      addLargeRings(rings, 80.0, 2);
      const Outcome whole = outcomeOf(rings, SIZE_MAX, seed % 2 == 0);
      const Outcome parted = outcomeOf(rings, 2500, seed % 2 == 0);
      EXPECT_GT(parted.numBlocks, 4U);
      EXPECT_TRUE(parted.pieces == whole.pieces);
      EXPECT_TRUE(parted.groups == whole.groups);
      EXPECT_EQ(parted.numInterior, whole.numInterior);
    }
  }
}

// Shapes in one row are no larger than blocks only because they are as high as all of it.
TEST(BlockCover, ARowIsParted) {
  Rings rings;
  for (std::int32_t feature = 0; feature < 2000; ++feature) {
    Ring& ring = rings.emplace_back();
    ring.feature = feature;
    const double x = feature, width = feature % 100 == 99 ? 0.9 : 1.01;
    for (const auto& [dx, y] : {std::pair(0.0, 0.0), {0.0, 1.0}, {width, 1.0}, {width, 0.0}, {0.0, 0.0}})
      ring.add(x + dx, y);
  }
  for (const bool isUpright : {false, true}) {
    if (isUpright) {
      for (Ring& ring : rings) {
        std::swap(ring.xs, ring.ys);
        std::reverse(ring.xs.begin(), ring.xs.end());
        std::reverse(ring.ys.begin(), ring.ys.end());
      }
    }
    const Outcome whole = outcomeOf(rings, SIZE_MAX, true), parted = outcomeOf(rings, 1000, true);
    EXPECT_EQ(parted.numBlocks, 16U);
    EXPECT_EQ(parted.groups.size(), 20U);
    EXPECT_TRUE(parted.pieces == whole.pieces);
    EXPECT_TRUE(parted.groups == whole.groups);
  }
}

// A hole along its shell: neither side of what they share is covered, yet it is a part of both rings.
TEST(BlockCover, RingsOfOneFeatureShareAStretch) {
  Rings rings = makeField({"", 0, 1, 0.01, 0, 0, false, true}, 30, 1);
  std::int32_t feature = rings.back().feature;
  for (int at = 0; at < 25; ++at) {
    const double x = at % 5 * 6, y = at / 5 * 6;
    Ring shell, hole;
    shell.feature = hole.feature = ++feature;
    for (const auto& [dx, dy] : {std::pair(0, 0), {0, 3}, {3, 3}, {3, 0}, {0, 0}}) shell.add(x + dx, y + dy);
    for (const auto& [dx, dy] : {std::pair(0, 1), {1, 1}, {1, 2}, {0, 2}, {0, 1}}) hole.add(x + dx, y + dy);
    rings.push_back(shell);
    rings.push_back(hole);
  }
  const Outcome whole = outcomeOf(rings, SIZE_MAX, true), parted = outcomeOf(rings, 1000, true);
  EXPECT_GT(parted.numBlocks, 1U);
  EXPECT_TRUE(parted.pieces == whole.pieces);
  EXPECT_TRUE(parted.groups == whole.groups);
}

// Two parts of a feature that no block can tell apart for sure: then all are computed at once.
TEST(BlockCover, WhatBlocksMayTellDifferentlyIsComputedAtOnce) {
  Rings rings = makeField({"", 0, 1, 0.01, 0, 0, false, true}, 30, 1);
  EXPECT_GT(outcomeOf(rings, 800, true).numBlocks, 1U);
  std::int32_t feature = rings.back().feature;
  constexpr double kTiny = 0x1p-24;
  for (int at = 0; at < 900; ++at) {
    Ring& ring = rings.emplace_back();
    ring.feature = ++feature;
    const double x = at / 30 + 0.015625, y = at % 30 + 0.015625;
    for (const auto& [dx, dy] : {std::pair(0, 0), {0, 1}, {1, 1}, {1, 2}, {2, 2}, {2, 1}, {1, 1}, {1, 0}, {0, 0}})
      ring.add(x + kTiny * dx, y + kTiny * dy);
  }
  const Outcome whole = outcomeOf(rings, SIZE_MAX, true), parted = outcomeOf(rings, 800, true);
  EXPECT_EQ(parted.numBlocks, 1U);
  EXPECT_TRUE(parted.pieces == whole.pieces);
  EXPECT_TRUE(parted.groups == whole.groups);
  EXPECT_EQ(parted.numInterior, whole.numInterior);
}

}  // namespace
