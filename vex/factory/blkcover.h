// VEXBlockCover: what any number of features cover together, found in blocks of neighbours, so that only one block is
// noded at a time. Each block is computed with all that lies near it, and gives the boundary of its own features; as a
// place where lines meet does not depend on what is far away, blocks fit together as if all had been computed at once.
// Should they not, all is computed at once. Calls: addRing and doubt as for a VEXFeatureCover, compute once; then,
// unless there are faults, next for every piece, and members.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "vex/factory/featcovr.h"
#include "vex/factory/nearblks.h"
#include "vex/inc/statinfo.h"
#include "vex/src/blockvec.h"
#include "vex/src/vexline.h"

// A piece of boundary that is kept. Regions are numbers of connected covered parts of the plane.
struct VEXKeptPiece {
  VEXOrdinates xs, ys, zs;  // all pieces have z if any ring has; 0 where its own has none
  std::span<const std::int32_t> chainIds;
  bool isInterior = false;  // covered on both sides; otherwise there is the region on one side
  bool coversRight = false;
  std::int32_t region = 0;
};

class VEXBlockCover {
 public:
  static constexpr double kLargestCoord = VEXFeatureCover::kLargestCoord;
  static constexpr std::size_t kBlockCoords = std::size_t{1} << 14;
  // About how many coordinates are noded at once; a 128th of them where there are very many, all where what overlaps a
  // block is more than the block.
  explicit VEXBlockCover(bool keepsInterior, std::size_t blockCoords = kBlockCoords)
      : keepsInterior_(keepsInterior), blockCoords_(blockCoords) {}
  std::size_t room() const;  // for coordinates
  void addRing(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t number);
  void doubt(std::int32_t number);  // of the last rings
  VEXStatus compute();

  // In how many blocks.
  std::size_t numBlocks() const { return numBlocks_; }
  std::vector<VEXTopologyFault>& faults() { return faults_; }
  std::vector<std::int32_t>& faulty() { return faulty_; }
  std::int32_t featureOf(std::int32_t chainId) const;

  // Pieces in the order of the rings; what one shows is valid until the next call.
  bool next(VEXKeptPiece& piece);
  // Pieces covered on both sides, which come only when they are to be kept.
  std::int64_t numInterior() const { return numInterior_; }
  // Regions and the features that cover of them.
  void members(std::vector<std::pair<std::int32_t, std::int32_t>>& members);
  // Lets go of all but which feature a chain is of.
  void endReading();

 private:
  struct Ring {  // its x, its y, then its z
    const double* values;
    std::uint32_t count;
    std::uint32_t feature : 31;
    std::uint32_t hasZ : 1;
  };
  struct Feature {
    std::int32_t number;
    std::uint32_t firstRing : 31;
    std::uint32_t isDoubted : 1;
  };
  struct Piece {
    std::uint32_t ring;  // the first that runs along it
    std::uint32_t part;  // that lies in its region
    bool isInterior, coversRight, hasZ;
    std::size_t first;    // coordinate
    std::size_t firstId;  // in ids_
  };
  struct Parts {  // of a feature whose boundary meets itself, as blocks see it
    std::uint32_t first;
    std::uint32_t count;
    std::size_t numBlocks;
  };
  static constexpr std::uint32_t kNone = 0xffffffffU;

  static VEXOrdinates xsOf(const Ring& ring) { return {ring.values, ring.count}; }
  static VEXOrdinates ysOf(const Ring& ring) { return {ring.values + ring.count, ring.count}; }
  static VEXOrdinates zsOf(const Ring& ring) {
    return {ring.values + 2 * std::size_t{ring.count}, ring.hasZ != 0 ? ring.count : 0};
  }
  double* makeRoom(std::size_t numValues);
  void letValuesGo();
  std::uint32_t endOfFeature(std::size_t feature) const;
  void partBlocks();
  // False: the block does not go together with others.
  VEXStatus computeBlock(std::size_t block, bool isWhole, bool& isSound);
  VEXStatus fill(VEXFeatureCover& cover, const std::vector<std::uint32_t>& features);
  void numberParts(const VEXFeatureCover& cover, std::size_t block, bool isWhole, bool& isSound);
  void take(const VEXCoverPiece& piece, bool isOwn);
  void keep(const VEXCoverPiece& piece, std::uint32_t part);
  void beginTaking();
  void noteEnds(const VEXCoverPiece& piece);
  std::size_t numBlocksNear(std::uint32_t feature) const;
  bool fitsTogether() const;
  std::uint32_t find(std::uint32_t part) {
    while (parents_[part] != part) part = parents_[part] = parents_[parents_[part]];
    return part;
  }
  std::uint32_t join(std::uint32_t a, std::uint32_t b);
  std::uint32_t addPart(std::uint32_t feature);

  bool keepsInterior_;
  std::size_t blockCoords_;
  std::vector<std::unique_ptr<double[]>> values_;  // by lots, so that growing takes nothing; a ring lies in one
  std::size_t lotSize_ = 0, roomLeft_ = 0;         // of the last
  std::size_t numCoords_ = 0;
  bool anyHasZ_ = false;
  VEXBlockVector<Ring, 8> rings_;
  VEXBlockVector<Feature, 8> features_;
  VEXNearBlocks blocks_;
  std::size_t numBlocks_ = 0;

  // Of the block at work.
  std::vector<std::uint32_t> blockRings_;  // by its own chain
  std::vector<std::uint32_t> partOf_;      // by its number of a part
  std::vector<std::uint32_t> regionPart_;  // by region: one that lies there

  std::vector<std::uint32_t> parents_;        // of parts; the first ones are those of rings
  std::vector<std::uint32_t> partFeatures_;   // of the parts after those of rings
  std::vector<bool> isSeen_;                  // by part
  std::map<std::uint32_t, Parts> manyParts_;  // by feature
  std::vector<Piece> pieces_;
  std::vector<std::uint32_t> order_;  // of the pieces
  std::size_t nextPiece_ = 0;
  std::vector<double> keptXs_, keptYs_, keptZs_, noZs_;
  std::vector<std::int32_t> ids_;
  std::int64_t numInterior_ = 0;
  std::uint64_t openEnds_ = 0;  // 0: pieces that were kept hang together
  bool isAnyLost_ = false;      // a piece whose feature is not near

  std::vector<VEXTopologyFault> faults_;
  std::vector<std::int32_t> faulty_;
};
