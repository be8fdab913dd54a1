// Function calls of any text: parsed, then evaluated both ways on a small feature. Only functions without effect
// outside are in the registry.
#include <cstdint>
#include <cstdlib>

#include "vex/src/cmdparm.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexrcycl.h"

namespace {

struct Engine {
  Engine() {
    VEXStringVector names;
    registry.names(names);
    for (const std::string& name : names)
      if (name != "Concatenate" && name != "SupplyAttributes" && name != "FeatureType")
        ignoreStatus(registry.unregisterCommand(registry.find(name)));  // it was just listed
  }
  VEXObjectRecycler recycler;
  VEXConfiguration configuration;
  VEXCommandRegistry registry;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Engine* engine = new Engine;  // outlives the fuzzer's own statics
  std::string_view text(reinterpret_cast<const char*>(data), size);
  if (size > 4096) return 0;
  VEXCommandParm call;
  if (VEXStatus failure = call.parse(text)) {
    if (failure->messageNumber() != 209001 && failure->messageNumber() != 209002) std::abort();
    return 0;
  }
  VEXFeaturePtr feature = engine->recycler.getFeature();
  feature->setAttribute("a", "1");
  feature->setAttribute("self", "&self");
  feature->setAttribute("call", text);
  VEXVariableTable variables;
  variables.set("%v", "&a");
  variables.set("%list", "\x02x\x01y");
  VEXStringVector names;
  VEXStringVector results;
  std::string result;
  call.variables(names);
  if (VEXStatus failure = call.execute(feature, variables, result))
    if (failure->message().empty()) std::abort();
  ignoreStatus(call.extract(feature, variables, result));  // failures are answers here
  ignoreStatus(call.executeList(feature, variables, results));
  ignoreStatus(call.extractValue(feature, "v", variables, result));
  return 0;
}
