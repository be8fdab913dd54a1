// The interfaces that every kind of table file shares: VEXTableInput gives rows, VEXTableOutput takes them. A row
// is a span of views, so that no row allocates. Nothing here knows of features: the TABLE driver lies above, and
// other drivers keep their attribute files through the same classes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/src/vexfile.h"

using VEXTableRow = std::span<const std::string_view>;

// What a column holds: an attribute, or a part of the feature's geometry, which the driver above takes from the
// feature and puts back into it.
enum class VEXColumnRole : std::uint8_t { Attribute, X, Y, Z, InsideX, InsideY, CoordinateList, ComplexGeometry };

// A source of rows. Calls: open, addField for each directive and declared column, startRows, getRow to the end,
// close. A name that is a directive's keyword sets that directive, any other name declares the next column.
class VEXTableInput {
 public:
  explicit VEXTableInput(std::string_view path);  // normalised here
  virtual ~VEXTableInput();
  VEXTableInput(const VEXTableInput&) = delete;
  VEXTableInput& operator=(const VEXTableInput&) = delete;

  virtual VEXStatus open() = 0;
  virtual VEXStatus close() = 0;
  virtual VEXStatus addField(std::string_view name, std::string_view value) = 0;
  // Settles the columns; columnNames() is complete afterwards.
  virtual VEXStatus startRows() = 0;
  // The next row: always as many fields as there are columns, valid until the next call. At the end of the file
  // `endOfFile` is true and the row is empty.
  virtual VEXStatus getRow(VEXTableRow& row, bool& endOfFile) = 0;
  // How many rows are to be expected; 0 when the file does not tell.
  virtual std::uint64_t expectedRows() const { return 0; }
  virtual VEXColumnRole columnRole(std::size_t) const { return VEXColumnRole::Attribute; }
  // The kind of geometry that the columns make, as ASCII_GEOMETRY has it; empty for none.
  virtual std::string_view geometryKind() const { return {}; }

  const std::string& path() const { return path_; }
  const VEXStringVector& columnNames() const { return columnNames_; }

 protected:
  bool hasColumn(std::string_view name) const;

  VEXInputFile file_;
  VEXStringVector columnNames_;
  std::vector<std::string_view> fields_;  // the row that getRow gives

 private:
  std::string path_;
};

// A sink of rows. Calls: open, addField for each directive and column, writeRow, then close, or abort. A file
// that could not be written whole is removed, unless it is a device.
class VEXTableOutput {
 public:
  explicit VEXTableOutput(std::string_view path);  // normalised here
  virtual ~VEXTableOutput();
  VEXTableOutput(const VEXTableOutput&) = delete;
  VEXTableOutput& operator=(const VEXTableOutput&) = delete;

  virtual VEXStatus open() = 0;  // creates or empties the file
  virtual VEXStatus close() = 0;
  virtual VEXStatus addField(std::string_view name, std::string_view typeSpec) = 0;
  // One value for each column, in their order. An empty value is no value.
  virtual VEXStatus writeRow(VEXTableRow fields) = 0;
  virtual VEXColumnRole columnRole(std::size_t) const { return VEXColumnRole::Attribute; }
  // The kinds of geometry that the table takes, as ASCII_GEOMETRY has it; empty when it does not look.
  virtual std::string_view geometryKind() const { return {}; }
  // Drops the file, when it is open and not finished.
  virtual void abort();

  const std::string& path() const { return path_; }
  // The columns in the order of writeRow; directives are not among them.
  const VEXStringVector& columnNames() const { return columnNames_; }

 protected:
  bool hasColumn(std::string_view name) const;
  // Closes the file. When anything was not written the file is dropped, and the failure has this number.
  VEXStatus finish(std::uint32_t onFailure);

  VEXOutputFile file_;
  VEXStringVector columnNames_;

 private:
  std::string path_;
};
