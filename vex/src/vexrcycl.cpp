#include "vex/src/vexrcycl.h"

#include "vex/inc/vexassert.h"

VEXObjectRecycler* VEXObjectRecycler::instance_ = nullptr;

VEXObjectRecycler::VEXObjectRecycler() {
  VEX_ASSERT(instance_ == NULL);
  instance_ = this;
  pool_.reserve(kMaxPooled);
}

VEXObjectRecycler::~VEXObjectRecycler() {
  VEX_ASSERT(instance_ == this);
  while (!pool_.empty()) {
    delete pool_.back();
    pool_.pop_back();
  }
  instance_ = nullptr;
}

VEXObjectRecycler& VEXObjectRecycler::instance() {
  VEX_ASSERT(VEXObjectRecycler::instance_ != NULL);
  return *instance_;
}

VEXFeaturePtr VEXObjectRecycler::getFeature(int dimension, std::size_t numCoords) {
  if (numCoords == 1) numCoords = 2;
  if (pool_.empty()) return VEXFeaturePtr(new VEXFeature(dimension, numCoords));
  VEXFeaturePtr feature(pool_.back());
  pool_.pop_back();
  feature->reset(dimension, numCoords);
  return feature;
}

VEXFeaturePtr VEXObjectRecycler::getFeatureToFill(int dimension) {
  if (pool_.empty()) return VEXFeaturePtr(new VEXFeature(dimension, 0));
  VEXFeaturePtr feature(pool_.back());
  pool_.pop_back();
  feature->resetForFilling(dimension);
  return feature;
}

void VEXObjectRecycler::releaseFeature(VEXFeature*& relFeature) noexcept {
  VEX_ASSERT(relFeature != NULL);
  if (pool_.size() >= kMaxPooled) {
    delete relFeature;
  } else {
    relFeature->trimCoords();
    pool_.push_back(relFeature);
  }
  relFeature = nullptr;
}
