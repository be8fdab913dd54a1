// TabularWriter: the writer of type TABLE. A _DEF row names the table file of a feature type in the dataset directory,
// which is created when it is missing; each feature is a row, each column takes the attribute of its name.
//
// Failures: 316002 an unknown kind of table, 316003 two feature types with one file, 316004 a definition with words
// missing or without columns.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "vex/src/writrimp.h"
#include "vex/tables/filetab.h"

class TabularWriter final : public VEXWriterImp {
 public:
  TabularWriter(const std::string& type, const std::string& keyword);
  ~TabularWriter() override;

  VEXStatus writeGlobalMetaData(VEXFeature& feature) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  int maxChannels() override { return 460; }
  VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) override;

 private:
  VEXStatus addDefinition(const VEXStringVector& row);

  std::string directory_;
  std::unordered_map<std::string, VEXTableDefinition> definitions_;  // by feature type
  std::unordered_map<std::string, std::string> typeOfFile_;          // by path
};
