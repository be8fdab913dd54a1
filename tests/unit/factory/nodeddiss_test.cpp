// Dissolving of polygons that share their vertices and touch themselves, against a flood of lattice cells; the same
// polygons, taken as not noded, have to give the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "tests/unit/support.h"
#include "vex/factory/dissolve.h"

namespace {

using Random = std::mt19937_64;
using Place = std::pair<int, int>;  // of the lattice
using Ring = std::vector<Place>;    // first place again at the end

struct Shape {
  std::vector<Ring> rings;
  std::uint32_t geomType = VEX_GEOM_POLYGON;
};

std::size_t below(Random& random, std::size_t limit) {
  return static_cast<std::size_t>(random() % limit);
}

void addTo(VEXDissolver& dissolver, const Shape& shape, std::int32_t number) {
  VEXFeature feature;
  for (const Ring& ring : shape.rings)
    for (const Place& at : ring) feature.addCoord(at.first, at.second);
  feature.restoreGeometry(shape.geomType, 2);
  ASSERT_EQ(dissolver.add(feature, number), nullptr);
}

double totalLength(const std::vector<VEXLine>& lines) {
  double length = 0.0;
  for (const VEXLine& line : lines) length += lengthOf(line.xs(), line.ys());
  return length;
}

// ---- named kinds ----

Ring box(int x1, int y1, int x2, int y2) {
  Ring ring;
  for (int y = y1; y < y2; ++y) ring.push_back({x1, y});
  for (int x = x1; x < x2; ++x) ring.push_back({x, y2});
  for (int y = y2; y > y1; --y) ring.push_back({x2, y});
  for (int x = x2; x > x1; --x) ring.push_back({x, y1});
  ring.push_back(ring.front());
  return ring;
}

TEST(NodedDissolver, MembersAreWhatIsCovered) {
  using Expected = std::vector<std::pair<std::vector<std::int32_t>, double>>;  // members and area, ascending
  struct Row {
    const char* name;
    std::vector<Shape> shapes;
    Expected expected;
  };
  const Ring three = box(0, 0, 3, 3);
  const Row rows[] = {
      {"two loops meet in a point",
       {{{{{0, 1}, {1, 1}, {1, 2}, {2, 2}, {2, 1}, {1, 1}, {1, 0}, {0, 0}, {0, 1}}}},
        {{box(2, 1, 3, 2)}},
        {{box(-1, 0, 0, 1)}}},
       {{{0, 1}, 2}, {{0, 2}, 2}}},
      {"the same, begun where they meet",
       {{{{{1, 1}, {1, 2}, {2, 2}, {2, 1}, {1, 1}, {1, 0}, {0, 0}, {0, 1}, {1, 1}}}}, {{box(2, 1, 3, 2)}}},
       {{{0}, 1}, {{0, 1}, 2}}},
      {"the same, one of them the wrong way round",
       {{{{{0, 1}, {1, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}, {1, 0}, {0, 0}, {0, 1}}}},
        {{box(2, 1, 3, 2)}},
        {{box(0, -1, 1, 0)}}},
       {{{0, 1}, 2}, {{0, 2}, 2}}},
      {"a loop that is a hole",
       {{{{{3, 0}, {0, 0}, {1, 2}, {2, 1}, {0, 0}, {0, 3}, {3, 3}, {3, 0}}}}, {{{{0, 0}, {1, 2}, {2, 1}, {0, 0}}}}},
       {{{0, 1}, 9}}},
      {"a hole that a seam leads to",
       {{{{{0, 0}, {0, 3}, {1, 2}, {1, 1}, {2, 1}, {2, 2}, {1, 2}, {0, 3}, {3, 3}, {3, 0}, {0, 0}}}},
        {{{{3, 0}, {3, 3}, {5, 0}, {3, 0}}}}},
       {{{0, 1}, 11}}},
      {"a hole that touches its shell in a point",
       {{{three, {{0, 1}, {2, 2}, {2, 1}, {0, 1}}}, VEX_GEOM_DONUT}, {{box(0, 3, 1, 4)}}, {{box(0, -1, 1, 0)}}},
       {{{0, 1, 2}, 10}}},
      {"in two, which parts the area",
       {{{three, {{0, 1}, {1, 2}, {3, 1}, {1, 1}, {0, 1}}}, VEX_GEOM_DONUT}, {{box(0, 3, 1, 4)}}, {{box(0, -1, 1, 0)}}},
       {{{0, 1}, 5.5}, {{0, 2}, 4}}},
      {"two holes that part the area together",
       {{{three, {{0, 1}, {1, 2}, {1, 1}, {0, 1}}, {{1, 2}, {3, 2}, {2, 1}, {1, 2}}}, VEX_GEOM_DONUT},
        {{box(0, 3, 1, 4)}},
        {{box(0, -1, 1, 0)}}},
       {{{0, 1}, 4.5}, {{0, 2}, 5}}},
      {"a hole along its shell's edge, filled by another",
       {{{three, box(0, 1, 1, 2)}, VEX_GEOM_DONUT}, {{box(0, 1, 1, 2)}}, {{box(-1, 1, 0, 2)}}},
       {{{0, 1, 2}, 10}}},
      {"a hole from edge to edge",
       {{{three, box(0, 1, 3, 2)}, VEX_GEOM_DONUT}, {{box(0, 3, 1, 4)}}, {{box(0, -1, 1, 0)}}},
       {{{0, 1}, 4}, {{0, 2}, 4}}},
      {"a hole of two loops, and what fills them",
       {{{box(0, 0, 4, 4), {{1, 2}, {1, 1}, {2, 1}, {2, 2}, {3, 2}, {3, 3}, {2, 3}, {2, 2}, {1, 2}}}, VEX_GEOM_DONUT},
        {{box(1, 1, 2, 2)}},
        {{{{2, 2}, {2, 3}, {3, 3}, {2, 2}}}}},
       {{{0, 1, 2}, 15.5}}},
      {"a hole that is all of it",
       {{{box(0, 0, 1, 1), box(0, 0, 1, 1)}, VEX_GEOM_DONUT}, {{box(1, 0, 2, 1)}}},
       {{{1}, 1}}},
      {"a spike along another polygon's edge",
       {{{{{0, 0}, {0, 1}, {1, 1}, {2, 1}, {1, 1}, {1, 0}, {0, 0}}}}, {{box(1, 0, 2, 1)}}, {{box(5, 5, 6, 6)}}},
       {{{0, 1}, 2}, {{2}, 1}}},
      {"nothing but spikes, along another polygon's edges",
       {{{{{0, 0}, {0, 1}, {0, 0}}}}, {{{{0, 0}, {0, 1}, {1, 1}, {0, 1}, {0, 0}}}}, {{box(0, 0, 1, 1)}}},
       {{{2}, 1}}},
      {"a loop that is run twice",
       {{{{{0, 0}, {0, 1}, {1, 0}, {2, 1}, {2, 0}, {1, 0}, {2, 1}, {2, 0}, {1, 0}, {0, 0}}}}, {{box(2, 0, 3, 1)}}},
       {{{0}, 0.5}, {{0, 1}, 1.5}}},
      {"a list of two that touch",
       {{{box(0, 0, 1, 1), box(1, 1, 2, 2)}}, {{box(2, 1, 3, 2)}}},
       {{{0}, 1}, {{0, 1}, 2}}},
      {"a list of two that share an edge", {{{box(0, 0, 1, 1), box(1, 0, 2, 1)}}, {{box(2, 0, 3, 1)}}}, {{{0, 1}, 3}}},
  };
  for (const Row& row : rows) {
    for (bool isNoded : {true, false}) {
      SCOPED_TRACE(std::string(row.name) + (isNoded ? ", noded" : ", not noded"));
      VEXDissolver dissolver(isNoded, false);
      for (std::size_t i = 0; i < row.shapes.size(); ++i) addTo(dissolver, row.shapes[i], static_cast<std::int32_t>(i));
      ASSERT_EQ(dissolver.dissolve(), nullptr);
      ASSERT_TRUE(dissolver.faults().empty());
      Expected found(dissolver.polygons().size());
      for (const auto& [number, polygon] : dissolver.memberships()) found[polygon].first.push_back(number);
      for (std::size_t i = 0; i < found.size(); ++i) ASSERT_EQ(dissolver.polygons()[i].area(found[i].second), nullptr);
      std::sort(found.begin(), found.end());
      EXPECT_EQ(found, row.expected);
    }
  }
}

// ---- random shapes of lattice cells ----

constexpr int kOutside = -1;

struct Cells {
  int size;
  std::vector<int> owners;  // shapes by cell, or kOutside
  int at(int x, int y) const {
    return x < 0 || y < 0 || x >= size || y >= size ? kOutside : owners[static_cast<std::size_t>(y * size + x)];
  }
};

// Numbers cells that hang together: those of one owner by corners too, or all that have an owner by edges only.
std::vector<int> flood(const Cells& cells, bool isByOwner, int& count) {
  std::vector<int> numbers(cells.owners.size(), kOutside);
  count = 0;
  for (std::size_t start = 0; start < numbers.size(); ++start) {
    if (numbers[start] != kOutside || cells.owners[start] == kOutside) continue;
    numbers[start] = count++;
    for (std::vector<int> open{static_cast<int>(start)}; !open.empty();) {
      const int x = open.back() % cells.size, y = open.back() / cells.size;
      const int owner = cells.at(x, y);
      open.pop_back();
      for (int step = 0; step < 9; ++step) {
        const int nextX = x + step % 3 - 1, nextY = y + step / 3 - 1;
        const int other = cells.at(nextX, nextY);
        if (other == kOutside || (isByOwner ? other != owner : step % 2 == 0)) continue;
        int& number = numbers[static_cast<std::size_t>(nextY * cells.size + nextX)];
        if (number != kOutside) continue;
        number = count - 1;
        open.push_back(nextY * cells.size + nextX);
      }
    }
  }
  return numbers;
}

// The boundary of a shape's cells, the cells on its right; where four edges meet it goes on either way.
std::vector<Ring> trace(Random& random, const Cells& cells, int owner) {
  std::map<Place, std::vector<Place>> ways;
  for (int y = 0; y < cells.size; ++y)
    for (int x = 0; x < cells.size; ++x) {
      if (cells.at(x, y) != owner) continue;
      if (cells.at(x - 1, y) != owner) ways[{x, y}].push_back({x, y + 1});
      if (cells.at(x, y + 1) != owner) ways[{x, y + 1}].push_back({x + 1, y + 1});
      if (cells.at(x + 1, y) != owner) ways[{x + 1, y + 1}].push_back({x + 1, y});
      if (cells.at(x, y - 1) != owner) ways[{x + 1, y}].push_back({x, y});
    }
  std::vector<Ring> rings;
  for (auto& [start, out] : ways) {
    while (!out.empty()) {
      Ring& ring = rings.emplace_back(1, start);
      do {
        std::vector<Place>& next = ways[ring.back()];
        const std::size_t pick = below(random, next.size());
        ring.push_back(next[pick]);
        next.erase(next.begin() + static_cast<std::ptrdiff_t>(pick));
      } while (ring.back() != start || (!out.empty() && below(random, 2) == 0));
    }
  }
  return rings;
}

int doubleArea(const Ring& ring) {
  int sum = 0;
  for (std::size_t i = 0; i + 1 < ring.size(); ++i)
    sum += ring[i].first * ring[i + 1].second - ring[i + 1].first * ring[i].second;
  return sum;
}

// The places to another one, along the lattice; the first one is left out.
Ring pathTo(Place from, const Place& to) {
  Ring path;
  while (from != to) {
    if (from.first != to.first)
      from.first += from.first < to.first ? 1 : -1;
    else
      from.second += from.second < to.second ? 1 : -1;
    path.push_back(from);
  }
  return path;
}

// From a place of the ring out along the path, then the other ring or nothing, and back.
void insertAt(Ring& ring, std::size_t at, const Ring& path, const Ring& other) {
  Ring tour = path;
  if (!other.empty()) tour.insert(tour.end(), other.begin() + 1, other.end());
  for (std::size_t i = path.size(); i-- > 0;) tour.push_back(i > 0 ? path[i - 1] : ring[at]);
  ring.insert(ring.begin() + static_cast<std::ptrdiff_t>(at) + 1, tour.begin(), tour.end());
}

// Where a ring begins it must not come by again: that would end it. False: it comes by everywhere again.
bool beginWhereItIsOnce(Random& random, Ring& ring) {
  ring.pop_back();
  std::rotate(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(below(random, ring.size())), ring.end());
  auto isOnce = [&ring] { return std::count(ring.begin(), ring.end(), ring.front()) == 1; };
  for (std::size_t i = 0; i < ring.size() && !isOnce(); ++i) std::rotate(ring.begin(), ring.begin() + 1, ring.end());
  const bool found = isOnce();
  ring.push_back(ring.front());
  return found;
}

Shape shapeOf(Random& random, const Cells& cells, int owner, bool hasSpikes) {
  Shape shape{trace(random, cells, owner)};
  std::vector<Ring>& rings = shape.rings;
  std::sort(rings.begin(), rings.end(), [](const Ring& a, const Ring& b) { return doubleArea(a) < doubleArea(b); });
  const bool isDonut = rings.size() > 1 && std::all_of(rings.begin() + 1, rings.end(),
                                                       [](const Ring& ring) { return doubleArea(ring) > 0; });
  hasSpikes = hasSpikes && (isDonut || rings.size() == 1);  // a list's rings have to show which are holes
  if (hasSpikes && isDonut && below(random, 2) == 0) {      // a seam
    const std::size_t at = below(random, rings[0].size() - 1);
    insertAt(rings[0], at, pathTo(rings[0][at], rings[1][0]), rings[1]);
    rings.erase(rings.begin() + 1);
  }
  for (std::size_t count = hasSpikes ? below(random, 3) : 0; count > 0; --count) {
    Ring& ring = rings[below(random, rings.size())];
    const std::size_t at = below(random, ring.size() - 1);
    const Place tip{ring[at].first + static_cast<int>(below(random, 5)) - 2,
                    ring[at].second + static_cast<int>(below(random, 5)) - 2};
    const Ring path = pathTo(ring[at], tip);
    if (!path.empty()) insertAt(ring, at, path, {});
  }
  for (Ring& ring : rings)
    if (!beginWhereItIsOnce(random, ring)) return shapeOf(random, cells, owner, false);
  if (isDonut && rings.size() > 1) shape.geomType = VEX_GEOM_DONUT;
  if (below(random, 2) == 0)
    for (Ring& ring : rings) std::reverse(ring.begin(), ring.end());
  return shape;
}

TEST(NodedDissolver, CellsThatTouchAreMembersOfWhatTheyCover) {
  constexpr std::uint64_t kSeed = 71717;
  std::size_t numParted = 0, numHeld = 0;
  for (std::uint64_t round = 0; round < 1500; ++round) {
    Random random(kSeed + round);
    Cells cells{3 + static_cast<int>(below(random, 6)), {}};
    const std::size_t numOwners = 1 + below(random, 3), numFree = 1 + below(random, 3);
    for (int i = 0; i < cells.size * cells.size; ++i) {
      const std::size_t pick = below(random, numOwners + numFree);
      cells.owners.push_back(pick < numOwners ? static_cast<int>(pick) : kOutside);
    }
    int numShapes = 0, numParts = 0;
    cells.owners = flood(cells, true, numShapes);
    const std::vector<int> partOf = flood(cells, false, numParts);
    const bool hasSpikes = below(random, 2) == 0;
    std::vector<Shape> shapes;
    for (int owner = 0; owner < numShapes; ++owner) shapes.push_back(shapeOf(random, cells, owner, hasSpikes));
    std::set<std::pair<int, int>> expected;  // shapes and parts
    for (std::size_t i = 0; i < partOf.size(); ++i)
      if (partOf[i] != kOutside) expected.emplace(cells.owners[i], partOf[i]);
    double sharedLength = 0.0;
    for (int y = 0; y < cells.size; ++y)
      for (int x = 0; x < cells.size; ++x)
        for (int other : {cells.at(x + 1, y), cells.at(x, y + 1)})
          if (cells.at(x, y) != kOutside && other != kOutside && other != cells.at(x, y)) sharedLength += 1.0;
    for (bool isNoded : {true, false}) {
      SCOPED_TRACE("seed " + std::to_string(kSeed + round) + (isNoded ? ", noded" : ", not noded"));
      VEXDissolver dissolver(isNoded, true);
      for (int i = 0; i < numShapes; ++i) addTo(dissolver, shapes[static_cast<std::size_t>(i)], i);
      ASSERT_EQ(dissolver.dissolve(), nullptr);
      ASSERT_TRUE(dissolver.faults().empty());
      ASSERT_EQ(dissolver.polygons().size(), static_cast<std::size_t>(numParts));
      std::vector<double> areas(dissolver.polygons().size(), 0.0);
      std::vector<int> partAt(dissolver.polygons().size(), kOutside);
      for (std::size_t i = 0; i < partOf.size(); ++i) {
        const double x = static_cast<int>(i) % cells.size + 0.5, y = static_cast<int>(i) / cells.size + 0.5;
        std::size_t numHolders = 0;
        for (std::size_t polygon = 0; polygon < partAt.size(); ++polygon) {
          bool isHeld = false;
          ASSERT_EQ(dissolver.polygons()[polygon].containsPoint(x, y, isHeld), nullptr);
          if (!isHeld) continue;
          ++numHolders;
          if (partAt[polygon] == kOutside) partAt[polygon] = partOf[i];
          ASSERT_EQ(partAt[polygon], partOf[i]);
          areas[polygon] += 1.0;
        }
        ASSERT_EQ(numHolders, partOf[i] == kOutside ? 0U : 1U) << x << " " << y;
      }
      for (std::size_t polygon = 0; polygon < partAt.size(); ++polygon) {
        double area = 0.0;
        ASSERT_EQ(dissolver.polygons()[polygon].area(area), nullptr);
        ASSERT_EQ(area, areas[polygon]);
      }
      std::set<std::pair<int, int>> found;
      for (const auto& [number, polygon] : dissolver.memberships()) found.emplace(number, partAt[polygon]);
      ASSERT_EQ(found, expected);
      if (!hasSpikes) {
        ASSERT_EQ(totalLength(dissolver.interiorLines()), sharedLength);
      }
    }
    numHeld += expected.size();
    numParted += expected.size() - static_cast<std::size_t>(numShapes);
  }
  EXPECT_GT(numHeld, 5000U);
  EXPECT_GT(numParted, 1000U);  // shapes in more than one part
}

}  // namespace
