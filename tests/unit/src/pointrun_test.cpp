// Runs of points two at a time, held against the same asked point by point.
#include "vex/src/pointrun.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "vex/src/plangeom.h"

namespace {

using Reals = std::vector<double>;

constexpr unsigned kSeed = 20261123;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Sample {
  Reals x, y;
  std::string points;  // as they stand in a file
};

// Few different values, so that much is equal.
Sample makeRun(std::mt19937& random, std::size_t count) {
  constexpr double kValues[] = {-1.5, -0.0, 0.0, 1.0, 2.0, 1e300};
  Sample run;
  for (std::size_t i = 0; i < count; ++i) {
    run.x.push_back(kValues[random() % std::size(kValues)]);
    run.y.push_back(kValues[random() % std::size(kValues)]);
  }
  return run;
}

void fillPoints(Sample& run) {
  run.points.clear();
  for (std::size_t i = 0; i < run.x.size(); ++i) {
    const double point[2] = {run.x[i], run.y[i]};
    run.points.append(reinterpret_cast<const char*>(point), sizeof point);
  }
}

bool areSameBits(const Reals& one, const Reals& other) {
  return one.size() == other.size() && (one.empty() || std::memcmp(one.data(), other.data(), 8 * one.size()) == 0);
}

TEST(PointRun, FindsWhatAPlainLoopFinds) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  for (int round = 0; round < 20000; ++round) {
    const std::size_t count = 1 + random() % 13;
    const Sample run = makeRun(random, count);
    auto same = [&](std::size_t i, std::size_t j) { return run.x[i] == run.x[j] && run.y[i] == run.y[j]; };
    const std::size_t from = random() % (count + 1);
    const std::size_t wanted = random() % count;
    std::size_t first = from;
    while (first < count && !same(first, wanted)) ++first;
    EXPECT_EQ(pointrun::findSame(run.x.data(), run.y.data(), from, count, run.x[wanted], run.y[wanted]), first);
    const std::size_t start = std::max<std::size_t>(from, 1);
    std::size_t repeat = start;
    while (repeat < count && !same(repeat, repeat - 1)) ++repeat;
    EXPECT_EQ(pointrun::findRepeat(run.x.data(), run.y.data(), start, count), repeat);
  }
}

TEST(PointRun, SeesStrangeNumbersAnywhere) {
  for (std::size_t count = 1; count <= 9; ++count) {
    EXPECT_TRUE(pointrun::areFinite(Reals(count, -1.7976931348623157e308).data(), count));
    EXPECT_TRUE(pointrun::areFinite(Reals(count, 4.9e-324).data(), count));
    for (const double strange : {kInfinity, -kInfinity, std::nan(""), -std::nan("1")}) {
      for (std::size_t at = 0; at < count; ++at) {
        Sample run{Reals(count, 7.0), Reals(count, 8.0), {}};
        run.x[at] = strange;
        EXPECT_FALSE(pointrun::areFinite(run.x.data(), count)) << count << " " << at;
        for (int axis = 0; axis < 2 && count >= 2; ++axis, std::swap(run.x, run.y)) {
          fillPoints(run);
          Reals x(count), y(count);
          EXPECT_FALSE(pointrun::spread<true>(run.points.data(), count, x.data(), y.data()).isFinite) << count << at;
          EXPECT_FALSE(pointrun::spread<false>(run.points.data(), count, x.data(), y.data()).isFinite) << count << at;
        }
      }
    }
  }
}

TEST(PointRun, SpreadsAndJoins) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  std::size_t numWithout = 0;
  for (int round = 0; round < 20000; ++round) {
    const std::size_t count = 2 + random() % 12;
    Sample run = makeRun(random, count);
    if (round % 2 == 0)  // often none is equal
      for (std::size_t i = 0; i < count; ++i) run.x[i] += static_cast<double>(random() % 64);
    fillPoints(run);
    bool follows = false, equalsFirst = false;
    for (std::size_t i = 1; i < count; ++i) {
      follows |= run.x[i] == run.x[i - 1];
      equalsFirst |= i + 1 < count && run.x[i] == run.x[0];
    }
    Reals x(count), y(count);
    const pointrun::Seen line = pointrun::spread<false>(run.points.data(), count, x.data(), y.data());
    EXPECT_TRUE(line.isFinite && line.mayRepeat == follows && areSameBits(x, run.x) && areSameBits(y, run.y));
    const pointrun::Seen ring = pointrun::spread<true>(run.points.data(), count, x.data(), y.data());
    EXPECT_TRUE(ring.isFinite && ring.mayRepeat == (follows || equalsFirst));
    EXPECT_TRUE(areSameBits(x, run.x) && areSameBits(y, run.y));
    numWithout += !ring.mayRepeat;

    std::string points(16 * count + 1, '\x5a');
    EXPECT_EQ(pointrun::join(x.data(), y.data(), count, points.data()), &points[16 * count]);
    EXPECT_EQ(points, run.points + '\x5a');
    EXPECT_EQ(pointrun::joinReversed(x.data(), y.data(), count, points.data()), &points[16 * count]);
    std::string turned;
    for (std::size_t i = count; i-- > 0;) turned += run.points.substr(16 * i, 16);
    EXPECT_EQ(points, turned + '\x5a');
  }
  EXPECT_GT(numWithout, 1000u);
}

// The sum behind a printed area keeps its order.
TEST(PointRun, AddsUpAreasToTheLastBit) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> number(-1e6, 1e6);
  for (std::size_t count = 0; count < 40; ++count) {
    for (int round = 0; round < 50; ++round) {
      Reals x(count), y(count);
      for (double& value : x) value = number(random);
      for (double& value : y) value = number(random);
      double sum = 0.0;
      for (std::size_t i = 0; count >= 3 && i + 1 < count; ++i)
        sum += x[i] * (y[i + 1] - y[0]) - x[i + 1] * (y[i] - y[0]);
      EXPECT_EQ(std::bit_cast<std::uint64_t>(signedRingArea(x, y)), std::bit_cast<std::uint64_t>(sum / 2.0)) << count;
      double area = 0.0;
      EXPECT_FALSE(singleRingArea(x, y, area)) << "open";
      if (count < 4) continue;
      x.back() = x[0];
      y.back() = y[0];
      EXPECT_TRUE(singleRingArea(x, y, area)) << count;
      EXPECT_EQ(std::bit_cast<std::uint64_t>(signedRingArea(x, y)), std::bit_cast<std::uint64_t>(area)) << count;
      const std::size_t again = 1 + random() % (count - 2);
      x[again] = x[0];
      y[again] = y[0];
      EXPECT_FALSE(singleRingArea(x, y, area)) << count << " " << again;
    }
  }
}

}  // namespace
