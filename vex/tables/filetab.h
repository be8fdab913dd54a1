// VEXTableDefinition: one _DEF row of the TABLE reader or writer. VEXTableKind: a kind of table file that such a row
// can name, with the makers of its two classes.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vex/inc/stkdefs.h"
#include "vex/tables/vextabio.h"

struct VEXTableDefinition {
  std::string featureType;
  std::string kindName;
  std::string fileName;                                     // as the row has it
  std::vector<std::pair<std::string, std::string>> fields;  // directives and columns, in the row's order

  // Takes a row apart: keyword, feature type, kind, file name, then pairs. False when words are missing.
  static bool parse(const VEXStringVector& row, VEXTableDefinition& definition);
};

struct VEXTableKind {
  std::string_view name;
  std::unique_ptr<VEXTableInput> (*makeInput)(std::string_view path);  // null: is only written
  std::unique_ptr<VEXTableOutput> (*makeOutput)(std::string_view path);
};

// Null when there is no kind of that name.
const VEXTableKind* findTableKind(std::string_view name);
// "CSV, DBF".
std::string tableKindNames();
// The file of a definition in a directory; an absolute name stands for itself.
std::string tablePath(std::string_view directory, std::string_view fileName);
