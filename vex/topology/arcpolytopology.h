// VEXArcPolyTopology: areas and lines become a model of shared boundaries. Each stretch of boundary comes out once, as
// an arc that knows the polygons on its sides; each polygon lists its arcs by signed number; what lies outside all of
// them is the universe polygon. The faces are those that were given: areas that overlap stay as they are. Calls:
// addFeature for each feature, then run, once. It owns what it was given until run puts it out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/topology.h"

// Where the results are stored; an empty name: nowhere.
struct VEXArcPolyNames {
  std::string arcType;  // feature type of arcs that are no piece of a line feature
  std::string arcNumber;
  std::string fromNode;  // of arcs; nodes count from 1
  std::string toNode;
  std::string leftPolygon;  // 0: the universe
  std::string rightPolygon;
  std::string polygonNumber;  // of polygons, from 1 in the order in which the areas were added; of the universe 0
  std::string arcList;        // a list attribute, without "{}"
  std::string perimeter;
  std::string area;
  std::string universeMark;  // the universe polygon gets it with the value "border segment"
};

class VEXArcPolyTopology {
 public:
  using ArcSink = std::function<VEXStatus(VEXFeaturePtr)>;

  // A limit on the vertices of an arc; 0: none.
  explicit VEXArcPolyTopology(const VEXIntersectorParms& parms = {}, std::size_t maxVertices = 0);

  // Takes the feature. Polygons, donuts and lists of these are areas, anything else is lines. Refused, and left with
  // the caller: 328003 a coordinate that is no number or beyond 1e75; 244023 header rows that do not fit; 328006 after
  // run.
  VEXStatus addFeature(VEXFeaturePtr& feature);

  // Arcs go to the sink in the order of their numbers. A piece of a line with no area along it keeps the line's
  // attributes; where it lies inside a polygon, that is on both its sides. Polygons are the areas that have arcs, with
  // their attributes and without coordinates; in their arc lists a positive number stands for an arc that has the
  // polygon on its right, 0 for the end of a ring that another one follows. The universe is null without areas.
  VEXStatus run(const VEXArcPolyNames& names, const ArcSink& arcs, VEXFeatureVector& polygons, VEXFeaturePtr& universe,
                const VEXProgress& progress = {});
  VEXStatus run(const VEXArcPolyNames& names, VEXFeatureVector& arcs, VEXFeatureVector& polygons,
                VEXFeaturePtr& universe, const VEXProgress& progress = {});

  double totalArea() const { return totalArea_; }  // of the areas put out

 private:
  struct Chain {            // one ring or line in the intersector, by its number
    std::uint32_t feature;  // in areas_ or lines_
    std::uint32_t ring;     // in rings_; kNone: a line
  };
  struct Ring {
    std::uint32_t area;      // in areas_
    bool hasPolygonOnRight;  // walked as it was given
  };
  struct Area {
    VEXFeaturePtr feature;
    double perimeter = 0.0;
    double area = 0.0;
  };
  struct Entry {  // a directed arc of a ring, its polygon on the right
    std::uint32_t ring;
    std::uint32_t half;
  };
  static constexpr std::uint32_t kNone = UINT32_MAX;

  VEXStatus loadArea(std::uint32_t at);
  VEXStatus loadLine(std::uint32_t at);
  VEXStatus readPieces();
  void setSides();
  void findLinesInPolygons();
  VEXStatus writeArcs(const VEXArcPolyNames& names, const ArcSink& arcs);
  void traceRing(std::uint32_t ring, std::size_t first, std::size_t last, std::vector<std::int32_t>& list);
  void writePolygons(const VEXArcPolyNames& names, VEXFeatureVector& polygons);
  void countCover(std::vector<std::int32_t>& cover);
  void writeUniverse(const VEXArcPolyNames& names, VEXFeaturePtr& universe);
  void setResults(VEXFeature& feature, const VEXArcPolyNames& names, std::int64_t number, double perimeter, double area,
                  const std::vector<std::int32_t>& list) const;

  std::vector<Area> areas_;
  VEXFeatureVector lines_;
  bool hasRun_ = false;
  std::size_t maxVertices_;
  VEXLineIntersector intersector_;
  std::vector<Chain> chains_;
  std::vector<Ring> rings_;
  VEXTopology graph_;                      // all arcs
  std::vector<Entry> entries_;             // by ring once all are read
  std::vector<std::uint32_t> lineOf_;      // per arc: the line feature that it is a piece of, or kNone
  std::vector<std::uint32_t> insideRing_;  // per half edge: the ring at hand that has it
  double totalArea_ = 0.0;
};
