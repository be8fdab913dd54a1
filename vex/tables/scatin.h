// VEXStructuredInput: the records of a structured catalogue, whose fields the _DEF row tells. Directives:
// SCAT_SUBTYPE (or CAT_SUBTYPE), SCAT_LINE_TERMINATOR; other names are fields. The last column is scat_subtype.
//
// Failures: 303001 open, 303002 a record that is cut, 303003 bytes that are no such field, 303004 a terminator that is
// not there; those of VEXCatalogueLayout.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vex/tables/strctcat.h"
#include "vex/tables/vextabio.h"

class VEXStructuredInput : public VEXTableInput {
 public:
  explicit VEXStructuredInput(std::string_view path) : VEXTableInput(path) {}

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view value) override;
  VEXStatus startRows() override;
  VEXStatus getRow(VEXTableRow& row, bool& endOfFile) override;
  VEXColumnRole columnRole(std::size_t column) const override { return layout_.roleOf(column); }

 protected:
  VEXCatalogueLayout layout_;
  std::string subtype_ = "GENERIC";

 private:
  VEXStatus readField(const VEXCatalogueField& field, bool isFirst, bool& endOfFile);

  std::uint64_t recordNumber_ = 0;   // of the record that is read, counted from 1
  std::vector<std::string> values_;  // by column
  std::string constant_;
};
