#include "vex/src/vexchan.h"

#include "vex/src/vexgroup.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kRejectedCount = 235001;
constexpr std::uint32_t kRejected = 235002;
constexpr std::uint32_t kRejectedLate = 235003;
constexpr std::uint32_t kTwoCoordSystems = 235004;
constexpr std::int64_t kDumpedCoordinates = 20;

}  // namespace

VEXChannel::~VEXChannel() = default;

VEXStatus VEXChannel::close() {
  while (!sinks_.empty()) {
    if (sinks_.front().channel != nullptr) VEX_TRY(sinks_.front().channel->close());
    sinks_.erase(sinks_.begin());
  }
  reportRejected();
  return nullptr;
}

void VEXChannel::reportRejected() {
  if (rejected_ == 0) return;
  logMessage(VEXSeverity::Warn, kRejectedCount, {std::to_string(rejected_)});
  rejected_ = 0;
}

VEXStatus VEXChannel::writeFeatureImp(VEXFeature& feature) {
  bool isFirst = true;
  for (Sink& sink : sinks_) {
    VEXStatus failure =
        sink.channel != nullptr ? sink.channel->writeFeatureImp(feature) : sink.consumer->consume(feature);
    if (failure && failure->severity() == kSeverityRejected && !isFirst) {
      // Half of its destinations have the feature: this is no longer a matter of one feature refused.
      logMessage(VEXSeverity::Error, kRejectedLate, {failure->message()});
      logFeature(feature, VEXSeverity::Inform, kDumpedCoordinates);
      failure->setSeverity(kSeverityFailure);
    }
    VEX_TRY(std::move(failure));
    isFirst = false;
  }
  return nullptr;
}

VEXStatus VEXChannel::writeGroup(VEXGroup& group) {
  VEX_TRY(startGroup(group));
  VEX_TRY(group.flushSpool(*this));
  for (const std::unique_ptr<VEXGroup>& child : group.children()) VEX_TRY(writeGroup(*child));
  return extendStatus(endGroup(group));
}

VEXStatus VEXChannel::writeFeature(VEXFeature& feature) {
  const std::string& coordSys = feature.coordSys();
  if (!coordSys.empty() && coordSys != coordSys_) {
    if (!coordSys_.empty()) return makeStatus(kTwoCoordSystems, {coordSys, coordSys_, feature.featureType()});
    coordSys_ = coordSys;
  }
  // Nothing moves the coordinates from here on, so what would have followed such a move is done with.
  if (!feature.reprojectionCommands().empty()) feature.setReprojectionCommands({});
  VEX_TRY(beforeFeature(feature));
  if (VEXStatus failure = writeFeatureImp(feature)) {
    if (failure->severity() != kSeverityRejected) return extendStatus(std::move(failure));
    reject(feature, *failure);
    return nullptr;
  }
  return extendStatus(afterFeature(feature));
}

void VEXChannel::reject(VEXFeature& feature, const VEXStatusInfo& reason) {
  ++rejected_;
  logMessage(VEXSeverity::Warn, kRejected, {reason.message()});
  logFeature(feature, VEXSeverity::Inform, kDumpedCoordinates);
}
