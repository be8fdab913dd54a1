// VEXFaceWalk: one build of a topology. Takes dangles, spikes and corridors out, walks the faces, puts outer boundaries
// into the polygons around them and makes the polygons. Made by VEXTopology::buildPolygons, gone with the call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "vex/topology/topology.h"

class VEXFaceWalk {
 public:
  VEXFaceWalk(VEXTopology& graph, const VEXPolygonOptions& options, VEXTopologyResult& output);
  void run();

 private:
  static constexpr std::uint32_t kNone = UINT32_MAX;
  struct Component {
    double x = 0.0;  // its lowest point
    double y = 0.0;
    std::int32_t lowestArc = 0;
    std::uint32_t numFaces = 0;
    std::uint32_t outerFace = kNone;
    std::uint32_t firstRing = 0;  // of its outer boundary, in outerRings_; none when there is no area or a fault
    std::uint32_t numRings = 0;
    std::uint32_t container = kNone;  // the face that holds it
  };
  // Half edges that follow each other around, a stretch of a list.
  struct Ring {
    std::uint32_t first, count;
  };
  // What a closed walk with the face on its right is: around the face, around a part of the graph inside the face,
  // without area, or neither, since it runs through itself.
  enum class Shape { Shell, Hole, NoArea, Faulty };

  const VEXTopologyArcIndex::Record& arcOf(std::uint32_t half) const {
    return arcs_.record(static_cast<std::int32_t>(half / 2) + 1);
  }
  std::int32_t startOf(std::uint32_t half) const { return half % 2 == 0 ? arcOf(half).startNode : arcOf(half).endNode; }

  // ---- taking arcs out (facewalk.cpp) ----
  void countEnds();
  bool isJoint(std::int32_t node) const;
  void mergePseudoNodes();
  void removeFolds();
  void findDangles(std::vector<std::int32_t>& found);
  void takeOut(const std::vector<std::int32_t>& ids);
  void removeCorridors();
  // ---- faces and connected parts ----
  void walkFaces();
  void findComponents();
  std::uint32_t outerHalf(const Component& component);
  void findOuterBoundaries();
  void placeComponents();
  void reportProgress(std::size_t done);
  // ---- rings and polygons (facering.cpp) ----
  void listHalves(std::uint32_t face);
  Shape cutIntoRings(std::uint32_t face);
  void cutWhereTouching();
  void gather(std::span<const std::uint32_t> ring);
  bool trim();
  Shape shapeOfGathered();
  bool fitsPolygon(bool isShell);
  void beginWhereNothingRepeats();
  void appendGathered();
  void appendArcs(std::span<const std::uint32_t> ring, VEXArcList& arcs) const;
  VEXLine takeLine(std::uint32_t code);
  void dropGathered();
  void makePolygons();
  void makePolygon(std::uint32_t face, std::span<const std::uint32_t> inside);
  void makeOutside(const Component& component);
  void addFault(std::uint32_t face);
  template <class Visit>
  void forEachHalf(std::uint32_t face, Visit&& visit) const;

  VEXTopology& graph_;
  VEXTopologyArcIndex& arcs_;
  const VEXPolygonOptions& options_;
  VEXTopologyResult& output_;
  std::vector<std::uint32_t> numEnds_;      // per node
  std::vector<std::uint32_t> endsXor_;      // per node: its half edges; with one known the other of two is told
  std::vector<std::uint32_t> face_;         // per half edge: the face on its right
  std::vector<std::uint32_t> firstHalf_;    // per face
  std::vector<std::uint32_t> componentOf_;  // per face
  std::vector<bool> isFaulty_;              // per face
  std::vector<Component> components_;
  std::vector<std::uint32_t> outerHalves_;
  std::vector<Ring> outerRings_;
  // The face at hand: its half edges and the rings they make, the shell first.
  std::vector<std::uint32_t> halves_;
  std::vector<Ring> rings_;
  bool hasBridge_ = false;      // an arc stands twice in it
  bool touchesItself_ = false;  // a node does
  bool isGathered_ = false;     // its one ring stands in x_, y_ and z_ as it is
  bool wasTrimmed_ = false;
  std::vector<std::uint32_t> stamp_;  // per node: the face that met it last
  std::vector<std::uint32_t> place_;  // per node: where it stands among the half edges that are not cut off yet
  std::vector<std::uint32_t> open_;
  std::vector<double> x_, y_, z_;    // the ring at hand, closed
  std::vector<std::uint32_t> tips_;  // its vertices at which it turns around the end of a dangle, ascending
  std::vector<double> wholeX_, wholeY_, wholeZ_;  // the rings of the polygon so far
  VEXBox shellBox_;
  double areaLeft_ = 0.0;    // of the shell, less the holes so far
  std::size_t numDone_ = 0;  // half edges put out
  std::size_t numReported_ = 0;
};

template <class Visit>
void VEXFaceWalk::forEachHalf(std::uint32_t face, Visit&& visit) const {
  std::uint32_t half = firstHalf_[face];
  do {
    visit(half);
    half = graph_.next_[half];
  } while (half != firstHalf_[face]);
}
