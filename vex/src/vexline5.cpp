// The line along the middle of a polygon.
#include <algorithm>
#include <cmath>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/vexline.h"

namespace {

constexpr std::size_t kMostSteps = 4'000'000'000;

// An edge of the ring seen along the tool line: `t` runs along it, `s` to its left.
struct ToolEdge {
  double t1, s1, t2, s2;
  double low() const { return std::min(t1, t2); }
  double high() const { return std::max(t1, t2); }
  double sAt(double t) const { return s1 + (t - t1) * (s2 - s1) / (t2 - t1); }
};

// The straight line through a ring's middle in the direction in which it extends most: centre and direction.
struct ToolLine {
  double x = 0.0, y = 0.0, cosine = 1.0, sine = 0.0;

  ToolLine(VEXOrdinates xs, VEXOrdinates ys) {
    double length = 0.0;
    for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
      const double edge = std::hypot(xs[i + 1] - xs[i], ys[i + 1] - ys[i]);
      length += edge;
      x += edge * ((xs[i] - xs[0]) + (xs[i + 1] - xs[0])) / 2.0;
      y += edge * ((ys[i] - ys[0]) + (ys[i + 1] - ys[0])) / 2.0;
    }
    x = xs[0] + (length > 0.0 ? x / length : 0.0);
    y = ys[0] + (length > 0.0 ? y / length : 0.0);
    // Second moments of the boundary about its centre; their main axis is the direction.
    double xx = 0.0, yy = 0.0, xy = 0.0;
    for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
      const double ax = xs[i] - x, ay = ys[i] - y, bx = xs[i + 1] - x, by = ys[i + 1] - y;
      const double edge = std::hypot(bx - ax, by - ay);
      xx += edge * (ax * ax + ax * bx + bx * bx) / 3.0;
      yy += edge * (ay * ay + ay * by + by * by) / 3.0;
      xy += edge * (2.0 * ax * ay + 2.0 * bx * by + ax * by + bx * ay) / 6.0;
    }
    exactSinCos(0.5 * std::atan2(2.0 * xy, xx - yy), sine, cosine);
  }
  double along(double px, double py) const { return (px - x) * cosine + (py - y) * sine; }
  double aside(double px, double py) const { return (py - y) * cosine - (px - x) * sine; }
};

std::string countOf(std::size_t count) {
  return integerText(static_cast<std::int64_t>(count));
}

// Appends the middle line of one ring: at each vertex and division point, seen along the tool line, the middle of the
// widest stretch across it that lies inside.
VEXStatus middleOfRing(VEXOrdinates xs, VEXOrdinates ys, double spacing, std::vector<double>& outX,
                       std::vector<double>& outY) {
  const ToolLine tool(xs, ys);
  std::vector<ToolEdge> edges;
  std::vector<double> stations;
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    const ToolEdge edge{tool.along(xs[i], ys[i]), tool.aside(xs[i], ys[i]), tool.along(xs[i + 1], ys[i + 1]),
                        tool.aside(xs[i + 1], ys[i + 1])};
    if (!std::isfinite(edge.t1 + edge.s1 + edge.t2 + edge.s2)) continue;
    edges.push_back(edge);
    stations.push_back(edge.t1);
    const double pieces = std::trunc(std::hypot(edge.t2 - edge.t1, edge.s2 - edge.s1) / spacing);
    if (!(pieces <= static_cast<double>(VEXLine::kMostNewCoords - std::min(stations.size(), VEXLine::kMostNewCoords))))
      return makeStatus(244025, {countOf(VEXLine::kMostNewCoords)});
    for (double k = 1.0; k < pieces; k += 1.0) stations.push_back(edge.t1 + k / pieces * (edge.t2 - edge.t1));
  }
  if (edges.empty()) return nullptr;
  std::sort(stations.begin(), stations.end());
  std::sort(edges.begin(), edges.end(), [](const ToolEdge& a, const ToolEdge& b) { return a.low() < b.low(); });
  const double first = stations.front();
  const double last = stations.back();
  const double apart = (last - first) * 1e-9;  // stations nearer than that are one
  auto put = [&](double t, double s) {
    outX.push_back(tool.x + t * tool.cosine - s * tool.sine);
    outY.push_back(tool.y + t * tool.sine + s * tool.cosine);
  };
  // At the two ends the ring has no width: the middle of the vertices that stand there.
  auto putEnd = [&](double t) {
    double low = INFINITY, high = -INFINITY;
    for (const ToolEdge& edge : edges) {
      if (std::fabs(edge.t1 - t) > apart) continue;
      low = std::min(low, edge.s1);
      high = std::max(high, edge.s1);
    }
    if (low <= high) put(t, (low + high) / 2.0);
  };
  putEnd(first);
  std::vector<ToolEdge> active;
  std::vector<double> crossings;
  std::size_t next = 0;
  std::size_t steps = 0;
  double previous = first;
  for (double t : stations) {
    if (t - previous <= apart || last - t <= apart) continue;
    previous = t;
    while (next < edges.size() && edges[next].low() <= t) active.push_back(edges[next++]);
    std::erase_if(active, [t](const ToolEdge& edge) { return edge.high() <= t; });
    steps += active.size();
    if (steps > kMostSteps) return makeStatus(244026, {countOf(xs.size()), realText(spacing)});
    crossings.clear();
    for (const ToolEdge& edge : active) crossings.push_back(edge.sAt(t));
    std::sort(crossings.begin(), crossings.end());
    double width = -1.0, middle = 0.0;
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
      if (!(crossings[i + 1] - crossings[i] > width)) continue;
      width = crossings[i + 1] - crossings[i];
      middle = (crossings[i] + crossings[i + 1]) / 2.0;
    }
    if (width >= 0.0) put(t, middle);
  }
  if (last > first) putEnd(last);
  return nullptr;
}

}  // namespace

VEXStatus VEXLine::middleLine(double tolerance, double spacing) {
  VEX_ASSERT(ownedGeom_ == STK_TRUE);
  boundingBox_.reset();
  if (!isAreaCode(geomType_)) return nullptr;
  VEXLine thinned = clone();
  thinned.thin(tolerance);
  std::vector<VEXLineRange> found;
  std::vector<bool> isHole;
  thinned.rings(found);
  thinned.findHoles(found, isHole);
  std::vector<double> xs;
  std::vector<double> ys;
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (isHole[i]) continue;
    if (!xs.empty()) {  // a break between the lines of two rings
      xs.push_back(xs.back());
      ys.push_back(ys.back());
    }
    VEX_TRY(middleOfRing(thinned.xs().subspan(found[i].first, found[i].count),
                         thinned.ys().subspan(found[i].first, found[i].count), spacing, xs, ys));
  }
  const std::uint32_t code = xs.empty() ? VEX_GEOM_UNDEFINED : xs.size() == 1 ? VEX_GEOM_POINT : VEX_GEOM_LINE;
  VEXLine middle(std::move(xs), std::move(ys), code);
  middle.thin(tolerance);
  *this = std::move(middle);
  return nullptr;
}
