// VEXSeparatedOutput: writes a delimited text file. A value of a number or integer column is shaped to its declared
// type (see VEXOutputFormat), every other one is written as it stands, without quotes; so is one that does not
// suit its type, which is counted and logged when the file closes.
//
// Directives of addField: CSV_SEPARATOR, CSV_OUTPUT_FIELDNAMES.
//
// Failures: 308002 close, 308003 open, 308005 a separator that is none, 308006 a column twice, 308007 and 308008 the
// row of names or another row cannot be written, 308009 a row of another length, 876002 to 876007 a bad type.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vex/src/outfmt.h"
#include "vex/tables/vextabio.h"

class VEXSeparatedOutput final : public VEXTableOutput {
 public:
  explicit VEXSeparatedOutput(std::string_view path) : VEXTableOutput(path) {}
  ~VEXSeparatedOutput() override;

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view typeSpec) override;
  VEXStatus writeRow(VEXTableRow fields) override;

 private:
  // A column that shapes its values; they stand in the order of the columns.
  struct Shaped {
    std::size_t column;
    std::string typeText;
    VEXOutputFormat format;
    std::string text;  // the value at hand
    std::int64_t numUnsuited = 0;
  };
  static std::string_view shape(Shaped& shaped, std::string_view value);
  bool appendRow(VEXTableRow fields);
  bool appendLongRow(VEXTableRow fields);
  bool appendNames();

  char separator_ = ',';
  bool namesWanted_ = false;
  std::vector<Shaped> shaped_;
};
