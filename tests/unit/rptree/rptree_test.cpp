// The tree against a plain scan: grown box by box, bulk loaded, and restored from the bytes of either.
#include "vex/rptree/rptree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>

#include "tests/unit/drivers.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kFar = std::numeric_limits<double>::infinity();
constexpr unsigned kSeed = 20260514;

enum class Kind { Points, Parcels, Wide, Nested, SameLows, Grid, Odd };
constexpr Kind kKinds[] = {Kind::Points,   Kind::Parcels, Kind::Wide, Kind::Nested,
                           Kind::SameLows, Kind::Grid,    Kind::Odd};

std::vector<RpEntry> makeEntries(Kind kind, std::size_t count, std::mt19937& random) {
  std::uniform_real_distribution<double> place(0.0, 1000.0), small(0.0, 20.0);
  std::vector<RpEntry> entries;
  for (std::uint32_t id = 0; id < count; ++id) {
    const double x = place(random), y = place(random), width = small(random), height = small(random);
    const double turn = static_cast<double>(id);
    RpBox box;
    switch (kind) {
      case Kind::Points:
        box = {std::floor(x), std::floor(y), std::floor(x), std::floor(y)};
        break;
      case Kind::Parcels:
        box = {x, y, x + width, y + height};
        break;
      case Kind::Wide:
        box = {x * 0.1, y * 0.1, 1000 - width, 1000 - height};
        break;
      case Kind::Nested:
        box = {turn * 0.05, turn * 0.05, 1000 - turn * 0.05, 1000 - turn * 0.05};
        break;
      case Kind::SameLows:
        box = {0, y, x, y + height};
        break;
      case Kind::Grid:
        box = {std::floor(x / 25) * 25, std::floor(y / 25) * 25, std::floor(x / 25) * 25 + 25,
               std::floor(y / 25) * 25 + 25};
        break;
      case Kind::Odd: {
        box = {x, y, x + width, y + height};
        const int which = static_cast<int>(id % 11);
        if (which == 0) box.minX = kNaN;
        if (which == 1) box.maxY = kNaN;
        if (which == 2) box.maxX = kFar;
        if (which == 3) box = {-kFar, -kFar, kFar, kFar};
        if (which == 4) box = {kNaN, kNaN, kNaN, kNaN};
        if (which == 5) box = {kFar, y, kFar, y};
        break;
      }
    }
    entries.push_back({box, id});
  }
  return entries;
}

void expectSameAnswers(const RpTree& tree, const std::vector<RpEntry>& entries, const std::string& what) {
  std::mt19937 random(kSeed + 1);
  std::uniform_real_distribution<double> place(-50.0, 1050.0), size(0.0, 150.0);
  RpHits hits;
  for (int round = 0; round < 150; ++round) {
    RpBox query;
    query.minX = place(random);
    query.minY = place(random);
    query.maxX = query.minX + size(random);
    query.maxY = query.minY + size(random);
    if (round % 5 == 0) {  // on the edges of entries
      const RpBox& box = entries[random() % entries.size()].box;
      query = {box.maxX, box.minY, box.maxX, box.maxY};
    }
    if (round % 7 == 0) query = {std::floor(query.minX), std::floor(query.minY), std::ceil(query.maxX), kFar};
    RpHits intersecting, contained, touching, holding;
    for (const RpEntry& entry : entries) {
      const RpBox& box = entry.box;
      const bool isIn =
          box.minX >= query.minX && box.maxX <= query.maxX && box.minY >= query.minY && box.maxY <= query.maxY;
      const bool isStrictlyIn =
          box.minX > query.minX && box.maxX < query.maxX && box.minY > query.minY && box.maxY < query.maxY;
      const bool meets =
          box.minX <= query.maxX && box.maxX >= query.minX && box.minY <= query.maxY && box.maxY >= query.minY;
      if (meets) intersecting.push_back(entry.id);
      if (isIn) contained.push_back(entry.id);
      if (meets && !isStrictlyIn) touching.push_back(entry.id);
      if (box.minX <= query.minX && query.minX <= box.maxX && box.minY <= query.minY && query.minY <= box.maxY) {
        holding.push_back(entry.id);
      }
    }
    tree.searchIntersecting(query, hits);
    ASSERT_EQ(hits, intersecting) << what << " round " << round;
    tree.searchContained(query, hits);
    ASSERT_EQ(hits, contained) << what << " round " << round;
    tree.searchTouching(query, hits);
    ASSERT_EQ(hits, touching) << what << " round " << round;
    tree.searchPoint(query.minX, query.minY, hits);
    ASSERT_EQ(hits, holding) << what << " round " << round;
  }
}

