// @Dimension([2 or 3]): gives the dimension; with an argument, forces it. A new z is 0.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "Dimension", .count = between(0, 1), .onCount = 816001, .onNoFeature = 816002, .onConfigure = 816003};

class VEXDimensionCmd final : public VEXRuleCommand {
 public:
  VEXDimensionCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (args.count() == 0) {
      appendInteger(result, feature->dimension());
      return nullptr;
    }
    const std::string& wanted = args.text(0);
    if (wanted != "2" && wanted != "3") return makeStatus(816004, {wanted});
    if (wanted != integerText(feature->dimension())) feature->setDimension(wanted == "2" ? 2 : 3);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmdim, VEXDimensionCmd)
