// @CoordSys(): the name of the feature's coordinate system, empty when unknown.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "CoordSys", .count = exactly(0), .onCount = 815001, .onNoFeature = 815002, .onConfigure = 815003};

class VEXCoordSysCmd final : public VEXRuleCommand {
 public:
  VEXCoordSysCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string& result) override {
    result += feature->coordSys();
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmcrdsys, VEXCoordSysCmd)
