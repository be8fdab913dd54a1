// VEXFeatureCover: what features cover together whose boundaries meet in any way. A feature covers the places around
// which its rings turn, however often and whichever way round. Calls: addRing for the rings of one feature after the
// other, compute once; then, unless there are faults, next for every piece of boundary, and parts.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/topology/covergrf.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/topology.h"

// Says that a feature's own area lies beside a piece. Parts of features are numbered: what a ring goes around has the
// number of the ring, from 0; parts of features whose boundary meets itself come after.
struct VEXCoverShare {
  std::uint32_t part;
  bool isRight;
};

// A piece of boundary. Regions are numbers of connected covered parts of the plane, set where the side is covered.
struct VEXCoverPiece {
  VEXOrdinates xs, ys, zs;                         // z is empty when the first of its chains has none
  std::span<const std::int32_t> chainIds, passes;  // as of a VEXChainPiece
  std::span<const VEXCoverShare> shares;
  bool coversLeft = false;
  bool coversRight = false;
  std::uint32_t leftRegion = 0;
  std::uint32_t rightRegion = 0;
};

// A connected part of the area of a feature whose boundary meets itself.
struct VEXCoverPart {
  std::int32_t feature;
  std::uint32_t ordinal;  // among those of the feature, by rings, then by where they lie
  std::uint32_t count;    // of them
  bool isSure;            // no other lies so close that their ordinals may be told the other way round elsewhere
};

class VEXFeatureCover {
 public:
  static constexpr double kLargestCoord = VEXLineIntersector::kLargestCoord;
  std::size_t room() const { return intersector_->room(); }  // for coordinates
  void reserve(std::size_t numRings, std::size_t numCoords) { intersector_->reserve(numRings, numCoords); }
  // A closed ring, clockwise if it is a shell, counter-clockwise if it is a hole.
  VEXStatus addRing(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t number);
  // The feature's holes may lie outside of its shells: that is looked into.
  void doubt(std::int32_t number);
  VEXStatus compute();

  // Where boundaries cross that noding could not part, and the features that have them.
  std::vector<VEXTopologyFault>& faults() { return faults_; }
  std::vector<std::int32_t>& faulty() { return faulty_; }
  std::int32_t featureOf(std::int32_t chainId) const;  // whichever way it runs

  // Below 2 * numPieces().
  std::size_t numPieces() const { return graph_->numPieces(); }
  // The pieces in the order of the rings; what one shows is valid until the next call.
  bool next(VEXCoverPiece& piece);
  // After computing: what the numbers of parts from that of the chains on stand for.
  const std::vector<VEXCoverPart>& parts() const { return parts_; }

 private:
  struct Pass {  // of a doubtful feature along a piece
    std::int32_t feature;
    std::uint32_t piece;
    std::int32_t chainId;  // signed
  };
  struct Sides {  // what such a feature covers beside a piece
    std::uint32_t piece;
    std::int32_t feature;
    std::int32_t left, right;  // its part, -1: none
  };
  void findSelfMeetings();
  VEXStatus settleDoubts();
  VEXStatus settle(std::span<const Pass> passes, VEXCoverGraph& alone);
  VEXStatus noteFaults(const VEXPoint& place, const std::vector<std::uint32_t>& pieces);
  void findParts(std::span<Sides> sides, std::span<const std::int32_t> chains, VEXCoverGraph& alone);
  void findShares(std::uint32_t number, const VEXCoverPiece& piece);

  std::optional<VEXLineIntersector> intersector_{std::in_place};
  std::optional<VEXCoverGraph> graph_{std::in_place, intersector_->chains()};
  std::vector<std::int32_t> features_;   // by chain
  std::vector<std::int8_t> directions_;  // of the rings before they are noded, by chain
  std::vector<std::int32_t> doubted_;
  std::vector<bool> isDoubtful_;  // by chain; empty when none is
  std::vector<Sides> sides_;      // by piece
  std::size_t nextSides_ = 0;
  std::uint32_t nextPiece_ = 0;
  std::vector<VEXCoverPart> parts_;
  std::vector<VEXCoverShare> shares_;  // of the piece that is shown
  std::vector<VEXTopologyFault> faults_;
  std::vector<std::int32_t> faulty_;
};
