// VEXSeparatedInput: the rows of a delimited text file, a line a row. Lines end with a line feed, a carriage return
// before it is dropped. With CSV_STRIP_QUOTES a field may be quoted; a quoted field ends with its line.
//
// Directives of addField: CSV_SEPARATOR, CSV_SKIP_LINES, CSV_STRIP_QUOTES. Without declared columns the names come
// from the first line when CSV_SKIP_LINES 1 has passed over it, otherwise they are COL0, COL1 and on.
//
// Failures: 307002 open, 307004 a separator that is none, 307006 a count that is none, 307008 a column twice, 307009
// a read error, 307010 a line beyond VEXInputFile::kLongestLine, 307013 a first line with more columns than can be
// meant.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "vex/tables/vextabio.h"

class VEXSeparatedInput final : public VEXTableInput {
 public:
  explicit VEXSeparatedInput(std::string_view path) : VEXTableInput(path) {}

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view value) override;
  VEXStatus startRows() override;
  VEXStatus getRow(VEXTableRow& row, bool& endOfFile) override;

 private:
  VEXStatus readLine(std::string_view& line, bool& endOfFile);
  VEXStatus skipLines(std::string_view count);
  VEXStatus addColumn(std::string_view name);
  VEXStatus nameColumns();
  void splitPlain(std::string_view line);
  void splitQuoted(std::string_view line);
  std::string_view unquoted(std::string_view field);

  char separator_ = ',';
  bool stripQuotes_ = false;
  std::uint64_t lineNumber_ = 0;  // of the last line read, counted from 1
  std::string header_;            // the line that was skipped, when it was one
  bool hasHeader_ = false;
  std::string_view firstLine_;  // read ahead to count the columns; valid until the next line is read
  bool hasFirstLine_ = false;
  bool atEnd_ = false;
  std::unordered_set<std::string> known_;  // column names
  std::string bare_;                       // fields whose inner quotes were resolved
};

// The byte that a CSV_SEPARATOR value such as "(,)" names; false when it has another form.
bool parseSeparator(std::string_view value, char& separator);
