// @Area([<multiplier>]): the area of polygons, donuts and aggregates of them. Anything else has none: a warning and 0.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "VEXAreaCmd::execute", .kind = VEXArgKind::Real, .onBad = 803005}};

constexpr VEXCommandRule kRule{.name = "Area",
                               .count = between(0, 1),
                               .args = kArgs,
                               .onCount = 803001,
                               .onNoFeature = 803002,
                               .onConfigure = 803004};

class VEXAreaCmd final : public VEXRuleCommand {
 public:
  VEXAreaCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (!isAreaCode(feature->geomType()) && feature->geomType() != VEX_GEOM_AGGREGATE)
      logMessage(VEXSeverity::Warn, 803003, {feature->featureType(), VEXFeature::geomTypeName(feature->geomType())});
    double area = 0.0;
    VEX_TRY(VEXLine::viewOf(*feature).area(area));
    appendReal(result, args.count() == 1 ? area * args.real(0) : area);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmarea, VEXAreaCmd)
