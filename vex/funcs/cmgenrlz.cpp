// @Generalize(Douglas,<tolerance>): drops vertices that lie nearer to the line between their neighbours than the
// tolerance. A feature that loses all its coordinates is deleted.
// @Generalize(Poiker,<tolerance>) and @Generalize(Deveau,<tolerance>,<maxIterations>,<sharpAngle>) are not built yet.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kBadCall = 822001;
constexpr const char* kNames[] = {"tolerance", "maxIterations", "sharpAngle"};

constexpr VEXCommandRule kRule{.name = "Generalize",
                               .count = oneOf(2, 4),
                               .onCount = 822001,
                               .onNoFeature = 822002,
                               .onConfigure = 822003,
                               .extract = VEXExtract::EmptyResult};

class VEXGeneralizeCmd final : public VEXRuleCommand {
 public:
  VEXGeneralizeCmd() : VEXRuleCommand(kRule) {}

  VEXStatus closeDown() override {
    if (numBefore_ > 0) logMessage(VEXSeverity::Inform, 822004, {integerText(numBefore_), integerText(numAfter_)});
    numBefore_ = numAfter_ = 0;
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    const std::string& algorithm = args.text(0);
    const bool isKnown = (args.count() == 2 && (algorithm == "Poiker" || algorithm == "Douglas")) ||
                         (args.count() == 4 && algorithm == "Deveau");
    if (!isKnown) return makeStatus(kBadCall, {callText(kRule.name, args.texts())});
    double numbers[3] = {};
    for (std::size_t i = 1; i < args.count(); ++i)
      if (!textToReal(args.text(i), numbers[i - 1])) return makeStatus(822005, {kNames[i - 1], args.text(i)});
    if (algorithm != "Douglas") return makeStatus(822006, {algorithm});
    const std::size_t before = feature->numCoords();
    VEX_TRY(changeGeometry(*feature, [&](VEXLine& line) { return line.simplifyDouglas(numbers[0]); }));
    numBefore_ += static_cast<std::int64_t>(before);
    numAfter_ += static_cast<std::int64_t>(feature->numCoords());
    if (before > 0 && feature->numCoords() == 0) feature.reset();
    return nullptr;
  }

  std::int64_t numBefore_ = 0;
  std::int64_t numAfter_ = 0;
};

}  // namespace

VEX_COMMAND_MAKER(cmgenrlz, VEXGeneralizeCmd)
