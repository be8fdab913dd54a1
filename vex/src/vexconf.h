// VEXConfiguration: the rows of the mapping file and the command line, and every question about the value of
// a keyword. A singleton that the entry owns; loaded once a run.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/tabrdr.h"

class VEXConfiguration {
 public:
  VEXConfiguration();
  ~VEXConfiguration();
  VEXConfiguration(const VEXConfiguration&) = delete;
  VEXConfiguration& operator=(const VEXConfiguration&) = delete;

  // Reads the mapping file (none when the name is empty), applies the command-line pairs, computes $[@...].
  // Fails with 236001 (odd number of arguments), 236002 ($[...] without a feature to run on), 236007 ($[...] never
  // ends), the numbers of the row reader (261xxx) and those of the functions called.
  static VEXStatus load(const std::string& mappingFileName, int argc, const char* const* argv);

  static void rewind();
  static bool nextRow(VEXStringVector& row);  // the next non-empty row; false at the end, with `row` empty
  // All tokens behind the keyword of all its rows. True when there is one.
  static bool values(std::string_view keyword, VEXStringVector& list);
  // The last of them. True when it is not empty.
  static bool value(std::string_view keyword, std::string& text);
  static bool joinedValue(std::string_view keyword, std::string& text, std::string_view separator = " ");
  static bool flag(std::string_view keyword);                            // last token "yes" or "true", ignoring case
  static bool intValue(std::string_view keyword, std::int32_t& number);  // 236005 logged when it is none
  static bool doubleValue(std::string_view keyword, double& number);     // 236006 logged when it is none
  static bool contains(std::string_view keyword);                        // any row of it
  // True while load() runs the functions of $[@...]: the translation has not begun.
  static bool isComputing() { return instance_ != nullptr && instance_->isComputing_; }
  // True when ORV_DEBUG holds the word.
  static bool debugWord(std::string_view word);

  static void setValue(std::string_view keyword, std::string_view value);  // replaces all rows of the keyword
  static void addValue(std::string_view keyword, std::string_view value);
  static void insertFront(VEXStringVector row);
  static void addRow(VEXStringVector row);
  static void dump();  // logs all rows (236003) and keywords (236004)

  // A path as drivers get it: runs of separators squeezed to one, "\" as the system's separator.
  static std::string normalisePath(std::string_view path);

 private:
  VEXStatus readRows(const std::string& fileName, VEXMacroTable& macros, std::vector<std::size_t>& computedRows);
  VEXStatus computeRows(const std::vector<std::size_t>& computedRows);
  VEXStatus computeTokens(const std::vector<std::size_t>& computedRows, VEXFeaturePtr& scratch);

  static VEXConfiguration* instance_;
  std::vector<VEXStringVector> rows_;  // an index never changes; a replaced row is emptied
  std::unordered_map<std::string, std::vector<std::size_t>, VEXTextHash, std::equal_to<>> keywordIndex_{64};
  std::size_t cursor_ = 0;
  bool isComputing_ = false;
};
