#include "vex/factory/featcovr.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "vex/src/plangeom.h"
#include "vex/topology/orient.h"

namespace {

constexpr std::uint32_t kNotPlane = 328005;
constexpr std::uint32_t kFewestOfRing = 4;
constexpr std::size_t kManyCoords = std::size_t{1} << 20;  // from here on memory that grows by doubling is felt

}  // namespace

VEXStatus VEXFeatureCover::addRing(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t number) {
  VEX_TRY(intersector_->addLine(xs, ys, zs));
  features_.push_back(number);
  directions_.push_back(static_cast<std::int8_t>(ringDirection(xs, ys)));
  return nullptr;
}

void VEXFeatureCover::doubt(std::int32_t number) {
  doubted_.push_back(number);
}

std::int32_t VEXFeatureCover::featureOf(std::int32_t chainId) const {
  return features_[static_cast<std::size_t>(std::abs(chainId)) - 1];
}

VEXStatus VEXFeatureCover::compute() {
  VEX_TRY(intersector_->computeIntersections());
  findSelfMeetings();
  VEXPieceCourse course;
  if (intersector_->chains().numCoords() >= kManyCoords) {
    std::size_t count = 0;
    while (intersector_->nextCourse(course)) ++count;
    graph_->reserve(count);
    intersector_->rewind();
  }
  while (intersector_->nextCourse(course)) graph_->add(course);
  VEX_TRY(settleDoubts());
  if (!faults_.empty()) return nullptr;
  if (!graph_->build()) return extendStatus(noteFaults(graph_->faultPlace(), graph_->faultPieces()));
  graph_->endBuilding();
  for (std::size_t piece = 0; piece < graph_->numPieces(); ++piece)
    if (graph_->leftCover(piece) != 0 && graph_->rightCover(piece) != 0) graph_->joinSides(piece);
  intersector_->rewind();
  return nullptr;
}

// ---- features that may cover less than nothing ----

// A feature whose rings meet neither themselves nor each other covers what lies on the right of them, once. Only those
// that come to a node twice may have a loop that is turned, and what runs out and back on one segment covers nothing.
// Places that are one in single precision may turn a ring as small as these. The chains of one feature lie side by
// side.
void VEXFeatureCover::findSelfMeetings() {
  const VEXChainStore& chains = intersector_->chains();
  std::vector<std::int32_t> lastFeature(chains.numNodes(), -1);
  for (std::size_t chain = 0; chain < features_.size(); ++chain) {
    const std::int32_t feature = features_[chain];
    const std::uint32_t first = chains.chain(chain).first, end = chains.endOf(chain);
    bool isMet = end - first < kFewestOfRing, isCut = false;
    for (std::uint32_t at = first; at + 1 < end; ++at) {
      const std::uint32_t node = chains.nodeAt(at);
      if (node == kNoNode) continue;
      isMet = isMet || lastFeature[node] == feature;
      lastFeature[node] = feature;
      isCut = true;
    }
    if (isCut && !isMet)
      isMet = directions_[chain] == 0 || directions_[chain] != ringDirection(chains.xs().subspan(first, end - first),
                                                                             chains.ys().subspan(first, end - first));
    if (isMet && (doubted_.empty() || doubted_.back() != feature)) doubted_.push_back(feature);
  }
}

// What a doubtful feature covers is told by its own pieces alone. In the graph of all it then counts once wherever it
// covers anything, so that no loop of it takes away what another feature covers.
VEXStatus VEXFeatureCover::settleDoubts() {
  if (doubted_.empty()) return nullptr;
  std::sort(doubted_.begin(), doubted_.end());
  isDoubtful_.resize(features_.size());
  for (std::size_t chain = 0; chain < features_.size(); ++chain)
    isDoubtful_[chain] = std::binary_search(doubted_.begin(), doubted_.end(), features_[chain]);
  std::vector<Pass> passes;
  intersector_->rewind();
  VEXChainPiece piece;
  for (std::uint32_t number = 0; number < graph_->numPieces(); ++number) {
    intersector_->showPiece(graph_->course(number), piece);
    for (std::int32_t id : piece.passes)
      if (isDoubtful_[static_cast<std::size_t>(std::abs(id)) - 1]) passes.push_back({featureOf(id), number, id});
  }
  std::sort(passes.begin(), passes.end(), [](const Pass& a, const Pass& b) {
    return a.feature != b.feature ? a.feature < b.feature : a.piece < b.piece;
  });
  VEXCoverGraph alone(intersector_->chains());
  for (std::size_t first = 0, last; first < passes.size(); first = last) {
    for (last = first; last < passes.size() && passes[last].feature == passes[first].feature;) ++last;
    VEX_TRY(settle(std::span(passes).subspan(first, last - first), alone));
    if (!faults_.empty()) return nullptr;
  }
  std::sort(sides_.begin(), sides_.end(), [](const Sides& a, const Sides& b) {
    return a.piece != b.piece ? a.piece < b.piece : a.feature < b.feature;
  });
  return nullptr;
}

