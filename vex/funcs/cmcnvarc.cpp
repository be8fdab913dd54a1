// @ConvertToArc(<primaryAxis>,<secondaryAxis>,<startAngle>,<sweepAngle>): three coordinates become the centre of the
// arc through them, and its radius and angles go to the attributes named. The source side strokes such an arc.
#include "vex/funcs/ordinate.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "ConvertToArc",
                               .count = exactly(4),
                               .onCount = 809007,
                               .onNoFeature = 809008,
                               .onConfigure = 809009,
                               .extract = VEXExtract::Own};

class VEXConvertToArcCmd final : public VEXRuleCommand {
 public:
  VEXConvertToArcCmd() : VEXRuleCommand(kRule) {}

  // The source side has numbers of its own.
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    if (!kRule.count.accepts(params.size())) return makeStatus(809001, {callText(kRule.name, params)});
    if (feature == nullptr) return makeStatus(809002, {callText(kRule.name, params)});
    VEXArc arc;
    if (!feature->getReal(params[0], arc.semiPrimary) || arc.semiPrimary == 0.0) return makeStatus(809003, {params[0]});
    if (!feature->getReal(params[1], arc.semiSecondary) || arc.semiSecondary == 0.0)
      return makeStatus(809004, {params[1]});
    if (!feature->getReal(params[2], arc.start)) return makeStatus(809005, {params[2]});
    if (!feature->getReal(params[3], arc.sweep)) return makeStatus(809006, {params[3]});
    VEXPoint centre;
    bool found = false;
    VEX_TRY(firstCoordinate(*feature, centre, found));
    if (!found) return makeStatus(809010, {feature->featureType()});
    arc.centreX = centre.x;
    arc.centreY = centre.y;
    result.clear();
    return extendStatus(feature->arcToPoints(arc, 0));
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(feature->pointsToArc(args.text(0), args.text(1), args.text(2), args.text(3)));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmcnvarc, VEXConvertToArcCmd)
