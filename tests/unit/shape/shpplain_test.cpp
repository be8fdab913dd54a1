// The short roads of plain rings and lines, held against doing it point by point.
#include <cmath>
#include <random>

#include "tests/unit/shape/shapetest.h"
#include "vex/shape/shapeout.h"
#include "vex/shape/shpgeom.h"
#include "vex/shape/shpparts.h"

namespace {

constexpr unsigned kSeed = 19980812;

struct Points {
  Reals x, y;
  std::size_t size() const { return x.size(); }
  void add(double px, double py) {
    x.push_back(px);
    y.push_back(py);
  }
  bool isSame(std::size_t i, std::size_t j) const { return x[i] == x[j] && y[i] == y[j]; }
  Reals interleaved() const {
    Reals xy;
    for (std::size_t i = 0; i < size(); ++i) xy.insert(xy.end(), {x[i], y[i]});
    return xy;
  }
};

std::string bitsOf(std::span<const double> values) {
  return reals(Reals(values.begin(), values.end()));
}

// A walk of `count` points, closed now and then, on a grid so small that it meets itself, or on a large one.
Points randomWalk(std::mt19937& random, std::size_t count, bool isSmall) {
  constexpr double kSmall[] = {-0.0, 0.0, 1.0, 2.0};
  auto number = [&] { return isSmall ? kSmall[random() % 4] : static_cast<double>(random() % 100000) / 16.0 - 2000.0; };
  Points walk;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = number();
    walk.add(x, number());
  }
  if (count > 1 && random() % 4 != 0) {
    walk.x.back() = walk.x[0];
    walk.y.back() = walk.y[0];
  }
  return walk;
}

// What a reader makes of a ring: nothing twice in succession but its first point where the ring goes on from there.
Points readRing(const Points& stored) {
  Points ring;
  for (std::size_t i = 0; i < stored.size(); ++i) {
    const std::size_t size = ring.size();
    if (size > 0 && stored.x[i] == ring.x.back() && stored.y[i] == ring.y.back()) continue;
    if (size > 1 && ring.isSame(size - 1, 0)) ring.add(ring.x[size - 1], ring.y[size - 1]);
    ring.add(stored.x[i], stored.y[i]);
  }
  if (ring.size() < 2 || !ring.isSame(ring.size() - 1, 0)) ring.add(ring.x[0], ring.y[0]);
  return ring.size() < 4 ? Points() : ring;
}

Points readLine(const Points& stored) {
  Points line;
  for (std::size_t i = 0; i < stored.size(); ++i)
    if (i == 0 || stored.x[i] != line.x.back() || stored.y[i] != line.y.back()) line.add(stored.x[i], stored.y[i]);
  return line;
}

TEST(ShapePlain, PartsAreReadAsPointByPoint) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  ShapeDecoder decoder(false);
  VEXFeature feature(2, 0);
  int numPlain = 0;
  for (int round = 0; round < 20000; ++round) {
    const bool isArea = random() % 2 == 0;
    const std::size_t numParts = 1 + (random() % 4 == 0 ? random() % 3 : 0);
    Points stored, wanted;
    Ints starts;
    for (std::size_t part = 0; part < numParts; ++part) {
      const Points walk = randomWalk(random, 1 + random() % 11, random() % 2 == 0);
      const Points read = isArea ? readRing(walk) : readLine(walk);
      starts.push_back(static_cast<std::uint32_t>(stored.size()));
      if (!isArea && part > 0) wanted.add(wanted.x.back(), wanted.y.back());
      for (std::size_t i = 0; i < walk.size(); ++i) stored.add(walk.x[i], walk.y[i]);
      for (std::size_t i = 0; i < read.size(); ++i) wanted.add(read.x[i], read.y[i]);
    }
    const std::uint32_t type = isArea ? 5 : 3;
    Reals xy = stored.interleaved();
    std::string content = parts(type, starts, xy);
    shp::Record record;
    ASSERT_EQ(shp::decodeRecord(content, record), shp::RecordFault::None);
    feature.resetForFilling(2);  // the last round's coordinates are still there
    ASSERT_TRUE(decoder.decode(record, feature));
    shp::Points ring;
    VEXFeature plain(2, 0);
    if (shp::findSingleRing(content, ring) && ShapeDecoder::decodePlainRing(ring, plain)) {
      ++numPlain;
      EXPECT_EQ(describe(plain), describe(feature)) << round;
      EXPECT_EQ(bitsOf(plain.xs()) + bitsOf(plain.ys()), reals(stored.x) + reals(stored.y)) << round;
      EXPECT_EQ(plain.numCoords(), feature.numCoords()) << round;
    }
    EXPECT_EQ(bitsOf(feature.xs()), reals(wanted.x)) << round;
    EXPECT_EQ(bitsOf(feature.ys()), reals(wanted.y)) << round;
    const std::uint32_t code = isArea ? VEX_GEOM_POLYGON : VEX_GEOM_LINE;
    EXPECT_EQ(feature.geomType(), wanted.size() == 0 ? static_cast<std::uint32_t>(VEX_GEOM_UNDEFINED) : code);

    xy[random() % xy.size()] = round % 2 == 0 ? std::nan("") : -INFINITY;
    content = parts(type, starts, xy);
    ASSERT_EQ(shp::decodeRecord(content, record), shp::RecordFault::None);
    feature.resetForFilling(2);
    EXPECT_FALSE(decoder.decode(record, feature)) << round;
    EXPECT_FALSE(shp::findSingleRing(content, ring) && ShapeDecoder::decodePlainRing(ring, plain)) << round;
  }
  EXPECT_GT(numPlain, 1000);
}

