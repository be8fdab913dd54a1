// TeeFactory: sends on one copy of each feature for every OUTPUT clause, each rewritten by its own clause.
#include "vex/factory/factory.h"
#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kSummary = 50001;
constexpr std::uint32_t kBadOutput = 50002;
constexpr std::uint32_t kNoOutput = 50003;

class TeeFactory final : public VEXFactory {
 public:
  TeeFactory();

  VEXStatus allDone() override {
    log(VEXSeverity::Stats, kSummary,
        {"Replicated (and mutated) " + countText(numIn_, "input feature") + " into " +
         countText(numOut_, "output feature")});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<TeeFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) {
    if (clause.word(0) != "FEATURE_TYPE")
      return makeStatus(kBadOutput, {clause.keyword(), clause.lineText(), clause.clauseText()});
    outputs_.push_back(std::make_unique<VEXFeatureSpec>());
    return extendStatus(clause.parseSpec(1, *outputs_.back()));
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (outputs_.empty()) return makeStatus(kNoOutput, {name(), factoryName()});
    ++numIn_;
    for (std::size_t at = 0; at < outputs_.size(); ++at) {
      VEXFeaturePtr copy = at + 1 < outputs_.size() ? feature->clone() : std::move(feature);
      VEX_TRY(outputs_[at]->setAttributes(copy));
      if (copy == nullptr) continue;
      ++numOut_;
      VEX_TRY(sendOn(copy));
    }
    return nullptr;
  }

  std::vector<std::unique_ptr<VEXFeatureSpec>> outputs_;
  std::int64_t numIn_ = 0;
  std::int64_t numOut_ = 0;
};

const VEXClause<TeeFactory> TeeFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(2), 50002, &TeeFactory::parseOutput},
};

TeeFactory::TeeFactory() : VEXFactory("TeeFactory") {
  useClauses(kClauses);
}

}  // namespace

VEX_FACTORY_MAKER(fcttee, TeeFactory)
