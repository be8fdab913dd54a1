// @System(<command>): runs a command of the system. The result is the value of the C library's system() as it stands.
#include <cstdio>
#include <cstdlib>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "System", .count = exactly(1), .onCount = 357001, .onConfigure = 357002};

class VEXSystemCmd final : public VEXRuleCommand {
 public:
  VEXSystemCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    std::fflush(nullptr);  // what the command prints stands behind what was printed before
    appendInteger(result, std::system(args.text(0).c_str()));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmsystem, VEXSystemCmd)
