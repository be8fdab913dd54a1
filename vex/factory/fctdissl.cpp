// PolygonDissolveFactory: makes one polygon of those that share a boundary or overlap, group by group.
#include <span>

#include "vex/factory/dissolve.h"
#include "vex/factory/factory.h"
#include "vex/factory/groupspl.h"
#include "vex/factory/listattr.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kSecondGroupBy = 866002;
constexpr std::uint32_t kDissolving = 866004;
constexpr std::uint32_t kDissolvingGroup = 866005;
constexpr std::uint32_t kFormed = 866006;
constexpr std::uint32_t kRejected = 866007;
constexpr std::uint32_t kNotPlane = 866008;
constexpr std::uint32_t kSecondListName = 866013;
constexpr std::uint32_t kBadListName = 866014;
constexpr std::uint32_t kTwoNodings = 866017;
constexpr std::uint32_t kSummary = 866018;

constexpr int kMostAttempts = 8;  // to dissolve a submodel, each without the features that spoilt the one before

enum class Gather { Sum, Average, WeightedAverage };

class PolygonDissolveFactory final : public VEXFactory {
 public:
  PolygonDissolveFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(held_.startReading());
    for (std::size_t group = 0; held_.nextGroup(group);) VEX_TRY(dissolveGroup(group));
    held_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    VEX_TRY(flush(std::string()));
    log(VEXSeverity::Stats, kSummary,
        {"Dissolved " + countText(numIn_, "input polygon") + " into " + countText(numPolygons_, "polygon") + ", " +
         countText(numOther_, "feature") + (numOther_ == 1 ? " was" : " were") + " no polygon, " +
         countText(numRejected_, "polygon") + (numRejected_ == 1 ? " was" : " were") + " rejected"});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<PolygonDissolveFactory> kClauses[];

  struct Field {
    VEXName name;
    Gather gather;
  };
  // What is gathered for one polygon: sums by field, of values or of values times area.
  struct Totals {
    VEXFeaturePtr feature;
    std::int64_t numMembers = 0;
    double area = 0.0;
    std::vector<double> sums;
    std::vector<double> plainSums;  // for weights that are all 0
  };

