#include "vex/jvmintfc/javaread.h"

namespace {

constexpr std::uint32_t kNoJavaMachine = 871007;

}  // namespace

VEXStatus JavaReader::loadClass(const std::string& className) {
  return makeStatus(kNoJavaMachine, {className});
}

// Reached when a mapping file asks for the bridge itself by name.
VEXStatus JavaReader::open(const VEXStringVector&) {
  return makeStatus(kNoJavaMachine, {givenType()});
}

VEXStatus JavaReader::readFeature(VEXFeaturePtr& out) {
  out.reset();
  return nullptr;
}

VEXStatus JavaReader::readSchemaFeatures(const VEXStringVector&, VEXFeatureVector&) {
  return makeStatus(kNoJavaMachine, {givenType()});
}
