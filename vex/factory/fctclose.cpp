// CloseFactory: forms polygons from boundaries and gives each the attributes of the point that lies in it.
#include <span>

#include "vex/factory/factory.h"
#include "vex/factory/groupspl.h"
#include "vex/factory/polyform.h"
#include "vex/inc/numtext.h"
#include "vex/rptree/rptree.h"
#include "vex/src/vexline.h"

namespace {

constexpr std::uint32_t kNotEndNoded = 38002;
constexpr std::uint32_t kNotVertexNoded = 38004;
constexpr std::uint32_t kSecondGroupBy = 38006;
constexpr std::uint32_t kForming = 38007;
constexpr std::uint32_t kNotBoundary = 38008;
constexpr std::uint32_t kRefused = 38009;
constexpr std::uint32_t kNotPlane = 38010;
constexpr std::uint32_t kPointsMet = 38011;
constexpr std::uint32_t kSummary = 38012;
constexpr std::uint32_t kNotOnePoint = 38014;

class CloseFactory final : public VEXFactory {
 public:
  CloseFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(boundaries_.startReading());
    VEX_TRY(points_.startReading());
    for (std::size_t group = 0; group < boundaries_.groups().entries(); ++group) VEX_TRY(closeGroup(group));
    boundaries_.clear();
    points_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    VEX_TRY(flush(std::string()));
    log(VEXSeverity::Stats, kSummary,
        {"Received " + countText(numPoints_, "input point feature") + ", " +
         countText(numBoundaries_, "boundary feature") + ", " + countText(numShared_, "shared boundary feature")});
    log(VEXSeverity::Stats, kSummary,
        {"Output " + countText(numPolygons_, "polygon feature") + ", " + countText(numUnused_, "unused point feature") +
         ", " + countText(numOpen_, "unclosed line segment feature") + ", " +
         countText(numWithPoint_, "point-in-polygon feature") + ", and " +
         countText(numPolygons_ - numWithPoint_, "polygon") + " containing no points, " +
         countText(numRejected_, "feature") + " rejected"});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<CloseFactory> kClauses[];

  VEXStatus parseGroupBy(const VEXClauseWords& clause) {
    return extendStatus(boundaries_.groups().parse(clause, kSecondGroupBy));
  }
  VEXStatus parseEndNoded(const VEXClauseWords& clause) {
    return extendStatus(setNoding(VEXNoding::Ends, clause, kNotEndNoded, noding_));
  }
  VEXStatus parseVertexNoded(const VEXClauseWords& clause) {
    return extendStatus(setNoding(VEXNoding::Vertices, clause, kNotVertexNoded, noding_));
  }

  // Without INPUT clauses the geometry decides what a feature is for.
  VEXStatus process(VEXFeaturePtr& feature) override {
    const bool isPoint =
        matchedTag() == "INSIDE_POINT" || (matchedTag().empty() && feature->geomType() == VEX_GEOM_POINT);
    if (isPoint) {
      ++numPoints_;
      if (feature->numCoords() != 1) {
        reject(kNotOnePoint, integerText(static_cast<std::int64_t>(feature->numCoords())), feature);
        return nullptr;
      }
      return extendStatus(points_.add(feature, boundaries_.groups().indexOf(*feature)));
    }
    ++(matchedTag() == "SHARED_BOUNDARY" ? numShared_ : numBoundaries_);
    if (!isBoundary(*feature)) {
      reject(kNotBoundary, VEXFeature::geomTypeName(feature->geomType()), feature);
      return nullptr;
    }
    return extendStatus(boundaries_.add(feature));
  }

  // Lines and areas, lists and aggregates of them. A damaged aggregate is told by what adds it to the submodel.
  static bool isBoundary(const VEXFeature& feature) {
    std::vector<VEXLineRange> ranges;
    if (VEXStatus failure = VEXLine::viewOf(feature).leaves(ranges)) return true;
    for (const VEXLineRange& range : ranges)
      if (range.code != VEX_GEOM_LINE && range.code != VEX_GEOM_MULTI_LINE && !isAreaCode(range.code)) return false;
    return feature.numCoords() >= 2;
  }

  void reject(std::uint32_t number, std::string_view reason, VEXFeaturePtr& feature) {
    ++numRejected_;
    rejectFeature(number, reason, feature);
  }

