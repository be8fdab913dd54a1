// The noding of whole features: it keeps the features that it is given and tells those that something cuts from those
// that nothing touches. Calls: add each, compute once, then takeUntouched, and nextCut until it returns false.
#pragma once

#include <vector>

#include "vex/inc/vexfeat.h"
#include "vex/topology/lineintersector.h"

class VEXFeatureIntersectionMap {
 public:
  explicit VEXFeatureIntersectionMap(const VEXIntersectorParms& parms = {}) : intersector_(parms) {}

  // Takes the feature and notes its lines; the parts of a list are chains of their own. On a failure (329001, 329002,
  // 329003, 244023) the holder keeps it.
  VEXStatus add(VEXFeaturePtr& holder);
  VEXStatus compute(const VEXProgress& progress = {});

  std::size_t numFeatures() const { return features_.size(); }
  // Features are numbered from 0 in the order of adding. Null once it has been taken.
  VEXFeature* feature(std::size_t at) const { return features_[at].get(); }
  // The number of the feature that a chain of a piece belongs to; the chain may be negative.
  std::size_t featureOf(std::int32_t chainId) const;
  // True when every chain of the feature came out whole and alone.
  bool isUntouched(std::size_t at) const { return numTouched_[at] == 0; }
  // Appends the untouched features in their order, as they were given; none can be asked for afterwards.
  void takeUntouched(VEXFeatureVector& features);
  // The next piece of features that are cut; their whole chains come, too, when another of their chains is cut.
  bool nextCut(VEXChainPiece& piece, std::size_t maxVertices = 0);
  const VEXLineIntersector& intersector() const { return intersector_; }

 private:
  VEXLineIntersector intersector_;
  VEXFeatureVector features_;
  std::vector<std::size_t> numTouched_;  // chains of each feature that are cut or shared
};
