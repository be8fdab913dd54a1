// @NumHoles(): the number of holes of a polygon, a donut or the parts of an aggregate.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "NumHoles", .count = exactly(0), .onCount = 832001, .onNoFeature = 832002, .onConfigure = 832003};

class VEXNumHolesCmd final : public VEXRuleCommand {
 public:
  VEXNumHolesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string& result) override {
    std::size_t count = 0;
    VEX_TRY(VEXLine::viewOf(*feature).numHoles(count));
    appendInteger(result, static_cast<std::int64_t>(count));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmnumhol, VEXNumHolesCmd)
