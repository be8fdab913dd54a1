// What tests of noding share: lines and pieces as points, and the plain answer that they are held against.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "vex/topology/lineintersector.h"
#include "vex/topology/segmeet.h"

using Points = std::vector<std::pair<double, double>>;

inline VEXLine lineOf(const Points& points, std::uint32_t code = VEX_GEOM_LINE) {
  std::vector<double> x, y;
  for (const auto& [px, py] : points) {
    x.push_back(px);
    y.push_back(py);
  }
  return VEXLine(std::move(x), std::move(y), code);
}

struct Piece {
  Points points;
  std::vector<std::int32_t> ids;
  bool operator==(const Piece&) const = default;
};

// All pieces of these lines; lines that are refused make the test fail.
inline std::vector<Piece> node(const std::vector<Points>& lines, std::size_t maxVertices = 0,
                               const VEXIntersectorParms& parms = {}) {
  VEXLineIntersector intersector(parms);
  for (const Points& points : lines) EXPECT_EQ(intersector.addLine(lineOf(points), 0), nullptr);
  EXPECT_EQ(intersector.computeIntersections(), nullptr);
  EXPECT_EQ(intersector.numUnresolved(), 0U);
  std::vector<Piece> pieces;
  VEXChainPiece piece;
  while (intersector.nextPiece(piece, maxVertices)) {
    pieces.emplace_back();
    for (std::size_t i = 0; i < piece.numCoords(); ++i) pieces.back().points.emplace_back(piece.xs[i], piece.ys[i]);
    pieces.back().ids.assign(piece.chainIds.begin(), piece.chainIds.end());
  }
  return pieces;
}

inline std::string textOf(const std::vector<Piece>& pieces) {
  std::ostringstream out;
  for (const Piece& piece : pieces) {
    for (std::size_t i = 0; i < piece.ids.size(); ++i) out << (i == 0 ? "" : ",") << piece.ids[i];
    out << ":";
    for (const auto& [x, y] : piece.points) out << ' ' << x << ' ' << y;
    out << "; ";
  }
  return out.str();
}

// ---- the plain answer: every segment cut at every meeting with any other, found with long doubles ----

using Key = std::pair<long long, long long>;
inline Key keyOf(long double x, long double y) {
  return {std::llround(x * 987654.321987L), std::llround(y * 987654.321987L)};  // no grid point lies between two keys
}

struct Graph {
  std::map<std::pair<Key, Key>, std::set<std::int32_t>> edges;  // from the lower key to the higher; signed chains
  std::map<Key, std::set<Key>> around;
  void add(Key from, Key to, std::int32_t chain) {
    if (from == to) return;
    if (from < to)
      edges[{from, to}].insert(chain);
    else
      edges[{to, from}].insert(-chain);
    around[from].insert(to);
    around[to].insert(from);
  }
  std::set<std::int32_t> chainsOn(Key from, Key to) const {
    const auto at = edges.find(std::minmax(from, to));
    std::set<std::int32_t> chains;
    if (at == edges.end()) return chains;
    for (std::int32_t id : at->second) chains.insert(from < to ? id : -id);
    return chains;
  }
  // Nothing ends where one course passes and the same chains with it.
  bool isPassed(Key before, Key here, Key after) const {
    const auto at = around.find(here);
    return at != around.end() && at->second.size() == 2 && chainsOn(before, here) == chainsOn(here, after);
  }
};

inline Graph plainGraph(const std::vector<Points>& lines) {
  struct Segment {
    long double x1, y1, x2, y2;
    std::int32_t chain;
  };
  std::vector<Segment> segments;
  for (std::size_t c = 0; c < lines.size(); ++c)
    for (std::size_t i = 0; i + 1 < lines[c].size(); ++i)
      segments.push_back({lines[c][i].first, lines[c][i].second, lines[c][i + 1].first, lines[c][i + 1].second,
                          static_cast<std::int32_t>(c + 1)});
  Graph graph;
  for (const Segment& s : segments) {
    const long double dx = s.x2 - s.x1, dy = s.y2 - s.y1, square = dx * dx + dy * dy;
    if (square == 0) continue;
    std::vector<long double> cuts = {0, 1};
    for (const Segment& t : segments) {
      const long double ex = t.x2 - t.x1, ey = t.y2 - t.y1;
      if (ex == 0 && ey == 0) continue;  // a point cuts nothing
      const long double turn = dx * ey - dy * ex;
      for (const auto& [x, y] : {std::pair(t.x1, t.y1), std::pair(t.x2, t.y2)})
        if (std::fabs((x - s.x1) * dy - (y - s.y1) * dx) < 1e-12L * square)
          cuts.push_back(((x - s.x1) * dx + (y - s.y1) * dy) / square);
      if (std::fabs(turn) < 1e-15L) continue;
      const long double part = ((t.x1 - s.x1) * ey - (t.y1 - s.y1) * ex) / turn;
      const long double other = ((t.x1 - s.x1) * dy - (t.y1 - s.y1) * dx) / turn;
      if (other > -1e-12L && other < 1 + 1e-12L) cuts.push_back(part);
    }
    std::sort(cuts.begin(), cuts.end());
    Key last = keyOf(s.x1, s.y1);
    for (long double cut : cuts)
      if (cut > 0 && cut <= 1) {
        const Key here = cut == 1 ? keyOf(s.x2, s.y2) : keyOf(s.x1 + cut * dx, s.y1 + cut * dy);
        graph.add(last, here, s.chain);
        last = here;
      }
  }
  return graph;
}

