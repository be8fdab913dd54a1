#include "vex/factory/blkcover.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "vex/src/letgo.h"
#include "vex/topology/pointhash.h"
#include "vex/topology/vexchain.h"

// ---- taking in ----

std::size_t VEXBlockCover::room() const {
  return VEXChainStore::kMostCoords - numCoords_;
}

void VEXBlockCover::addRing(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t number) {
  if (features_.size() == 0 || features_.back().number != number)
    features_.push_back({number, static_cast<std::uint32_t>(rings_.size()) & 0x7fffffffU, 0});
  double* const values = makeRoom(xs.size() + ys.size() + zs.size());
  std::copy(zs.begin(), zs.end(), std::copy(ys.begin(), ys.end(), std::copy(xs.begin(), xs.end(), values)));
  Ring ring{};
  ring.values = values;
  ring.count = static_cast<std::uint32_t>(xs.size());
  ring.feature = static_cast<std::uint32_t>(features_.size() - 1) & 0x7fffffffU;
  ring.hasZ = zs.empty() ? 0 : 1;
  rings_.push_back(ring);
  numCoords_ += xs.size();
  anyHasZ_ = anyHasZ_ || !zs.empty();
}

double* VEXBlockCover::makeRoom(std::size_t numValues) {
  constexpr std::size_t kSmallLot = std::size_t{1} << 9, kLot = std::size_t{1} << 16;
  if (numValues > roomLeft_) {
    roomLeft_ = lotSize_ = std::max(std::clamp(numCoords_ / 4, kSmallLot, kLot), numValues);
    values_.push_back(std::make_unique_for_overwrite<double[]>(lotSize_));
  }
  double* const room = values_.back().get() + (lotSize_ - roomLeft_);
  roomLeft_ -= numValues;
  return room;
}

void VEXBlockCover::letValuesGo() {
  letGo(values_);
  roomLeft_ = 0;
}

void VEXBlockCover::doubt(std::int32_t number) {
  if (features_.size() > 0 && features_.back().number == number) features_.back().isDoubted = 1;
}

std::uint32_t VEXBlockCover::endOfFeature(std::size_t feature) const {
  return feature + 1 < features_.size() ? features_[feature + 1].firstRing : static_cast<std::uint32_t>(rings_.size());
}

std::int32_t VEXBlockCover::featureOf(std::int32_t chainId) const {
  return features_[rings_[static_cast<std::size_t>(std::abs(chainId)) - 1].feature].number;
}

// ---- block by block ----

void VEXBlockCover::partBlocks() {
  if (numCoords_ > blockCoords_) {
    blocks_.reserve(features_.size());
    for (std::size_t feature = 0; feature < features_.size(); ++feature) {
      VEXBox box;
      std::size_t count = 0;
      for (std::uint32_t ring = features_[feature].firstRing; ring < endOfFeature(feature); ++ring) {
        box.add(boxOf(xsOf(rings_[ring]), ysOf(rings_[ring])));
        count += rings_[ring].count;
      }
      blocks_.add(box, count);
    }
  }
  blocks_.part(blockCoords_, [this](std::uint32_t feature, const std::function<void(const VEXSegment&)>& show) {
    for (std::uint32_t ring = features_[feature].firstRing; ring < endOfFeature(feature); ++ring) {
      const VEXOrdinates xs = xsOf(rings_[ring]), ys = ysOf(rings_[ring]);
      for (std::size_t at = 1; at < xs.size(); ++at) show({xs[at - 1], ys[at - 1], xs[at], ys[at]});
    }
  });
}

void VEXBlockCover::beginTaking() {
  parents_.resize(rings_.size());
  std::iota(parents_.begin(), parents_.end(), 0U);
  partFeatures_.clear();
  isSeen_.assign(rings_.size(), false);
  manyParts_.clear();
  pieces_.clear();
  keptXs_.clear();
  keptYs_.clear();
  keptZs_.clear();
  ids_.clear();
  numInterior_ = 0;
  openEnds_ = 0;
  isAnyLost_ = false;
}

VEXStatus VEXBlockCover::compute() {
  partBlocks();
  beginTaking();
  bool isSound = blocks_.numBlocks() > 1;
  for (std::size_t block = 0; block < blocks_.numBlocks() && isSound; ++block)
    VEX_TRY(computeBlock(block, false, isSound));
  numBlocks_ = blocks_.numBlocks();
  if (!isSound || !fitsTogether()) {
    numBlocks_ = 1;
    beginTaking();
    VEX_TRY(computeBlock(0, true, isSound));
  }
  order_.resize(pieces_.size());
  std::iota(order_.begin(), order_.end(), 0U);
  std::stable_sort(order_.begin(), order_.end(),
                   [this](std::uint32_t a, std::uint32_t b) { return pieces_[a].ring < pieces_[b].ring; });
  letValuesGo();
  letGo(blocks_);
  return nullptr;
}

