// @GeometryType([<type>]): gives the geometry type's name, such as orv_line; with an argument, sets it.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "GeometryType",
                               .count = between(0, 1),
                               .onCount = 393303,
                               .onNoFeature = 393304,
                               .onConfigure = 393305,
                               .extract = VEXExtract::Own};

class VEXGeometryTypeCmd final : public VEXRuleCommand {
 public:
  VEXGeometryTypeCmd() : VEXRuleCommand(kRule) {}

  // The source side has numbers of its own, and only reads.
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    if (!kRule.count.accepts(params.size())) return makeStatus(393301, {callText(kRule.name, params)});
    if (feature == nullptr) return makeStatus(393302, {callText(kRule.name, params)});
    result = VEXFeature::geomTypeName(feature->geomType());
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (args.count() == 0) {
      result += VEXFeature::geomTypeName(feature->geomType());
      return nullptr;
    }
    std::uint32_t code = VEX_GEOM_AGGREGATE;
    while (code != VEX_GEOM_UNDEFINED && args.text(0) != VEXFeature::geomTypeName(code)) code /= 2;
    if (args.text(0) != VEXFeature::geomTypeName(code)) return makeStatus(393306, {args.text(0)});
    feature->setGeomType(code);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmgeomtp, VEXGeometryTypeCmd)
