// BranchingFactory: compares two values of each feature, as TestFactory does, and sends those that pass to another
// factory of the chain, which may stand in front of it. A count on the feature ends its rounds.
#include "vex/factory/factory.h"
#include "vex/factory/fctest.h"
#include "vex/factory/pipeline.h"
#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kSummary = 359001;
constexpr std::uint32_t kNoSuchFactory = 359003;
constexpr std::uint32_t kNoTest = 359005;
constexpr std::uint32_t kCountNotInteger = 359006;
constexpr std::uint32_t kBadOperator = 359008;
constexpr std::uint32_t kTooManyRounds = 359009;

constexpr std::int32_t kDefaultMaximum = 1000;

class BranchingFactory final : public VEXFactory {
 public:
  BranchingFactory();

  VEXStatus allDone() override {
    log(VEXSeverity::Stats, kSummary,
        {"Tested " + countText(numPassed_ + numFailed_ + numExceeded_, "input feature") + " -- " +
         countText(numPassed_, "feature") + " passed, " + countText(numFailed_, "feature") + " failed, " +
         countText(numExceeded_, "feature") + " exceeded maximum count."});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<BranchingFactory> kClauses[];

  VEXStatus parseTest(const VEXClauseWords& clause) {
    return extendStatus(test_.parse(clause.word(0), clause.word(1), clause.word(2)));
  }
  VEXStatus parseTarget(const VEXClauseWords& clause) {
    targetName_ = clause.word(0);
    return nullptr;
  }
  VEXStatus parseMaximum(const VEXClauseWords& clause) {
    if (textToInteger(clause.word(0), maximum_)) return nullptr;
    return makeStatus(kCountNotInteger, {clause.word(0), clause.lineText(), clause.clauseText()});
  }

  VEXStatus start() override {
    countName_ = VEXName::intern(factoryName() + ".BranchingFactory.Count");
    return nullptr;
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!test_.isSet()) return makeStatus(kNoTest, {name(), factoryName(), "TEST"});
    bool passed = false;
    VEX_TRY(test_.evaluate(feature, kBadOperator, passed));
    if (feature == nullptr) return nullptr;
    if (!passed) {
      ++numFailed_;
      return extendStatus(output("FAILED", feature));
    }
    if (targetName_.empty()) {
      ++numPassed_;
      return extendStatus(output("PASSED", feature));
    }
    return extendStatus(branch(feature));
  }

  VEXStatus branch(VEXFeaturePtr& feature) {
    if (target_ == nullptr) target_ = pipeline()->find(targetName_);
    if (target_ == nullptr) return makeStatus(kNoSuchFactory, {targetName_, name(), factoryName()});
    std::int32_t count = 0;
    const VEXText* text = feature->findAttribute(countName_);
    if (text == nullptr || !textToInteger(*text, count)) count = 0;
    if (count <= maximum_) {
      feature->setInteger(countName_.text(), std::int64_t{count} + 1);
      if (pipeline()->sendTo(*target_, feature, std::int64_t{maximum_} + 1)) {
        ++numPassed_;
        return nullptr;
      }
      if (!saidTooMany_) log(VEXSeverity::Warn, kTooManyRounds, {targetName_, countName_.text()});
      saidTooMany_ = true;
    }
    ++numExceeded_;
    return extendStatus(output("COUNT_EXCEEDED", feature));
  }

  VEXComparison test_;
  std::string targetName_;
  VEXFactory* target_ = nullptr;  // not owned
  std::int32_t maximum_ = kDefaultMaximum;
  VEXName countName_;
  bool saidTooMany_ = false;
  std::int64_t numPassed_ = 0;
  std::int64_t numFailed_ = 0;
  std::int64_t numExceeded_ = 0;
};

const VEXClause<BranchingFactory> BranchingFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"TEST", exactly(3), 359002, &BranchingFactory::parseTest},
    {"TARGET_FACTORY", exactly(1), 359004, &BranchingFactory::parseTarget},
    {"MAXIMUM_COUNT", exactly(1), 359007, &BranchingFactory::parseMaximum},
};

BranchingFactory::BranchingFactory() : VEXFactory("BranchingFactory") {
  useClauses(kClauses);
  addOutputTags({"PASSED", "FAILED", "COUNT_EXCEEDED"});
}

}  // namespace

VEX_FACTORY_MAKER(fctbrnch, BranchingFactory)
