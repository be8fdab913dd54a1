// VEXCatalogueInput: a catalogue that describes itself: a structured catalogue behind a head of lines which name
// subtype, terminator and fields. Declared fields are checked against the head.
//
// Failures: 303005 a head that cannot be read, 303006 a field that the head has otherwise or not at all, 303007 another
// subtype; those of VEXStructuredInput.
#pragma once

#include <utility>
#include <vector>

#include "vex/tables/scatin.h"

class VEXCatalogueInput final : public VEXStructuredInput {
 public:
  using VEXStructuredInput::VEXStructuredInput;

  VEXStatus open() override;  // reads the head, too
  VEXStatus addField(std::string_view name, std::string_view value) override;

 private:
  VEXStatus readHead();
};
