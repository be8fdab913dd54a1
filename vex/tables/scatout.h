// VEXStructuredOutput: writes the records of a structured catalogue. Directives as for VEXStructuredInput. A length
// field of a VarString is filled by the writer.
//
// Failures: 304001 the file cannot be created, 304002 it cannot be written, 304003 (refusal) a value that does not
// suit its field; those of VEXCatalogueLayout.
#pragma once

#include <string>

#include "vex/tables/strctcat.h"
#include "vex/tables/vextabio.h"

class VEXStructuredOutput : public VEXTableOutput {
 public:
  explicit VEXStructuredOutput(std::string_view path) : VEXTableOutput(path) {}

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view typeSpec) override;
  VEXStatus writeRow(VEXTableRow fields) override;
  VEXColumnRole columnRole(std::size_t column) const override { return layout_.roleOf(column); }

 protected:
  // Appends what stands in front of the records.
  virtual VEXStatus appendHeader(std::string&) { return nullptr; }

  VEXCatalogueLayout layout_;
  std::string subtype_ = "GENERIC";

 private:
  VEXStatus start();

  bool isStarted_ = false;
  std::string record_;
  std::string length_;
};
