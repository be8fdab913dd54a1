// The factories that steer features: sampling, copying, testing, making from nothing, branching, sorting.
#include <gtest/gtest.h>

#include "tests/unit/factory/facttest.h"

namespace {

TEST(SamplingFactory, KeepsEveryNth) {
  const std::vector<std::string> seven = {"a {n=1}", "a {n=2}", "a {n=3}", "b",
                                          "a {n=4}", "a {n=5}", "a {n=6}", "a {n=7}"};
  check("SamplingFactory",
        {{"SAMPLE_RATE 3 INPUT FEATURE_TYPE a", seven, "a {n=3}; b; a {n=6}", "Sampled 2 of 7 features "},
         {"SAMPLE_RATE 1", {"a", "b"}, "a; b", "Sampled 2 of 2 features "},
         {"", {"a", "b"}, "a; b", "Sampled 2 of 2 features "},
         {"SAMPLE_RATE 0", {"a", "b"}, "", "Sampled 0 of 2 features "},
         {"SAMPLE_RATE -2", {"a", "b", "c"}, "b", "Sampled 1 of 3 features "}});
  checkFaults("SamplingFactory",
              {{"SAMPLE_RATE x", 48003}, {"SAMPLE_RATE 1.5", 48003}, {"SAMPLE_RATE 99999999999", 48003}});
}

TEST(TeeFactory, CopiesForEachOutput) {
  check("TeeFactory", {{"OUTPUT FEATURE_TYPE b x 1 OUTPUT FEATURE_TYPE * y @Concatenate(&n,2) OUTPUT FEATURE_TYPE c",
                        {"a {n=1} line 0 0, 1 1"},
                        "b {n=1, x=1} line 0 0, 1 1; a {n=1, y=12} line 0 0, 1 1; c {n=1} line 0 0, 1 1",
                        "Replicated (and mutated) 1 input feature into 3 output features"},
                       {"OUTPUT FEATURE_TYPE b INPUT FEATURE_TYPE a",
                        {"x"},
                        "x",
                        "Replicated (and mutated) 0 input features into 0 output features"},
                       {"INPUT FEATURE_TYPE a", {"x", "a"}, "x; #50003", ""}});
  checkFaults("TeeFactory",
              {{"OUTPUT b c", 50002}, {"OUTPUT CREATED FEATURE_TYPE a", 50002}, {"OUTPUT FEATURE_TYPE a x", 252003}});
}

TEST(TestFactory, Compares) {
  struct Comparison {
    const char* test;
    const char* feature;
    bool passes;
  };
  for (const Comparison& row :
       {Comparison{"10 < 9", "a", false}, Comparison{"abc < 9", "a", false}, Comparison{"9 < abc", "a", true},
        Comparison{"&n = 1.0", "a {n=1}", true}, Comparison{"&n = 1.0", "a {n= 1}", true},
        Comparison{"&n != 1", "a {n=1e0}", false}, Comparison{"&n = 1", "a {n=1x}", false},
        Comparison{"&n < 5", "a {n=10}", false}, Comparison{"&n <= 10", "a {n=10}", true},
        Comparison{"&n >= 10", "a {n=9.99}", false}, Comparison{"&n > 9", "a {n=10}", true},
        Comparison{"&n &op 9", "a {n=10,op=>}", true}, Comparison{"&n &op 9", "a {n=10,op=<}", false},
        Comparison{"&missing = &also", "a", true}, Comparison{"&s > &t", "a {s=b,t=B}", true},
        Comparison{"@FeatureType() = a", "a", true}, Comparison{"@FeatureType() = a", "b", false},
        Comparison{"nan != nan", "a", true}, Comparison{"0x10 = 16", "a", false}}) {
    PipelineScope scope({std::string("FACTORY_DEF K TestFactory TEST ") + row.test +
                         " OUTPUT PASSED FEATURE_TYPE yes OUTPUT FAILED FEATURE_TYPE no"});
    EXPECT_EQ(scope.run({row.feature}).substr(0, 2), row.passes ? "ye" : "no") << row.test << " " << row.feature;
  }
}

TEST(TestFactory, RoutesAndCounts) {
  check("TestFactory", {{"INPUT FEATURE_TYPE a TEST &n < 2 OUTPUT PASSED FEATURE_TYPE * ok 1",
                         {"a {n=1}", "a {n=2}", "b", "a {n=3}"},
                         "a {n=1, ok=1}; b",
                         "Tested 3 input features -- 1 feature passed, 2 features failed."},
                        {"TEST 1 = 2 TEST 1 = 1 OUTPUT PASSED FEATURE_TYPE p OUTPUT FAILED FEATURE_TYPE f",
                         {"a"},
                         "p",
                         "Tested 1 input feature -- 1 feature passed, 0 features failed."},
                        {"OUTPUT PASSED FEATURE_TYPE p OUTPUT FAILED FEATURE_TYPE f", {"a"}, "#51005", ""},
                        {"TEST 1 == 1 INPUT FEATURE_TYPE a", {"a"}, "#51006", ""},
                        {"TEST 1 &none 1 INPUT FEATURE_TYPE a", {"a"}, "#51006", ""}});
}

TEST(TestFactory, WarnsOfALostSideOnlyWhenItTakesEverything) {
  for (const auto& [clauses, warnings] :
       std::vector<std::pair<std::string, std::size_t>>{{"", 2},
                                                        {"OUTPUT PASSED FEATURE_TYPE p", 1},
                                                        {"OUTPUT FAILED FEATURE_TYPE p", 1},
                                                        {"INPUT FEATURE_TYPE a", 0}}) {
    PipelineScope scope({"FACTORY_DEF K TestFactory TEST 1 = 1 " + clauses});
    scope.run({"a", "a"});
    EXPECT_EQ(scope.engine.logged("the test is lost"), warnings) << clauses;
  }
}

TEST(CreationFactory, MakesFeatures) {
  check(
      "CreationFactory",
      {{"NUMBER_TO_CREATE 2 2D_GEOMETRY 1 2 OUTPUT FEATURE_TYPE p OUTPUT FEATURE_TYPE q x y",
        {"a"},
        "p {creation_instance=0} point 1 2; q {creation_instance=0, x=y} point 1 2; "
        "p {creation_instance=1} point 1 2; q {creation_instance=1, x=y} point 1 2; a",
        "Features created: 4"},
       {"CREATE_AT_END 3D_GEOMETRY 0 0 1 5 5 2 OUTPUT FEATURE_TYPE l",
        {"a", "b"},
        "a; b; l {creation_instance=0} line 0 0 1, 5 5 2",
        "Features created: 1"},
       {"2D_GEOMETRY 0 0 0 1 1 1 0 0 OUTPUT FEATURE_TYPE r @SupplyAttributes(n,5)",
        {},
        "r {creation_instance=0, n=5} polygon 0 0, 0 1, 1 1, 0 0",
        "Features created: 1"},
       {"OUTPUT FEATURE_TYPE none INPUT FEATURE_TYPE x", {"a"}, "none {creation_instance=0}; a", "Features created: 1"},
       {"OUTPUT CREATED FEATURE_TYPE none x y", {"a"}, "none {creation_instance=0, x=y}; a", "Features created: 1"},
       {"NUMBER_TO_CREATE 0 OUTPUT FEATURE_TYPE p", {"a"}, "a", "Features created: 0"},
       {"", {"a"}, "a", "Features created: 0"}});
  checkFaults("CreationFactory", {{"2D_GEOMETRY 1 x", 50026},
                                  {"3D_GEOMETRY 1 2 x", 50028},
                                  {"2D_GEOMETRY 1 2 3D_GEOMETRY 1 2 3", 50032},
                                  {"NUMBER_TO_CREATE x", 50031},
                                  {"NUMBER_TO_CREATE -1", 50031},
                                  {"OUTPUT CREATED FEATURE_TYPE", 50022},
                                  {"OUTPUT MADE FEATURE_TYPE a", 50022},
                                  {"OUTPUT a b", 50022}});
}

TEST(CreationFactory, GivesACoordinateSystemAndFeedsTheChain) {
  PipelineScope scope({"FACTORY_DEF K CreationFactory COORDINATE_SYSTEM LL NUMBER_TO_CREATE 4 OUTPUT FEATURE_TYPE p",
                       "FACTORY_DEF K SamplingFactory SAMPLE_RATE 2 INPUT FEATURE_TYPE p"});
  VEXPipeline pipeline;
  ASSERT_EQ(numberOf(pipeline.configure("K")), 0U);
  ASSERT_EQ(numberOf(pipeline.allDone()), 0U);
  std::string instances;
  while (VEXFeaturePtr feature = pipeline.getOutputFeature()) {
    EXPECT_EQ(feature->coordSys(), "LL");
    instances += *feature->findAttribute("creation_instance");
  }
  EXPECT_EQ(instances, "13");
}

TEST(BranchingFactory, RoutesAndCounts) {
  const std::string outputs =
      " OUTPUT PASSED FEATURE_TYPE yes OUTPUT FAILED FEATURE_TYPE no OUTPUT COUNT_EXCEEDED FEATURE_TYPE most";
  check("BranchingFactory",
        {{"TEST &n < 2" + outputs,
          {"a {n=1}", "a {n=2}"},
          "yes {n=1}; no {n=2}",
          "Tested 2 input features -- 1 feature passed, 1 feature failed, 0 features exceeded maximum count."},
         {"TEST 1 = 1 TARGET_FACTORY f_0 MAXIMUM_COUNT 2" + outputs,
          {"a"},
          "most {f_0.BranchingFactory.Count=3}",
          "Tested 4 input features -- 3 features passed, 0 features failed, 1 feature exceeded maximum count."},
         {"TEST 1 = 1 TARGET_FACTORY f_0 MAXIMUM_COUNT -1" + outputs, {"a {n=1}"}, "most {n=1}", "Tested 1 "},
         {"TEST 1 = 1 TARGET_FACTORY f_0 FACTORY_NAME b" + outputs, {"a"}, "#359003", ""},
         {"TEST 1 = 2 TARGET_FACTORY none" + outputs, {"a"}, "no", "Tested 1 "},
         {"TEST 1 = 1 TARGET_FACTORY f_0" + outputs,
          {"a"},
          "most {f_0.BranchingFactory.Count=1001}",
          "Tested 1002 input features"},
         {"TARGET_FACTORY f_0", {"a"}, "#359005", ""},
         {"TEST 1 ~ 1", {"a"}, "#359008", ""}});
  checkFaults("BranchingFactory", {{"MAXIMUM_COUNT x", 359006}, {"MAXIMUM_COUNT 1.5", 359006}, {"TEST a", 359002}});
}

// Loops over other factories: a counter in the chain, one that holds its features, one whose feature forgets its
// count, one that doubles its features.
TEST(BranchingFactory, WalksLoops) {
  const std::string back = "FACTORY_DEF K BranchingFactory FACTORY_NAME b INPUT FEATURE_TYPE a ";
  const std::string outputs = " OUTPUT FAILED FEATURE_TYPE out @RemoveAttributes(b.BranchingFactory.Count)";
  const std::string more = "FACTORY_DEF K TeeFactory FACTORY_NAME more INPUT FEATURE_TYPE a OUTPUT FEATURE_TYPE a ";
  auto run = [](const std::vector<std::string>& rows, const std::vector<std::string>& features, std::size_t warnings) {
    PipelineScope scope(rows);
    const std::string out = scope.run(features);
    EXPECT_EQ(scope.engine.logged("go round for ever"), warnings) << rows[0];
    return out;
  };
  EXPECT_EQ(
      run({more + "@SupplyAttributes(n,@Concatenate(&n,x))", back + "TEST &n != 1xxx TARGET_FACTORY more" + outputs},
          {"a {n=1}", "a {n=1x}"}, 0),
      "out {n=1xxx}; out {n=1xxx}");
  EXPECT_EQ(run({"FACTORY_DEF K SortFactory FACTORY_NAME sort INPUT FEATURE_TYPE a SORT_BY n ALPHA "
                 "OUTPUT SORTED FEATURE_TYPE a @SupplyAttributes(n,@Concatenate(x,&n))",
                 back + "TEST &n != xxx1 TARGET_FACTORY sort" + outputs},
                {"a {n=x1}", "a {n=1}"}, 0),
            "out {n=xxx1}; out {n=xxx1}");
  EXPECT_EQ(run({more + "@RemoveAttributes(b.BranchingFactory.Count)",
                 back + "TEST 1 = 1 TARGET_FACTORY more OUTPUT COUNT_EXCEEDED FEATURE_TYPE most"},
                {"a", "a"}, 1),
            "most {b.BranchingFactory.Count=1}; most {b.BranchingFactory.Count=1}");
  EXPECT_EQ(run({more + "OUTPUT FEATURE_TYPE a", back + "TEST 1 = 1 TARGET_FACTORY more MAXIMUM_COUNT 1000"}, {"a"}, 1),
            "");
}

TEST(SortFactory, Sorts) {
  const std::string output = " OUTPUT SORTED FEATURE_TYPE *";
  const std::vector<std::string> numbers = {"a {n=10,t=x}", "a {n=9,t=x}", "a {n=,t=y}",
                                            "a {n=-1,t=x}", "a {t=w}",     "a {n=z,t=x}"};
  check("SortFactory",
        {{"SORT_BY n NUMERIC" + output, numbers,
          "a {n=-1, t=x}; a {n=, t=y}; a {t=w}; a {n=z, t=x}; a {n=9, t=x}; a {n=10, t=x}", "Sorted 6 input features"},
         {"SORT_BY n NUMERIC SORT_DIRECTION DESCENDING" + output, numbers,
          "a {n=10, t=x}; a {n=9, t=x}; a {n=, t=y}; a {t=w}; a {n=z, t=x}; a {n=-1, t=x}", "Sorted 6 input features"},
         {"SORT_BY t ALPHA n ALPHA SORT_DIRECTION ASCENDING" + output, numbers,
          "a {t=w}; a {n=-1, t=x}; a {n=10, t=x}; a {n=9, t=x}; a {n=z, t=x}; a {n=, t=y}", "Sorted 6 input features"},
         {"SORT_BY t NAMES n NUMERIC" + output,
          {"a {t=b}", "a {t=a,n=2}", "a {t=a,n=-1.5}"},
          "a {n=-1.5, t=a}; a {n=2, t=a}; a {t=b}",
          "Sorted 3 input features"},
         {"SORT_BY t ALPHA n ALPHA" + output,
          {"a {t=ab,n=c}", "a {t=a,n=zz}", "a {t=,n=y}", "a {n=x}"},
          "a {n=x}; a {n=y, t=}; a {n=zz, t=a}; a {n=c, t=ab}",
          "Sorted 4 input features"},
         {"SORT_BY n NUMERIC INPUT FEATURE_TYPE a" + output,
          {"a {n=2} line 0 0 1, 1 1 2", "b {n=0}", "a {n=1} aggregate 1 1, 5 6"},
          "b {n=0}; a {n=1} aggregate 1 1, 5 6; a {n=2} line 0 0 1, 1 1 2",
          "Sorted 2 input features"},
         {"SORT_BY n NUMERIC", {"a"}, "", "Sorted 1 input feature"},
         {output, {"a"}, "#49005", ""}});
  checkFaults("SortFactory", {{"SORT_BY n", 49002},
                              {"SORT_BY n NUMERIC t", 49002},
                              {"SORT_BY n NUMERIC SORT_BY t ALPHA", 49003},
                              {"SORT_DIRECTION UP", 49004}});
}

// A feature that is refused further down does not take the others with it.
TEST(FactoryFlush, GoesOnAfterARefusedFeature) {
  class Refusing final : public VEXPipelineSink {
   public:
    VEXStatus takeOutput(std::int32_t, const std::string&, VEXFeaturePtr& feature) override {
      if (feature->attributeExists("refuse")) return makeRejection(236101, {"refused"});
      ++taken;
      feature.reset();
      return nullptr;
    }
    int taken = 0;
  } sink;
  PipelineScope scope({"FACTORY_DEF K SortFactory SORT_BY n NUMERIC OUTPUT SORTED FEATURE_TYPE *",
                       "FACTORY_DEF K TeeFactory OUTPUT FEATURE_TYPE * refuse 1 OUTPUT FEATURE_TYPE *"});
  VEXPipeline pipeline;
  pipeline.setSink(&sink);
  ASSERT_EQ(numberOf(pipeline.configure("K")), 0U);
  for (const char* text : {"a {n=2}", "a {n=1}"}) {
    VEXFeaturePtr feature = makeFeature(text);
    ASSERT_EQ(numberOf(pipeline.processFeature(feature)), 0U);
  }
  ASSERT_EQ(numberOf(pipeline.allDone()), 0U);
  EXPECT_EQ(sink.taken, 2);
  EXPECT_EQ(scope.engine.logged("A feature was refused on its way to the writer"), 2U);
}

}  // namespace
