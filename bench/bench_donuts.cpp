// Donuts out of rings: shells on a grid, each with nine holes in threes that touch, and islands in two of them; and
// rings nested in one another. The cost per ring should grow by a logarithm.
#include <benchmark/benchmark.h>

#include <cmath>

#include "vex/src/vexdonut.h"

namespace {

VEXLine ring(double x, double y, double radius, int numEdges) {
  std::vector<double> xs, ys;
  for (int i = 0; i < numEdges; ++i) {
    const double turn = 6.283185307179586 * i / numEdges;
    xs.push_back(x + radius * std::cos(turn));
    ys.push_back(y + radius * std::sin(turn));
  }
  xs.push_back(xs[0]);
  ys.push_back(ys[0]);
  return VEXLine(std::move(xs), std::move(ys), VEX_GEOM_POLYGON);
}

std::vector<VEXLine> layer(std::size_t numRings) {
  std::vector<VEXLine> lines;
  const auto side = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(numRings) / 12.0)));
  for (std::size_t shell = 0; lines.size() < numRings; ++shell) {
    const double x = 100.0 * static_cast<double>(shell % side), y = 100.0 * static_cast<double>(shell / side);
    lines.push_back(ring(x, y, 49.0, 40));
    for (int hole = 0; hole < 9; ++hole) {
      const double low = x - 24.0 + 16.0 * (hole % 3), bottom = y - 24.0 + 20.0 * (hole / 3);
      lines.push_back(VEXLine::fromBox({low, bottom, kNoZ, low + 16.0, bottom + 16.0, kNoZ}));
    }
    lines.push_back(ring(x - 16.0, y - 16.0, 3.0, 12));
    lines.push_back(ring(x, y - 16.0, 3.0, 12));
  }
  lines.resize(numRings);
  return lines;
}

void build(benchmark::State& state, const std::vector<VEXLine>& rings) {
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<VEXLine> lines;
    for (const VEXLine& line : rings) lines.push_back(line.clone());
    state.ResumeTiming();
    if (makeDonuts(lines, false) != nullptr) state.SkipWithError("failed");
    benchmark::DoNotOptimize(lines);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rings.size()));
}

void BM_DonutsOfALayer(benchmark::State& state) {
  build(state, layer(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_DonutsOfALayer)->Arg(50000)->Arg(100000)->Arg(200000)->Arg(400000)->Unit(benchmark::kMillisecond);

void BM_DonutsNested(benchmark::State& state) {
  std::vector<VEXLine> rings;
  for (std::int64_t i = 0; i < state.range(0); ++i) rings.push_back(ring(0, 0, 1.0 + static_cast<double>(i), 12));
  build(state, rings);
}
BENCHMARK(BM_DonutsNested)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond);

}  // namespace
