// VEXTopology: lines that meet only in their ends become a planar graph of nodes and arcs, and the graph's faces become
// polygons. The caller owns it. Calls: addLine for each line; then the questions about nodes and arcs, in any order,
// and removeArc; then buildPolygons, after which arcs tell their polygons. Only x and y decide which points are equal;
// z travels along.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/src/vexline.h"
#include "vex/topology/arc.h"
#include "vex/topology/arcindex.h"
#include "vex/topology/node.h"
#include "vex/topology/nodeindx.h"

enum class VEXPseudoNodes {
  Keep,
  Merge,                // nodes of two arc ends go, their arcs become one
  MergeSameAttributes,  // only where both arcs have the same attributes
};

struct VEXPolygonOptions {
  bool keepLines = true;  // false: only the arcs' sides, numPolygons, faults and what is taken out are wanted
  bool keepArcs = false;  // polygons and outer boundaries carry their arc lists
  VEXPseudoNodes pseudoNodes = VEXPseudoNodes::Keep;
  bool removeDangles = false;  // arcs with an end that no other arc shares, again and again
  bool removeSpikes = false;   // stretches that a line runs out and back
  // Arcs that join two parts of the graph and would have one polygon on both sides. Kept, a ring runs along them twice.
  bool removeCorridors = false;
  std::function<void(double)> progress = {};  // percent done, two decimals
};

// One ring of arcs, or several: 0 stands between them. A negative number: the arc is walked against its direction.
using VEXArcList = std::vector<std::int32_t>;

struct VEXTopologyPolygon {
  VEXLine line;     // a polygon, clockwise, or a donut whose holes run counter-clockwise
  VEXArcList arcs;  // of the rings in `line`, in their order; empty unless asked for
};

// The outline of one connected part of the graph; where it touches itself in a node, each of its rings stands apart.
struct VEXTopologyBoundary {
  std::vector<VEXLine> rings;  // polygons, counter-clockwise
  VEXArcList arcs;
};

// A place where the graph is not plane: arcs that still cross or overlap make a face that is no polygon.
struct VEXTopologyFault {
  std::uint32_t number = 0;  // 328005
  double x = 0.0;            // a coordinate of the face: its lowest
  double y = 0.0;
  std::vector<std::int32_t> arcs;  // ids of the arcs around the face, ascending; each once
  VEXStatus status() const;        // the message, severity kSeverityRejected
};

struct VEXTopologyResult {
  std::int32_t numPolygons = 0;
  std::vector<VEXTopologyPolygon> polygons;  // component by component, the one with the lowest point first
  std::vector<VEXTopologyBoundary> outside;  // outer boundaries that no polygon contains: the universe's rings
  std::vector<VEXTopologyFault> faults;      // their faces are no polygons; all others are in the output
  std::vector<std::int32_t> dangles;         // ids of arcs taken out, in the order in which they went
  std::vector<std::int32_t> spikes;
  std::vector<std::int32_t> corridors;
  std::vector<std::int32_t> lines;  // arcs still in the graph that bound no polygon and no fault, ascending
};

// What became of a line.
struct VEXLineOutcome {
  std::int32_t firstArc = 0;  // ids of the arcs made, ascending from here
  std::int32_t numArcs = 0;
  std::int32_t numDuplicates = 0;  // parts that an arc already had: their user id and direction are noted there
  std::int32_t numDegenerate = 0;  // parts without length, or rings of fewer than 3 coordinates: dropped
};

class VEXTopology {
 public:
  static constexpr int kPlain = 0;     // lines meet in their ends
  static constexpr int kSegments = 2;  // lines meet in their vertices: each segment becomes an arc of its own

  // The size hint is the number of coordinates to come. An unknown mode is told by addLine (328002).
  explicit VEXTopology(int mode = kPlain, std::size_t sizeHint = 0);
  VEXTopology(const VEXTopology&) = delete;
  VEXTopology& operator=(const VEXTopology&) = delete;
  ~VEXTopology();

  // ---- filling ----
  // Takes the line, which must have coordinates. Lists are split into their parts. The first line settles whether there
  // is z: later ones lose theirs, or get 0. `userId` and `attributes` are the caller's and stay with the arcs.
  // 328001: geometry code; 328002: mode; 328003: a coordinate that is no usable number; 328004: the graph is full.
  // After any of them the topology is as it was.
  VEXStatus addLine(VEXLine&& line, std::int32_t userId = 0, std::span<const std::int32_t> attributes = {},
                    VEXLineOutcome* outcome = nullptr);
  // The same for one line or ring on bare arrays, copied; z may be empty.
  VEXStatus addLine(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t userId = 0,
                    std::span<const std::int32_t> attributes = {}, VEXLineOutcome* outcome = nullptr);
  // Takes an arc out. 320001: no such arc; 320002: it is out already.
  VEXStatus removeArc(std::int32_t id);
  // A flagged node is no pseudo-node.
  void setNodeFlag(std::int32_t node, bool flag) { nodes_.setFlag(node, flag); }

  // ---- asking ----
  int dimension() const { return dimension_; }            // 0 before the first line
  std::int32_t numArcs() const { return arcs_.count(); }  // ids 1 to numArcs(), removed ones too
  std::int32_t numNodes() const { return nodes_.count(); }
  // The node at a point, or -1.
  std::int32_t getNode(const VEXPoint& point) const { return nodes_.find(point.x, point.y); }
  VEXTopologyArc arc(std::int32_t id) const { return arcs_.view(id); }
  VEXTopologyNode node(std::int32_t id);
  // The lines that gave an arc, in the order of arrival.
  void uses(std::int32_t arc, std::vector<VEXArcUse>& found) const { arcs_.uses(arc, found); }
  // Between which two arc ends of the node a point lies: after this position, before the next one around. 323008: the
  // node has no arcs.
  VEXStatus sectorOf(std::int32_t node, double x, double y, std::size_t& position);
  // The arc end that follows in the walk with the polygon on the right: the next one counter-clockwise at the node
  // where the arc, walked in its direction (id > 0) or against it, arrives. The result is signed in the same way.
  VEXStatus nextArc(std::int32_t signedArc, std::int32_t& next);

  // ---- building ----
  // Merges, removals and the numbers of left and right polygons stay. May be called again, after removeArc, say.
  // 328004: no room for the coordinates of merged arcs.
  VEXStatus buildPolygons(VEXTopologyResult& output, const VEXPolygonOptions& options = {});

 private:
  friend class VEXFaceWalk;
  friend class VEXArcPolyTopology;  // keeps rings that nothing cuts in one arc
  VEXStatus prepare(std::size_t numCoords, bool hasZ);
  void addPart(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t userId,
               std::span<const std::int32_t> attributes, VEXLineOutcome& outcome);
  void addArc(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t userId,
              std::span<const std::int32_t> attributes, VEXLineOutcome& outcome);
  void orderEnds();  // arc ends of every node in rotational order, and what follows what
  void dropRemovedEnds();
  void linkEnds();

  int mode_;
  std::size_t sizeHint_;
  int dimension_ = 0;
  VEXTopologyNodeIndex nodes_;
  VEXTopologyArcIndex arcs_;
  std::vector<double> partX_, partY_, partZ_;  // the part that is being added, without points that stand twice
  std::int32_t lastNode_ = -1;                 // where the last arc ended
  bool isOrdered_ = false;
  std::vector<std::uint32_t> endStart_;  // per node: where its arc ends begin in ends_
  std::vector<std::uint32_t> ends_;  // half edges by the node that they leave, counter-clockwise; the east comes last
  std::vector<std::uint32_t> next_;  // per half edge: the one that follows around the face on its right
};
