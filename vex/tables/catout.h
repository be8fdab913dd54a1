// VEXCatalogueOutput: writes a catalogue that describes itself, see VEXCatalogueInput.
//
// Failures: 304004 a name or subtype with a blank in it; those of VEXStructuredOutput.
#pragma once

#include "vex/tables/scatout.h"

class VEXCatalogueOutput final : public VEXStructuredOutput {
 public:
  using VEXStructuredOutput::VEXStructuredOutput;

 private:
  VEXStatus appendHeader(std::string& text) override;
};