  VEXStatus parseGroupBy(const VEXClauseWords& clause) {
    return extendStatus(held_.groups().parse(clause, kSecondGroupBy));
  }
  VEXStatus parseFields(const VEXClauseWords& clause, Gather gather) {
    for (std::size_t at = 0; at < clause.count(); ++at) fields_.push_back({VEXName::intern(clause.word(at)), gather});
    return nullptr;
  }
  VEXStatus parseSum(const VEXClauseWords& clause) { return extendStatus(parseFields(clause, Gather::Sum)); }
  VEXStatus parseAverage(const VEXClauseWords& clause) { return extendStatus(parseFields(clause, Gather::Average)); }
  VEXStatus parseWeighted(const VEXClauseWords& clause) {
    return extendStatus(parseFields(clause, Gather::WeightedAverage));
  }
  VEXStatus parseCount(const VEXClauseWords& clause) {
    countName_ = clause.word(0);
    return nullptr;
  }
  VEXStatus parseListName(const VEXClauseWords& clause) {
    return extendStatus(list_.parse(clause, kSecondListName, kBadListName));
  }
  VEXStatus parseNotNoded(const VEXClauseWords& clause) { return extendStatus(setNoding(false, clause)); }
  VEXStatus parseVertexNoded(const VEXClauseWords& clause) { return extendStatus(setNoding(true, clause)); }
  VEXStatus setNoding(bool isNoded, const VEXClauseWords& clause) {
    if (nodingIsSet_ && isNoded != isNoded_)
      return makeStatus(kTwoNodings, {clause.keyword(), clause.lineText(), clause.clauseText()});
    isNoded_ = isNoded;
    nodingIsSet_ = true;
    return nullptr;
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!VEXDissolver::isArea(*feature)) {
      ++numOther_;
      return extendStatus(output("NON_POLYGON", feature));
    }
    ++numIn_;
    return extendStatus(held_.add(feature));
  }

  VEXStatus dissolveGroup(std::size_t group) {
    VEXFeatureSorter members;  // under equal keys: in the order of arrival, and to be read more than once
    for (VEXFeaturePtr feature;;) {
      VEX_TRY(held_.nextMember(feature));
      if (feature == nullptr) break;
      VEX_TRY(members.add(*feature, {}));
    }
    if (held_.groups().hasFields())
      log(VEXSeverity::Inform, kDissolvingGroup,
          {countText(members.count(), "input feature"), held_.groups().submodelText(group)});
    else
      log(VEXSeverity::Inform, kDissolving, {countText(members.count(), "input polygon")});

    std::vector<bool> isOut(static_cast<std::size_t>(members.count()), false);
    for (int attempt = 1;; ++attempt) {
      VEXDissolver dissolver(isNoded_, hasOutput("INTERIOR_LINE"));
      VEX_TRY(fill(members, dissolver, isOut));
      VEX_TRY(dissolver.dissolve());
      if (dissolver.faults().empty()) return extendStatus(putOut(members, dissolver, group));
      rejectFaulty(dissolver, isOut, attempt == kMostAttempts);
    }
  }

  VEXStatus fill(VEXFeatureSorter& members, VEXDissolver& dissolver, std::vector<bool>& isOut) {
    VEX_TRY(members.startReading());
    VEXFeaturePtr feature;
    for (std::size_t at = 0; at < isOut.size(); ++at) {
      VEX_TRY(members.next(feature));
      if (isOut[at]) continue;
      VEXStatus failure = dissolver.add(*feature, static_cast<std::int32_t>(at));
      if (failure == nullptr) continue;
      isOut[at] = true;
      ++numRejected_;
      rejectFeature(kRejected, failure->message(), feature);
    }
    return nullptr;
  }

  void rejectFaulty(const VEXDissolver& dissolver, std::vector<bool>& isOut, bool isLast) {
    for (const VEXTopologyFault& fault : dissolver.faults()) {
      const VEXStatus status = fault.status();
      log(VEXSeverity::Warn, kNotPlane,
          {realText(fault.x), realText(fault.y), status == nullptr ? std::string() : status->message()});
    }
    const std::int64_t before = numRejected_;
    for (std::int32_t number : dissolver.faulty()) {
      if (!isOut[static_cast<std::size_t>(number)]) ++numRejected_;
      isOut[static_cast<std::size_t>(number)] = true;
    }
    if (!isLast && numRejected_ > before) return;
    for (std::size_t at = 0; at < isOut.size(); ++at) {
      if (!isOut[at]) ++numRejected_;
      isOut[at] = true;
    }
  }

  VEXStatus putOut(VEXFeatureSorter& members, VEXDissolver& dissolver, std::size_t group) {
    std::vector<Totals> totals(dissolver.polygons().size());
    VEX_TRY(gatherMembers(members, dissolver, totals));
    VEXFeaturePtr model;
    for (std::size_t at = 0; at < totals.size(); ++at) {
      Totals& total = totals[at];
      if (total.feature == nullptr) continue;
      finishFields(total);
      if (model == nullptr) model = held_.groups().makeModel(group, *total.feature);
      total.feature->loadFromLine(std::move(dissolver.polygons()[at]));
      ++numPolygons_;
      VEX_TRY(output("POLYGON", total.feature));
    }
    for (VEXLine& line : dissolver.interiorLines()) {
      if (model == nullptr) break;
      VEXFeaturePtr feature = model->clone();
      feature->loadFromLine(std::move(line));
      VEX_TRY(output("INTERIOR_LINE", feature));
    }
    log(VEXSeverity::Inform, kFormed,
        {"Formed " + countText(static_cast<std::int64_t>(totals.size()), "polygon") + ", " +
             countText(dissolver.numInteriorLines(), "interior line segment") + " found",
         held_.groups().submodelText(group)});
    return nullptr;
  }

  VEXStatus gatherMembers(VEXFeatureSorter& members, const VEXDissolver& dissolver, std::vector<Totals>& totals) {
    VEX_TRY(members.startReading());
    VEXFeaturePtr member;
    std::int32_t read = -1;  // number of `member`
    for (const auto& [number, polygon] : dissolver.memberships()) {
      while (read < number) {
        VEX_TRY(members.next(member));
        ++read;
      }
      VEX_TRY(gather(*member, totals[polygon]));
    }
    return nullptr;
  }

  VEXStatus gather(const VEXFeature& member, Totals& total) {
    double area = 0.0;
    VEX_TRY(VEXLine::viewOf(member).area(area));
    area = std::abs(area);
    if (total.feature == nullptr) {
      total.feature = VEXObjectRecycler::instance().getFeature(2, 0);
      total.feature->cloneAttributes(member);
      total.feature->setCoordSys(member.coordSys());
      total.sums.assign(fields_.size(), 0.0);
      total.plainSums.assign(fields_.size(), 0.0);
    }
    if (list_.isSet()) list_.addElement(*total.feature, member.table(), static_cast<std::size_t>(total.numMembers));
    ++total.numMembers;
    total.area += area;
    for (std::size_t at = 0; at < fields_.size(); ++at) {
      const VEXText* text = member.findAttribute(fields_[at].name);
      double value = 0.0;
      if (text == nullptr || !textToReal(*text, value)) continue;
      total.sums[at] += fields_[at].gather == Gather::WeightedAverage ? value * area : value;
      total.plainSums[at] += value;
    }
    return nullptr;
  }

  void finishFields(Totals& total) const {
    for (std::size_t at = 0; at < fields_.size(); ++at) {
      double value = total.sums[at];
      if (fields_[at].gather == Gather::WeightedAverage && total.area > 0.0)
        value /= total.area;
      else if (fields_[at].gather != Gather::Sum)
        value = total.plainSums[at] / static_cast<double>(total.numMembers);
      total.feature->setReal(fields_[at].name.text(), value);
    }
    if (!countName_.empty()) total.feature->setInteger(countName_, total.numMembers);
  }

  VEXGroupSpool held_;
  std::vector<Field> fields_;
  std::string countName_;
  VEXListAttribute list_;
  bool isNoded_ = false;
  bool nodingIsSet_ = false;
  std::int64_t numIn_ = 0;
  std::int64_t numPolygons_ = 0;
  std::int64_t numOther_ = 0;
  std::int64_t numRejected_ = 0;
};

