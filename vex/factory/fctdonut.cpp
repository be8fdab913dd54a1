// DonutFactory: polygons that lie in others become their holes, and points inside join their polygon.
#include <functional>
#include <span>

#include "vex/factory/areatext.h"
#include "vex/factory/factory.h"
#include "vex/factory/flushtrg.h"
#include "vex/factory/groupspl.h"
#include "vex/inc/numtext.h"
#include "vex/src/holemerg.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexdonut.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{41002, 41003, 41004};
constexpr std::uint32_t kSecondGroupBy = 41006;
constexpr std::uint32_t kSummary = 41007;
constexpr std::uint32_t kSummaryRejected = 41008;
constexpr std::uint32_t kSubmodel = 41009;
constexpr std::uint32_t kClosure = 41010;
constexpr std::uint32_t kBadOperator = 41015;
constexpr std::uint32_t kRejected = 41027;
constexpr std::size_t kClosureStep = 1000;  // features between two lines of the log
constexpr const char* kTaggedHole = "tagged_hole";

class DonutFactory final : public VEXFactory {
 public:
  DonutFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(held_.startReading());
    for (std::size_t group = 0; held_.nextGroup(group);) {
      log(VEXSeverity::Inform, kSubmodel, {held_.groups().submodelText(group)});
      VEX_TRY(buildGroup());
    }
    held_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    VEX_TRY(flush(std::string()));
    const std::string combined = "Combined " + countText(numIn_, "input feature") + " into " + counts_.text(false);
    if (numRejected_ == 0) {
      log(VEXSeverity::Stats, kSummary, {combined});
    } else {
      log(VEXSeverity::Stats, kSummaryRejected, {combined, "Rejected " + countText(numRejected_, "feature")});
    }
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<DonutFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }
  VEXStatus parseGroupBy(const VEXClauseWords& clause) {
    return extendStatus(held_.groups().parse(clause, kSecondGroupBy));
  }
  VEXStatus parseDropHoles(const VEXClauseWords&) {
    dropsHoles_ = true;
    return nullptr;
  }
  VEXStatus parseTagHoles(const VEXClauseWords&) {
    tagsHoles_ = true;
    return nullptr;
  }
  VEXStatus parseBefore(const VEXClauseWords& clause) {
    return extendStatus(triggers_.parseBefore(clause, name(), kBadOperator));
  }
  VEXStatus parseAfter(const VEXClauseWords& clause) {
    return extendStatus(triggers_.parseAfter(clause, name(), kBadOperator));
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    bool isDue = false;
    VEX_TRY(triggers_.isBefore(feature, isDue));
    if (isDue) VEX_TRY(flush(std::string()));
    VEX_TRY(triggers_.isAfter(feature, isDue));
    if (feature != nullptr) {  // else a trigger's function deleted it
      ++numIn_;
      VEX_TRY(held_.add(feature));
    }
    return isDue ? extendStatus(flush(std::string())) : nullptr;
  }

  // Takes the feature apart. Rings and points wait for their submodel, open lines leave.
  VEXStatus take(VEXFeaturePtr& feature) {
    const VEXLine whole = feature->takeLine();
    std::vector<VEXLineRange> ranges;
    VEXStatus failure = whole.leaves(ranges);
    std::vector<VEXLine> parts;
    for (const VEXLineRange& range : ranges) {
      if (range.count == 0) continue;
      const VEXLine part = VEXLine::viewOf(whole, range.first, range.first + range.count - 1, range.code);
      if (range.code == VEX_GEOM_POINT || range.code == VEX_GEOM_LINE || range.code == VEX_GEOM_POLYGON ||
          range.code == VEX_GEOM_DONUT) {
        parts.push_back(part.clone());
      } else if (range.code != VEX_GEOM_UNDEFINED) {
        std::vector<VEXLine> pieces;
        if (VEXStatus fault = part.split(kEveryPartMask, pieces)) failure = std::move(fault);
        for (const VEXLine& piece : pieces) parts.push_back(piece.clone());
      }
    }
    if (failure != nullptr || parts.empty()) {
      ++numRejected_;
      const std::string reason = failure != nullptr ? failure->message() : VEXFeature::geomTypeName(whole.geomType());
      feature->restoreLine(whole.clone());
      rejectFeature(kRejected, reason, feature);
      return nullptr;
    }
    for (std::size_t at = 0; at < parts.size(); ++at) {
      VEXFeaturePtr own = at + 1 < parts.size() ? feature->clone() : std::move(feature);
      VEX_TRY(takePart(std::move(parts[at]), own));
    }
    return nullptr;
  }

  VEXStatus takePart(VEXLine line, VEXFeaturePtr& feature) {
    const bool isRing = line.geomType() == VEX_GEOM_POLYGON || line.geomType() == VEX_GEOM_DONUT ||
                        (line.isClosed() && line.numCoords() >= 4);
    if (line.geomType() != VEX_GEOM_POINT && line.numCoords() == 1) {
      line.setGeomType(VEX_GEOM_POINT);
    } else if (line.geomType() == VEX_GEOM_LINE && !isRing) {
      feature->loadFromLine(std::move(line));
      ++counts_.lines;
      return extendStatus(output("LINE", feature));
    } else if (line.geomType() == VEX_GEOM_LINE) {
      line.setGeomType(VEX_GEOM_POLYGON);
    }
    if (line.geomType() == VEX_GEOM_POLYGON) line.close();
    lines_.push_back(std::move(line));
    features_.push_back(std::move(feature));
    return nullptr;
  }

  VEXStatus buildGroup() {
    lines_.clear();
    features_.clear();
    for (VEXFeaturePtr feature;;) {
      VEX_TRY(held_.nextMember(feature));
      if (feature == nullptr) break;
      VEX_TRY(take(feature));
    }
    VEX_TRY(sortRings(lines_, &features_));
    std::vector<std::size_t> parents;
    VEX_TRY(findParents(lines_, parents, progress()));
    // Directly in each ring lie inner_[starts[i]] up to starts[i + 1], points first.
    std::vector<std::size_t> starts(lines_.size() + 1, 0), inner(lines_.size());
    for (const std::size_t parent : parents) {
      if (parent != kNoParent) ++starts[parent + 1];
    }
    for (std::size_t at = 0; at < lines_.size(); ++at) starts[at + 1] += starts[at];
    std::vector<std::size_t> ends(starts.begin(), starts.end() - 1);
    for (std::size_t at = 0; at < lines_.size(); ++at) {
      if (parents[at] != kNoParent) inner[ends[parents[at]]++] = at;
    }
    isPoint_.clear();  // lines are moved away below
    for (const VEXLine& line : lines_) isPoint_.push_back(line.geomType() == VEX_GEOM_POINT);
    std::vector<bool> isHole(lines_.size(), false), isUsed(lines_.size(), false);
    for (std::size_t at = lines_.size(); at-- > 0;) {
      if (parents[at] == kNoParent) continue;
      isHole[at] = !isPoint(at) && !isHole[parents[at]];
      isUsed[at] = isPoint(at) && !isHole[parents[at]];
    }
    for (std::size_t at = 0; at < lines_.size(); ++at) {
      if (!isHole[at] && !isPoint(at)) {
        const std::span<const std::size_t> own(inner.data() + starts[at], starts[at + 1] - starts[at]);
        VEX_TRY(putOutShell(at, own, isUsed));
      }
    }
    for (std::size_t at = 0; at < lines_.size(); ++at) {
      if (!isPoint(at) || isUsed[at]) continue;
      features_[at]->loadFromLine(std::move(lines_[at]));
      ++counts_.points;
      VEX_TRY(output("POINT", features_[at]));
    }
    lines_.clear();
    features_.clear();
    return nullptr;
  }

  // What ORV_DEBUG DONUT_FACTORY wants to see of a long search.
  std::function<void(std::size_t)> progress() const {
    if (!VEXConfiguration::debugWord("DONUT_FACTORY")) return {};
    return [this](std::size_t at) {
      if (at % kClosureStep == 0) log(VEXSeverity::Inform, kClosure, {integerText(static_cast<std::int64_t>(at) + 1)});
    };
  }

  bool isPoint(std::size_t at) const { return isPoint_[at]; }

  VEXStatus putOutShell(std::size_t at, std::span<const std::size_t> inner, const std::vector<bool>& isUsed) {
    ++numShells_;
    VEXLine shell = std::move(lines_[at]);
    std::vector<VEXLine> holes, parts;
    VEXFeaturePtr feature = std::move(features_[at]);
    for (const std::size_t within : inner) {
      if (isUsed[within]) {
        feature->mergeAttributes(*features_[within]);
        parts.push_back(std::move(lines_[within]));
      } else if (!isPoint(within)) {
        holes.push_back(outerRing(lines_[within]));
      }
    }
    if (!dropsHoles_) {
      std::vector<VEXLine> merged;
      for (const VEXLine& hole : holes) merged.push_back(hole.clone());
      mergeTouchingHoles(merged);
      for (const VEXLine& hole : merged) VEX_TRY(shell.addHole(hole));
    } else if (shell.geomType() == VEX_GEOM_DONUT) {
      shell = outerRing(shell);
    }
    const char* tag = shell.geomType() == VEX_GEOM_DONUT ? "DONUT" : "POLYGON";
    if (!parts.empty()) {
      ++counts_.pips;
      parts.push_back(std::move(shell));
      feature->loadFromLine(VEXLine::aggregateOf(parts));
    } else {
      ++(shell.geomType() == VEX_GEOM_DONUT ? counts_.donuts : counts_.polygons);
      feature->loadFromLine(std::move(shell));
    }
    VEX_TRY(output(tag, feature));
    return tagsHoles_ ? extendStatus(putOutHoles(inner, holes)) : nullptr;
  }

  // `holes` are the rings among `inner`, in their order.
  VEXStatus putOutHoles(std::span<const std::size_t> inner, std::vector<VEXLine>& holes) {
    std::size_t next = 0;
    const std::string number = integerText(numShells_);
    for (const std::size_t within : inner) {
      if (isPoint(within) || features_[within] == nullptr || next == holes.size()) continue;
      features_[within]->loadFromLine(std::move(holes[next++]));
      features_[within]->setAttribute(kTaggedHole, number);
      ++counts_.polygons;
      VEX_TRY(output("POLYGON", features_[within]));
    }
    return nullptr;
  }

  static VEXLine outerRing(const VEXLine& line) {
    std::vector<VEXLineRange> rings;
    line.rings(rings);
    return VEXLine::viewOf(line, 0, rings[0].count - 1, VEX_GEOM_POLYGON).clone();
  }

  VEXGroupSpool held_;
  VEXFlushTriggers triggers_;
  bool dropsHoles_ = false;
  bool tagsHoles_ = false;
  std::vector<VEXLine> lines_;  // of the submodel being built
  std::vector<bool> isPoint_;
  VEXFeatureVector features_;  // theirs, without coordinates
  VEXGeometryCounts counts_;
  std::int64_t numIn_ = 0;
  std::int64_t numRejected_ = 0;
  std::int64_t numShells_ = 0;
};

const VEXClause<DonutFactory> DonutFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 41001, &DonutFactory::parseOutput},
    {"GROUP_BY", atLeast(1), 41005, &DonutFactory::parseGroupBy},
    {"DROP_HOLES", exactly(0), 41016, &DonutFactory::parseDropHoles},
    {"TAG_HOLES", exactly(0), 41017, &DonutFactory::parseTagHoles},
    {"FLUSH_BEFORE_CURRENT_WHEN", exactly(3), 41018, &DonutFactory::parseBefore},
    {"FLUSH_AFTER_CURRENT_WHEN", exactly(3), 41019, &DonutFactory::parseAfter},
};

DonutFactory::DonutFactory() : VEXFactory("DonutFactory") {
  useClauses(kClauses);
  addOutputTags({"DONUT", "POLYGON", "LINE", "POINT"});
}

}  // namespace

VEX_FACTORY_MAKER(fctdonut, DonutFactory)
