#include "vex/qds/qdswch.h"

#include <filesystem>

#include "vex/inc/vexname.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kCloseFailed = 24114;
constexpr std::uint32_t kOldIndexRemoved = 24115;

const VEXName kFeatureTypeName = VEXName::intern("qds_feature_type");

// The index that an earlier run has made of a store of this name tells where its features were.
void removeOldIndex(const std::string& path) {
  const std::string index = VEXSpatialRecorder::indexPath(path);
  const std::string native = platform::nativePath(index);
  std::error_code ignored;
  if (index == path || !std::filesystem::is_regular_file(native, ignored) || !platform::removeFile(native)) return;
  logMessage(VEXSeverity::Inform, kOldIndexRemoved, {index, path});
}

}  // namespace

QDSWriteChannel::QDSWriteChannel(std::string outputPath, const QDSChannelSettings& settings,
                                 const std::unordered_set<std::string>& files)
    : outputPath_(std::move(outputPath)), settings_(settings), files_(files) {}

QDSWriteChannel::~QDSWriteChannel() {
  if (VEXStatus failure = finish()) logMessage(VEXSeverity::Error, kCloseFailed, {outputPath_, failure->message()});
}

std::string QDSWriteChannel::storePath(const std::string& directory, const std::string& featureType) {
  return directory + fileNameForm(featureType) + ".qds";
}

void QDSWriteChannel::makeRecorder(const std::string& path) {
  if (settings_.isIndexed)
    spatial_ = std::make_unique<VEXSpatialRecorder>(path, VEXRecorder::WRITE_RECORDING);
  else
    recorder_ = std::make_unique<VEXRecorder>(path, VEXRecorder::WRITE_RECORDING, true, false);
  VEXRecorder& store = settings_.isIndexed ? spatial_->store() : *recorder_;
  if (settings_.maxFileSize > 0) store.setMaxFileSize(settings_.maxFileSize);
  store.setTaken(&files_);
}

VEXStatus QDSWriteChannel::writeFeatureImp(VEXFeature& feature) {
  if (recorder_ == nullptr && spatial_ == nullptr) [[unlikely]]
    makeRecorder(settings_.isMultiFile ? storePath(outputPath_, feature.featureType()) : outputPath_);
  if (settings_.isMultiFile && feature.attributeExists(kFeatureTypeName)) {
    feature.removeAttribute(kFeatureTypeName);
    feature.removeFromSequence(kFeatureTypeName);
  }
  VEXRecordAddress address;
  return extendStatus(recorder_ != nullptr ? recorder_->write(feature, address) : spatial_->write(feature, address));
}

VEXStatus QDSWriteChannel::finish() {
  VEXStatus failure = recorder_ != nullptr ? recorder_->close() : nullptr;
  if (spatial_ != nullptr) failure = spatial_->close();
  if (failure != nullptr) return extendStatus(std::move(failure));
  if (recorder_ != nullptr && recorder_->numFiles() > 0) removeOldIndex(recorder_->path());
  recorder_.reset();
  spatial_.reset();
  return nullptr;
}

VEXStatus QDSWriteChannel::close() {
  VEX_TRY(finish());
  return extendStatus(VEXChannel::close());
}

void QDSWriteChannel::abort() {
  if (recorder_ != nullptr) recorder_->abort();
  if (spatial_ != nullptr) spatial_->abort();
  recorder_.reset();
  spatial_.reset();
}
