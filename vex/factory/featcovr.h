// VEXFeatureCover: what features cover together whose boundaries meet in any way. A feature covers the places around
// which its rings turn, however often and whichever way round. Calls: addRing for the rings of one feature after the
// other, compute once; then, unless there are faults, next for every piece of boundary, and members.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/topology/covergrf.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/topology.h"

// A piece of boundary. Regions are numbers of connected covered parts of the plane, set where the side is covered.
struct VEXCoverPiece {
  VEXOrdinates xs, ys, zs;  // all pieces have z or none
  std::span<const std::int32_t> chainIds;
  bool coversLeft = false;
  bool coversRight = false;
  std::int32_t leftRegion = 0;
  std::int32_t rightRegion = 0;
};

class VEXFeatureCover {
 public:
  static constexpr double kLargestCoord = VEXLineIntersector::kLargestCoord;
  std::size_t room() const { return intersector_->room(); }  // for coordinates
  // A closed ring, clockwise if it is a shell, counter-clockwise if it is a hole.
  VEXStatus addRing(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t number);
  // The feature's holes may lie outside of its shells: that is looked into.
  void doubt(std::int32_t number);
  VEXStatus compute();

  // Where boundaries cross that noding could not part, and the features that have them.
  std::vector<VEXTopologyFault>& faults() { return faults_; }
  std::vector<std::int32_t>& faulty() { return faulty_; }
  std::int32_t featureOf(std::int32_t chainId) const;  // whichever way it runs

  // The pieces in the order of the rings; what one shows is valid until the next call.
  bool next(VEXCoverPiece& piece);
  // After the last piece: regions and the features that cover of them, ascending, each pair once.
  std::vector<std::pair<std::int32_t, std::int32_t>>& members();
  // Lets go of all but which feature a chain is of.
  void endReading();

 private:
  struct Pass {  // of a doubtful feature along a piece
    std::int32_t feature;
    std::uint32_t piece;
    std::int32_t change;
  };
  struct Sides {  // what such a feature covers beside a piece
    std::uint32_t piece;
    std::int32_t feature;
    bool left, right;
  };
  void findSelfMeetings();
  VEXStatus settleDoubts();
  VEXStatus settle(std::span<const Pass> passes, VEXCoverGraph& alone);
  VEXStatus noteFaults(const VEXPoint& place, const std::vector<std::uint32_t>& pieces);
  void addMembers(const VEXCoverPiece& piece);
  void addMember(std::int32_t region, std::size_t chain);

  std::optional<VEXLineIntersector> intersector_{std::in_place};
  std::optional<VEXCoverGraph> graph_{std::in_place, intersector_->chains()};
  std::vector<std::int32_t> features_;  // by chain
  std::vector<std::int32_t> doubted_;
  std::vector<bool> isDoubtful_;  // by chain; empty when none is
  std::vector<Sides> sides_;      // by piece
  std::size_t nextSides_ = 0;
  std::uint32_t nextPiece_ = 0;
  bool hasZ_ = false;
  std::vector<double> noZs_;
  std::vector<std::int32_t> lastRegion_;  // by chain
  std::vector<std::pair<std::int32_t, std::int32_t>> members_;
  std::vector<VEXTopologyFault> faults_;
  std::vector<std::int32_t> faulty_;
};
