// @ConvertToLine(<numberOfEdges>): a polygon, a donut or a list of polygons becomes the line along its middle. Its
// boundary is cut into about that many pieces to find it.
#include <algorithm>

#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNoNumber = 810003;
constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "numberOfEdges", .kind = VEXArgKind::Real, .onBad = kNoNumber}};

constexpr VEXCommandRule kRule{.name = "ConvertToLine",
                               .count = exactly(1),
                               .args = kArgs,
                               .onCount = 810001,
                               .onNoFeature = 810002,
                               .onConfigure = 810005,
                               .extract = VEXExtract::Clear};

class VEXConvertToLineCmd final : public VEXRuleCommand {
 public:
  VEXConvertToLineCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    const double numEdges = args.real(0);
    if (!(numEdges > 0.0)) return makeStatus(kNoNumber, {kArgs[0].name, args.text(0)});
    if (!isAreaCode(feature->geomType())) {
      logMessage(VEXSeverity::Warn, 810004, {feature->featureType(), VEXFeature::geomTypeName(feature->geomType())});
      logFeature(*feature, VEXSeverity::Warn, 20);
      return nullptr;
    }
    double perimeter = 0.0;
    double area = 0.0;
    VEX_TRY(VEXLine::viewOf(*feature).length2D(perimeter));
    VEX_TRY(VEXLine::viewOf(*feature).area(area));
    // Thinning must not eat the width, which for a long shape is twice the area by the perimeter.
    const double spacing = perimeter / numEdges;
    const double width = perimeter > 0.0 ? 2.0 * area / perimeter : 0.0;
    const double tolerance = std::min(spacing, width) / 10.0;
    return extendStatus(changeGeometry(*feature, [=](VEXLine& line) { return line.middleLine(tolerance, spacing); }));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmcnvln, VEXConvertToLineCmd)