VEXStatus VEXBlockCover::fill(VEXFeatureCover& cover, const std::vector<std::uint32_t>& features) {
  std::size_t numRings = 0, numCoords = 0;
  for (std::uint32_t feature : features)
    for (std::uint32_t ring = features_[feature].firstRing; ring < endOfFeature(feature); ++ring, ++numRings)
      numCoords += rings_[ring].count;
  cover.reserve(numRings, numCoords);
  blockRings_.clear();
  blockRings_.reserve(numRings);
  for (std::uint32_t feature : features) {
    const auto number = static_cast<std::int32_t>(feature);
    for (std::uint32_t ring = features_[feature].firstRing; ring < endOfFeature(feature); ++ring) {
      VEX_TRY(cover.addRing(xsOf(rings_[ring]), ysOf(rings_[ring]), zsOf(rings_[ring]), number));
      blockRings_.push_back(ring);
    }
    if (features_[feature].isDoubted != 0) cover.doubt(number);
  }
  return nullptr;
}

VEXStatus VEXBlockCover::computeBlock(std::size_t block, bool isWhole, bool& isSound) {
  std::vector<std::uint32_t> features;
  if (isWhole) {
    features.resize(features_.size());
    std::iota(features.begin(), features.end(), 0U);
  } else {
    blocks_.gather(block, features);
  }
  VEXFeatureCover cover;
  VEX_TRY(fill(cover, features));
  if (isWhole) letValuesGo();
  VEX_TRY(cover.compute());
  if (!cover.faults().empty()) {
    isSound = false;
    if (!isWhole) return nullptr;
    faults_ = std::move(cover.faults());
    faulty_ = std::move(cover.faulty());
    for (std::int32_t& feature : faulty_) feature = features_[static_cast<std::size_t>(feature)].number;
    return nullptr;
  }
  numberParts(cover, block, isWhole, isSound);
  if (!isSound && !isWhole) return nullptr;
  regionPart_.assign(2 * cover.numPieces(), kNone);
  for (VEXCoverPiece piece; cover.next(piece);) {
    const std::uint32_t ring = blockRings_[static_cast<std::size_t>(piece.chainIds[0]) - 1];
    take(piece, isWhole || blocks_.blockOf(rings_[ring].feature) == block);
  }
  return nullptr;
}

// ---- parts ----

std::uint32_t VEXBlockCover::join(std::uint32_t a, std::uint32_t b) {
  a = find(a);
  b = find(b);
  return parents_[std::max(a, b)] = std::min(a, b);
}

std::uint32_t VEXBlockCover::addPart(std::uint32_t feature) {
  const auto part = static_cast<std::uint32_t>(parents_.size());
  parents_.push_back(part);
  partFeatures_.push_back(feature);
  isSeen_.push_back(false);
  return part;
}

std::size_t VEXBlockCover::numBlocksNear(std::uint32_t feature) const {
  std::size_t count = 0;
  for (std::size_t block = 0; block < blocks_.numBlocks(); ++block) count += blocks_.isNear(feature, block) ? 1 : 0;
  return count;
}

// A feature of one part goes by its first ring, whether its boundary meets itself in this block or not. What is not
// near the block itself may be incomplete in it, and has no number.
void VEXBlockCover::numberParts(const VEXFeatureCover& cover, std::size_t block, bool isWhole, bool& isSound) {
  partOf_ = blockRings_;
  for (std::uint32_t& part : partOf_)
    if (!isWhole && !blocks_.isNear(rings_[part].feature, block)) part = kNone;
  for (const VEXCoverPart& part : cover.parts()) {
    const auto feature = static_cast<std::uint32_t>(part.feature);
    if (!isWhole && !blocks_.isNear(feature, block)) {
      partOf_.push_back(kNone);
      continue;
    }
    if (part.count == 1) {
      partOf_.push_back(features_[feature].firstRing);
      continue;
    }
    auto found = manyParts_.find(feature);
    if (found == manyParts_.end()) {
      found = manyParts_.insert({feature, {addPart(feature), part.count, 0}}).first;
      for (std::uint32_t more = 1; more < part.count; ++more) addPart(feature);
    }
    if (part.ordinal == 0) ++found->second.numBlocks;
    isSound = isSound && found->second.count == part.count && (part.isSure || numBlocksNear(feature) == 1);
    partOf_.push_back(found->second.first + std::min(part.ordinal, found->second.count - 1));
  }
}

// The blocks agree on which features have several parts, and the pieces of all hang together.
bool VEXBlockCover::fitsTogether() const {
  for (const auto& [feature, parts] : manyParts_)
    if (numBlocksNear(feature) != parts.numBlocks) return false;
  return openEnds_ == 0 && !isAnyLost_;
}

// ---- pieces ----

namespace {

bool isClosed(const VEXCoverPiece& piece) {
  return piece.xs.front() == piece.xs.back() && piece.ys.front() == piece.ys.back();
}

}  // namespace

