// PolygonFactory: forms polygons from lines.
#include "vex/factory/factory.h"
#include "vex/factory/flushtrg.h"
#include "vex/factory/groupspl.h"
#include "vex/factory/polyform.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{47002, 47003, 47004};
constexpr std::uint32_t kProgress = 47005;
constexpr std::uint32_t kSecondGroupBy = 47008;
constexpr std::uint32_t kNotEndNoded = 47010;
constexpr std::uint32_t kNotVertexNoded = 47012;
constexpr std::uint32_t kFormed = 47013;
constexpr std::uint32_t kNotLinear = 47014;
constexpr std::uint32_t kTooShort = 47015;
constexpr std::uint32_t kForming = 47016;
constexpr std::uint32_t kBadOperator = 47018;
constexpr std::uint32_t kRefused = 47022;
constexpr std::uint32_t kFormingFlushed = 47023;
constexpr std::uint32_t kNotPlane = 47025;
constexpr std::uint32_t kCompleted = 47026;
constexpr std::uint32_t kBadOrientation = 47028;

constexpr double kProgressStep = 10.0;  // percent

class PolygonFactory final : public VEXFactory {
 public:
  PolygonFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(held_.startReading());
    for (std::size_t group = 0; held_.nextGroup(group);) VEX_TRY(formGroup(group));
    held_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    isEnding_ = true;
    VEX_TRY(flush(std::string()));
    log(VEXSeverity::Stats, kCompleted,
        {"Completed polygon formation on all submodels: " + countText(numIn_, "input feature") + ", " +
         outcomeText(numPolygons_, numOpen_, numRejected_)});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<PolygonFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }
  VEXStatus parseGroupBy(const VEXClauseWords& clause) {
    return extendStatus(held_.groups().parse(clause, kSecondGroupBy));
  }
  VEXStatus parseEndNoded(const VEXClauseWords& clause) {
    return extendStatus(setNoding(VEXNoding::Ends, clause, kNotEndNoded, noding_));
  }
  VEXStatus parseVertexNoded(const VEXClauseWords& clause) {
    return extendStatus(setNoding(VEXNoding::Vertices, clause, kNotVertexNoded, noding_));
  }
  VEXStatus parseBefore(const VEXClauseWords& clause) {
    return extendStatus(triggers_.parseBefore(clause, name(), kBadOperator));
  }
  VEXStatus parseAfter(const VEXClauseWords& clause) {
    return extendStatus(triggers_.parseAfter(clause, name(), kBadOperator));
  }
  VEXStatus parseCorridors(const VEXClauseWords&) {
    removesCorridors_ = true;
    return nullptr;
  }
  VEXStatus parseProgress(const VEXClauseWords&) {
    reportsProgress_ = true;
    return nullptr;
  }
  VEXStatus parseOrientation(const VEXClauseWords& clause) {
    orientation_ = clause.word(0);
    if (orientation_ == "CLOCKWISE" || orientation_ == "COUNTER_CLOCKWISE") return nullptr;
    return makeStatus(kBadOrientation, {clause.keyword(), clause.lineText(), clause.clauseText()});
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    bool isDue = false;
    VEX_TRY(triggers_.isBefore(feature, isDue));
    if (isDue) VEX_TRY(flush(std::string()));
    VEX_TRY(triggers_.isAfter(feature, isDue));
    VEX_TRY(hold(feature));
    return isDue ? extendStatus(flush(std::string())) : nullptr;
  }

  VEXStatus hold(VEXFeaturePtr& feature) {
    if (feature == nullptr) return nullptr;  // a trigger's function deleted it
    ++numIn_;
    if (!isLinear(*feature)) {
      reject(kNotLinear, VEXFeature::geomTypeName(feature->geomType()), feature);
      return nullptr;
    }
    if (!hasLength(*feature)) {
      reject(kTooShort, feature->numCoords() == 0 ? "0" : "1", feature);
      return nullptr;
    }
    return extendStatus(held_.add(feature));
  }

  // Lines, lists of lines, and aggregates of them. A damaged aggregate is told by what adds it to the submodel.
  static bool isLinear(const VEXFeature& feature) {
    std::vector<VEXLineRange> ranges;
    if (VEXStatus failure = VEXLine::viewOf(feature).leaves(ranges)) return true;
    for (const VEXLineRange& range : ranges)
      if (range.code != VEX_GEOM_LINE && range.code != VEX_GEOM_MULTI_LINE) return false;
    return true;
  }

  static bool hasLength(const VEXFeature& feature) {
    const VEXOrdinates xs = VEXLine::viewOf(feature).xs(), ys = VEXLine::viewOf(feature).ys();
    for (std::size_t at = 1; at < xs.size(); ++at)
      if (xs[at] != xs[0] || ys[at] != ys[0]) return true;
    return false;
  }

  void reject(std::uint32_t number, std::string_view reason, VEXFeaturePtr& feature) {
    ++numRejected_;
    rejectFeature(number, reason, feature);
  }

  VEXStatus formGroup(std::size_t group) {
    VEXPolygonForm form(noding_);
    VEXFeatureSorter lines;  // the features without their coordinates, in the order of their numbers
    VEXFeaturePtr model;     // what the polygons have of the lines: type, coordinate system, values of the group
    std::int32_t numLines = 0;
    const std::int64_t rejectedBefore = numRejected_;
    for (VEXFeaturePtr feature;;) {
      VEX_TRY(held_.nextMember(feature));
      if (feature == nullptr) break;
      if (VEXStatus failure = form.add(*feature, numLines)) {
        reject(kRefused, failure->message(), feature);
        continue;
      }
      ++numLines;
      if (model == nullptr) model = held_.groups().makeModel(group, *feature);
      feature->resetCoords();
      if (hasOutput("LINE")) VEX_TRY(lines.add(*feature, {}));
    }
    const std::string submodel = held_.groups().submodelText(group);
    log(VEXSeverity::Inform, isEnding_ ? kForming : kFormingFlushed, {countText(numLines, "input feature"), submodel});
    if (model == nullptr) return nullptr;
    VEX_TRY(form.form(removesCorridors_, progress()));
    rejectFaults(form);
    const std::int64_t polygons = static_cast<std::int64_t>(form.result().polygons.size());
    VEX_TRY(putOutPolygons(form, *model));
    const std::int64_t open = form.numOpenArcs();
    if (hasOutput("LINE"))
      VEX_TRY(form.openLines(lines, [this](VEXFeaturePtr& line) { return extendStatus(output("LINE", line)); }));
    numPolygons_ += polygons;
    numOpen_ += open;
    log(VEXSeverity::Inform, kFormed, {outcomeText(polygons, open, numRejected_ - rejectedBefore), submodel});
    return nullptr;
  }

  std::function<void(double)> progress() {
    if (!reportsProgress_) return {};
    return [this, next = 0.0](double percent) mutable {
      if (percent < next) return;
      log(VEXSeverity::Inform, kProgress, {realText(percent)});
      next = percent + kProgressStep;
    };
  }

  // Where lines cross that were said to be noded, the faces are no polygons.
  void rejectFaults(VEXPolygonForm& form) {
    for (const VEXTopologyFault& fault : form.result().faults) {
      const VEXStatus status = fault.status();
      log(VEXSeverity::Warn, kNotPlane,
          {realText(fault.x), realText(fault.y), status == nullptr ? std::string() : status->message()});
    }
    numRejected_ += form.numFaultyLines();
  }

  VEXStatus putOutPolygons(VEXPolygonForm& form, const VEXFeature& model) {
    for (VEXTopologyPolygon& formed : form.result().polygons) {
      VEXFeaturePtr polygon = model.clone();
      polygon->loadFromLine(std::move(formed.line));
      if (!orientation_.empty()) VEX_TRY(polygon->setOrientation(orientation_ == "COUNTER_CLOCKWISE"));
      VEX_TRY(output("POLYGON", polygon));
    }
    return nullptr;
  }

  static std::string outcomeText(std::int64_t polygons, std::int64_t open, std::int64_t rejected) {
    return "Formed " + countText(polygons, "polygon") + ", " + countText(open, "line segment") + " did not close and " +
           integerText(rejected) + (rejected == 1 ? " was" : " were") + " rejected";
  }

  VEXGroupSpool held_;
  VEXFlushTriggers triggers_;
  VEXNoding noding_ = VEXNoding::None;
  bool removesCorridors_ = false;
  bool reportsProgress_ = false;
  bool isEnding_ = false;
  std::string orientation_;  // empty: as they are formed, clockwise
  std::int64_t numIn_ = 0;
  std::int64_t numPolygons_ = 0;
  std::int64_t numOpen_ = 0;
  std::int64_t numRejected_ = 0;
};

const VEXClause<PolygonFactory> PolygonFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 47001, &PolygonFactory::parseOutput},
    {"GROUP_BY", atLeast(1), 47007, &PolygonFactory::parseGroupBy},
    {"END_NODED", exactly(0), 47009, &PolygonFactory::parseEndNoded},
    {"VERTEX_NODED", exactly(0), 47011, &PolygonFactory::parseVertexNoded},
    {"FLUSH_BEFORE_CURRENT_WHEN", exactly(3), 47017, &PolygonFactory::parseBefore},
    {"FLUSH_AFTER_CURRENT_WHEN", exactly(3), 47019, &PolygonFactory::parseAfter},
    {"REMOVE_CORRIDORS", exactly(0), 47021, &PolygonFactory::parseCorridors},
    {"REPORT_PROGRESS", exactly(0), 47024, &PolygonFactory::parseProgress},
    {"PRESERVE_ORIENTATION", exactly(1), 47027, &PolygonFactory::parseOrientation},
};

PolygonFactory::PolygonFactory() : VEXFactory("PolygonFactory") {
  useClauses(kClauses);
  addOutputTags({"LINE", "POLYGON"});
}

}  // namespace

VEX_FACTORY_MAKER(fctpoly, PolygonFactory)