// The passes of one feature, by pieces.
VEXStatus VEXFeatureCover::settle(std::span<const Pass> passes, VEXCoverGraph& alone) {
  alone.clear();
  std::vector<std::uint32_t> pieces;
  std::vector<std::int32_t> chains;  // the first that passes each
  for (const Pass& pass : passes) {
    if (pieces.empty() || pieces.back() != pass.piece) {
      pieces.push_back(pass.piece);
      chains.push_back(std::abs(pass.chainId));
      alone.add({graph_->course(pass.piece).first, graph_->course(pass.piece).last, 0});
    }
    chains.back() = std::min(chains.back(), std::abs(pass.chainId));
    alone.addChange(pieces.size() - 1, pass.chainId > 0 ? 1 : -1);
  }
  if (!alone.build()) {
    std::vector<std::uint32_t> around;
    for (std::uint32_t at : alone.faultPieces()) around.push_back(pieces[at]);
    return extendStatus(noteFaults(alone.faultPlace(), around));
  }
  bool isTurned = false;
  for (std::size_t at = 0; at < pieces.size(); ++at) {
    isTurned = isTurned || alone.leftCover(at) < 0 || alone.rightCover(at) < 0;
    if (alone.leftCover(at) != 0 && alone.rightCover(at) != 0) alone.joinSides(at);
  }
  const std::size_t firstSides = sides_.size();
  for (std::size_t at = 0; at < pieces.size(); ++at) {
    const bool left = alone.leftCover(at) != 0, right = alone.rightCover(at) != 0;
    const std::int32_t change = alone.rightCover(at) - alone.leftCover(at);
    if (isTurned) graph_->addChange(pieces[at], (right ? 1 : 0) - (left ? 1 : 0) - change);
    sides_.push_back({pieces[at], passes[0].feature, left ? 0 : -1, right ? 0 : -1});
  }
  findParts(std::span(sides_).subspan(firstSides), chains, alone);
  return nullptr;
}

namespace {

struct PartSide {
  std::uint32_t region;
  std::uint32_t at;  // of the sides
  bool isRight;
};

struct PartRun {  // the sides of one part
  std::size_t first, last;
  std::int32_t chain = 0;  // its first ring, and where it lies, tell it from other parts
  double place = 0.0;
};

double placeOf(const VEXBox& box) {
  return 0.731 * box.minX + 0.619 * box.minY + 0.257 * box.maxX + 0.143 * box.maxY;
}

}  // namespace

// The parts of one feature. Which there are does not depend on what else is noded; where they lie may, by a little.
void VEXFeatureCover::findParts(std::span<Sides> sides, std::span<const std::int32_t> chains, VEXCoverGraph& alone) {
  constexpr double kClear = 0x1p-22;  // of the size of coordinates, four steps of single precision
  std::vector<PartSide> covered;
  for (std::uint32_t at = 0; at < sides.size(); ++at) {
    if (sides[at].left == 0) covered.push_back({alone.leftRegion(at), at, false});
    if (sides[at].right == 0) covered.push_back({alone.rightRegion(at), at, true});
  }
  std::sort(covered.begin(), covered.end(), [](const PartSide& a, const PartSide& b) {
    return a.region != b.region ? a.region < b.region : a.at < b.at;
  });
  std::vector<PartRun> runs;
  bool isSure = true;
  for (std::size_t i = 0; i < covered.size(); ++i) {
    if (i == 0 || covered[i].region != covered[i - 1].region) runs.push_back({i, i});
    runs.back().last = i + 1;
  }
  if (runs.size() > 1) {
    double size = 0.0;
    for (PartRun& run : runs) {
      VEXBox box = alone.extentOf(covered[run.first].at);
      run.chain = chains[covered[run.first].at];
      for (std::size_t i = run.first; i < run.last; ++i) {
        box.add(alone.extentOf(covered[i].at));
        run.chain = std::min(run.chain, chains[covered[i].at]);
      }
      run.place = placeOf(box);
      size = std::max({size, std::fabs(box.minX), std::fabs(box.minY), std::fabs(box.maxX), std::fabs(box.maxY)});
    }
    std::sort(runs.begin(), runs.end(), [](const PartRun& a, const PartRun& b) {
      if (a.chain != b.chain) return a.chain < b.chain;
      return a.place != b.place ? a.place < b.place : a.first < b.first;
    });
    for (std::size_t i = 1; i < runs.size(); ++i)
      if (runs[i].chain == runs[i - 1].chain && !(runs[i].place - runs[i - 1].place > kClear * size)) isSure = false;
  }
  for (std::uint32_t ordinal = 0; ordinal < runs.size(); ++ordinal) {
    const auto part = static_cast<std::int32_t>(parts_.size());
    parts_.push_back({sides[0].feature, ordinal, static_cast<std::uint32_t>(runs.size()), isSure});
    for (std::size_t i = runs[ordinal].first; i < runs[ordinal].last; ++i)
      (covered[i].isRight ? sides[covered[i].at].right : sides[covered[i].at].left) = part;
  }
}

