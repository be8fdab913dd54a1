// SortFactory: puts out the features in the order of their attributes at the end of input. They are held on a temporary
// file when there are many.
#include "vex/factory/factory.h"
#include "vex/factory/featsort.h"
#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kSummary = 49001;
constexpr std::uint32_t kSecondSortBy = 49003;
constexpr std::uint32_t kBadDirection = 49004;
constexpr std::uint32_t kNoSortBy = 49005;

class SortFactory final : public VEXFactory {
 public:
  SortFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(sorter_.startReading());
    for (VEXFeaturePtr feature;;) {
      VEX_TRY(sorter_.next(feature));
      if (feature == nullptr) break;
      VEX_TRY(output("SORTED", feature));
    }
    sorter_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    VEX_TRY(flush(std::string()));
    log(VEXSeverity::Stats, kSummary, {"Sorted " + countText(numSorted_, "input feature")});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<SortFactory> kClauses[];

  VEXStatus parseSortBy(const VEXClauseWords& clause) {
    if (!fieldNames_.empty())
      return makeStatus(kSecondSortBy, {clause.keyword(), clause.lineText(), clause.clauseText()});
    for (std::size_t at = 0; at < clause.count(); at += 2) {
      fieldNames_.push_back(VEXName::intern(clause.word(at)));
      numericFlags_.push_back(clause.word(at + 1) == "NUMERIC");
    }
    return nullptr;
  }
  VEXStatus parseDirection(const VEXClauseWords& clause) {
    const std::string& word = clause.word(0);
    if (word != "ASCENDING" && word != "DESCENDING")
      return makeStatus(kBadDirection, {clause.keyword(), clause.lineText(), clause.clauseText()});
    sorter_.setDescending(word == "DESCENDING");
    return nullptr;
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (fieldNames_.empty()) return makeStatus(kNoSortBy, {factoryName(), name()});
    key_.clear();
    for (std::size_t at = 0; at < fieldNames_.size(); ++at) {
      const VEXText* value = feature->findAttribute(fieldNames_[at]);
      const std::string_view text = value == nullptr ? std::string_view() : *value;
      double number = 0.0;
      if (!numericFlags_[at])
        appendTextKey(key_, text);
      else
        appendNumberKey(key_, textToReal(text, number) ? number : 0.0);
    }
    VEX_TRY(sorter_.add(*feature, key_));
    ++numSorted_;
    feature.reset();
    return nullptr;
  }

  std::vector<VEXName> fieldNames_;
  std::vector<bool> numericFlags_;
  std::string key_;
  VEXFeatureSorter sorter_;
  std::int64_t numSorted_ = 0;
};

const VEXClause<SortFactory> SortFactory::kClauses[] = {
    // keyword          words after it  wrong count  handler
    {"SORT_BY", pairs(), 49002, &SortFactory::parseSortBy},
    {"SORT_DIRECTION", exactly(1), 49004, &SortFactory::parseDirection},
};

SortFactory::SortFactory() : VEXFactory("SortFactory") {
  useClauses(kClauses);
  addOutputTags({"SORTED"});
}

}  // namespace

VEX_FACTORY_MAKER(fctsort, SortFactory)
