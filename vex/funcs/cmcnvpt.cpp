// @ConvertToPoint(): the geometry becomes the point in the middle of its bounding box. Without coordinates it stays.
#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"

namespace {

constexpr VEXCommandRule kRule{.name = "ConvertToPoint",
                               .count = exactly(0),
                               .onCount = 811001,
                               .onNoFeature = 811002,
                               .onConfigure = 811003,
                               .extract = VEXExtract::Clear};

class VEXConvertToPointCmd final : public VEXRuleCommand {
 public:
  VEXConvertToPointCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string& result) override {
    result.clear();
    return extendStatus(changeGeometry(*feature, [](VEXLine& line) -> VEXStatus {
      VEX_TRY(line.collapseToCentre());
      if (line.numCoords() > 0) line.setGeomType(VEX_GEOM_POINT);
      return nullptr;
    }));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmcnvpt, VEXConvertToPointCmd)
