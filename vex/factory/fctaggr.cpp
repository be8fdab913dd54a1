// AggregateFactory: makes one aggregate of the features of each group, at the end of input.
#include "vex/factory/factory.h"
#include "vex/factory/groupspl.h"
#include "vex/factory/listattr.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{860002, 860003, 860004};
constexpr std::uint32_t kSecondGroupBy = 860006;
constexpr std::uint32_t kSecondListName = 860008;
constexpr std::uint32_t kBadListName = 860009;
constexpr std::uint32_t kNoOutput = 860010;
constexpr std::uint32_t kOtherDimension = 860011;
constexpr std::uint32_t kNotJoined = 860012;
constexpr std::uint32_t kSummary = 860013;

class AggregateFactory final : public VEXFactory {
 public:
  AggregateFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(held_.startReading());
    for (std::size_t group = 0; held_.nextGroup(group);) {
      VEXFeaturePtr feature;
      VEX_TRY(held_.nextMember(feature));
      const bool isSingle = !held_.hasMember();
      if (isSingle && hasOutput("SINGLETON")) {
        VEX_TRY(output("SINGLETON", feature));
        continue;
      }
      VEX_TRY(join(*feature, isSingle));
      VEX_TRY(output("AGGREGATE", feature));
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
  static const VEXClause<AggregateFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }
  VEXStatus parseGroupBy(const VEXClauseWords& clause) {
    return extendStatus(held_.groups().parse(clause, kSecondGroupBy));
  }
  VEXStatus parseListName(const VEXClauseWords& clause) {
    return extendStatus(list_.parse(clause, kSecondListName, kBadListName));
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!hasOutput("AGGREGATE") && !hasOutput("SINGLETON")) return makeStatus(kNoOutput, {name(), factoryName()});
    return extendStatus(held_.add(feature));
  }

  // Makes the first member of the current group the aggregate of all of them. A single one keeps its geometry.
  VEXStatus join(VEXFeature& feature, bool isSingle) {
    if (list_.isSet()) list_.addOwnElement(feature);
    if (isSingle) return nullptr;
    const int dimension = feature.dimension();
    std::vector<VEXLine> lines;
    addGeometry(feature, dimension, lines);
    for (std::size_t index = 1; held_.hasMember(); ++index) {
      VEXFeaturePtr member;
      VEX_TRY(held_.nextMember(member));
      addGeometry(*member, dimension, lines);
      if (list_.isSet()) list_.addElement(feature, member->table(), index);
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

  VEXGroupSpool held_;
  VEXListAttribute list_;
};

const VEXClause<AggregateFactory> AggregateFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 860001, &AggregateFactory::parseOutput},
    {"GROUP_BY", atLeast(1), 860005, &AggregateFactory::parseGroupBy},
    {"LIST_NAME", exactly(1), 860007, &AggregateFactory::parseListName},
};

AggregateFactory::AggregateFactory() : VEXFactory("AggregateFactory") {
  useClauses(kClauses);
  addOutputTags({"AGGREGATE", "SINGLETON"});
}

}  // namespace

VEX_FACTORY_MAKER(fctaggr, AggregateFactory)
