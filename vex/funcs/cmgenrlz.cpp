// @Generalize(Douglas,<tolerance>): drops vertices that lie nearer to the line between their neighbours than the
// tolerance. A feature that loses all its coordinates is deleted.
// @Generalize(Deveau,<tolerance>,<maxIterations>,<sharpAngle>): keeps a vertex where no line passes all points since
// the last kept one within half the tolerance; maxIterations is the number of lines tried, from points around that one.
// @Generalize(Poiker,<tolerance>): the same with one line through the last kept point; kept vertices move onto it.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kBadCall = 822001;
constexpr int kBand = 1;
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
    const std::size_t before = feature->numCoords();
    VEX_TRY(changeGeometry(*feature, [&](VEXLine& line) {
      if (algorithm == "Douglas") return line.simplifyDouglas(numbers[0]);
      if (algorithm == "Poiker") return line.simplifyDeveau(numbers[0], 0.0, kBand);
      // What is no number of lines from 2 on is the largest: one line alone is Poiker's.
      const double wanted = numbers[1];
      return line.simplifyDeveau(numbers[0], numbers[2], wanted >= 2.0 && wanted < 31.0 ? static_cast<int>(wanted) : 0);
    }));
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
