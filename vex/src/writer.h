// VEXWriter: the front of a writer driver, which it owns. It also owns every group that has been attached: at most
// maxChannels of them have a channel, the others wait, their features spooled, and are written one by one at the
// flush.
#pragma once

#include <memory>
#include <vector>

#include "vex/src/vexgroup.h"
#include "vex/src/writrimp.h"

class VEXWriter {
 public:
  explicit VEXWriter(std::unique_ptr<VEXWriterImp> imp);
  ~VEXWriter();

  VEXStatus setup() { return extendStatus(imp_->setup()); }
  VEXStatus open(const VEXStringVector& parameters) { return extendStatus(imp_->open(parameters)); }
  std::unique_ptr<VEXGrouper> createGrouper();  // null: the driver gives none
  VEXStatus writeGlobalMetaData(VEXFeature& feature) { return extendStatus(imp_->writeGlobalMetaData(feature)); }
  // Takes the group and gives it a channel, or lets it wait when all are in use.
  VEXStatus attachGroup(std::unique_ptr<VEXGroup> group);
  // The end of a translation: ends the attached groups, then writes the waiting ones, each in order.
  VEXStatus flushGroups();
  VEXStatus close() { return extendStatus(imp_->close()); }
  void abort();  // cannot fail; drops all groups

  const std::string& keyword() const { return imp_->keyword(); }
  const std::string& type() const { return imp_->writerType(); }
  VEXWriterImp& imp() { return *imp_; }

 private:
  std::unique_ptr<VEXWriterImp> imp_;
  std::vector<std::unique_ptr<VEXGroup>> waiting_;
  std::vector<std::unique_ptr<VEXGroup>> attached_;
};
