// @ConvexHull(): the geometry becomes the polygon around it; fewer than three coordinates stay. Where there is no hull
// the feature stays as it is, with a warning.
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{.name = "ConvexHull",
                               .count = exactly(0),
                               .onCount = 821501,
                               .onNoFeature = 821504,
                               .onConfigure = 821503,
                               .extract = VEXExtract::EmptyResult};

class VEXConvexHullCmd final : public VEXRuleCommand {
 public:
  VEXConvexHullCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs&, std::string&) override {
    if (feature->numCoords() < 3) return nullptr;
    VEXLine hull;
    if (const VEXStatus failure = VEXLine::viewOf(*feature).convexHull(hull); failure != nullptr) {
      logMessage(VEXSeverity::Warn, 821502, {feature->featureType(), failure->message()});
      logFeature(*feature, VEXSeverity::Warn, 20);
      return nullptr;
    }
    feature->loadFromLine(std::move(hull));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmconvhl, VEXConvexHullCmd)
