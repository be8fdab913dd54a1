// What every factory shares: the grammar of a FACTORY_DEF row, matching, names, tracing, the order of the flush.
#include <gtest/gtest.h>

#include "tests/unit/drivers.h"
#include "vex/inc/numtext.h"

namespace {

std::uint32_t defined(const std::vector<std::string>& rows) {
  return PipelineScope(rows).defined();
}

// Every clause of every factory is refused at each wrong count, with its number.
TEST(FactoryCatalogue, ClausesRefuseAWrongCount) {
  TranslationScope engine;
  VEXStringVector names;
  VEXCreator::instance().factoryNames(names);
  EXPECT_GE(names.size(), 10U);
  for (const std::string& name : names) {
    std::unique_ptr<VEXFactory> factory;
    ASSERT_EQ(numberOf(VEXCreator::createFactory(factory, name)), 0U);
    EXPECT_EQ(factory->name(), name);
    for (const VEXFactory::ClauseRule& rule : factory->clauseRules()) {
      std::size_t refused = 0;
      for (std::size_t count = 0; count < 9; ++count) {
        if (rule.count.accepts(count)) continue;
        ++refused;
        VEXStringVector row = {"FACTORY_DEF", "K", name, rule.keyword};
        row.insert(row.end(), count, "w");
        std::unique_ptr<VEXFactory> fresh;
        ASSERT_EQ(numberOf(VEXCreator::createFactory(fresh, name)), 0U);
        VEXStatus failure = fresh->configure(row, 0);
        EXPECT_EQ(numberOf(failure), rule.onCount) << joined(row, " ");
        EXPECT_NE(failure == nullptr ? 0 : failure->message().find(joined(row, " ")), std::string::npos);
      }
      EXPECT_GT(refused, 0U) << name << " " << rule.keyword;
    }
  }
}

TEST(FactoryGrammar, Faults) {
  struct Row {
    const char* row;
    std::uint32_t number;
  };
  for (const Row& row :
       {Row{"FACTORY_DEF", 53002},
        Row{"FACTORY_DEF OTHER", 53002},
        Row{"FACTORY_DEF OTHER NopeFactory", 0},
        Row{"FACTORY_DEF K NopeFactory", 873001},
        Row{"FACTORY_DEF * NopeFactory", 873001},
        Row{"FACTORY_DEF K SamplingFactory", 0},
        Row{"FACTORY_DEF K SamplingFactory NOPE 1", 859001},
        Row{"FACTORY_DEF K SamplingFactory TEST a = b", 859001},
        Row{"FACTORY_DEF K SamplingFactory INPUT", 859005},
        Row{"FACTORY_DEF K SamplingFactory INPUT FEATURE_TYPE", 859005},
        Row{"FACTORY_DEF K SamplingFactory INPUT FEATURE_TYPE a", 0},
        Row{"FACTORY_DEF K SamplingFactory INPUT FEATURE_TYPE a x", 252003},
        Row{"FACTORY_DEF K SamplingFactory INPUT a b", 859006},
        Row{"FACTORY_DEF K SamplingFactory INPUT TAG FEATURE_TYPE a", 859007},
        Row{"FACTORY_DEF K SamplingFactory FACTORY_NAME", 859008},
        Row{"FACTORY_DEF K SamplingFactory FACTORY_NAME a b", 859008},
        Row{"FACTORY_DEF K SamplingFactory OUTPUT PASSED FEATURE_TYPE a", 859002},
        Row{"FACTORY_DEF K TestFactory TEST a = a OUTPUT PASSED FEATURE_TYPE", 859004},
        Row{"FACTORY_DEF K TestFactory TEST a = a OUTPUT NOPE FEATURE_TYPE a", 859002},
        Row{"FACTORY_DEF K TestFactory OUTPUT PASSED FEATURE_TYPE a OUTPUT PASSED FEATURE_TYPE b", 859002},
        Row{"FACTORY_DEF K TestFactory OUTPUT PASSED TYPE a b", 859001},
        Row{"FACTORY_DEF K TestFactory TEST @Nope() = 1", 209002}})
    EXPECT_EQ(defined({row.row}), row.number) << row.row;
  EXPECT_EQ(defined({"FACTORY_DEF K SamplingFactory FACTORY_NAME a", "FACTORY_DEF * TeeFactory FACTORY_NAME a"}),
            53003U);
  EXPECT_EQ(defined({"FACTORY_DEF K SamplingFactory FACTORY_NAME f_1", "FACTORY_DEF K SamplingFactory"}), 53003U);
  EXPECT_EQ(defined({"FACTORY_DEF K SamplingFactory", "FACTORY_DEF X Nope", "FACTORY_DEF * SamplingFactory"}), 0U);
  EXPECT_EQ(defined(std::vector<std::string>(1001, "FACTORY_DEF K SamplingFactory")), 53004U);
}

// A factory with tags on both sides that holds what it gets until the end.
class HoldingFactory final : public VEXFactory {
 public:
  HoldingFactory() : VEXFactory("HoldingFactory") {
    addInputTags({"BASE", "OTHER"});
    addOutputTags({"HELD", "REST"});
  }
  VEXStatus allDone() override {
    for (VEXFeaturePtr& feature : held_) VEX_TRY(output("HELD", feature));
    held_.clear();
    return extendStatus(VEXFactory::allDone());
  }

