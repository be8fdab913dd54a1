// TestFactory: compares two values of each feature and routes it to PASSED or FAILED.
#include "vex/factory/factory.h"
#include "vex/factory/fctest.h"
#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kSummary = 51001;
constexpr std::uint32_t kNoFailedOutput = 51003;
constexpr std::uint32_t kNoPassedOutput = 51004;
constexpr std::uint32_t kNoTest = 51005;
constexpr std::uint32_t kBadOperator = 51006;

class TestFactory final : public VEXFactory {
 public:
  TestFactory();

  VEXStatus allDone() override {
    log(VEXSeverity::Stats, kSummary,
        {"Tested " + countText(numPassed_ + numFailed_, "input feature") + " -- " + countText(numPassed_, "feature") +
         " passed, " + countText(numFailed_, "feature") + " failed."});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<TestFactory> kClauses[];

  VEXStatus parseTest(const VEXClauseWords& clause) {
    return extendStatus(test_.parse(clause.word(0), clause.word(1), clause.word(2)));
  }

  // With INPUT clauses a side without OUTPUT is a choice; a factory that swallows a part of everything deserves a word.
  VEXStatus start() override {
    if (hasInputs()) return nullptr;
    if (!hasOutput("FAILED")) log(VEXSeverity::Warn, kNoFailedOutput, {});
    if (!hasOutput("PASSED")) log(VEXSeverity::Warn, kNoPassedOutput, {});
    return nullptr;
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!test_.isSet()) return makeStatus(kNoTest, {name(), factoryName(), "TEST"});
    bool passed = false;
    VEX_TRY(test_.evaluate(feature, kBadOperator, passed));
    if (feature == nullptr) return nullptr;
    ++(passed ? numPassed_ : numFailed_);
    return extendStatus(output(passed ? "PASSED" : "FAILED", feature));
  }

  VEXComparison test_;
  std::int64_t numPassed_ = 0;
  std::int64_t numFailed_ = 0;
};

const VEXClause<TestFactory> TestFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"TEST", exactly(3), 51002, &TestFactory::parseTest},
};

TestFactory::TestFactory() : VEXFactory("TestFactory") {
  useClauses(kClauses);
  addOutputTags({"PASSED", "FAILED"});
}

}  // namespace

VEX_FACTORY_MAKER(fcttest, TestFactory)
