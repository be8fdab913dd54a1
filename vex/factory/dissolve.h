// VEXDissolver: polygons become one where they share area or boundary. Calls: add per polygon feature, dissolve once,
// then what came of it. Features are told apart by the caller's numbers, from 0 in rising order.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "vex/factory/blkcover.h"
#include "vex/factory/nodedrng.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/vexline.h"
#include "vex/topology/topology.h"

class VEXDissolver {
 public:
  // Polygons that are noded share their boundaries vertex for vertex: then equal segments cancel each other out, which
  // takes time in proportion to their number. Others may overlap in any way, and are cut where they meet.
  VEXDissolver(bool isNoded, bool keepsInteriorLines, std::size_t blockCoords = VEXBlockCover::kBlockCoords);
  // True for areas, lists of areas and aggregates of nothing else.
  static bool isArea(const VEXFeature& feature);
  // Copies the coordinates. A failure refuses this feature only. 866011: a coordinate is no finite number.
  VEXStatus add(const VEXFeature& feature, std::int32_t number);
  VEXStatus dissolve();

  std::vector<VEXLine>& polygons() { return polygons_; }
  std::vector<VEXLine>& interiorLines() { return interiorLines_; }  // empty unless they are to be kept
  std::int64_t numInteriorLines() const { return numInteriorLines_; }
  // Which feature is in which polygon: pairs of numbers, ascending, each once. A feature of several parts may be in
  // several polygons.
  const std::vector<std::pair<std::int32_t, std::size_t>>& memberships() const { return memberships_; }
  // Places where the boundaries still cross or overlap, and the features that have them, ascending. Nothing that
  // they bound is in the polygons: the caller leaves them out and begins anew.
  const std::vector<VEXTopologyFault>& faults() const { return faults_; }
  const std::vector<std::int32_t>& faulty() const { return faulty_; }

 private:
  VEXStatus addArea(const VEXLine& area, std::int32_t number);
  void joinRings(const VEXLine& area, const std::vector<std::size_t>& added);
  bool holdsItsHoles(const VEXLine& donut) const;
  VEXStatus addRing(const VEXLine& area, const VEXLineRange& range, bool isHole, std::int32_t number);

  VEXStatus dissolveNoded();
  VEXStatus dissolveRaw();
  void addInteriorLines(const VEXKeptPiece& piece);
  // Polygons of the outline whose right side, along a line of user id above 0, is covered; below 0 the left side.
  VEXStatus formOutline(VEXTopology& outline, const std::vector<std::pair<std::int32_t, std::int32_t>>& roots);
  void noteFaults(const VEXTopology& topology, VEXTopologyResult& result);
  void keepFaults(std::vector<VEXTopologyFault>& faults);

  bool isNoded_;
  bool keepsInteriorLines_;
  std::vector<VEXLineRange> ranges_, rings_;  // of the feature, and of the area at hand
  std::vector<bool> isHole_;
  std::vector<double> ringX_, ringY_, ringZ_;
  std::unique_ptr<VEXNodedRings> noded_;  // the one
  std::unique_ptr<VEXBlockCover> cover_;  // or the other

  std::vector<VEXLine> polygons_;
  std::vector<VEXLine> interiorLines_;
  std::int64_t numInteriorLines_ = 0;
  std::vector<std::pair<std::int32_t, std::size_t>> memberships_;
  std::vector<VEXTopologyFault> faults_;
  std::vector<std::int32_t> faulty_;
};
