// @YValue([<y>]): gives the first coordinate's y; with an argument, appends a y to the coordinates.
#include "vex/funcs/ordinate.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "YValue",
                               .count = between(0, 1),
                               .onCount = 847003,
                               .onNoFeature = 847004,
                               .onConfigure = 847006,
                               .extract = VEXExtract::Own};

class VEXYValueCmd final : public VEXRuleCommand {
 public:
  VEXYValueCmd() : VEXRuleCommand(kRule) {}

  // The source side has numbers of its own, and only reads.
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    if (!kRule.count.accepts(params.size())) return makeStatus(847001, {callText(kRule.name, params)});
    if (feature == nullptr) return makeStatus(847002, {callText(kRule.name, params)});
    result.clear();
    return extendStatus(readOrdinate(*feature, 1, result));
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (args.count() == 0) return extendStatus(readOrdinate(*feature, 1, result));
    return extendStatus(appendOrdinate(*feature, 1, args.text(0), 847005));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmyvalue, VEXYValueCmd)
