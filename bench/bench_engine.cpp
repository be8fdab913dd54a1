// The hot loops of the feature road: attributes, reuse, rows of text, correlation, parsed calls.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "vex/src/cmdparm.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/rowtext.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexcorr.h"
#include "vex/src/vexrcycl.h"

namespace {

struct Engine {
  VEXObjectRecycler recycler;
  VEXConfiguration configuration;
  VEXCommandRegistry registry;
};

std::vector<VEXName> twelveNames() {
  std::vector<VEXName> names;
  for (int i = 0; i < 12; ++i) names.push_back(VEXName::intern("COLUMN" + std::to_string(i)));
  return names;
}

void fill(VEXFeature& feature, const std::vector<VEXName>& names) {
  for (VEXName name : names) feature.setAttribute(name, "12345.678");
}

void setTwelveAttributes(benchmark::State& state) {
  VEXFeature feature;
  std::vector<VEXName> names = twelveNames();
  for (auto _ : state) {
    feature.resetAttributes();
    fill(feature, names);
  }
  state.SetItemsProcessed(state.iterations() * 12);
}
BENCHMARK(setTwelveAttributes);

void findTwelveAttributes(benchmark::State& state) {
  VEXFeature feature;
  std::vector<VEXName> names = twelveNames();
  fill(feature, names);
  feature.compactAttributes();
  for (auto _ : state)
    for (VEXName name : names) benchmark::DoNotOptimize(feature.findAttribute(name));
  state.SetItemsProcessed(state.iterations() * 12);
}
BENCHMARK(findTwelveAttributes);

void takeAndReleaseFeature(benchmark::State& state) {
  VEXObjectRecycler recycler;
  std::vector<VEXName> names = twelveNames();
  for (auto _ : state) {
    VEXFeaturePtr feature = recycler.getFeature(2, 20);
    fill(*feature, names);
    for (int i = 0; i < 20; ++i) feature->addCoord(i, i);
  }
}
BENCHMARK(takeAndReleaseFeature);

void correlateAgainstPairs(benchmark::State& state) {
  Engine engine;
  for (int i = 0; i < state.range(0); ++i) {
    std::string type = "type" + std::to_string(i);
    VEXConfiguration::addRow({"S", type, "LAYER", "12", "NAME", "%n", "WIDTH", "%w:5"});
    VEXConfiguration::addRow({"D", type + "out", "NAME", "%n", "WIDTH", "%w:5"});
  }
  VEXCorrelator correlator;
  if (correlator.load("S", "D") != nullptr) state.SkipWithError("load");
  std::string last = "type" + std::to_string(state.range(0) - 1);
  for (auto _ : state) {
    VEXFeaturePtr feature = engine.recycler.getFeature();
    feature->setFeatureType(last);
    feature->setAttribute("LAYER", "12");
    feature->setAttribute("NAME", "Mill Road");
    feature->setAttribute("WIDTH", "7");
    bool matched = false;
    if (correlator.correlate(feature, matched) != nullptr || !matched) state.SkipWithError("correlate");
  }
}
BENCHMARK(correlateAgainstPairs)->Arg(1)->Arg(1000);

void tokeniseARow(benchmark::State& state) {
  VEXDelimiterSet delimiters = delimiterSet(" \n\t");
  const std::string line = R"(SHAPE road LAYER 12 NAME "%n of the town" WIDTH @Concatenate(%w, (a b), c) REMARK 'x')";
  std::string work;
  VEXStringVector row;
  for (auto _ : state) {
    work = line;
    row.clear();
    if (tokeniseRow(work, delimiters, row) != RowFault::None) state.SkipWithError("row");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(line.size()));
}
BENCHMARK(tokeniseARow);

void runParsedCall(benchmark::State& state, const char* text) {
  Engine engine;
  VEXFeaturePtr feature = engine.recycler.getFeature();
  feature->setAttribute("a", "Mill Road");
  feature->setAttribute("b", "12");
  feature->setAttribute("c", "north");
  VEXCommandParm call;
  VEXVariableTable variables;
  std::string result;
  if (call.parse(text) != nullptr) state.SkipWithError("parse");
  for (auto _ : state)
    if (call.execute(feature, variables, result) != nullptr) state.SkipWithError("execute");
}
BENCHMARK_CAPTURE(runParsedCall, plain, "@Concatenate(one,two,three)");
BENCHMARK_CAPTURE(runParsedCall, substituted, "@Concatenate(&a,&b,&c)");
BENCHMARK_CAPTURE(runParsedCall, nested, "@Concatenate(&a,@Concatenate(&b,&c))");

}  // namespace
