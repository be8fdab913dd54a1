// VEXFixedAsciiInput: records of fixed text fields with geometry among them, the table type SCGEOMETRY. Fields are told
// by VEXFieldSubstitution; ASCII_GEOMETRY names the kind of geometry that coordinates make.
//
// Failures: 305001 open, 305002 a record that is cut, 305003 a constant or line end that is not there, 305004 no
// fields; 312005 a kind of geometry that is none; those of VEXFieldSubstitution.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vex/tables/fieldsub.h"
#include "vex/tables/vextabio.h"

class VEXFixedAsciiInput final : public VEXTableInput {
 public:
  explicit VEXFixedAsciiInput(std::string_view path) : VEXTableInput(path) {}

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view value) override;
  VEXStatus startRows() override;
  VEXStatus getRow(VEXTableRow& row, bool& endOfFile) override;
  VEXColumnRole columnRole(std::size_t column) const override { return roles_[column]; }
  std::string_view geometryKind() const override { return geometryKind_; }

 private:
  VEXStatus readField(const VEXFieldSubstitution& field, std::size_t column, bool isFirst, bool& endOfFile);

  std::vector<VEXFieldSubstitution> layout_;
  std::vector<VEXColumnRole> roles_;  // by column
  std::string geometryKind_;
  std::vector<std::string> values_;
  std::uint64_t recordNumber_ = 0;
};
