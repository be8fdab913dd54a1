// @Bounds(<minX>,<maxX>,<minY>,<maxY>[,<minZ>,<maxZ>]): writes the bounding box to the attributes named. Z is 0 in two
// dimensions; the attributes become empty when there are no coordinates.
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "Bounds", .count = oneOf(4, 6), .onCount = 805001, .onNoFeature = 805002, .onConfigure = 805003};

class VEXBoundsCmd final : public VEXRuleCommand {
 public:
  VEXBoundsCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    VEXBox box;
    VEX_TRY(feature->boundingCube(box));
    if (!box.isEmpty() && feature->dimension() == 2) box.minZ = box.maxZ = 0.0;
    const double values[] = {box.minX, box.maxX, box.minY, box.maxY, box.minZ, box.maxZ};
    for (std::size_t i = 0; i < args.count(); ++i) {
      if (box.isEmpty())
        feature->setAttribute(args.text(i), std::string_view());
      else
        feature->setReal(args.text(i), values[i]);
    }
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmbnds, VEXBoundsCmd)
