// ListFactory: makes one feature of each group, at the end of input: the first one, with the attributes of all as the
// elements of a list.
#include "vex/factory/factory.h"
#include "vex/factory/groupspl.h"
#include "vex/factory/listattr.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{44002, 44003, 44004};
constexpr std::uint32_t kSecondListName = 44006;
constexpr std::uint32_t kBadListName = 44007;
constexpr std::uint32_t kSecondGroupBy = 44009;
constexpr std::uint32_t kNoListName = 44010;
constexpr std::uint32_t kNoOutput = 44011;
constexpr std::uint32_t kSummary = 44012;

class ListFactory final : public VEXFactory {
 public:
  ListFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(held_.startReading());
    for (std::size_t group = 0; held_.nextGroup(group);) {
      VEXFeaturePtr feature;
      VEX_TRY(held_.nextMember(feature));
      const bool staysSingle = !held_.hasMember() && hasOutput("SINGLETON");
      if (!staysSingle) VEX_TRY(collect(*feature));
      VEX_TRY(output(staysSingle ? "SINGLETON" : "LIST", feature));
    }
    held_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    VEX_TRY(flush(std::string()));
    log(VEXSeverity::Stats, kSummary, {held_.combinedText()});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<ListFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }
  VEXStatus parseGroupBy(const VEXClauseWords& clause) {
    return extendStatus(held_.groups().parse(clause, kSecondGroupBy));
  }
  VEXStatus parseListName(const VEXClauseWords& clause) {
    return extendStatus(list_.parse(clause, kSecondListName, kBadListName));
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!list_.isSet()) return makeStatus(kNoListName, {name(), factoryName(), "LIST_NAME"});
    if (!hasOutput("LIST")) return makeStatus(kNoOutput, {name(), factoryName(), "OUTPUT LIST"});
    return extendStatus(held_.add(feature));
  }

  // Gives the first member of the current group the list of all of them.
  VEXStatus collect(VEXFeature& feature) {
    list_.addOwnElement(feature);
    for (std::size_t index = 1; held_.hasMember(); ++index) {
      VEXFeaturePtr member;
      VEX_TRY(held_.nextMember(member));
      list_.addElement(feature, member->table(), index);
    }
    return nullptr;
  }

  VEXGroupSpool held_;
  VEXListAttribute list_;
};

const VEXClause<ListFactory> ListFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 44001, &ListFactory::parseOutput},
    {"LIST_NAME", exactly(1), 44005, &ListFactory::parseListName},
    {"GROUP_BY", atLeast(1), 44008, &ListFactory::parseGroupBy},
};

ListFactory::ListFactory() : VEXFactory("ListFactory") {
  useClauses(kClauses);
  addOutputTags({"LIST", "SINGLETON"});
}

}  // namespace

VEX_FACTORY_MAKER(fctlist, ListFactory)
