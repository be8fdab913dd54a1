// The factories that steer features: sampling, copying, testing, making from nothing.
#include <gtest/gtest.h>

#include "tests/unit/drivers.h"

namespace {

struct Row {
  std::string clauses;
  std::vector<std::string> features;
  std::string result;   // what comes out, "#<number>" at its end for a failure while running
  std::string summary;  // in the log
};

void check(const std::string& className, const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    PipelineScope scope({"FACTORY_DEF K " + className + " " + row.clauses});
    ASSERT_EQ(scope.defined(), 0U) << row.clauses;
    EXPECT_EQ(scope.run(row.features), row.result) << row.clauses;
    EXPECT_EQ(scope.engine.logged("f_0(" + className + "): " + row.summary), row.summary.empty() ? 0U : 1U)
        << row.clauses;
  }
}

void checkFaults(const std::string& className, const std::vector<std::pair<std::string, std::uint32_t>>& rows) {
  for (const auto& [clauses, number] : rows)
    EXPECT_EQ(PipelineScope({"FACTORY_DEF K " + className + " " + clauses}).defined(), number) << clauses;
}

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
       {"NUMBER_TO_CREATE 0 OUTPUT FEATURE_TYPE p", {"a"}, "a", "Features created: 0"},
       {"", {"a"}, "a", "Features created: 0"}});
  checkFaults("CreationFactory", {{"2D_GEOMETRY 1 x", 50026},
                                  {"3D_GEOMETRY 1 2 x", 50028},
                                  {"2D_GEOMETRY 1 2 3D_GEOMETRY 1 2 3", 50032},
                                  {"NUMBER_TO_CREATE x", 50031},
                                  {"NUMBER_TO_CREATE -1", 50031},
                                  {"OUTPUT CREATED FEATURE_TYPE a", 50022},
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

}  // namespace
