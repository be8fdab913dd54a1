// @Affine(<A>,<B>,<C>,<D>,<E>,<F>): x' = A x + B y + C and y' = D x + E y + F; the source side solves for x and y.
#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"

namespace {

constexpr std::uint32_t kNoNumber = 800001;
constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "A", .kind = VEXArgKind::Real, .onBad = kNoNumber},
                                {.at = 1, .name = "B", .kind = VEXArgKind::Real, .onBad = kNoNumber},
                                {.at = 2, .name = "C", .kind = VEXArgKind::Real, .onBad = kNoNumber},
                                {.at = 3, .name = "D", .kind = VEXArgKind::Real, .onBad = kNoNumber},
                                {.at = 4, .name = "E", .kind = VEXArgKind::Real, .onBad = kNoNumber},
                                {.at = 5, .name = "F", .kind = VEXArgKind::Real, .onBad = kNoNumber}};

constexpr VEXCommandRule kRule{.name = "Affine",
                               .count = exactly(6),
                               .args = kArgs,
                               .onCount = 800002,
                               .onNoFeature = 800003,
                               .onConfigure = 800004,
                               .extract = VEXExtract::Inverse};

class VEXAffineCmd final : public VEXRuleCommand {
 public:
  VEXAffineCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(changeGeometry(*feature, [&args](VEXLine& line) {
      return line.affine(args.real(0), args.real(1), args.real(2), args.real(3), args.real(4), args.real(5));
    }));
  }
  VEXStatus inverse(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(changeGeometry(*feature, [&args](VEXLine& line) {
      return line.inverseAffine(args.real(0), args.real(1), args.real(2), args.real(3), args.real(4), args.real(5));
    }));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmaffine, VEXAffineCmd)
