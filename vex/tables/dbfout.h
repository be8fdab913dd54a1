// VEXDBFOutput: writes a dBase III file. Records are made in place in the file's buffer; the header's record count
// is written when the file closes, so that a run that was cut off leaves a table without records.
//
// Failures: 301001 close in the destructor (logged), 301002 close, 301003 create, 301005 to 301011 and 301012 to
// 301014 a field that dBase cannot hold, 301015 a write, 301016 too many records (the file is finished with what it
// has). The field of a number that does not fit stays blank; 299001, logged once a column at close, counts them.
#pragma once

#include <cstdint>
#include <vector>

#include "vex/tables/dbfcodec.h"
#include "vex/tables/vextabio.h"

class VEXDBFOutput final : public VEXTableOutput {
 public:
  explicit VEXDBFOutput(std::string_view path, std::uint32_t mostRecords = dbf::kMostRecords)
      : VEXTableOutput(path), mostRecords_(mostRecords) {}
  ~VEXDBFOutput() override;

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view typeSpec) override;  // before the first row
  VEXStatus writeRow(VEXTableRow fields) override;

 private:
  // Values of a column that did not fit.
  struct Lost {
    std::uint32_t count = 0;
    std::uint32_t firstRow = 0;
    std::string firstValue;
  };
  void lose(std::size_t column, std::string_view value);
  VEXStatus describeField(std::string_view typeSpec, dbf::Field& field) const;
  void writeHeader();

  std::vector<dbf::Field> fieldTable_;
  std::vector<Lost> lost_;  // by column
  dbf::Header header_;
  bool headerWritten_ = false;
  std::uint32_t mostRecords_;
};
