// Noding of what no grid can part: copies, nested squares, stars and strips of parallel lines, against the plain
// answer.
#include <random>

#include "tests/unit/topology/nodetest.h"

namespace {

constexpr unsigned kSeed = 20260118;
constexpr double kPi = 3.14159265358979323846;

using Random = std::mt19937;

double part(Random& random) {
  return random() / 4294967296.0;
}

std::size_t below(Random& random, std::size_t limit) {
  return random() % limit;
}

// Two segments in a crowd lie side by side where the plain answer and the tolerance would differ; few places avoid
// that.
void addLoose(Random& random, std::size_t count, std::vector<Points>& lines) {
  for (std::size_t i = 0; i < count; ++i) {
    Points line;
    for (std::size_t k = 2 + below(random, 3); k > 0; --k)
      line.emplace_back(0.25 * static_cast<double>(below(random, 9)) - 1,
                        0.25 * static_cast<double>(below(random, 9)) - 1);
    lines.push_back(line);
  }
}

void addCopies(Random& random, std::size_t count, std::vector<Points>& lines) {
  std::vector<Points> kinds;
  addLoose(random, 1 + below(random, 4), kinds);
  for (Points& kind : kinds)
    if (below(random, 2) == 0) kind.push_back(kind.front());
  const std::size_t oneInSoMany = 1 + below(random, 4);  // runs as the first does
  for (std::size_t i = 0; i < count; ++i) {
    lines.push_back(kinds[below(random, kinds.size())]);
    if (below(random, oneInSoMany) != 0) std::reverse(lines.back().begin(), lines.back().end());
  }
}

void addNested(Random& random, std::size_t count, std::vector<Points>& lines) {
  const double turns[] = {0.0, 0.25 * kPi, 2 * part(random)};
  const double turn = turns[below(random, 3)];
  for (std::size_t i = 0; i < count; ++i) {
    const double size = (static_cast<double>(i) + 1) / static_cast<double>(count);
    Points line;
    for (int corner = 0; corner <= 4; ++corner) {
      const double angle = turn + (corner % 4 + 0.5) * 0.5 * kPi;
      line.emplace_back(size * std::cos(angle), size * std::sin(angle));
    }
    lines.push_back(line);
  }
}

// Lines through a point, others that begin or end there, others that bend there; some of them twice.
void addStar(Random& random, std::size_t count, std::vector<Points>& lines) {
  const double x = part(random) - 0.5, y = part(random) - 0.5;
  const double spread = below(random, 3) == 0 ? 0.1 : kPi;
  const std::size_t kind = below(random, 4);
  const double from = part(random);
  for (std::size_t i = 0; i < count; ++i) {
    const double angle = from + spread * (static_cast<double>(i) + 0.5 * part(random)) / static_cast<double>(count);
    const double dx = std::cos(angle), dy = std::sin(angle);
    const double before = 0.3 + 0.7 * part(random), after = 0.3 + 0.7 * part(random);
    Points line = {{x - before * dx, y - before * dy}, {x, y}, {x + after * dx, y + after * dy}};
    const std::size_t cut = kind < 3 ? kind : below(random, 3);
    if (cut == 0) line.erase(line.begin() + 1);
    if (cut == 1) line.erase(below(random, 2) == 0 ? line.begin() : line.begin() + 2);
    lines.push_back(line);
    while (below(random, 4) == 0) {
      std::reverse(line.begin(), line.end());
      lines.push_back(line);
    }
  }
}

void addStrips(Random& random, std::size_t count, std::vector<Points>& lines) {
  const double angle = below(random, 2) == 0 ? 0.5 * kPi * static_cast<double>(below(random, 4)) : kPi * part(random);
  const double dx = std::cos(angle), dy = std::sin(angle);
  auto at = [&](double along, double across) { return std::pair(along * dx - across * dy, along * dy + across * dx); };
  for (std::size_t i = 0; i < count; ++i) {
    const double across = static_cast<double>(i) / static_cast<double>(count);
    lines.push_back({at(-0.8 - 0.2 * part(random), across), at(0.8 + 0.2 * part(random), across)});
  }
  lines.push_back({at(-0.3, -0.1), at(0.4, 1.1)});
}

struct Kind {
  const char* name;
  void (*add)(Random&, std::size_t, std::vector<Points>&);
  std::size_t fewest, most;  // lines of it
};

constexpr Kind kKinds[] = {{"copies", addCopies, 30, 150},
                           {"nested", addNested, 20, 80},
                           {"star", addStar, 70, 180},
                           {"strips", addStrips, 70, 260}};

// One kind or two of them, and a few lines across.
std::vector<Points> makeCrowd(Random& random) {
  std::vector<Points> lines;
  const std::size_t numKinds = 1 + below(random, 4) / 3;
  for (std::size_t i = 0; i < numKinds; ++i) {
    const Kind& kind = kKinds[below(random, std::size(kKinds))];
    kind.add(random, (kind.fewest + below(random, kind.most - kind.fewest)) / numKinds, lines);
  }
  addLoose(random, below(random, 4), lines);
  std::shuffle(lines.begin(), lines.end(), random);
  return lines;
}

VEXIntersectorParms oneSquare() {
  VEXIntersectorParms parms;
  parms.grid = parms.subGrid = {1, 1, 0, 1};
  return parms;
}

}  // namespace