// Compares pieces with the plain answer: the same edges with the same chains, each once; pieces that end where
// something ends, and only there.
inline void compareWithPlain(const std::vector<Points>& lines, const std::vector<Piece>& pieces) {
  const Graph plain = plainGraph(lines);
  Graph made;
  std::set<Key> ends;  // where chains end, or turn back on themselves
  for (const Points& line : lines) {
    for (const auto& [x, y] : {line.front(), line.back()}) ends.insert(keyOf(x, y));
    for (std::size_t i = 1; i + 1 < line.size(); ++i)
      if (orientation(line[i - 1].first, line[i - 1].second, line[i].first, line[i].second, line[i + 1].first,
                      line[i + 1].second) == 0)
        ends.insert(keyOf(line[i].first, line[i].second));
  }
  for (const Piece& piece : pieces) {
    std::vector<Key> keys;
    for (const auto& [x, y] : piece.points)
      if (keys.empty() || keys.back() != keyOf(x, y))
        keys.push_back(keyOf(x, y));  // what nothing touches is left as it is
    for (std::size_t i = 0; i + 1 < keys.size(); ++i) {
      ASSERT_EQ(made.edges.count(std::minmax(keys[i], keys[i + 1])), 0U) << "an edge was given twice";
      for (std::int32_t id : piece.ids)
        if (id > 0)
          made.add(keys[i], keys[i + 1], id);
        else
          made.add(keys[i + 1], keys[i], -id);
      if (i > 0) {
        ASSERT_TRUE(plain.isPassed(keys[i - 1], keys[i], keys[i + 1])) << "a piece runs past a break";
      }
    }
    ASSERT_GT(piece.ids[0], 0);
  }
  ASSERT_EQ(made.edges, plain.edges);
  for (const Piece& piece : pieces)
    for (const auto& [x, y] : {piece.points.front(), piece.points.back()}) {
      const Key here = keyOf(x, y);
      const auto at = plain.around.find(here);
      if (at == plain.around.end() || at->second.size() != 2 || ends.count(here) != 0) continue;
      ASSERT_FALSE(plain.isPassed(*at->second.begin(), here, *at->second.rbegin())) << "a piece ends at nothing";
    }
}

// No two segments of the pieces meet but at ends that are equal bit for bit, told without rounding.
inline void checkNoded(const std::vector<Piece>& pieces) {
  std::vector<VEXSegment> parts;
  for (const Piece& piece : pieces)
    for (std::size_t i = 0; i + 1 < piece.points.size(); ++i)
      if (piece.points[i] != piece.points[i + 1])
        parts.push_back(
            {piece.points[i].first, piece.points[i].second, piece.points[i + 1].first, piece.points[i + 1].second});
  auto isEnd = [](const VEXSegment& s, double x, double y) {
    return (s.x1 == x && s.y1 == y) || (s.x2 == x && s.y2 == y);
  };
  auto isOn = [&](const VEXSegment& s, double x, double y) {
    return !isEnd(s, x, y) && orientation(s.x1, s.y1, s.x2, s.y2, x, y) == 0 && x >= std::min(s.x1, s.x2) &&
           x <= std::max(s.x1, s.x2) && y >= std::min(s.y1, s.y2) && y <= std::max(s.y1, s.y2);
  };
  for (std::size_t i = 0; i < parts.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const VEXSegment &s = parts[i], &t = parts[j];
      if (std::max(s.x1, s.x2) < std::min(t.x1, t.x2) || std::max(t.x1, t.x2) < std::min(s.x1, s.x2) ||
          std::max(s.y1, s.y2) < std::min(t.y1, t.y2) || std::max(t.y1, t.y2) < std::min(s.y1, s.y2))
        continue;
      const int a = orientation(s.x1, s.y1, s.x2, s.y2, t.x1, t.y1) * orientation(s.x1, s.y1, s.x2, s.y2, t.x2, t.y2);
      const int b = orientation(t.x1, t.y1, t.x2, t.y2, s.x1, s.y1) * orientation(t.x1, t.y1, t.x2, t.y2, s.x2, s.y2);
      ASSERT_FALSE(a < 0 && b < 0) << "segments cross";
      ASSERT_FALSE(isOn(s, t.x1, t.y1) || isOn(s, t.x2, t.y2) || isOn(t, s.x1, s.y1) || isOn(t, s.x2, s.y2))
          << "an end lies on a segment";
      ASSERT_FALSE(isEnd(s, t.x1, t.y1) && isEnd(s, t.x2, t.y2)) << "a segment came twice";
    }
}

inline std::string describeLines(const std::vector<Points>& lines) {
  std::ostringstream out;
  out.precision(17);
  for (const Points& line : lines) {
    for (const auto& [x, y] : line) out << x << ' ' << y << ", ";
    out << '\n';
  }
  return out.str();
}
