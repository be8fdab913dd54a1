// DeaggregateFactory: splits aggregates into their members.
#include "vex/factory/areatext.h"
#include "vex/factory/factory.h"
#include "vex/factory/listattr.h"
#include "vex/inc/numtext.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{863002, 863003, 863010};
constexpr std::uint32_t kSecondListName = 863005;
constexpr std::uint32_t kBadListName = 863006;
constexpr std::uint32_t kSummary = 863007;
constexpr std::uint32_t kSummaryRejected = 863008;
constexpr std::uint32_t kRejected = 863009;

class DeaggregateFactory final : public VEXFactory {
 public:
  DeaggregateFactory();

  VEXStatus allDone() override {
    const std::string split = "Split " + countText(numIn_, "input feature") + " into " + counts_.text(true);
    if (numRejected_ == 0) {
      log(VEXSeverity::Stats, kSummary, {split});
    } else {
      log(VEXSeverity::Stats, kSummaryRejected, {split, "Rejected " + countText(numRejected_, "feature")});
    }
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<DeaggregateFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }
  VEXStatus parseListName(const VEXClauseWords& clause) {
    return extendStatus(list_.parse(clause, kSecondListName, kBadListName));
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    ++numIn_;
    if (feature->geomType() != VEX_GEOM_AGGREGATE) return extendStatus(putOut(feature));
    VEXFeatureVector members;
    if (VEXStatus failure = feature->splitAggregate(false, members)) {
      reject(failure->message(), feature);
      return nullptr;
    }
    if (members.empty()) {
      reject("0", feature);
      return nullptr;
    }
    if (list_.isSet()) giveElements(*feature, members);
    feature.reset();
    for (VEXFeaturePtr& member : members) VEX_TRY(putOut(member));
    return nullptr;
  }

  // The attributes of element i become attributes of member i.
  void giveElements(const VEXFeature& aggregate, VEXFeatureVector& members) const {
    aggregate.table().forEach([&](VEXName name, std::string_view value) {
      std::size_t index = 0;
      std::string_view rest;
      if (list_.matches(name.text(), index, rest) && !rest.empty() && index < members.size()) {
        members[index]->setAttribute(rest, value);
      }
    });
  }

  VEXStatus putOut(VEXFeaturePtr& feature) {
    const char* tag = "AGGREGATE";
    switch (feature->geomType()) {
      case VEX_GEOM_POINT:
      case VEX_GEOM_MULTI_POINT:
        tag = "POINT", ++counts_.points;
        break;
      case VEX_GEOM_LINE:
      case VEX_GEOM_MULTI_LINE:
        tag = "LINE", ++counts_.lines;
        break;
      case VEX_GEOM_POLYGON:
      case VEX_GEOM_MULTI_POLY:
        tag = "POLYGON", ++counts_.polygons;
        break;
      case VEX_GEOM_DONUT:
        tag = "DONUT", ++counts_.donuts;
        break;
      case VEX_GEOM_AGGREGATE:
      case VEX_GEOM_MULTI:
        ++(isPointInPolygon(*feature) ? counts_.pips : counts_.aggregates);
        break;
      default:
        reject(VEXFeature::geomTypeName(feature->geomType()), feature);
        return nullptr;
    }
    return extendStatus(output(tag, feature));
  }

  void reject(std::string_view reason, VEXFeaturePtr& feature) {
    ++numRejected_;
    rejectFeature(kRejected, reason, feature);
  }

  VEXListAttribute list_;
  VEXGeometryCounts counts_;
  std::int64_t numIn_ = 0;
  std::int64_t numRejected_ = 0;
};

const VEXClause<DeaggregateFactory> DeaggregateFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 863001, &DeaggregateFactory::parseOutput},
    {"LIST_NAME", exactly(1), 863004, &DeaggregateFactory::parseListName},
};

DeaggregateFactory::DeaggregateFactory() : VEXFactory("DeaggregateFactory") {
  useClauses(kClauses);
  addOutputTags({"POLYGON", "DONUT", "LINE", "POINT", "AGGREGATE"});
}

}  // namespace

VEX_FACTORY_MAKER(fctdeagg, DeaggregateFactory)
