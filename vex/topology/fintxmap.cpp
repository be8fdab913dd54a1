#include "vex/topology/fintxmap.h"

#include <cstdlib>

VEXStatus VEXFeatureIntersectionMap::add(VEXFeaturePtr& holder) {
  VEX_TRY(intersector_.addLine(VEXLine::viewOf(*holder), 1));
  features_.push_back(std::move(holder));
  return nullptr;
}

VEXStatus VEXFeatureIntersectionMap::compute(const VEXProgress& progress) {
  VEX_TRY(intersector_.computeIntersections(progress));
  numTouched_.assign(features_.size(), 0);
  // A chain that gives one whole piece, which is its alone, is untouched. One that gives none lies on others.
  std::vector<bool> isWhole(intersector_.numChains(), false);
  VEXChainPiece piece;
  while (intersector_.nextPiece(piece))
    if (piece.isWhole) isWhole[static_cast<std::size_t>(piece.chainIds[0]) - 1] = true;
  for (std::size_t chain = 0; chain < isWhole.size(); ++chain)
    if (!isWhole[chain]) ++numTouched_[featureOf(static_cast<std::int32_t>(chain + 1))];
  intersector_.rewind();
  return nullptr;
}

std::size_t VEXFeatureIntersectionMap::featureOf(std::int32_t chainId) const {
  return static_cast<std::size_t>(std::abs(intersector_.inputOf(std::abs(chainId)))) - 1;
}

void VEXFeatureIntersectionMap::takeUntouched(VEXFeatureVector& features) {
  for (std::size_t at = 0; at < features_.size(); ++at)
    if (features_[at] != nullptr && isUntouched(at)) features.push_back(std::move(features_[at]));
}

bool VEXFeatureIntersectionMap::nextCut(VEXChainPiece& piece, std::size_t maxVertices) {
  while (intersector_.nextPiece(piece, maxVertices))
    if (!isUntouched(featureOf(piece.chainIds[0]))) return true;
  return false;
}
