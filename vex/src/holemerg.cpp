#include "vex/src/holemerg.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <numeric>

#include "vex/rptree/rptree.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/topology.h"

namespace {

class HoleMerger {
 public:
  explicit HoleMerger(std::vector<VEXLine>& holes)
      : holes_(holes), group_(holes.size()), mayMerge_(holes.size(), true) {
    std::iota(group_.begin(), group_.end(), std::size_t{0});
  }

  // A failure leaves the holes as they are.
  VEXStatus run() {
    addCandidates();
    if (holeOf_.size() < 2) return nullptr;
    VEX_TRY(intersector_.computeIntersections());
    if (!joinGroups()) return nullptr;
    std::map<std::size_t, VEXLine> merged;
    VEX_TRY(formRings(merged));
    if (merged.empty()) return nullptr;
    std::vector<VEXLine> kept;
    for (std::size_t hole = 0; hole < holes_.size(); ++hole) {
      const auto at = merged.find(groupOf(hole));
      if (at == merged.end()) {
        kept.push_back(std::move(holes_[hole]));
      } else if (at->first == hole) {
        kept.push_back(std::move(at->second));
      }
    }
    holes_ = std::move(kept);
    return nullptr;
  }

 private:
  // The first hole of those joined so far.
  std::size_t groupOf(std::size_t hole) {
    while (group_[hole] != hole) hole = group_[hole] = group_[group_[hole]];
    return hole;
  }

  // Closed holes whose boxes meet another's become chains. One that has no place is refused and stays apart.
  void addCandidates() {
    std::vector<RpEntry> boxes;
    for (std::size_t hole = 0; hole < holes_.size(); ++hole) {
      if (holes_[hole].numCoords() < 4 || !holes_[hole].isClosed()) continue;
      const VEXBox box = boxOf(holes_[hole].xs(), holes_[hole].ys());
      boxes.push_back({RpBox::of(box), static_cast<std::uint32_t>(hole)});
    }
    RpTree tree;
    tree.bulkLoad(boxes);
    RpHits hits;
    for (const RpEntry& entry : boxes) {
      tree.searchIntersecting(entry.box, hits);
      if (hits.size() < 2) continue;
      const VEXLine& hole = holes_[entry.id];
      if (VEXStatus refused = intersector_.addLine(hole, 0)) continue;
      holeOf_.push_back(entry.id);
      isClockwise_.push_back(isRingClockwise(hole.xs(), hole.ys()));
    }
  }

  std::size_t holeOf(std::int32_t chainId) const { return holeOf_[static_cast<std::size_t>(std::abs(chainId)) - 1]; }
  // The hole lies on the left of a piece.
  bool liesLeft(std::int32_t chainId) const {
    return (chainId > 0) != isClockwise_[static_cast<std::size_t>(std::abs(chainId)) - 1];
  }

  // Holes on both sides of a piece belong together. False: there is none.
  bool joinGroups() {
    bool any = false;
    for (VEXChainPiece piece; intersector_.nextPiece(piece);) {
      if (piece.chainIds.size() < 2) continue;
      const std::int32_t one = piece.chainIds[0], other = piece.chainIds[1];
      if (piece.chainIds.size() > 2 || holeOf(one) == holeOf(other) || liesLeft(one) == liesLeft(other)) {
        for (const std::int32_t id : piece.chainIds) mayMerge_[holeOf(id)] = false;
        continue;
      }
      const std::size_t a = groupOf(holeOf(one)), b = groupOf(holeOf(other));
      group_[std::max(a, b)] = std::min(a, b);
      any = true;
    }
    return any;
  }

  // Of each group what only one hole has. It is the outline of one face, unless holes overlap or enclose something.
  VEXStatus formRings(std::map<std::size_t, VEXLine>& merged) {
    struct Group {
      std::size_t numHoles = 0;
      bool mayMerge = true;
      bool hasZ = false;
      std::unique_ptr<VEXTopology> outline = {};
    };
    std::map<std::size_t, Group> groups;
    for (const std::size_t hole : holeOf_) {
      Group& group = groups[groupOf(hole)];
      ++group.numHoles;
      group.mayMerge = group.mayMerge && mayMerge_[hole];
      group.hasZ = group.hasZ || holes_[hole].hasZ();
    }
    std::erase_if(groups, [](const auto& entry) { return entry.second.numHoles < 2 || !entry.second.mayMerge; });
    intersector_.rewind();
    std::vector<double> ground;
    for (VEXChainPiece piece; intersector_.nextPiece(piece);) {
      const auto at = groups.find(groupOf(holeOf(piece.chainIds[0])));
      if (piece.chainIds.size() > 1 || at == groups.end()) continue;
      Group& group = at->second;
      if (group.outline == nullptr) group.outline = std::make_unique<VEXTopology>();
      VEXOrdinates zs = piece.zs;
      if (group.hasZ && zs.empty()) {
        ground.assign(piece.numCoords(), 0.0);
        zs = ground;
      }
      VEX_TRY(group.outline->addLine(piece.xs, piece.ys, zs));
    }
    for (auto& [first, group] : groups) {
      VEXTopologyResult result;
      if (group.outline == nullptr || group.outline->buildPolygons(result) != nullptr) continue;
      if (!result.faults.empty() || result.polygons.size() != 1) continue;
      VEXLine& ring = result.polygons[0].line;
      if (ring.geomType() != VEX_GEOM_POLYGON) continue;
      ring.reverse(0, ring.numCoords() - 1);
      merged.emplace(first, std::move(ring));
    }
    return nullptr;
  }

  std::vector<VEXLine>& holes_;
  std::vector<std::size_t> group_;
  std::vector<bool> mayMerge_;
  VEXLineIntersector intersector_;
  std::vector<std::size_t> holeOf_;  // by chain
  std::vector<bool> isClockwise_;
};

}  // namespace

void mergeTouchingHoles(std::vector<VEXLine>& holes) {
  if (holes.size() > 1) ignoreStatus(HoleMerger(holes).run());  // they stay apart then
}