const VEXClause<PolygonDissolveFactory> PolygonDissolveFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"GROUP_BY", atLeast(1), 866001, &PolygonDissolveFactory::parseGroupBy},
    {"SUM_FIELDS", atLeast(1), 866010, &PolygonDissolveFactory::parseSum},
    {"AVERAGE_FIELDS", atLeast(1), 866010, &PolygonDissolveFactory::parseAverage},
    {"WEIGHTED_AVERAGE_FIELDS", atLeast(1), 866010, &PolygonDissolveFactory::parseWeighted},
    {"DISSOLVE_COUNT_ATTRIBUTE", exactly(1), 866009, &PolygonDissolveFactory::parseCount},
    {"LIST_NAME", exactly(1), 866012, &PolygonDissolveFactory::parseListName},
    {"NOT_NODED", exactly(0), 866015, &PolygonDissolveFactory::parseNotNoded},
    {"VERTEX_NODED", exactly(0), 866016, &PolygonDissolveFactory::parseVertexNoded},
};

PolygonDissolveFactory::PolygonDissolveFactory() : VEXFactory("PolygonDissolveFactory") {
  useClauses(kClauses);
  addOutputTags({"POLYGON", "INTERIOR_LINE", "NON_POLYGON"});
}

}  // namespace

VEX_FACTORY_MAKER(fctdissl, PolygonDissolveFactory)
