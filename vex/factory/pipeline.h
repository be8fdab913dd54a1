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
    return factories_.empty() ? extendStatus(emit(feature)) : extendStatus(factories_.front()->processFeature(feature));
  }
  VEXStatus allDone();                     // tells the factories, first to last, that the input has ended
  VEXFeaturePtr getOutputFeature();        // the next of the queue; null when it is empty
  VEXStatus emit(VEXFeaturePtr& feature);  // the way out of the last factory
  VEXFactory* find(const std::string& factoryName) const;  // null when there is none
  std::size_t entries() const { return factories_.size(); }

  static constexpr std::size_t kMostFactories = 1000;  // a feature goes down the chain by nested calls

 private:
  std::vector<std::unique_ptr<VEXFactory>> factories_;
  std::deque<VEXFeaturePtr> outputQueue_;
  VEXPipelineSink* sink_ = nullptr;
  std::string keyword_;
  std::string name_;
  std::int32_t number_ = 0;
  std::unordered_set<std::string> namesInUse_;
};
