// PIPComponentsFactory: takes aggregates of one point and one polygon apart into a point and a polygon.
#include "vex/factory/factory.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{46004, 46005, 46006};
constexpr std::uint32_t kSummary = 46001;
constexpr std::uint32_t kSummaryRejected = 46002;
constexpr std::uint32_t kPoints = 46007;
constexpr std::uint32_t kNoPolygon = 46008;

class PIPComponentsFactory final : public VEXFactory {
 public:
  PIPComponentsFactory();

  VEXStatus allDone() override {
    const std::string split =
        "Split " + integerText(numSplit_) + " point and polygon features into separate points and polygons";
    if (numRejected_ == 0) {
      log(VEXSeverity::Stats, kSummary, {split});
    } else {
      log(VEXSeverity::Stats, kSummaryRejected,
          {split, " Rejected " + integerText(numRejected_) + " features that did not have a point and polygon"});
    }
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<PIPComponentsFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }

  VEXStatus process(VEXFeaturePtr& feature) override {
    VEXLine line = feature->takeLine();
    std::vector<VEXLineRange> parts;
    if (VEXStatus failure = line.leaves(parts)) parts.clear();  // a damaged aggregate has no parts that can be told
    const VEXLineRange* point = nullptr;
    const VEXLineRange* polygon = nullptr;
    std::int64_t numPoints = 0, numPolygons = 0;
    for (const VEXLineRange& part : parts) {
      if (part.code == VEX_GEOM_POINT) {
        numPoints += static_cast<std::int64_t>(part.count);
        point = &part;
      } else if (part.code == VEX_GEOM_POLYGON || part.code == VEX_GEOM_DONUT) {
        ++numPolygons;
        polygon = &part;
      }
    }
    if (parts.size() != 2 || numPoints != 1 || numPolygons != 1) {
      ++numRejected_;
      if (numPolygons == 0) {
        log(VEXSeverity::Warn, kNoPolygon, {feature->featureType()});
      } else {
        log(VEXSeverity::Warn, kPoints, {integerText(numPoints), feature->featureType()});
      }
      feature->restoreLine(std::move(line));
      return extendStatus(sendOn(feature));
    }
    ++numSplit_;
    VEXFeaturePtr polygonFeature = feature->clone();
    feature->loadFromLine(copyOf(line, *point));
    polygonFeature->loadFromLine(copyOf(line, *polygon));
    VEX_TRY(output("POINT", feature));
    return extendStatus(output("POLYGON", polygonFeature));
  }

  static VEXLine copyOf(const VEXLine& line, const VEXLineRange& part) {
    return VEXLine::viewOf(line, part.first, part.first + part.count - 1, part.code).clone();
  }

  std::int64_t numSplit_ = 0;
  std::int64_t numRejected_ = 0;
};

const VEXClause<PIPComponentsFactory> PIPComponentsFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 46003, &PIPComponentsFactory::parseOutput},
};

PIPComponentsFactory::PIPComponentsFactory() : VEXFactory("PIPComponentsFactory") {
  useClauses(kClauses);
  addOutputTags({"POINT", "POLYGON"});
}

}  // namespace

VEX_FACTORY_MAKER(fctpipco, PIPComponentsFactory)
