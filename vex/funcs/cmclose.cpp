// @Close(): closes the parts of a line, which becomes a polygon. A polygon stays; any other type gets a warning.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Close",
                               .count = exactly(0),
                               .onCount = 808001,
                               .onNoFeature = 808002,
                               .onConfigure = 808004,
                               .extract = VEXExtract::EmptyResult};

class VEXCloseCmd final : public VEXRuleCommand {
 public:
  VEXCloseCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string&) override {
    if (feature->geomType() == VEX_GEOM_POLYGON) return nullptr;
    if (feature->geomType() != VEX_GEOM_LINE) {
      logMessage(VEXSeverity::Warn, 808003, {feature->featureType(), integerText(feature->geomType())});
      return nullptr;
    }
    return extendStatus(changeGeometry(*feature, [](VEXLine& line) -> VEXStatus {
      line.closeParts();
      return nullptr;
    }));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmclose, VEXCloseCmd)
