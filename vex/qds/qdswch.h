// QDSWriteChannel: writes the features of one group, or all of them, to one feature store, made when the first feature
// comes. Without a feature no file is made. A store without an index takes away that of an earlier one of its name.
//
// Failures: 24114 close in the destructor (logged), those of VEXRecorder and VEXSpatialRecorder.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>

#include "vex/src/recorder.h"
#include "vex/src/sprecord.h"
#include "vex/src/vexchan.h"

struct QDSChannelSettings {
  bool isMultiFile = false;
  bool isIndexed = false;
  std::uint32_t maxFileSize = 0;  // 0: that of the recorder
};

class QDSWriteChannel final : public VEXChannel {
 public:
  // `outputPath` is a directory or the store itself. `files` are the stores of all channels; it outlives this one.
  QDSWriteChannel(std::string outputPath, const QDSChannelSettings& settings,
                  const std::unordered_set<std::string>& files);
  ~QDSWriteChannel() override;

  VEXStatus writeFeatureImp(VEXFeature& feature) override;
  VEXStatus close() override;
  void abort() override;

  static std::string storePath(const std::string& directory, const std::string& featureType);

 private:
  void makeRecorder(const std::string& path);
  VEXStatus finish();

  std::string outputPath_;
  QDSChannelSettings settings_;
  const std::unordered_set<std::string>& files_;
  std::unique_ptr<VEXRecorder> recorder_;  // one of the two, once there is a feature
  std::unique_ptr<VEXSpatialRecorder> spatial_;
};