// Points in front of the first part, or behind no part at all, must be numbers, too.
TEST(ShapePlain, PointsOfNoPartAreLookedAt) {
  ShapeDecoder decoder(false);
  for (const Ints& starts : {Ints{}, Ints{2}}) {
    for (const double x : {5.0, static_cast<double>(INFINITY)}) {
      const std::string content = parts(5, starts, {0, 0, x, 0, 1, 1, 1, 2, 2, 2, 1, 1});
      shp::Record record;
      ASSERT_EQ(shp::decodeRecord(content, record), shp::RecordFault::None);
      VEXFeature feature(2, 0);
      EXPECT_EQ(decoder.decode(record, feature), x == 5.0);
    }
  }
}

// Twice the area, and the box, point by point.
PlainRing measureInOrder(const Points& ring) {
  PlainRing measures;
  double sum = 0.0, lastDx = 0.0;
  measures.box.add(ring.x[0], ring.y[0]);
  for (std::size_t i = 1; i < ring.size(); ++i) {
    const double dx = ring.x[i] - ring.x[0];
    sum += (dx + lastDx) * (ring.y[i] - ring.y[i - 1]);
    lastDx = dx;
    measures.box.add(ring.x[i], ring.y[i]);
  }
  measures.area = sum / 2.0;
  return measures;
}

std::string bitsOf(const ShapeExtent& box) {
  return reals({box.minX, box.minY, box.maxX, box.maxY});
}

// Fans around a middle; `flatness` presses them onto a slanted line far from the origin, down to an area of rounding.
Points randomRing(std::mt19937& random, double flatness) {
  std::uniform_real_distribution<double> number(0.0, 1.0);
  const std::size_t edges = 3 + random() % 9;
  const double middle = std::ldexp(number(random), static_cast<int>(random() % 30));
  const double turn = random() % 2 == 0 ? 6.25 : -6.25;
  Points ring;
  for (std::size_t i = 0; i < edges; ++i) {
    const double angle = turn * static_cast<double>(i) / static_cast<double>(edges);
    const double along = std::cos(angle) * (0.5 + number(random));
    ring.add(middle + along, 2.0 * middle + 3.0 * along + flatness * std::sin(angle));
  }
  ring.add(ring.x[0], ring.y[0]);
  return ring;
}

TEST(ShapePlain, RingsAreMeasuredAsPointByPoint) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  for (const double flatness : {1.0, 1e-6, 1e-11, 1e-13, 1e-15, 0.0}) {
    int numPlain = 0;
    for (int round = 0; round < 5000; ++round) {
      const Points ring = randomRing(random, flatness);
      PlainRing measures;
      if (!measurePlainRing(ring.x.data(), ring.y.data(), ring.size(), measures)) continue;
      ++numPlain;
      const PlainRing wanted = measureInOrder(ring);
      EXPECT_EQ(measures.area > 0.0, wanted.area > 0.0) << round;
      EXPECT_NE(wanted.area, 0.0) << round;
      EXPECT_EQ(bitsOf(measures.box), bitsOf(wanted.box)) << round;
    }
    if (flatness == 1.0) {
      EXPECT_EQ(numPlain, 5000) << "an ordinary ring goes the short way";
    }
  }
}