// Leaves hold less than a hundred entries where that can be had, siblings do not overlap, levels stand where they may.
void checkShape(const RpNode& node, bool isRoot, bool siblingsApart) {
  if (node.holdsData()) return;
  EXPECT_EQ(node.level(), isRoot ? RpNode::Root : RpNode::Internal);
  const std::vector<RpBox>& boxes = node.boxes();
  for (std::size_t at = 0; at < boxes.size(); ++at) {
    for (std::size_t other = 0; siblingsApart && other < at; ++other) {
      const bool overlap = boxes[at].minX < boxes[other].maxX && boxes[other].minX < boxes[at].maxX &&
                           boxes[at].minY < boxes[other].maxY && boxes[other].minY < boxes[at].maxY;
      ASSERT_FALSE(overlap) << at << " and " << other;
    }
    checkShape(node.child(at), false, siblingsApart);
  }
}

RpTree restored(const RpTree& tree) {
  std::string bytes;
  tree.save(bytes);
  bytes += "behind";
  VEXByteCursor cursor(bytes);
  RpTree copy;
  EXPECT_TRUE(copy.restore(cursor));
  EXPECT_EQ(cursor.left(), 6u);
  std::string again;
  copy.save(again);
  EXPECT_EQ(again + "behind", bytes);
  return copy;
}

TEST(RpTree, AnswersAsAScanDoes) {
  std::printf("seed %u\n", kSeed);
  std::mt19937 random(kSeed);
  for (const Kind kind : kKinds) {
    for (const std::size_t count : {1u, 99u, 100u, 700u, 6000u}) {
      const std::vector<RpEntry> entries = makeEntries(kind, count, random);
      const std::string what = "kind " + std::to_string(static_cast<int>(kind)) + " count " + std::to_string(count);
      RpTree grown, loaded;
      for (const RpEntry& entry : entries) grown.insert(entry.box, entry.id);
      loaded.bulkLoad(entries);
      expectSameAnswers(grown, entries, what + " grown");
      expectSameAnswers(loaded, entries, what + " loaded");
      RpTree copy = restored(loaded);
      expectSameAnswers(copy, entries, what + " loaded, restored");
      expectSameAnswers(restored(grown), entries, what + " grown, restored");
      SCOPED_TRACE(what);
      checkShape(grown.root(), true, kind != Kind::Odd && kind != Kind::Wide && kind != Kind::Nested);
      checkShape(loaded.root(), true, true);
      EXPECT_GE(loaded.numCopies(), count);
      EXPECT_LE(loaded.numCopies(), 2 * count);
      EXPECT_LE(grown.numCopies(), 5 * count + 5000);

      // More boxes after a bulk load, half of them outside of all that came before.
      std::vector<RpEntry> all = entries;
      for (RpEntry entry : makeEntries(kind, 300, random)) {
        entry.id += static_cast<std::uint32_t>(count);
        if (entry.id % 2 == 0) entry.box.minX -= 500, entry.box.maxX -= 500;
        if (entry.box.minX != entry.box.minX && entry.id % 3 == 0) entry.box = {0, 0, kFar, kNaN};
        all.push_back(entry);
        loaded.insert(entry.box, entry.id);
        copy.insert(entry.box, entry.id);
      }
      expectSameAnswers(loaded, all, what + " loaded, more");
      expectSameAnswers(copy, all, what + " restored, more");
    }
  }
}

