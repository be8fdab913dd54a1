// @Circularity(): 4 pi area / perimeter squared: 1 for a circle, 0 for what has no area.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "Circularity", .count = exactly(0), .onCount = 807001, .onNoFeature = 807002, .onConfigure = 807003};

class VEXCircularityCmd final : public VEXRuleCommand {
 public:
  VEXCircularityCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string& result) override {
    constexpr double kPi = 3.14159265358979323846;
    const VEXLine line = VEXLine::viewOf(*feature);
    double area = 0.0;
    double perimeter = 0.0;
    VEX_TRY(line.area(area));
    VEX_TRY(line.length2D(perimeter));
    appendReal(result, perimeter == 0.0 ? 0.0 : 4.0 * kPi * area / (perimeter * perimeter));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmcirlty, VEXCircularityCmd)