  VEXStatus closeGroup(std::size_t group) {
    boundaries_.enterGroup(group);
    points_.enterGroup(group);
    VEXPolygonForm form(noding_);
    VEXFeatureSorter lines;  // the boundaries without their coordinates, in the order of their numbers
    VEXFeaturePtr model;     // what a polygon without a point has of its boundaries
    std::int32_t numLines = 0;
    for (VEXFeaturePtr feature;;) {
      VEX_TRY(boundaries_.nextMember(feature));
      if (feature == nullptr) break;
      if (VEXStatus failure = form.add(*feature, numLines)) {
        reject(kRefused, failure->message(), feature);
        continue;
      }
      ++numLines;
      if (model == nullptr) model = boundaries_.groups().makeModel(group, *feature);
      feature->resetCoords();
      if (hasOutput("LINE")) VEX_TRY(lines.add(*feature, {}));
    }
    log(VEXSeverity::Inform, kForming,
        {countText(numLines, "boundary feature"), boundaries_.groups().submodelText(group)});
    if (numLines > 0) VEX_TRY(form.form(false, {}));
    for (const VEXTopologyFault& fault : form.result().faults) {
      const VEXStatus status = fault.status();
      log(VEXSeverity::Warn, kNotPlane,
          {realText(fault.x), realText(fault.y), status == nullptr ? std::string() : status->message()});
    }
    numRejected_ += form.numFaultyLines();
    VEX_TRY(putOutPolygons(form, model));
    numOpen_ += form.numOpenArcs();
    if (!hasOutput("LINE")) return nullptr;
    return extendStatus(
        form.openLines(lines, [this](VEXFeaturePtr& line) { return extendStatus(output("LINE", line)); }));
  }

  // The first point of each polygon, in the order of arrival, gives it its attributes.
  VEXStatus findPoints(std::span<const VEXTopologyPolygon> polygons, std::vector<VEXFeaturePtr>& found) {
    std::vector<RpEntry> boxes(polygons.size());
    for (std::size_t at = 0; at < polygons.size(); ++at) {
      VEXBox box;
      VEX_TRY(polygons[at].line.boundingBox(box));
      boxes[at] = {RpBox::of(box), static_cast<std::uint32_t>(at)};
    }
    RpTree tree;
    tree.bulkLoad(std::move(boxes));
    found.resize(polygons.size());
    RpHits hits;
    for (VEXFeaturePtr point;;) {
      VEX_TRY(points_.nextMember(point));
      if (point == nullptr) return nullptr;
      const double x = point->xs()[0];
      const double y = point->ys()[0];
      tree.searchPoint(x, y, hits);
      bool isUsed = false;
      for (std::uint32_t at : hits) {
        bool isInside = false;
        VEX_TRY(polygons[at].line.containsPoint(x, y, isInside));
        if (!isInside) continue;
        if (found[at] == nullptr) {
          found[at] = std::move(point);
          isUsed = true;
        } else {
          log(VEXSeverity::Warn, kPointsMet, {realText(x), realText(y)});
        }
        break;
      }
      if (!isUsed) ++numUnused_;
    }
  }

  VEXStatus putOutPolygons(VEXPolygonForm& form, const VEXFeaturePtr& model) {
    std::vector<VEXTopologyPolygon>& polygons = form.result().polygons;
    std::vector<VEXFeaturePtr> points;
    VEX_TRY(findPoints(polygons, points));
    for (std::size_t at = 0; at < polygons.size(); ++at) {
      ++numPolygons_;
      if (points[at] != nullptr) ++numWithPoint_;
      VEXFeaturePtr polygon = points[at] != nullptr ? std::move(points[at]) : model->clone();
      polygon->loadFromLine(std::move(polygons[at].line));
      VEX_TRY(output("POLYGON", polygon));
    }
    return nullptr;
  }

  VEXGroupSpool boundaries_;
  VEXGroupSpool points_;  // by the groups of the boundaries
  VEXNoding noding_ = VEXNoding::None;
  std::int64_t numPoints_ = 0;
  std::int64_t numBoundaries_ = 0;
  std::int64_t numShared_ = 0;
  std::int64_t numPolygons_ = 0;
  std::int64_t numWithPoint_ = 0;
  std::int64_t numUnused_ = 0;
  std::int64_t numOpen_ = 0;
  std::int64_t numRejected_ = 0;
};

const VEXClause<CloseFactory> CloseFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"END_NODED", exactly(0), 38001, &CloseFactory::parseEndNoded},
    {"VERTEX_NODED", exactly(0), 38003, &CloseFactory::parseVertexNoded},
    {"GROUP_BY", atLeast(1), 38005, &CloseFactory::parseGroupBy},
};

CloseFactory::CloseFactory() : VEXFactory("CloseFactory") {
  useClauses(kClauses);
  addInputTags({"INSIDE_POINT", "BOUNDARY", "SHARED_BOUNDARY"});
  addOutputTags({"POLYGON", "LINE"});
}

}  // namespace

VEX_FACTORY_MAKER(fctclose, CloseFactory)