// As many outlines come to a place as leave it. Where all lines are kept, so it is for each ring.
void VEXBlockCover::noteEnds(const VEXCoverPiece& piece) {
  const std::uint64_t change =
      pointHash(piece.xs.front(), piece.ys.front()) - pointHash(piece.xs.back(), piece.ys.back());
  if (!keepsInterior_) {
    openEnds_ += piece.coversRight ? change : 0 - change;
    return;
  }
  for (std::int32_t id : piece.passes) {
    const std::uint64_t ring = mixBits(blockRings_[static_cast<std::size_t>(std::abs(id)) - 1] + 1) | 1;
    openEnds_ += id > 0 ? change * ring : 0 - change * ring;
  }
}

void VEXBlockCover::take(const VEXCoverPiece& piece, bool isOwn) {
  for (const VEXCoverShare& share : piece.shares) {
    std::uint32_t& inRegion = regionPart_[share.isRight ? piece.rightRegion : piece.leftRegion];
    const std::uint32_t part = partOf_[share.part];
    if (part == kNone) continue;
    inRegion = inRegion == kNone ? part : join(inRegion, part);
    isSeen_[part] = true;
  }
  if (!isOwn) return;
  const bool isOutline = piece.coversLeft != piece.coversRight;
  if (keepsInterior_ || isOutline) noteEnds(piece);
  if (isOutline) {
    // What covers one side only is beside the piece.
    std::uint32_t part = regionPart_[piece.coversRight ? piece.rightRegion : piece.leftRegion];
    if (part == kNone) {
      part = blockRings_[static_cast<std::size_t>(piece.chainIds[0]) - 1];
      isSeen_[part] = true;
      isAnyLost_ = true;
    }
    keep(piece, part);
  } else if (piece.coversLeft) {
    numInterior_ += isClosed(piece) ? 2 : 1;  // a graph cuts rings in two
    if (keepsInterior_) keep(piece, 0);
  }
}

void VEXBlockCover::keep(const VEXCoverPiece& piece, std::uint32_t part) {
  Piece kept{};
  kept.ring = blockRings_[static_cast<std::size_t>(piece.chainIds[0]) - 1];
  kept.part = part;
  kept.firstId = ids_.size();
  kept.isInterior = piece.coversLeft && piece.coversRight;
  kept.coversRight = piece.coversRight;
  kept.hasZ = !piece.zs.empty();
  kept.first = keptXs_.size();
  pieces_.push_back(kept);
  for (std::int32_t id : piece.chainIds) {
    const auto ring = static_cast<std::int32_t>(blockRings_[static_cast<std::size_t>(std::abs(id)) - 1]) + 1;
    ids_.push_back(id > 0 ? ring : -ring);
  }
  if (kept.hasZ && keptZs_.size() < keptXs_.size()) keptZs_.resize(keptXs_.size(), kNoZ);
  keptXs_.insert(keptXs_.end(), piece.xs.begin(), piece.xs.end());
  keptYs_.insert(keptYs_.end(), piece.ys.begin(), piece.ys.end());
  if (kept.hasZ)
    keptZs_.insert(keptZs_.end(), piece.zs.begin(), piece.zs.end());
  else if (!keptZs_.empty())
    keptZs_.resize(keptXs_.size(), kNoZ);
}

// ---- reading ----

bool VEXBlockCover::next(VEXKeptPiece& piece) {
  if (nextPiece_ == order_.size()) return false;
  const std::uint32_t number = order_[nextPiece_++];
  const Piece& kept = pieces_[number];
  const bool isLast = number + 1 == pieces_.size();
  const std::size_t count = (isLast ? keptXs_.size() : pieces_[number + 1].first) - kept.first;
  const std::size_t numIds = (isLast ? ids_.size() : pieces_[number + 1].firstId) - kept.firstId;
  piece.xs = VEXOrdinates(keptXs_).subspan(kept.first, count);
  piece.ys = VEXOrdinates(keptYs_).subspan(kept.first, count);
  piece.zs = VEXOrdinates();
  if (kept.hasZ) {
    piece.zs = VEXOrdinates(keptZs_).subspan(kept.first, count);
  } else if (anyHasZ_) {
    noZs_.assign(count, 0.0);
    piece.zs = noZs_;
  }
  piece.chainIds = std::span(ids_).subspan(kept.firstId, numIds);
  piece.isInterior = kept.isInterior;
  piece.coversRight = kept.coversRight;
  piece.region = kept.isInterior ? 0 : static_cast<std::int32_t>(find(kept.part));
  return true;
}

void VEXBlockCover::members(std::vector<std::pair<std::int32_t, std::int32_t>>& members) {
  for (std::uint32_t part = 0; part < parents_.size(); ++part) {
    if (!isSeen_[part]) continue;
    const std::uint32_t feature = part < rings_.size() ? rings_[part].feature : partFeatures_[part - rings_.size()];
    members.emplace_back(static_cast<std::int32_t>(find(part)), features_[feature].number);
  }
  std::sort(members.begin(), members.end());
  members.erase(std::unique(members.begin(), members.end()), members.end());
}

void VEXBlockCover::endReading() {
  letGo(parents_, partFeatures_, isSeen_, pieces_, order_, keptXs_, keptYs_, keptZs_);
}
