// @NumCoords(): the number of coordinates, header rows of aggregates included: the indices that @Coordinate takes.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "NumCoords", .count = exactly(0), .onCount = 830001, .onNoFeature = 830002, .onConfigure = 830003};

class VEXNumCoordsCmd final : public VEXRuleCommand {
 public:
  VEXNumCoordsCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string& result) override {
    appendInteger(result, static_cast<std::int64_t>(feature->numCoords()));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmnumcrd, VEXNumCoordsCmd)
