// VEXBulkLoaderOutput: a control file for the bulk loader of a database server, with the rows behind it. The directive
// SQL_DEST_TABLE names the table; column types are INT, FLOAT, DOUBLE and CHAR(<n>), or those of any table.
//
// Failures: 311001 the file cannot be created, 311002 it cannot be written, 311003 no table is named, 311004 a type
// that the loader does not know, 311005 a column twice.
#pragma once

#include <string>
#include <vector>

#include "vex/tables/vextabio.h"

class VEXBulkLoaderOutput final : public VEXTableOutput {
 public:
  explicit VEXBulkLoaderOutput(std::string_view path) : VEXTableOutput(path) {}

  VEXStatus open() override;
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view typeSpec) override;
  VEXStatus writeRow(VEXTableRow fields) override;

 private:
  struct Type {
    std::string loader;  // in the control file
    std::string table;   // in CREATE TABLE
  };
  VEXStatus start();

  bool isStarted_ = false;
  std::string table_;
  std::vector<Type> types_;
  std::string text_;
};
