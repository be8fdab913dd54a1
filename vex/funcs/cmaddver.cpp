// @AddVertices(COUNT,<n>), @AddVertices(INTERVAL,<distance>), @AddVertices(DISTANCE,<distance>): new vertices on each
// segment: so many; in equal pieces no longer than the distance; at the multiples of the distance along each part.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"

namespace {

constexpr VEXCommandRule kRule{.name = "AddVertices",
                               .count = exactly(2),
                               .onCount = 799001,
                               .onNoFeature = 799002,
                               .onConfigure = 799006,
                               .extract = VEXExtract::Nothing};

class VEXAddVerticesCmd final : public VEXRuleCommand {
 public:
  VEXAddVerticesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    const std::string& method = args.text(0);
    const bool isCount = method == "COUNT";
    if (!isCount && method != "INTERVAL" && method != "DISTANCE") return makeStatus(799005, {method});
    double distance = 0.0;
    std::int64_t count = 0;
    const bool isNumber = isCount ? textToInteger(args.text(1), count) : textToReal(args.text(1), distance);
    if (!isNumber || !(isCount ? count > 0 : distance > 0.0)) return makeStatus(799003, {method, args.text(1)});
    const std::uint32_t code = feature->geomType();
    if (code == VEX_GEOM_UNDEFINED || code == VEX_GEOM_POINT || code == VEX_GEOM_MULTI_POINT || code == VEX_GEOM_PIP)
      return makeStatus(799004, {feature->featureType(), VEXFeature::geomTypeName(code)});
    return extendStatus(changeGeometry(*feature, [&](VEXLine& line) {
      if (isCount) return line.addVerticesByCount(static_cast<std::size_t>(count));
      return method == "INTERVAL" ? line.addVerticesByInterval(distance) : line.addVerticesByDistance(distance);
    }));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmaddver, VEXAddVerticesCmd)
