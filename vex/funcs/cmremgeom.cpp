// @RemoveGeometry(): takes the coordinates away; the geometry type becomes orv_undefined.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "RemoveGeometry",
                               .count = exactly(0),
                               .onCount = 392901,
                               .onNoFeature = 392902,
                               .onConfigure = 392903,
                               .extract = VEXExtract::Nothing};

class VEXRemoveGeometryCmd final : public VEXRuleCommand {
 public:
  VEXRemoveGeometryCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string&) override {
    feature->resetCoords();
    feature->setGeomType(VEX_GEOM_UNDEFINED);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmremgeom, VEXRemoveGeometryCmd)
