// @ZValue([<z>]): gives the first coordinate's z; with an argument, appends a z to the coordinates. A two-dimensional
// feature reads as "0", and becomes three-dimensional when a z is appended.
#include "vex/funcs/ordinate.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "ZValue",
                               .count = between(0, 1),
                               .onCount = 848003,
                               .onNoFeature = 848004,
                               .onConfigure = 848005,
                               .extract = VEXExtract::Own};

class VEXZValueCmd final : public VEXRuleCommand {
 public:
  VEXZValueCmd() : VEXRuleCommand(kRule) {}

  // The source side has numbers of its own, and only reads.
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    if (!kRule.count.accepts(params.size())) return makeStatus(848001, {callText(kRule.name, params)});
    if (feature == nullptr) return makeStatus(848002, {callText(kRule.name, params)});
    result.clear();
    return extendStatus(readOrdinate(*feature, 2, result));
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (args.count() == 0) return extendStatus(readOrdinate(*feature, 2, result));
    return extendStatus(appendOrdinate(*feature, 2, args.text(0), 848006));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmzvalue, VEXZValueCmd)
