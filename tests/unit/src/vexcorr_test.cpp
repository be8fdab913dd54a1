// Rows that describe features: faults at load, what a pair does to a feature, which pair is taken.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/unit/support.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexcorr.h"

namespace {

class Correlation : public ::testing::Test {
 protected:
  // Loads rows; the number of the failure, 0 for none.
  std::uint32_t load(const std::vector<std::string>& rows) {
    engine_ = nullptr;
    engine_ = std::make_unique<EngineScope>();
    correlator_ = std::make_unique<VEXCorrelator>();
    for (const std::string& row : rows) engine_->row(row);
    VEXStatus failure = correlator_->load("S", "D");
    return failure == nullptr ? 0 : failure->messageNumber();
  }

  // The feature's text after it went through; "-" when no pair took it, "gone" when a function deleted it.
  std::string correlate(const std::string& text) {
    VEXFeaturePtr feature = makeFeature(text);
    bool matched = false;
    VEXStatus failure = correlator_->correlate(feature, matched);
    if (failure != nullptr) return "#" + std::to_string(failure->messageNumber());
    if (!matched) return "-";
    return feature == nullptr ? "gone" : describe(*feature);
  }

  std::unique_ptr<EngineScope> engine_;
  std::unique_ptr<VEXCorrelator> correlator_;
};

TEST_F(Correlation, FaultsAtLoad) {
  struct Row {
    std::vector<std::string> rows;
    std::uint32_t number;
  };
  for (const Row& row :
       {Row{{}, 0}, Row{{"X y", "S a", "Z", "D b"}, 0}, Row{{"D b", "S a"}, 0}, Row{{"S a", "S b"}, 253003},
        Row{{"D a", "D b"}, 253004}, Row{{"S"}, 253005}, Row{{"D"}, 253005}, Row{{"S a"}, 253007}, Row{{"D a"}, 253008},
        Row{{"S a n %n", "D b"}, 253001}, Row{{"S a", "D b n %n"}, 253002},
        Row{{"S a n %n", "D b @Concatenate(%n)"}, 0}, Row{{"S a @Concatenate(%n)", "D b n @Concatenate(%n)"}, 0},
        Row{{"S a n", "D b"}, 252003}, Row{{"S a", "D b @Count() n"}, 252003}, Row{{"S a x\x05y 1", "D b"}, 252002},
        Row{{"S a @Nope()", "D b"}, 209002}, Row{{"S a n @Count", "D b"}, 209001},
        Row{{"S a p{}.q{} %n", "D b n %n"}, 879002}})
    EXPECT_EQ(load(row.rows), row.number) << joined(row.rows, " / ");
  VEXFeatureSpec spec;
  VEXStatus failure = spec.parse({"S"}, 1);
  ASSERT_NE(failure, nullptr);
  EXPECT_EQ(failure->messageNumber(), 252001U);
}

TEST_F(Correlation, RewritesAFeature) {
  struct Row {
    const char* source;
    const char* dest;
    const char* in;
    const char* out;
  };
  for (const Row& row : {
           Row{"S a", "D b", "a {x=1} line 0 0, 1 1", "b line 0 0, 1 1"},
           Row{"S a x %x y %y", "D b y %x x %y", "a {x=1, y=2}", "b {x=2, y=1}"},
           Row{"S * x %x y %y", "D * y %x x %y", "a {x=1, y=2, z=3}", "a {x=2, y=1, z=3}"},
           Row{"S a x %x:7", "D b x %x", "a", "b {x=7}"},
           Row{"S a x %x", "D b x %x:7", "a {x=7}", "b"},
           Row{"S a x %x", "D b x %x", "a", "b"},
           Row{"S a k 12", "D b", "a {k=12.0}", "-"},
           Row{"S a k 12", "D b c d", "a {k=12}", "b {c=d}"},
           Row{"S A", "D b", "a", "-"},
           Row{"S a p{}.h %h", "D b q{}.i %h", "a {p{0}.h=1, p{1}.h=2, p{3}.h=9}", "b {q{0}.i=1, q{1}.i=2}"},
           Row{"S a p{1} %h", "D b one %h", "a {p{1}=2}", "b {one=2}"},
           Row{"S a x %x", "D b y @Concatenate(<,%x,>)", "a {x=1}", "b {y=<1>}"},
           Row{"S a x 1", "D b y @Concatenate(&x)", "a {x=1}", "b {y=}"},
           Row{"S a p{} %h", "D b q{} @Concatenate(%h,!)", "a {p{0}=1, p{1}=2}", "b {q{0}=1!, q{1}=2!}"},
           Row{"S a @FeatureType(%t)", "D b t %t", "a", "b {t=a}"},
           Row{"S a", "D b @SupplyAttributes(v,1) @SupplyAttributes(v,&v.2)", "a", "b {v=}"},
           Row{"S a", "D * @FeatureType(z)", "a {x=1}", "z {x=1}"},
           Row{"S a x %x", "D b p %x q %x", "a {x=1}", "b {p=1, q=1}"},
           Row{"S a x %x y %x", "D b z %x", "a {x=1, y=2}", "b {z=2}"},
           Row{"S a x %x y %x", "D b z %x", "a {x=1}", "b {z=1}"},
           Row{"S a x %x:7", "D b x %x:7 y %x", "a", "b {y=7}"},
           Row{"S a x %x", "D b x %x:7", "a", "b"},
           Row{"S a x %x @FeatureType(%x)", "D b x %x", "a", "b {x=a}"},
           Row{"S a x %x y %y", "D b z @Concatenate(&v) v %x w %y", "a {x=1, y=2}", "b {v=1, w=2, z=1}"},
           Row{"S a x %x y %y", "D b z @Concatenate(%y) w %x", "a {x=1, y=%x}", "b {w=1, z=1}"},
           Row{"S a x %x y %y", "D * y 3 x @Concatenate(%y,%x) z @Concatenate(%x,%y)", "a {x=1, y=2}",
               "a {x=21, y=3, z=12}"},
           Row{"S a x %x",
               "D * @SupplyAttributes(p,1,q,2,r,3,s,4,t,5,u,6,v,7,w,8) y @Concatenate(%x) @CopyAttributes(z,x)",
               "a {x=1}", "a {p=1, q=2, r=3, s=4, t=5, u=6, v=7, w=8, x=1, y=1, z=1}"},
       }) {
    ASSERT_EQ(load({row.source, row.dest}), 0U) << row.source;
    for (int round = 0; round < 2; ++round) EXPECT_EQ(correlate(row.in), row.out) << row.source << " / " << row.dest;
  }
}

TEST_F(Correlation, AVariableHoldsNothingOfTheFeatureBefore) {
  for (const char* dest : {"D b y @Concatenate(<,%x,>)", "D b y @Concatenate(<%x>)", "D * y @Concatenate(<,%x,>)"}) {
    ASSERT_EQ(load({"S a x %x", dest}), 0U);
    EXPECT_NE(correlate("a {x=1}").find("y=<1>"), std::string::npos) << dest;
    EXPECT_NE(correlate("a {z=22222}").find("y=<>"), std::string::npos) << dest;
  }
  ASSERT_EQ(load({"S a y @Concatenate(%z,%x) x %x", "D b x %x z %z"}), 0U);
  EXPECT_EQ(correlate("a {x=1, y=2}"), "b {x=1, z=}");
  EXPECT_EQ(correlate("a {y=2}"), "b {z=}");
}

TEST_F(Correlation, FunctionsRunForwardOnTheDestinationAndBackwardOnTheSource) {
  ASSERT_EQ(load({"S a @SupplyAttributes(v,1) @SupplyAttributes(v,2) v %v",
                  "D b w %v @SupplyAttributes(x,1) @SupplyAttributes(x,2)"}),
            0U);
  EXPECT_EQ(correlate("a"), "b {w=1, x=2}");
}

TEST_F(Correlation, FirstPairWinsAndStarComesLast) {
  ASSERT_EQ(load({"S * A 1", "D any", "S road", "D broad", "S road lanes 2", "D hidden", "S *", "D rest"}), 0U);
  EXPECT_EQ(correlate("road {lanes=2, A=1}"), "broad");
  EXPECT_EQ(correlate("river {A=1}"), "any");
  EXPECT_EQ(correlate("river {A=2}"), "rest");
}

TEST_F(Correlation, StatisticsAreKeyedByConstants) {
  ASSERT_EQ(load({"S road LAYER 12 n %n", "D out n %n", "S road", "D out"}), 0U);
  for (const char* text : {"road {LAYER=12}", "road {LAYER=12, n=1}", "road", "lake"}) correlate(text);
  testing::internal::CaptureStderr();
  ASSERT_EQ(correlator_->outputStats("Heading"), nullptr);
  std::string log = testing::internal::GetCapturedStderr();
  auto line = [](std::string key, const std::string& count) {
    key.resize(72, ' ');
    return key + std::string(6 - count.size(), ' ') + count + "\n";
  };
  for (const auto& [key, count] :
       std::initializer_list<std::pair<const char*, const char*>>{{"road", "1"},
                                                                  {"road+LAYER+12", "2"},
                                                                  {"Total Features Converted", "3"},
                                                                  {"lake", "1"},
                                                                  {"Total Features NOT Converted", "1"},
                                                                  {"out", "3"},
                                                                  {"Total Features Output", "3"}})
    EXPECT_NE(log.find("\n" + line(key, count)), std::string::npos) << key << "\n" << log;
}

TEST_F(Correlation, TransferReportsTellWhatIsLost) {
  VEXFeatureSpec::setTransferReport(true);
  ASSERT_EQ(load({"S a x %x k 1", "D b y %x"}), 0U);
  testing::internal::CaptureStderr();
  EXPECT_EQ(correlate("a {k=1, other=2}"), "b");
  std::string log = testing::internal::GetCapturedStderr();
  VEXFeatureSpec::setTransferReport(false);
  EXPECT_NE(log.find("Attributes not available for transfer from instance of `a': x(%x) "), std::string::npos) << log;
  EXPECT_NE(log.find("Attributes IGNORED for featuretype `a': other "), std::string::npos) << log;
  EXPECT_NE(log.find("Attributes requested for `b' but not found in instance of `a': y(%x) "), std::string::npos)
      << log;
}

TEST_F(Correlation, FactoriesTestAndSetWithoutVariables) {
  engine_ = std::make_unique<EngineScope>();
  VEXFeatureSpec spec;
  ASSERT_EQ(spec.parse({"road", "c", "1", "l", "@Concatenate(&x,!)", "@SupplyAttributes(s,2)"}, 0), nullptr);
  VEXFeaturePtr feature = makeFeature("other {c=0, x=7}");
  bool matched = true;
  ASSERT_EQ(spec.testOnly(feature, matched), nullptr);
  EXPECT_FALSE(matched);
  ASSERT_EQ(spec.setAttributes(feature), nullptr);
  EXPECT_EQ(describe(*feature), "road {c=1, l=7!, s=2, x=7}");
  ASSERT_EQ(spec.testOnly(feature, matched), nullptr);
  EXPECT_TRUE(matched);
}

// Variables that only carry an attribute's text are copied without being captured; with the transfer report on, each
// goes through the table of variables. Both roads have to lead to the same features, whatever the rows look like.
TEST_F(Correlation, PlainTransfersAreCopiedAsVariablesWouldBe) {
  std::mt19937 random(381);
  const auto pick = [&random](std::initializer_list<const char*> words) {
    return std::string(words.begin()[random() % words.size()]);
  };
  const auto defaultOrNone = [&] { return pick({"", "", "", ":7", ":aDefaultThatIsLongerThanAShortText"}); };
  for (int round = 0; round < 400; ++round) {
    const std::size_t numVariables = 1 + random() % 4;
    std::string source = "S t", dest = "D " + pick({"out", "out", "out", "t", "*"});
    for (std::size_t i = 0; i < numVariables; ++i) {
      const std::string name = "%v" + std::to_string(i);
      for (std::size_t use = 0; use < 1 + random() % 5 / 4; ++use)
        source += " " + pick({"a", "b", "c", "d", "p{0}", "p{}"}) + " " + name + defaultOrNone();
      for (std::size_t use = 0; use < 1 + random() % 3 / 2; ++use)
        dest += " " + pick({"a", "b", "c", "x", "y", "z", "q{1}", "l{}"}) + " " + name + defaultOrNone();
      if (random() % 12 == 0) dest += " f" + std::to_string(i) + " @Concatenate(<," + name + ",&a,>)";
      if (random() % 16 == 0) source += " @SupplyAttributes(a," + std::to_string(i) + ")";
      if (random() % 20 == 0) source += " @FeatureType(" + name + ")";
    }
    ASSERT_EQ(load({source, dest}), 0U) << source << " / " << dest;
    for (int feature = 0; feature < 6; ++feature) {
      VEXFeaturePtr made[2] = {makeFeature("t"), makeFeature("t")};
      for (const char* name : {"a", "b", "c", "d", "p{0}", "p{1}"}) {
        if (random() % 4 == 0) continue;
        const std::string value =
            random() % 3 == 0 ? "7" : std::string(random() % 70, static_cast<char>('a' + round % 26));
        for (VEXFeaturePtr& one : made) one->setAttribute(name, value);
      }
      for (int road = 0; road < 2; ++road) {
        VEXFeatureSpec::setTransferReport(road == 1);
        testing::internal::CaptureStderr();
        bool matched = false;
        EXPECT_EQ(correlator_->correlate(made[road], matched), nullptr);
        EXPECT_TRUE(matched);
        testing::internal::GetCapturedStderr();
      }
      VEXFeatureSpec::setTransferReport(false);
      ASSERT_EQ(made[0]->textForm(), made[1]->textForm()) << source << " / " << dest;
      ASSERT_EQ(made[0]->sequence(), made[1]->sequence()) << source << " / " << dest;
    }
  }
}

}  // namespace
