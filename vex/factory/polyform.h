// VEXPolygonForm: the lines of one submodel become polygons: noded as the factory's clause says, then formed. Calls:
// add per line, form once, then the questions. Lines are told apart by the caller's numbers, from 0.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "vex/factory/factory.h"
#include "vex/factory/featsort.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/topology.h"

// How the lines of a submodel meet.
enum class VEXNoding {
  None,      // anywhere: they are cut where they meet
  Ends,      // in their ends
  Vertices,  // in their vertices
};

// The work of a clause that says so. `onOther` is the fault when another clause has said something else.
VEXStatus setNoding(VEXNoding said, const VEXClauseWords& clause, std::uint32_t onOther, VEXNoding& noding);

class VEXPolygonForm {
 public:
  explicit VEXPolygonForm(VEXNoding noding);
  // Copies the coordinates. A failure refuses this line only.
  VEXStatus add(const VEXFeature& feature, std::int32_t number);
  // Runs that close no polygon are not part of any.
  VEXStatus form(bool removesCorridors, const std::function<void(double)>& progress);

  VEXTopologyResult& result() { return result_; }
  // The lines around the faults of the result, each once.
  std::int64_t numFaultyLines() const;
  // The arcs that bound no polygon.
  std::int64_t numOpenArcs() const;
  // Gives `take` a feature for each of them, by the numbers of the lines that they are parts of. `sources` holds a
  // feature for each number, in their order, whose attributes they get.
  VEXStatus openLines(VEXFeatureSorter& sources, const std::function<VEXStatus(VEXFeaturePtr&)>& take) const;

 private:
  struct OpenArc {
    std::int32_t number;
    std::int32_t arc;
  };
  std::vector<OpenArc> openArcs() const;

  VEXNoding noding_;
  std::unique_ptr<VEXLineIntersector> intersector_;  // only until the lines are cut
  std::vector<std::int32_t> numberOfInput_;          // of the intersector, from 0
  std::unique_ptr<VEXTopology> topology_;
  VEXTopologyResult result_;
};
