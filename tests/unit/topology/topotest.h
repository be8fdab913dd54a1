// What the topology tests share: lines as text, results as text.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/unit/support.h"
#include "vex/inc/numtext.h"
#include "vex/topology/topology.h"

inline VEXLine lineOf(const std::string& geometry) {
  return makeFeature("t " + geometry)->buildLine();
}

inline std::uint32_t numberOf(const VEXStatus& status) {
  return status == nullptr ? 0 : status->messageNumber();
}

// Lines are parted by ";", each "x y, x y"; another kind may lead it ("polygon 0 0, ..."). User ids count from 1.
inline void addLines(VEXTopology& topology, const std::string& text) {
  std::vector<std::string> lines;
  splitAt(text, ';', lines);
  std::int32_t userId = 0;
  for (const std::string& line : lines) {
    std::string geometry(trimmed(line));
    if (geometry.empty()) continue;
    if (geometry.substr(0, 6) == "multi ")
      geometry = "64" + geometry.substr(5);
    else if (geometry[0] < 'a' || geometry[0] > 'z')
      geometry = "line " + geometry;
    ASSERT_EQ(topology.addLine(lineOf(geometry), ++userId), nullptr) << geometry;
  }
}

inline double areaOf(const VEXLine& line) {
  double area = -1.0;
  ignoreStatus(line.area(area));  // -1 stays then
  return area;
}

inline std::string joinedIds(const char* name, const std::vector<std::int32_t>& ids) {
  std::string text;
  for (std::int32_t id : ids) text += (text.empty() ? "" : " ") + std::to_string(id);
  return ids.empty() ? "" : std::string(" ") + name + ":" + text;
}

// "100 96-1 out:1 dangles:3": polygons with area and number of holes, rings of outer boundaries, arcs.
inline std::string summaryOf(const VEXTopologyResult& result) {
  std::string text;
  for (const VEXTopologyPolygon& polygon : result.polygons) {
    std::vector<VEXLineRange> rings;
    polygon.line.rings(rings);
    text += (text.empty() ? "" : " ") + realText(areaOf(polygon.line));
    if (rings.size() > 1) text += "-" + std::to_string(rings.size() - 1);
    const bool isDonut = polygon.line.geomType() == VEX_GEOM_DONUT;
    if (isDonut != (rings.size() > 1)) text += "?";
  }
  text += " out:";
  for (std::size_t i = 0; i < result.outside.size(); ++i)
    text += (i > 0 ? "," : "") + std::to_string(result.outside[i].rings.size());
  text += joinedIds("dangles", result.dangles) + joinedIds("spikes", result.spikes) +
          joinedIds("corridors", result.corridors) + joinedIds("lines", result.lines);
  for (const VEXTopologyFault& fault : result.faults)
    text += " fault " + std::to_string(fault.number) + " at " + realText(fault.x) + "," + realText(fault.y);
  return text;
}
