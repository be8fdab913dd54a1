// VEXPipeline: the chain of factories that the FACTORY_DEF rows of one keyword describe, in the order of the rows.
// What leaves the last one goes to the sink, or into a queue when there is none. It owns the factories.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "vex/factory/factory.h"

// Takes what leaves a pipeline.
class VEXPipelineSink {
 public:
  virtual ~VEXPipelineSink() = default;
  virtual VEXStatus takeOutput(std::int32_t pipelineNumber, const std::string& pipelineName,
                               VEXFeaturePtr& feature) = 0;
};

class VEXPipeline {
 public:
  VEXPipeline() = default;
  VEXPipeline(const VEXPipeline&) = delete;
  VEXPipeline& operator=(const VEXPipeline&) = delete;

  void setSink(VEXPipelineSink* sink) { sink_ = sink; }  // not owned
  // Builds the chain from the rows for `keyword` and for "*". 53002: a row is too short.
  VEXStatus configure(const std::string& keyword, const std::string& name = {}, std::int32_t number = 0);
  // Adds one factory at the end. 53003: its name is taken. 53004: too many.
  VEXStatus addFactory(const VEXStringVector& row, std::size_t index);
  VEXStatus processFeature(VEXFeaturePtr& feature) {
    if (factories_.empty()) return extendStatus(emit(feature));
    VEX_TRY(factories_.front()->processFeature(feature));
    return detours_.empty() ? nullptr : extendStatus(walk());
  }
  VEXStatus allDone();                     // tells the factories, first to last, that the input has ended
  VEXFeaturePtr getOutputFeature();        // the next of the queue; null when it is empty
  VEXStatus emit(VEXFeaturePtr& feature) {  // the way out of the last factory
    if (sink_ != nullptr) return extendStatus(sink_->takeOutput(number_, name_, feature));
    outputQueue_.push_back(std::move(feature));
    return nullptr;
  }
  VEXFactory* find(const std::string& factoryName) const;  // null when there is none
  // Keeps a feature for another factory of the chain, which gets it from walk(). False, and nothing is taken, when
  // the features of this walk have been sent about too often: more than kMostDetours times, or `mostExpected` when
  // that is more, for each feature that it began with.
  bool sendTo(VEXFactory& target, VEXFeaturePtr& feature, std::int64_t mostExpected);
  // Gives the kept features to their factories until none is left. What they send about meanwhile is kept, too: a
  // feature that goes round in the chain is walked, and the calls do not nest. A factory that had been told of the end
  // of input is flushed again.
  VEXStatus walk();
  std::size_t entries() const { return factories_.size(); }

  static constexpr std::size_t kMostFactories = 1000;  // a feature goes down the chain by nested calls
  static constexpr std::int64_t kMostDetours = 100'000;

 private:
  struct Detour {
    VEXFactory* target;
    VEXFeaturePtr feature;
  };
  std::vector<std::unique_ptr<VEXFactory>> factories_;
  std::deque<Detour> detours_;
  bool isWalking_ = false;
  std::int64_t numBegun_ = 0;    // features that this walk began with
  std::int64_t numDetours_ = 0;  // of this walk
  std::deque<VEXFeaturePtr> outputQueue_;
  VEXPipelineSink* sink_ = nullptr;
  std::string keyword_;
  std::string name_;
  std::int32_t number_ = 0;
  std::unordered_set<std::string> namesInUse_;
};
