// @XValue([<x>[,Reset]]): gives the first coordinate's x; with an argument, appends an x to the coordinates, with two
// arguments after clearing them. What is being built is a point, and a line from its second x on.
#include "vex/funcs/ordinate.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNoNumber = 846005;

constexpr VEXCommandRule kRule{.name = "XValue",
                               .count = between(0, 2),
                               .onCount = 846003,
                               .onNoFeature = 846004,
                               .onConfigure = 846006,
                               .extract = VEXExtract::Own};

class VEXXValueCmd final : public VEXRuleCommand {
 public:
  VEXXValueCmd() : VEXRuleCommand(kRule) {}

  // The source side has numbers of its own, and only reads.
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    if (!kRule.count.accepts(params.size())) return makeStatus(846001, {callText(kRule.name, params)});
    if (feature == nullptr) return makeStatus(846002, {callText(kRule.name, params)});
    result.clear();
    return extendStatus(readOrdinate(*feature, 0, result));
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (args.count() == 0) return extendStatus(readOrdinate(*feature, 0, result));
    double value = 0.0;
    const std::string& text = args.text(0);
    if (!text.empty() && !textToReal(text, value)) return makeStatus(kNoNumber, {text});
    if (args.count() == 2) {
      if (args.text(1) != "Reset") logMessage(VEXSeverity::Warn, 846007, {args.text(1)});
      feature->resetCoords();
    }
    if (text.empty()) return nullptr;
    VEX_TRY(appendOrdinate(*feature, 0, text, kNoNumber));
    feature->setGeomType(feature->numCoords() == 1 ? VEX_GEOM_POINT : VEX_GEOM_LINE);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmxvalue, VEXXValueCmd)
