// VEXDBFInput: the rows of a dBase file of kind III and those that share its layout. The file supplies its columns;
// a declared column is checked against it and gives it its name. Field types that are not text (memo, binary)
// are left out with a warning.
//
// Failures: 300001 close, 300002 open, 300004 and 300022 to 300024 a header that cannot be used, 300005 a declared
// column that is not there, 300006 to 300019 a declared type that is not the file's, 300020 no such field,
// 300025 a record that cannot be read.
#pragma once

#include <cstdint>
#include <vector>

#include "vex/tables/dbfcodec.h"
#include "vex/tables/vexfdesc.h"
#include "vex/tables/vextabio.h"

class VEXDBFInput final : public VEXTableInput {
 public:
  explicit VEXDBFInput(std::string_view path) : VEXTableInput(path) {}
  ~VEXDBFInput() override;

  VEXStatus open() override;  // reads the header: columnNames() holds the file's own names at once
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view typeSpec) override;
  VEXStatus startRows() override;
  VEXStatus getRow(VEXTableRow& row, bool& endOfFile) override;
  std::uint64_t expectedRows() const override { return numRecords_; }

  // The type text of a column: "char(20)". 300020 when there is no such column.
  VEXStatus fieldType(std::size_t index, std::string& typeText) const;
  // The record that the next getRow looks at, counted from 0; deleted ones are passed over from there.
  VEXStatus moveToRecord(std::uint64_t record);
  std::uint64_t nextRecord() const { return nextRecord_; }  // behind a row: its record + 1
  std::uint64_t numDeleted() const { return numDeleted_; }

 private:
  VEXStatus readHeader();
  void settleFields(const std::vector<std::string>& beyond);
  VEXStatus checkType(const dbf::Field& field, std::string_view name, std::string_view typeSpec) const;

  dbf::Header header_;
  std::vector<dbf::Field> fieldTable_;  // one for each column, names in readable form
  struct Cut {
    std::uint32_t offset;
    std::uint32_t length;
    std::uint64_t bits;  // of its bytes, the first 64 at most
    VEXFieldKind kind;
  };
  static std::string_view valueOf(std::string_view bytes, VEXFieldKind kind);
  static std::string_view valueOfShort(const char* bytes, const Cut& cut);
  std::vector<Cut> cuts_;            // the same, as the row loop wants it
  std::vector<dbf::Field> leftOut_;  // of kinds that are not read
  std::uint64_t numRecords_ = 0;     // that really are there
  std::uint64_t nextRecord_ = 0;
  std::uint64_t numDeleted_ = 0;
};
