// @Force2D(): drops z; the result is the dimension before.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "Force2D", .count = exactly(0), .onCount = 820001, .onNoFeature = 820002, .onConfigure = 820003};

class VEXForce2DCmd final : public VEXRuleCommand {
 public:
  VEXForce2DCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string& result) override {
    appendInteger(result, feature->dimension());
    if (feature->dimension() == 3) feature->setDimension(2);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmforc2d, VEXForce2DCmd)
