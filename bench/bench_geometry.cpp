// The hot loops of geometry on a wandering line of a million vertices and on the ring made of it.
#include <benchmark/benchmark.h>

#include <cmath>

#include "vex/src/vexline.h"

namespace {

constexpr std::size_t kNumVertices = 1'000'000;

double random01() {
  static std::uint32_t state = 12345;
  state = state * 1664525U + 1013904223U;
  return static_cast<double>(state >> 8) / 16777216.0;
}

// A star-shaped ring with a rough edge.
VEXLine makeRing(std::size_t count, double radius, std::uint32_t code = VEX_GEOM_POLYGON) {
  std::vector<double> x, y;
  for (std::size_t i = 0; i < count; ++i) {
    const double angle = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(count);
    const double r = radius * (1.0 + 0.01 * random01());
    x.push_back(r * std::cos(angle));
    y.push_back(r * std::sin(angle));
  }
  x.push_back(x[0]);
  y.push_back(y[0]);
  return VEXLine(std::move(x), std::move(y), code);
}

VEXLine makeWalk(std::size_t count) {
  std::vector<double> x = {0.0}, y = {0.0};
  double heading = 0.0;
  while (x.size() < count) {
    heading += random01() - 0.5;
    x.push_back(x.back() + std::cos(heading));
    y.push_back(y.back() + std::sin(heading));
  }
  return VEXLine(std::move(x), std::move(y), VEX_GEOM_LINE);
}

void countVertices(benchmark::State& state, std::size_t perRound) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(perRound));
}

void area(benchmark::State& state) {
  const VEXLine ring = makeRing(kNumVertices, 1000.0);
  double area = 0.0;
  for (auto _ : state) {
    ignoreStatus(ring.area(area));
    benchmark::DoNotOptimize(area);
  }
  countVertices(state, kNumVertices);
}
BENCHMARK(area)->Unit(benchmark::kMillisecond);

void length(benchmark::State& state) {
  const VEXLine walk = makeWalk(kNumVertices);
  double length = 0.0;
  for (auto _ : state) {
    ignoreStatus(walk.length2D(length));
    benchmark::DoNotOptimize(length);
  }
  countVertices(state, kNumVertices);
}
BENCHMARK(length)->Unit(benchmark::kMillisecond);

void pointInRing(benchmark::State& state) {
  const VEXLine ring = makeRing(kNumVertices, 1000.0);
  bool isInside = false;
  for (auto _ : state) {
    ignoreStatus(ring.containsPoint(1.0, 2.0, isInside));
    benchmark::DoNotOptimize(isInside);
  }
  countVertices(state, kNumVertices);
}
BENCHMARK(pointInRing)->Unit(benchmark::kMillisecond);

// A ring of 20 vertices in one of many; the second form is decided by the boxes.
void contains(benchmark::State& state) {
  const VEXLine outer = makeRing(static_cast<std::size_t>(state.range(0)), 1000.0);
  const VEXLine inner = makeRing(20, state.range(1) != 0 ? 990.0 : 1100.0);
  bool isInside = false;
  for (auto _ : state) {
    ignoreStatus(outer.containsLine(inner, isInside));
    benchmark::DoNotOptimize(isInside);
  }
}
BENCHMARK(contains)->Args({20, 1})->Args({10000, 1})->Args({10000, 0})->Unit(benchmark::kMicrosecond);

// A million coordinates in rings of 20, found one after the other.
void partFinder(benchmark::State& state) {
  std::vector<double> x, y;
  while (x.size() < kNumVertices) {
    const VEXLine ring = makeRing(19, 1.0);
    const double shift = static_cast<double>(x.size());
    for (double value : ring.xs()) x.push_back(value + shift);
    y.insert(y.end(), ring.ys().begin(), ring.ys().end());
  }
  const VEXLine rings(std::move(x), std::move(y), VEX_GEOM_MULTI_POLY);
  VEXLinePart part;
  for (auto _ : state) {
    for (std::size_t at = 0; at < rings.numCoords(); at = part.next) ignoreStatus(rings.findPart(at, part));
    benchmark::DoNotOptimize(part);
  }
  countVertices(state, kNumVertices);
}
BENCHMARK(partFinder)->Unit(benchmark::kMillisecond);

void douglas(benchmark::State& state) {
  const VEXLine walk = makeWalk(kNumVertices);
  for (auto _ : state) {
    VEXLine line = walk.clone();
    ignoreStatus(line.simplifyDouglas(5.0));
    benchmark::DoNotOptimize(line.numCoords());
  }
  countVertices(state, kNumVertices);
}
BENCHMARK(douglas)->Unit(benchmark::kMillisecond);

void roundOff(benchmark::State& state) {
  const VEXLine walk = makeWalk(kNumVertices);
  for (auto _ : state) {
    VEXLine line = walk.clone();
    ignoreStatus(line.roundAxis(0, 1));
    benchmark::DoNotOptimize(line.numCoords());
  }
  countVertices(state, kNumVertices);
}
BENCHMARK(roundOff)->Unit(benchmark::kMillisecond);

}  // namespace
