// QDSWriter: the writer of type QDS. With _DEF rows the dataset is a directory, made when it is missing, and each group
// becomes a store of its name in it; without any the dataset is one store that takes everything.
//
// Keywords: _INDEXED, _MAX_FILE_SIZE. Failures: 24112, 24113, those of VEXRecorder and VEXSpatialRecorder.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "vex/qds/qdswch.h"
#include "vex/src/writrimp.h"

class QDSWriter final : public VEXWriterImp {
 public:
  QDSWriter(const std::string& type, const std::string& keyword);
  ~QDSWriter() override;

  std::unique_ptr<VEXGrouper> createGrouper(VEXWriter& front) override;
  VEXStatus setup() override;
  VEXStatus writeGlobalMetaData(VEXFeature& feature) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  int maxChannels() override { return 130; }
  VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) override;

 private:
  bool isMultiFile() const;

  QDSChannelSettings settings_;
  std::string dataset_;  // a directory's ends in a separator
  std::unordered_map<std::string, std::string> typeOfFile_;
  std::unordered_set<std::string> files_;  // of all channels
};
