// @GeneratePoint(): an area becomes a point inside it, of type orv_pip. Where none is found: a warning, and the feature
// stays.
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{.name = "GeneratePoint",
                               .count = exactly(0),
                               .onCount = 821001,
                               .onNoFeature = 821004,
                               .onConfigure = 821003,
                               .extract = VEXExtract::EmptyResult};

class VEXGeneratePointCmd final : public VEXRuleCommand {
 public:
  VEXGeneratePointCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string&) override {
    VEXPoint point;
    if (VEXStatus failure = feature->insidePoint(true, point)) {
      logMessage(VEXSeverity::Warn, 821002, {feature->featureType(), failure->message()});
      logFeature(*feature, VEXSeverity::Warn, 20);
      return nullptr;
    }
    VEXLine line = VEXLine::fromPoint(point);
    line.setGeomType(VEX_GEOM_PIP);
    feature->loadFromLine(std::move(line));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmgenpt, VEXGeneratePointCmd)
