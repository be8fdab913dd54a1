// VEXChannel: one open output stream for one group of features. Calls: startGroup, features, endGroup; then
// close, or abort after a failure. A driver overrides writeFeatureImp, and startGroup when it opens a file a group.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"

class VEXGroup;

// A place that features can be offered to, other than a channel.
class VEXFeatureConsumer {
 public:
  virtual ~VEXFeatureConsumer() = default;
  virtual VEXStatus consume(const VEXFeature& feature) = 0;
};

class VEXChannel {
 public:
  VEXChannel() = default;
  VEXChannel(const VEXChannel&) = delete;
  VEXChannel& operator=(const VEXChannel&) = delete;
  virtual ~VEXChannel();

  // Closes every sink, then logs how many features were refused (235001). Called once; a channel whose close
  // failed gets abort().
  virtual VEXStatus close();
  virtual VEXStatus startWriting(VEXGroup&) { return nullptr; }
  // The driver's own write. A status of severity 30 refuses this feature and the run goes on. The shared form offers it to each sink.
  virtual VEXStatus writeFeatureImp(VEXFeature& feature);
  // The whole walk for a group that never was attached.
  virtual VEXStatus writeGroup(VEXGroup& group);
  // Checks the feature's coordinate system (235004: it is not the channel's), then writes it. The feature stays
  // with the caller. A refused one is counted, logged and passed over.
  virtual VEXStatus writeFeature(VEXFeature& feature);
  virtual VEXStatus startGroup(VEXGroup&) { return nullptr; }
  virtual VEXStatus beforeFeature(VEXFeature&) { return nullptr; }
  virtual VEXStatus endGroup(VEXGroup&) { return nullptr; }
  virtual VEXStatus afterFeature(VEXFeature&) { return nullptr; }
  virtual void abort() {}  // cleans up partial output; cannot fail

  static constexpr std::int32_t kTag = 29;
  std::int32_t tag() const { return tag_; }
  std::int64_t rejected() const { return rejected_; }
  const std::string& coordSys() const { return coordSys_; }
  void reportRejected();  // 235001, when anything was refused since the last call

 protected:
  explicit VEXChannel(std::int32_t tag) : tag_(tag) {}  // any tag but kTag makes a channel that is refused
  // A sink is a channel or a consumer; one of the two is set.
  struct Sink {
    std::unique_ptr<VEXChannel> channel;
    std::unique_ptr<VEXFeatureConsumer> consumer;
  };
  void addSink(Sink sink) { sinks_.push_back(std::move(sink)); }
  void reject(VEXFeature& feature, const VEXStatusInfo& reason);  // counts, logs 235002 and the feature

 private:
  std::int32_t tag_ = kTag;
  std::vector<Sink> sinks_;
  std::int64_t rejected_ = 0;
  std::string coordSys_;
};
