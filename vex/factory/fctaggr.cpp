// AggregateFactory: makes one aggregate of the features of each group, at the end of input.
#include "vex/factory/gatherng.h"
#include "vex/src/vexline.h"

namespace {

constexpr std::uint32_t kNoOutput = 860010;
constexpr std::uint32_t kOtherDimension = 860011;
constexpr std::uint32_t kNotJoined = 860012;

class AggregateFactory final : public VEXGatheringFactory {
 public:
  AggregateFactory();

 private:
  static const VEXClause<AggregateFactory> kClauses[];

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!hasOutput("AGGREGATE") && !hasOutput("SINGLETON")) return makeStatus(kNoOutput, {name(), factoryName()});
    return extendStatus(hold(feature));
  }

  // A single feature keeps its geometry.
  VEXStatus gather(VEXFeature& feature) override {
    if (list().isSet()) list().addOwnElement(feature);
    if (!held().hasMember()) return nullptr;
    const int dimension = feature.dimension();
    std::vector<VEXLine> lines;
    addGeometry(feature, dimension, lines);
    for (std::size_t index = 1; held().hasMember(); ++index) {
      VEXFeaturePtr member;
      VEX_TRY(held().nextMember(member));
      addGeometry(*member, dimension, lines);
      if (list().isSet()) list().addElement(feature, member->table(), index);
    }
    feature.loadFromLine(lines.empty() ? VEXLine({}, {}, VEX_GEOM_AGGREGATE) : VEXLine::aggregateOf(lines));
    return nullptr;
  }

  void addGeometry(VEXFeature& member, int dimension, std::vector<VEXLine>& lines) {
    if (member.numCoords() == 0) return;
    VEXLine line = member.takeLine();
    std::vector<VEXLineRange> ranges;
    if (VEXStatus failure = line.leaves(ranges)) {
      log(VEXSeverity::Warn, kNotJoined, {member.featureType(), failure->message()});
      return;
    }
    if (member.dimension() != dimension) log(VEXSeverity::Inform, kOtherDimension, {member.featureType()});
    lines.push_back(std::move(line));
  }
};

const VEXClause<AggregateFactory> AggregateFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 860001, &AggregateFactory::parseOutput},
    {"GROUP_BY", atLeast(1), 860005, &AggregateFactory::parseGroupBy},
    {"LIST_NAME", exactly(1), 860007, &AggregateFactory::parseListName},
};

AggregateFactory::AggregateFactory()
    : VEXGatheringFactory("AggregateFactory", "AGGREGATE",
                          {.output = {860002, 860003, 860004},
                           .secondGroupBy = 860006,
                           .secondListName = 860008,
                           .badListName = 860009,
                           .summary = 860013}) {
  useClauses(kClauses);
}

}  // namespace

VEX_FACTORY_MAKER(fctaggr, AggregateFactory)
