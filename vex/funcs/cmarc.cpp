// @Arc(<semi-primary>,<semi-secondary>,<numberOfEdges>,<rotation>[,<startAngle>,<sweepAngle>[,<centerX>,<centerY>]]):
// the geometry becomes an arc of an ellipse, stroked in that many edges; without a centre it stands on the first
// coordinate. Zero edges: nothing is stroked, the centre alone stays.
#include "vex/funcs/ordinate.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNoNumber = 802001;
constexpr std::uint32_t kNoCount = 802002;
constexpr std::size_t kEdges = 2;
constexpr const char* kNames[] = {"semi-primary axis", "semi-secondaryary axis",
                                  "numberOfEdges",     "rotation",
                                  "startAngle",        "sweepAngle",
                                  "centerX",           "centerY"};

constexpr VEXCommandRule kRule{.name = "Arc",
                               .count = oneOf(4, 6, 8),
                               .onCount = 802003,
                               .onNoFeature = 802004,
                               .onConfigure = 802007,
                               .extract = VEXExtract::Clear};

class VEXArcCmd final : public VEXRuleCommand {
 public:
  VEXArcCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    double values[8] = {};
    for (std::size_t i = 0; i < args.count(); ++i) {
      std::int64_t integer = 0;
      const bool isNumber =
          i == kEdges ? textToInteger(args.text(i), integer) && integer >= 0 : textToReal(args.text(i), values[i]);
      if (isNumber) continue;
      logFeature(*feature, VEXSeverity::Error, 20);
      return makeStatus(i == kEdges ? kNoCount : kNoNumber, {kNames[i], args.text(i)});
    }
    VEXArc arc{.semiPrimary = values[0], .semiSecondary = values[1], .rotation = values[3]};
    if (args.count() > 4) {
      arc.start = values[4];
      arc.sweep = values[5];
    }
    VEXPoint centre;
    bool found = false;
    VEX_TRY(firstCoordinate(*feature, centre, found));
    if (args.count() == 8) {
      centre.x = values[6];
      centre.y = values[7];
    } else if (!found) {
      return makeStatus(802005, {feature->featureType()});
    } else if (feature->numCoords() > 1) {
      logMessage(VEXSeverity::Warn, 802006, {integerText(static_cast<std::int64_t>(feature->numCoords()))});
      logFeature(*feature, VEXSeverity::Warn, 20);
    }
    arc.centreX = centre.x;
    arc.centreY = centre.y;
    if (args.integer(kEdges) > 0) return extendStatus(feature->arcToPoints(arc, args.integer(kEdges)));
    feature->loadFromLine(VEXLine::fromPoint(centre));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmarc, VEXArcCmd)