// The faces tell best where lines cross. Where all of them are sound still, the node of the contradiction has to do.
VEXStatus VEXFeatureCover::noteFaults(const VEXPoint& place, const std::vector<std::uint32_t>& pieces) {
  VEXTopology faces(VEXTopology::kPlain);
  std::vector<std::int32_t> around;
  intersector_->rewind();
  VEXChainPiece piece;
  for (std::uint32_t number = 0; number < graph_->numPieces(); ++number) {
    intersector_->showPiece(graph_->course(number), piece);
    VEX_TRY(faces.addLine(piece.xs, piece.ys, piece.zs, 0, piece.chainIds));
    if (std::binary_search(pieces.begin(), pieces.end(), number))
      for (std::int32_t id : piece.chainIds) around.push_back(featureOf(id));
  }
  VEXTopologyResult result;
  VEXPolygonOptions options;
  options.keepLines = false;
  VEX_TRY(faces.buildPolygons(result, options));
  faults_ = std::move(result.faults);
  for (const VEXTopologyFault& fault : faults_)
    for (std::int32_t arc : fault.arcs)
      for (std::int32_t id : faces.arc(arc).attributes()) faulty_.push_back(featureOf(id));
  if (!faults_.empty()) return nullptr;
  VEXTopologyFault& fault = faults_.emplace_back();
  fault.number = kNotPlane;
  fault.x = place.x;
  fault.y = place.y;
  for (std::uint32_t at : pieces) fault.arcs.push_back(static_cast<std::int32_t>(at) + 1);
  faulty_ = std::move(around);
  return nullptr;
}

// ---- what is covered ----

bool VEXFeatureCover::next(VEXCoverPiece& piece) {
  if (nextPiece_ == graph_->numPieces()) return false;
  const std::size_t at = nextPiece_++;
  VEXChainPiece cut;
  intersector_->showPiece(graph_->course(at), cut);
  piece.xs = cut.xs;
  piece.ys = cut.ys;
  piece.zs = cut.zs;
  piece.chainIds = cut.chainIds;
  piece.passes = cut.passes;
  piece.coversLeft = graph_->leftCover(at) != 0;
  piece.coversRight = graph_->rightCover(at) != 0;
  if (piece.coversLeft) piece.leftRegion = graph_->leftRegion(at);
  if (piece.coversRight) piece.rightRegion = graph_->rightRegion(at);
  findShares(static_cast<std::uint32_t>(at), piece);
  piece.shares = shares_;
  return true;
}

void VEXFeatureCover::findShares(std::uint32_t number, const VEXCoverPiece& piece) {
  shares_.clear();
  if (!piece.coversLeft && !piece.coversRight) return;
  for (std::int32_t id : piece.chainIds) {
    const auto chain = static_cast<std::uint32_t>(std::abs(id)) - 1;
    if (!isDoubtful_.empty() && isDoubtful_[chain]) continue;
    if (id > 0 ? piece.coversRight : piece.coversLeft) shares_.push_back({chain, id > 0});
  }
  for (; nextSides_ < sides_.size() && sides_[nextSides_].piece <= number; ++nextSides_) {
    const Sides& sides = sides_[nextSides_];
    if (sides.piece != number) continue;
    const auto firstPart = static_cast<std::uint32_t>(features_.size());
    if (sides.left >= 0) shares_.push_back({firstPart + static_cast<std::uint32_t>(sides.left), false});
    if (sides.right >= 0) shares_.push_back({firstPart + static_cast<std::uint32_t>(sides.right), true});
  }
}
