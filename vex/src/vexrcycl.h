// VEXObjectRecycler: keeps up to 100 released features for reuse, so that the translation loop allocates
// none. A singleton that the entry owns for one ORV_Translate call.
#pragma once

#include <vector>

#include "vex/inc/vexfeat.h"

class VEXObjectRecycler {
 public:
  VEXObjectRecycler();
  ~VEXObjectRecycler();
  VEXObjectRecycler(const VEXObjectRecycler&) = delete;
  VEXObjectRecycler& operator=(const VEXObjectRecycler&) = delete;

  static bool exists() { return instance_ != nullptr; }
  static VEXObjectRecycler& instance();

  // A reset feature; last released is first reused.
  VEXFeaturePtr getFeature(int dimension = 2, std::size_t numCoords = 1);
  // The same, for a reader that fills in the coordinates and sets their number: see VEXFeature::resetForFilling().
  VEXFeaturePtr getFeatureToFill(int dimension);
  // Takes the feature and nulls the pointer.
  void releaseFeature(VEXFeature*& relFeature) noexcept;
  std::size_t pooled() const { return pool_.size(); }

 private:
  static constexpr std::size_t kMaxPooled = 100;
  static VEXObjectRecycler* instance_;
  std::vector<VEXFeature*> pool_;
};