 private:
  VEXStatus process(VEXFeaturePtr& feature) override {
    feature->setAttribute("tag", matchedTag());
    if (matchedTag() == "OTHER") return extendStatus(output("REST", feature));
    held_.push_back(std::move(feature));
    return nullptr;
  }
  VEXFeatureVector held_;
};

std::string runHolding(const std::vector<std::string>& rows, const std::vector<std::string>& features,
                       std::uint32_t expected = 0) {
  TranslationScope engine(rows);
  VEXCreator::instance().addFactory("HoldingFactory",
                                    []() -> std::unique_ptr<VEXFactory> { return std::make_unique<HoldingFactory>(); });
  VEXPipeline pipeline;
  EXPECT_EQ(numberOf(pipeline.configure("K")), expected);
  for (const std::string& text : features) {
    VEXFeaturePtr feature = makeFeature(text);
    EXPECT_EQ(numberOf(pipeline.processFeature(feature)), 0U);
  }
  EXPECT_EQ(numberOf(pipeline.allDone()), 0U);
  VEXStringVector out;
  while (VEXFeaturePtr feature = pipeline.getOutputFeature()) out.push_back(describe(*feature));
  return joined(out, "; ");
}

TEST(FactoryGrammar, Tags) {
  const std::string head = "FACTORY_DEF K HoldingFactory ";
  const std::string output = " OUTPUT HELD FEATURE_TYPE *";
  // The first input that takes a feature gives its tag; a side without OUTPUT is dropped; others pass by at once.
  EXPECT_EQ(runHolding({head + "INPUT BASE FEATURE_TYPE a INPUT OTHER FEATURE_TYPE * x 1" + output},
                       {"a {x=1}", "b {x=1}", "b", "a"}),
            "b; a {tag=BASE, x=1}; a {tag=BASE}");
  EXPECT_EQ(runHolding({head + "INPUT OTHER FEATURE_TYPE * OUTPUT REST FEATURE_TYPE r n 1" + output}, {"a {x=1}"}),
            "r {n=1, tag=OTHER, x=1}");
  EXPECT_EQ(runHolding({head + output}, {"a", "b"}), "a {tag=}; b {tag=}");
  runHolding({head + "INPUT FEATURE_TYPE a"}, {}, 859006);
  runHolding({head + "INPUT BASE TYPE a"}, {}, 859006);
  runHolding({head + "INPUT NOPE FEATURE_TYPE a"}, {}, 859007);
  runHolding({head + "INPUT BASE FEATURE_TYPE"}, {}, 252001);
}

// Each factory empties itself into the next, which still works on what it gets, and only then is told of the end.
TEST(FactoryFlush, TravelsInChainOrder) {
  EXPECT_EQ(runHolding({"FACTORY_DEF K HoldingFactory INPUT BASE FEATURE_TYPE a OUTPUT HELD FEATURE_TYPE b from first",
                        "FACTORY_DEF K HoldingFactory INPUT BASE FEATURE_TYPE b OUTPUT HELD FEATURE_TYPE c",
                        "FACTORY_DEF K SamplingFactory SAMPLE_RATE 2 INPUT FEATURE_TYPE c"},
                       {"a {n=1}", "x", "b {n=2}", "a {n=3}", "a {n=4}"}),
            "x; c {from=first, n=1, tag=BASE}; c {from=first, n=4, tag=BASE}");
}

TEST(FactoryMatch, UnmatchedFeaturesPassUnchanged) {
  PipelineScope pipeline(
      {"FACTORY_DEF K TestFactory INPUT FEATURE_TYPE road lanes 2 TEST a = a OUTPUT PASSED FEATURE_TYPE p x 1",
       "FACTORY_DEF OTHER SamplingFactory SAMPLE_RATE 100"});
  EXPECT_EQ(pipeline.run({"road {lanes=2} line 0 0, 1 1", "road {lanes=3}", "rail {lanes=2} point 1 2 3"}),
            "p {lanes=2, x=1} line 0 0, 1 1; road {lanes=3}; rail {lanes=2} point 1 2 3");
}

TEST(FactoryMatch, NoFactoriesAndStar) {
  EXPECT_EQ(PipelineScope({}).run({"a", "b {x=1}"}), "a; b {x=1}");
  EXPECT_EQ(PipelineScope({"FACTORY_DEF * SamplingFactory SAMPLE_RATE 2"}).run({"a", "b", "c"}), "b");
}

TEST(FactoryMatch, AttributesThatAreGoneLeaveTheSequence) {
  PipelineScope scope({"FACTORY_DEF K SamplingFactory INPUT FEATURE_TYPE other"});
  VEXPipeline pipeline;
  ASSERT_EQ(numberOf(pipeline.configure("K")), 0U);
  VEXFeaturePtr feature = makeFeature("a");
  feature->setSequenced("x", "1");
  feature->setSequenced("y", "2");
  feature->removeAttribute("x");
  ASSERT_EQ(numberOf(pipeline.processFeature(feature)), 0U);
  feature = pipeline.getOutputFeature();
  ASSERT_EQ(feature->sequence().size(), 1U);
  EXPECT_EQ(feature->sequence()[0].text(), "y");
}

TEST(FactoryTrace, NamesEachFactoryThatTookTheFeature) {
  PipelineScope scope({"ORV_DEBUG FACTORY_TRACE FACTORY", "FACTORY_DEF K SamplingFactory",
                       "FACTORY_DEF K TestFactory INPUT FEATURE_TYPE nope TEST a = a",
                       "FACTORY_DEF * TeeFactory FACTORY_NAME mine OUTPUT FEATURE_TYPE *"});
  EXPECT_EQ(scope.run({"a"}), "a {orv_factory_trace=f_0(SamplingFactory):mine(TeeFactory)}");
  EXPECT_EQ(scope.engine.logged("Factory `mine' of class TeeFactory is made from `FACTORY_DEF * TeeFactory"), 1U);
  EXPECT_EQ(scope.engine.logged("is made from"), 3U);
}

}  // namespace