TEST(NodingCrowd, AgreesWithAllPairs) {
  for (unsigned round = 0; round < 60; ++round) {
    Random random(kSeed + round);
    const std::vector<Points> lines = makeCrowd(random);
    const std::vector<Piece> pieces = node(lines, 0, round % 3 == 2 ? VEXIntersectorParms{} : oneSquare());
    SCOPED_TRACE("seed " + std::to_string(kSeed + round));
    ASSERT_NO_FATAL_FAILURE(compareWithPlain(lines, pieces));
    ASSERT_NO_FATAL_FAILURE(checkNoded(pieces));
  }
}

// Where points are drawn together and later rounds repair: the outcome is noded, and noding it again changes nothing.
TEST(NodingCrowd, IsNodedAtEveryScale) {
  struct Row {
    double scale, offset;
  };
  for (const Row& row : {Row{1e-6, 0}, Row{100, 1e7}, Row{1e-3, 4.5e6}, Row{5, 5e5}, Row{1e60, 0}}) {
    for (unsigned round = 0; round < 12; ++round) {
      Random random(kSeed + round);
      std::vector<Points> lines = makeCrowd(random);
      for (Points& line : lines)
        for (auto& [x, y] : line) {
          x = row.offset + row.scale * x;
          y = 2 * row.offset + row.scale * y;
        }
      SCOPED_TRACE("seed " + std::to_string(kSeed + round) + " scale " + std::to_string(row.scale) + " offset " +
                   std::to_string(row.offset));
      const std::vector<Piece> pieces = node(lines, 0, oneSquare());
      ASSERT_NO_FATAL_FAILURE(checkNoded(pieces));
      std::vector<Points> cut;
      for (const Piece& piece : pieces) cut.push_back(piece.points);
      const std::vector<Piece> again = node(cut, 0, oneSquare());
      ASSERT_EQ(again.size(), pieces.size());
      for (std::size_t i = 0; i < pieces.size(); ++i) ASSERT_EQ(again[i].points, pieces[i].points);
    }
  }
}

// Most pairs cross a little beside the one point. Whichever of these crossings it becomes, rounds come to an end.
TEST(NodingCrowd, LinesThroughTheOriginEndInOnePlace) {
  for (unsigned round = 0; round < 8; ++round) {
    Random random(kSeed + round);
    std::vector<Points> lines;
    const std::size_t count = 180 + 20 * round;
    for (std::size_t i = 0; i < count; ++i) {
      const double angle = kPi * (static_cast<double>(i) + 0.5 * part(random)) / static_cast<double>(count);
      const double before = 0.3 + 0.7 * part(random), after = 0.3 + 0.7 * part(random);
      lines.push_back(
          {{-before * std::cos(angle), -before * std::sin(angle)}, {after * std::cos(angle), after * std::sin(angle)}});
    }
    std::shuffle(lines.begin(), lines.end(), random);
    SCOPED_TRACE("seed " + std::to_string(kSeed + round));
    const std::vector<Piece> pieces = node(lines, 0, oneSquare());
    EXPECT_EQ(pieces.size(), 2 * count);
    ASSERT_NO_FATAL_FAILURE(checkNoded(pieces));
  }
}

// A power of two changes nothing but the exponents, even where single precision has no more of them.
TEST(NodingCrowd, SizeOfCoordinatesDoesNotMatter) {
  for (unsigned round = 0; round < 8; ++round) {
    Random random(kSeed + round);
    std::vector<Points> lines = makeCrowd(random);
    const std::vector<Piece> pieces = node(lines);
    for (double scale : {0x1p-900, 0x1p-300, 0x1p-80, 0x1p140, 0x1p240}) {
      std::vector<Points> scaled = lines;
      for (Points& line : scaled)
        for (auto& [x, y] : line) x *= scale, y *= scale;
      std::vector<Piece> back = node(scaled);
      for (Piece& piece : back)
        for (auto& [x, y] : piece.points) x /= scale, y /= scale;
      EXPECT_TRUE(back == pieces) << "seed " << kSeed + round << " scale " << scale << ": " << back.size()
                                  << " pieces for " << pieces.size();
    }
  }
}
