// @Filenamepart(<part>,<path>): DIRNAME, up to the last separator and with it; EXTENSION, what follows the last point
// of the file name; ROOTNAME, the file name without that. Slash and back-slash both separate.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Filenamepart", .count = exactly(2), .onCount = 812010, .onConfigure = 812011};

// The first byte of a character of two bytes in Shift JIS; the second may look like a back-slash.
bool isLeadByte(unsigned char c) {
  return (c >= 129 && c <= 175) || (c >= 224 && c <= 252);
}

class VEXFilenamePartCmd final : public VEXRuleCommand {
 public:
  VEXFilenamePartCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    const std::string& path = args.text(1);
    std::size_t name = 0;
    std::size_t point = std::string::npos;  // the last one of the file name
    for (std::size_t at = 0; at < path.size(); ++at) {
      if (path[at] == '/' || path[at] == '\\') {
        name = at + 1;
        point = std::string::npos;
      } else if (path[at] == '.') {
        point = at;
      } else if (isLeadByte(static_cast<unsigned char>(path[at])) && at + 1 < path.size()) {
        ++at;
      }
    }
    if (equalsIgnoringCase(args.text(0), "DIRNAME"))
      result = path.substr(0, name);
    else if (equalsIgnoringCase(args.text(0), "EXTENSION"))
      result = point == std::string::npos ? std::string() : path.substr(point + 1);
    else if (equalsIgnoringCase(args.text(0), "ROOTNAME"))
      result = path.substr(name, point == std::string::npos ? point : point - name);
    else
      return makeStatus(812012, {args.text(0)});
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmfilept, VEXFilenamePartCmd)