TEST(ShapePlain, OddRingsAreLeftToTheLongWay) {
  auto isPlain = [](const Points& ring) {
    PlainRing measures;
    return measurePlainRing(ring.x.data(), ring.y.data(), ring.size(), measures);
  };
  std::mt19937 random(kSeed);
  for (std::size_t edges = 3; edges <= 8; ++edges) {
    Points ring;
    for (std::size_t i = 0; i < edges; ++i) ring.add(10.0 + static_cast<double>(i), static_cast<double>(i * i));
    ring.add(10.0, 0.0);
    EXPECT_TRUE(isPlain(ring)) << edges;
    for (std::size_t at = 0; at <= edges; ++at) {
      for (const double strange : {std::nan(""), static_cast<double>(INFINITY), -static_cast<double>(INFINITY)}) {
        Points odd = ring;
        odd.x[at] = strange;
        EXPECT_FALSE(isPlain(odd)) << edges << " " << at;
        std::swap(odd.x, odd.y);
        EXPECT_FALSE(isPlain(odd)) << edges << " " << at;
      }
      if (at > 0 && at < edges) {
        Points touches = ring;
        touches.x[at] = ring.x[0];
        EXPECT_TRUE(isPlain(touches)) << "above the first point";
        touches.y[at] = ring.y[0];
        EXPECT_FALSE(isPlain(touches)) << edges << " " << at;
      }
      Points repeats = ring;
      repeats.x.insert(repeats.x.begin() + static_cast<std::ptrdiff_t>(at), ring.x[at]);
      repeats.y.insert(repeats.y.begin() + static_cast<std::ptrdiff_t>(at), ring.y[at]);
      EXPECT_FALSE(isPlain(repeats)) << edges << " " << at;
    }
    Points line;
    for (std::size_t i = 0; i < edges; ++i) line.add(static_cast<double>(i), 2.0 * static_cast<double>(i));
    line.add(0.0, 0.0);
    EXPECT_FALSE(isPlain(line)) << "no area";
    Points huge = ring;
    for (double& x : huge.x) x *= 1e307;
    EXPECT_FALSE(isPlain(huge)) << "an area beyond all numbers";
  }
  // Of two zeros the first stays in the box.
  for (const double first : {0.0, -0.0}) {
    PlainRing measures;
    const Points ring{{first, 5.0, -first, first}, {-first, first, 5.0, -first}};
    ASSERT_TRUE(measurePlainRing(ring.x.data(), ring.y.data(), 4, measures));
    EXPECT_EQ(bitsOf(measures.box), bitsOf(measureInOrder(ring).box));
  }
}

// A polygon goes the short way; as the only part of an aggregate it goes through the parts.
TEST_F(ShapeTest, WritesTheSameBytesEitherWay) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  for (int round = 0; round < 30; ++round) {
    std::vector<VEXFeaturePtr> plain, wrapped;
    for (int i = 0; i < 20; ++i) {
      Points ring = randomWalk(random, 3 + random() % 9, random() % 3 == 0);
      if (random() % 20 == 0) ring.x[random() % ring.size()] = std::nan("");
      plain.push_back(makeFeature("s polygon"));
      wrapped.push_back(makeFeature("s aggregate"));
      wrapped.back()->addCoord(VEX_GEOM_POLYGON, static_cast<double>(ring.size()));
      for (std::size_t c = 0; c < ring.size(); ++c) {
        plain.back()->addCoord(ring.x[c], ring.y[c]);
        wrapped.back()->addCoord(ring.x[c], ring.y[c]);
      }
    }
    const std::string refused = writeAll("shape_polygon", plain);
    const std::string shp = bytesOf("s.shp"), shx = bytesOf("s.shx");
    EXPECT_EQ(writeAll("shape_polygon", wrapped), refused);
    EXPECT_EQ(bytesOf("s.shp"), shp);
    EXPECT_EQ(bytesOf("s.shx"), shx);
  }
}

// Records on both sides of each end of a block, and of a buffer that is written.
TEST_F(ShapeTest, CarriesMoreThanABlock) {
  std::vector<VEXFeaturePtr> features;
  constexpr int kMany = 3000;
  for (int i = 0; i < kMany; ++i) {
    features.push_back(makeFeature("s {N=" + std::to_string(i % 100) + "} polygon"));
    for (int c = 0; c < 60; ++c) features.back()->addCoord(i + std::cos(c / 10.0), -i - std::sin(c / 10.0));
    features.back()->addCoord(i + 1.0, -i);
  }
  VEXStringVector wanted;
  for (const VEXFeaturePtr& feature : features) wanted.push_back(describe(*feature));
  ASSERT_EQ(writeAll("shape_polygon", features), "");
  EXPECT_GT(std::filesystem::file_size(at("s.shp")), 2u << 20);
  EXPECT_TRUE(readAll() == joined(wanted, "; "));
}

}  // namespace
