// SamplingFactory: sends on every n-th feature and drops the others.
#include "vex/factory/factory.h"
#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kSummary = 48001;
constexpr std::uint32_t kRateNotInteger = 48003;

class SamplingFactory final : public VEXFactory {
 public:
  SamplingFactory();

  VEXStatus allDone() override {
    log(VEXSeverity::Stats, kSummary, {"Sampled " + integerText(kept_) + " of " + integerText(seen_) + " features "});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<SamplingFactory> kClauses[];

  VEXStatus parseRate(const VEXClauseWords& clause) {
    std::int32_t rate = 0;
    if (!textToInteger(clause.word(0), rate))
      return makeStatus(kRateNotInteger, {clause.word(0), clause.lineText(), clause.clauseText()});
    rate_ = rate;
    return nullptr;
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    ++seen_;
    count_ = rate_ == 0 ? 1 : (count_ + 1) % rate_;
    if (count_ != 0) {
      feature.reset();
      return nullptr;
    }
    ++kept_;
    return extendStatus(sendOn(feature));
  }

  std::int64_t count_ = 0;
  std::int64_t rate_ = 1;
  std::int64_t kept_ = 0;
  std::int64_t seen_ = 0;
};

const VEXClause<SamplingFactory> SamplingFactory::kClauses[] = {
    // keyword       words after it   wrong count   handler
    {"SAMPLE_RATE", exactly(1), 48002, &SamplingFactory::parseRate},
};

SamplingFactory::SamplingFactory() : VEXFactory("SamplingFactory") {
  useClauses(kClauses);
}

}  // namespace

VEX_FACTORY_MAKER(fctsampl, SamplingFactory)
