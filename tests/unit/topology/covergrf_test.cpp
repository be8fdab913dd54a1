// The cover graph on chains that are noded by hand, so that a crossing can be left out.
#include "vex/topology/covergrf.h"

#include <gtest/gtest.h>

#include "tests/unit/topology/topotest.h"

namespace {

struct Chains {
  VEXChainStore store;
  void add(const std::vector<double>& x, const std::vector<double>& y) { store.addChain(x, y, {}, 1); }
  // Coordinates that are one node, by pairs.
  void node(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& pairs) {
    store.beginRounds();
    for (const auto& [one, other] : pairs) store.link(one, other);
    store.rebuild();
    store.endRounds();
  }
};

bool build(VEXCoverGraph& graph, const VEXChainStore& store) {
  VEXPieceCutter cutter(store);
  for (VEXPieceCourse course; cutter.nextCourse(course);) graph.add(course);
  return graph.build();
}

TEST(CoverGraph, CountsTheRingsAroundEachSide) {
  Chains chains;
  chains.add({0, 0, 9, 9, 0}, {0, 9, 9, 0, 0});  // a clockwise box
  chains.add({2, 5, 5, 2, 2}, {2, 2, 5, 5, 2});  // a hole in it
  chains.add({3, 3, 4, 4, 3}, {3, 4, 4, 3, 3});  // an island in the hole
  chains.add({6, 6, 8, 8, 6}, {6, 8, 8, 6, 6});  // two of the same on top of the box, in two chains
  chains.add({6, 6, 8, 8, 6}, {6, 8, 8, 6, 6});
  chains.add({20, 20, 22, 20}, {0, 2, 0, 0});  // apart
  chains.node({{15, 20}, {16, 21}, {17, 22}, {18, 23}});
  VEXCoverGraph graph(chains.store);
  ASSERT_TRUE(build(graph, chains.store));
  ASSERT_EQ(graph.numPieces(), 5U);
  const std::vector<std::pair<int, int>> expected = {{0, 1}, {0, 1}, {0, 1}, {1, 3}, {0, 1}};
  for (std::size_t piece = 0; piece < expected.size(); ++piece)
    EXPECT_EQ(std::pair(graph.leftCover(piece), graph.rightCover(piece)), expected[piece]) << piece;
  EXPECT_EQ(graph.rightRegion(1), graph.rightRegion(0));  // around the hole
  EXPECT_EQ(graph.leftRegion(3), graph.rightRegion(0));
  EXPECT_EQ(graph.leftRegion(2), graph.leftRegion(1));
  EXPECT_NE(graph.rightRegion(2), graph.rightRegion(0));
  EXPECT_NE(graph.rightRegion(4), graph.rightRegion(0));
  graph.joinSides(3);
  EXPECT_EQ(graph.rightRegion(3), graph.rightRegion(0));
}

TEST(CoverGraph, TellsWhereACrossingIsMissing) {
  // The second ring enters the first one at its corner and leaves it through an edge, where no node is.
  Chains chains;
  chains.add({0, 0, 4, 4, 0}, {0, 4, 4, 0, 0});
  chains.add({0, 2, 6, 0}, {0, 2, -5, 0});
  chains.node({{0, 5}});
  VEXCoverGraph graph(chains.store);
  EXPECT_FALSE(build(graph, chains.store));
  EXPECT_EQ(graph.faultPlace().x, 0.0);
  EXPECT_EQ(graph.faultPlace().y, 0.0);
  EXPECT_EQ(graph.faultPieces(), (std::vector<std::uint32_t>{0, 1}));
}

}  // namespace