TEST(RpTree, SplitsByItsRule) {
  TranslationScope engine;
  const auto grow = [](auto&& boxAt) {
    auto tree = std::make_unique<RpTree>();
    for (std::uint32_t id = 0; id < 100; ++id) tree->insert(boxAt(static_cast<double>(id)), id);
    return tree;
  };
  // The low of entry 50 on the axis with fewer straddling entries; equal numbers: y.
  auto tree = grow([](double at) { return RpBox{at, at, at + 1, at + 1}; });
  ASSERT_EQ(tree->root().numEntries(), 2u);
  EXPECT_EQ(tree->root().boxes()[0], (RpBox{0, 0, 100, 50}));
  EXPECT_EQ(tree->root().boxes()[1], (RpBox{0, 50, 100, 100}));
  tree = grow([](double at) { return RpBox{at, at, at + 1, at + 2}; });
  EXPECT_EQ(tree->root().boxes()[0], (RpBox{0, 0, 50, 101}));
  // Distinct on y alone.
  tree = grow([](double at) { return RpBox{0, at, 5, at + 1.5}; });
  EXPECT_EQ(tree->root().boxes()[1], (RpBox{0, 50, 5, 100.5}));
  EXPECT_EQ(tree->root().child(0).numEntries(), 50u);
  EXPECT_EQ(tree->root().child(1).numEntries(), 51u);  // that of 49 to 50.5, too
  EXPECT_EQ(tree->numCopies(), 101u);
  // Equal boxes cannot be cut: the root keeps them all.
  tree = grow([](double) { return RpBox{1, 1, 2, 2}; });
  EXPECT_EQ(tree->root().level(), RpNode::DataRoot);
  EXPECT_EQ(tree->root().numEntries(), 100u);
  for (std::uint32_t id = 100; id < 20000; ++id) tree->insert(RpBox{1, 1, 2, 2}, id);
  RpHits hits;
  tree->searchPoint(2, 1, hits);
  EXPECT_EQ(hits.size(), 20000u);
  EXPECT_EQ(engine.logged("INFORMATION: RpNode::SelfSplit : No cut found for nonLeaf node"), 1u);
}

TEST(RpTree, StoredFormOfASmallTree) {
  RpTree tree;
  std::string bytes;
  tree.save(bytes);
  EXPECT_EQ(bytes, std::string("D\0\0\0\0", 5));
  tree.insert(RpBox{1, 2, 3, 4}, 7);
  bytes.clear();
  tree.save(bytes);
  ASSERT_EQ(bytes.size(), 41u);
  EXPECT_EQ(bytes.substr(0, 17), std::string("D\1\0\0\0\7\0\0\0\0\0\0\0\0\0\xf0\x3f", 17));
}

TEST(RpTree, RefusesBrokenBytes) {
  std::mt19937 random(kSeed);
  RpTree tree;
  tree.bulkLoad(makeEntries(Kind::Parcels, 300, random));
  std::string whole;
  tree.save(whole);
  for (std::size_t length = 0; length < whole.size(); length += 7) {
    VEXByteCursor cut(std::string_view(whole).substr(0, length));
    RpTree copy;
    EXPECT_FALSE(copy.restore(cut)) << length;
    EXPECT_TRUE(copy.isEmpty());
  }
  const std::string box(32, '\0');
  std::string deep, count("\1\0\0\0", 4);
  for (int level = 0; level < 100000; ++level) deep += (level == 0 ? "R" : "I") + count + box;
  const std::string nothing(4, '\0');
  for (const std::string& bytes :
       {std::string("L") + nothing, std::string("R") + nothing, "D\xff\xff\xff\xff" + box + box,
        "R" + count + box + "D" + nothing, "R" + count + box + "U" + count + box + box, "Q" + nothing, deep}) {
    VEXByteCursor cursor(bytes);
    RpTree copy;
    EXPECT_FALSE(copy.restore(cursor)) << bytes.substr(0, 5);
  }
}

}  // namespace
