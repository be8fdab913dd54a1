// ListFactory: makes one feature of each group, at the end of input: the first one, with the attributes of all as the
// elements of a list.
#include "vex/factory/gatherng.h"

namespace {

constexpr std::uint32_t kNoListName = 44010;
constexpr std::uint32_t kNoOutput = 44011;

class ListFactory final : public VEXGatheringFactory {
 public:
  ListFactory();

 private:
  static const VEXClause<ListFactory> kClauses[];

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!list().isSet()) return makeStatus(kNoListName, {name(), factoryName(), "LIST_NAME"});
    if (!hasOutput("LIST")) return makeStatus(kNoOutput, {name(), factoryName(), "OUTPUT LIST"});
    return extendStatus(hold(feature));
  }

  VEXStatus gather(VEXFeature& feature) override {
    list().addOwnElement(feature);
    for (std::size_t index = 1; held().hasMember(); ++index) {
      VEXFeaturePtr member;
      VEX_TRY(held().nextMember(member));
      list().addElement(feature, member->table(), index);
    }
    return nullptr;
  }
};

const VEXClause<ListFactory> ListFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 44001, &ListFactory::parseOutput},
    {"LIST_NAME", exactly(1), 44005, &ListFactory::parseListName},
    {"GROUP_BY", atLeast(1), 44008, &ListFactory::parseGroupBy},
};

ListFactory::ListFactory()
    : VEXGatheringFactory("ListFactory", "LIST",
                          {.output = {44002, 44003, 44004},
                           .secondGroupBy = 44009,
                           .secondListName = 44006,
                           .badListName = 44007,
                           .summary = 44012}) {
  useClauses(kClauses);
}

}  // namespace

VEX_FACTORY_MAKER(fctlist, ListFactory)
