// VEXFixedAsciiOutput: writes records of fixed text fields, see VEXFixedAsciiInput.
//
// Failures: 306001 the file cannot be created, 306002 it cannot be written, 306003 no fields; 312005 a kind of geometry
// that is none; those of VEXFieldSubstitution.
#pragma once

#include <string>
#include <vector>

#include "vex/tables/fieldsub.h"
#include "vex/tables/vextabio.h"

class VEXFixedAsciiOutput final : public VEXTableOutput {
 public:
  explicit VEXFixedAsciiOutput(std::string_view path) : VEXTableOutput(path) {}

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view typeSpec) override;
  VEXStatus writeRow(VEXTableRow fields) override;
  VEXColumnRole columnRole(std::size_t column) const override { return roles_[column]; }
  std::string_view geometryKind() const override { return geometryKind_; }

 private:
  std::vector<VEXFieldSubstitution> layout_;
  std::vector<VEXColumnRole> roles_;  // by column
  std::string geometryKind_;
  std::string record_;
};
