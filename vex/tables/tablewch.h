// TableWriteChannel: writes the features of one group to one table file. The file is created when the group starts;
// a file that is not written to its end is removed.
//
// Failures: 316005 the directory of the file cannot be made; those of the table's class.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/vexobjct.h"
#include "vex/src/vexchan.h"
#include "vex/tables/filetab.h"

class TableWriteChannel final : public VEXChannel {
 public:
  TableWriteChannel(std::unique_ptr<VEXTableOutput> output, VEXTableDefinition definition);
  ~TableWriteChannel() override;

  VEXStatus startGroup(VEXGroup& group) override;
  VEXStatus writeFeatureImp(VEXFeature& feature) override;
  VEXStatus close() override;
  void abort() override;

 private:
  std::unique_ptr<VEXTableOutput> output_;
  VEXTableDefinition definition_;
  std::vector<VEXColumn> columns_;
  std::vector<std::string_view> row_;
  std::vector<std::size_t> geometryColumns_;
  std::vector<std::string> geometryTexts_;  // one for each of these
};
