// The exported functions: each is one line.
#include "vex/inc/orvane.h"
#include "vex/src/orvtran.h"

ORV_Int32 ORV_Translate(ORV_Int32 argc, const char* const* argv, ORV_Int32 showBanner, ORV_LogCallback logCallback,
                        ORV_ErrorCallback errorCallback) {
  return ORVTranslator::runCommandLine(argc, argv, showBanner, logCallback, errorCallback);
}
