// Calls of attribute functions per second, as a row of a pair runs them: parsed once, evaluated feature by feature.
#include <benchmark/benchmark.h>

#include <string>

#include "vex/src/cmdparm.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr int kNumKeys = 100'000;

struct Engine {
  VEXObjectRecycler recycler;
  VEXConfiguration configuration;
  VEXCommandRegistry registry;
  VEXFeaturePtr feature = recycler.getFeature();
  VEXVariableTable variables;
  std::string result;
};

// `change` gives the feature of a round its values.
template <class Change>
void runCall(benchmark::State& state, Engine& engine, const char* text, Change&& change) {
  VEXCommandParm call;
  if (call.parse(text) != nullptr) state.SkipWithError("parse");
  int round = 0;
  for (auto _ : state) {
    change(*engine.feature, round++);
    if (call.execute(engine.feature, engine.variables, engine.result) != nullptr) {
      state.SkipWithError("execute");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations());
}

void concatenateThreeAttributes(benchmark::State& state) {
  Engine engine;
  for (const auto& [name, value] : {std::pair{"a", "Mill Road"}, {"b", "12"}, {"c", "north"}})
    engine.feature->setAttribute(name, value);
  runCall(state, engine, "@Concatenate(&a,&b,&c)", [](VEXFeature&, int) {});
}
BENCHMARK(concatenateThreeAttributes);

void lookUpOneOfManyKeys(benchmark::State& state) {
  Engine engine;
  VEXStringVector row = {"Lookup", "codes"};
  for (int i = 0; i < kNumKeys; ++i) {
    row.push_back("key" + std::to_string(i));
    row.push_back("the value of " + std::to_string(i));
  }
  if (engine.registry.configure(row) != nullptr) state.SkipWithError("configure");
  const VEXName key = VEXName::intern("k");
  runCall(state, engine, "@Lookup(codes,&k)", [&](VEXFeature& feature, int round) {
    feature.setAttribute(key, row[2 + 2 * (static_cast<std::size_t>(round) * 7919 % kNumKeys)]);
  });
}
BENCHMARK(lookUpOneOfManyKeys);

void splitIntoTenFields(benchmark::State& state) {
  Engine engine;
  engine.feature->setAttribute("v", "1:22:333:Mill Road:55555:north:7:88:999:end");
  runCall(state, engine, "@Split(&v,:,f0,f1,f2,f3,f4,f5,f6,f7,f8,f9)", [](VEXFeature&, int) {});
}
BENCHMARK(splitIntoTenFields);

// Of as many different sums as the argument says: few are kept compiled, many are not.
void evaluateASum(benchmark::State& state) {
  Engine engine;
  const VEXName a = VEXName::intern("a");
  runCall(state, engine, "@Evaluate(&a+17)",
          [&](VEXFeature& feature, int round) { feature.setInteger(a.text(), round % state.range(0)); });
}
BENCHMARK(evaluateASum)->Arg(1)->Arg(50)->Arg(1'000'000);

void scriptThatAdds(benchmark::State& state) {
  Engine engine;
  const VEXName a = VEXName::intern("a");
  runCall(state, engine, "@TCL(set ORV_Attributes(b) [expr {$ORV_Attributes(a) + 17}])",
          [&](VEXFeature& feature, int round) { feature.setInteger(a.text(), round); });
}
BENCHMARK(scriptThatAdds);

}  // namespace
