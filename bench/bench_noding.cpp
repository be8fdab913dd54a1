// Noding of crossing street lines beside GEOS: seconds, records a second, peak memory and pieces, each measurement in a
// process of its own. bench_noding [--data kind] [who[,who...] [lines...]]; without arguments all of them. The peers'
// times leave out the making of their geometry, ours hold the adding of lines and the reading of all pieces. Kinds
// other than streets are hopeless for a grid: nested squares, copies of one polygon, stars of lines through a point or
// from it, and strips, parallel lines that another crosses.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "vex/topology/lineintersector.h"

#ifdef ORV_HAS_GEOS
#include <geos/algorithm/LineIntersector.h>
#include <geos/geom/Coordinate.h>
#include <geos/geom/CoordinateArraySequence.h>
#include <geos/geom/GeometryFactory.h>
#include <geos/geom/LineString.h>
#include <geos/geom/MultiLineString.h>
#include <geos/noding/BasicSegmentString.h>
#include <geos/noding/IntersectionAdder.h>
#include <geos/noding/MCIndexNoder.h>
#include <geos/noding/NodedSegmentString.h>
#include <geos_c.h>
#endif

namespace {

struct Streets {
  std::vector<double> xs, ys;
  std::vector<std::size_t> starts;
  std::size_t numLines() const { return starts.size() - 1; }
};

// Streets of two main directions, two to five segments each, a third of them beginning where another ends.
Streets makeStreets(std::size_t count) {
  std::uint64_t state = 20260117;
  auto random = [&state] {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(state >> 11) / 9007199254740992.0;
  };
  const double side = 100.0 * std::sqrt(static_cast<double>(count));
  Streets streets;
  streets.starts.push_back(0);
  for (std::size_t i = 0; i < count; ++i) {
    double x = 400000.0 + side * random(), y = 5500000.0 + side * random();
    if (i % 3 == 2) {
      const std::size_t last = streets.starts[static_cast<std::size_t>(random() * static_cast<double>(i)) + 1] - 1;
      x = streets.xs[last];
      y = streets.ys[last];
    }
    double heading = 1.5707963267948966 * std::floor(4.0 * random()) + 0.3;
    const int numSegments = 2 + static_cast<int>(random() * 3.96);
    for (int s = 0; s <= numSegments; ++s) {
      streets.xs.push_back(x);
      streets.ys.push_back(y);
      heading += 0.3 * (random() - 0.5);
      const double length = 54.0 + 60.0 * random();
      x += length * std::cos(heading);
      y += length * std::sin(heading);
    }
    streets.starts.push_back(streets.xs.size());
  }
  return streets;
}

// Lines that no grid parts; false when there is no such kind.
bool makeCrowd(const std::string& kind, std::size_t count, Streets& lines) {
  auto add = [&](double x, double y) {
    lines.xs.push_back(400000.0 + x);
    lines.ys.push_back(5500000.0 + y);
  };
  lines.starts.push_back(0);
  for (std::size_t i = 0; i < count; ++i) {
    const double at = static_cast<double>(i), part = at / static_cast<double>(count);
    if (kind == "squares") {
      for (int corner : {0, 1, 2, 3, 0})
        add(corner == 1 || corner == 2 ? at + 1 : -at - 1, corner >= 2 ? at + 1 : -at - 1);
    } else if (kind == "copies") {
      for (int corner = 0; corner <= 12; ++corner)
        add(100 * std::cos(0.5236 * (corner % 12)), 100 * std::sin(0.5236 * (corner % 12)));
    } else if (kind == "star") {
      const double dx = 70 * std::cos(3.14159265 * part), dy = 70 * std::sin(3.14159265 * part);
      add(-dx, -dy);
      add(dx, dy);
    } else if (kind == "spokes") {
      add(0, 0);
      add(70 * std::cos(6.2831853 * part), 70 * std::sin(6.2831853 * part));
    } else if (kind == "strips") {
      add(i == 0 ? 300 : 0, i == 0 ? -1 : 0.01 * at);
      add(i == 0 ? 310 : 1000, i == 0 ? 0.01 * static_cast<double>(count) + 200 : 0.01 * at + 100);
    } else {
      return false;
    }
    lines.starts.push_back(lines.xs.size());
  }
  return true;
}

struct Outcome {
  double seconds = 0.0;
  std::size_t numPieces = 0;
};

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

Outcome runOurs(const Streets& streets) {
  const double started = now();
  VEXLineIntersector intersector;
  intersector.reserve(streets.numLines(), streets.xs.size());
  for (std::size_t i = 0; i < streets.numLines(); ++i) {
    const auto first = streets.xs.begin() + static_cast<std::ptrdiff_t>(streets.starts[i]);
    const auto last = streets.xs.begin() + static_cast<std::ptrdiff_t>(streets.starts[i + 1]);
    const auto firstY = streets.ys.begin() + static_cast<std::ptrdiff_t>(streets.starts[i]);
    const auto lastY = streets.ys.begin() + static_cast<std::ptrdiff_t>(streets.starts[i + 1]);
    const VEXLine line({first, last}, {firstY, lastY}, VEX_GEOM_LINE);
    if (intersector.addLine(line, 0) != nullptr) std::exit(1);
  }
  if (intersector.computeIntersections() != nullptr || intersector.numUnresolved() != 0) std::exit(1);
  Outcome outcome;
  VEXChainPiece piece;
  double sum = 0.0;
  while (intersector.nextPiece(piece)) {
    ++outcome.numPieces;
    for (double x : piece.xs) sum += x;
  }
  outcome.seconds = now() - started;
  if (!(sum > 0.0)) std::exit(1);
  return outcome;
}

#ifdef ORV_HAS_GEOS
Outcome runIndexNoder(const Streets& streets) {
  using namespace geos;
  std::vector<noding::SegmentString*> strings;
  std::vector<std::unique_ptr<geom::CoordinateArraySequence>> sequences;
  for (std::size_t i = 0; i < streets.numLines(); ++i) {
    std::vector<geom::Coordinate> coords;
    for (std::size_t at = streets.starts[i]; at < streets.starts[i + 1]; ++at)
      coords.emplace_back(streets.xs[at], streets.ys[at]);
    auto* sequence = new geom::CoordinateArraySequence(std::move(coords));
    strings.push_back(new noding::NodedSegmentString(sequence, nullptr));
  }
  const double started = now();
  algorithm::LineIntersector crossing;
  noding::IntersectionAdder adder(crossing);
  noding::MCIndexNoder noder(&adder);
  noder.computeNodes(&strings);
  std::vector<noding::SegmentString*>* noded = noder.getNodedSubstrings();
  Outcome outcome;
  outcome.numPieces = noded->size();
  outcome.seconds = now() - started;
  return outcome;
}

Outcome runThroughC(const Streets& streets, GEOSGeometry* (*work)(GEOSContextHandle_t, const GEOSGeometry*)) {
  GEOSContextHandle_t context = GEOS_init_r();
  std::vector<GEOSGeometry*> lines;
  for (std::size_t i = 0; i < streets.numLines(); ++i) {
    const auto count = static_cast<unsigned>(streets.starts[i + 1] - streets.starts[i]);
    GEOSCoordSequence* coords = GEOSCoordSeq_create_r(context, count, 2);
    for (unsigned at = 0; at < count; ++at)
      GEOSCoordSeq_setXY_r(context, coords, at, streets.xs[streets.starts[i] + at], streets.ys[streets.starts[i] + at]);
    lines.push_back(GEOSGeom_createLineString_r(context, coords));
  }
  GEOSGeometry* all =
      GEOSGeom_createCollection_r(context, GEOS_MULTILINESTRING, lines.data(), static_cast<unsigned>(lines.size()));
  const double started = now();
  GEOSGeometry* noded = work(context, all);
  Outcome outcome;
  outcome.numPieces = noded == nullptr ? 0 : static_cast<std::size_t>(GEOSGetNumGeometries_r(context, noded));
  outcome.seconds = now() - started;
  return outcome;
}
#endif

struct Runner {
  const char* name;
  std::size_t mostLines;  // slower ones are not asked for more unless named
  std::function<Outcome(const Streets&)> run;
};

// Runs in a child, so that each has a peak memory of its own.
void measure(const Runner& runner, const std::string& kind, std::size_t numLines) {
  int ends[2];
  if (pipe(ends) != 0) std::exit(1);
  const pid_t child = fork();
  if (child == 0) {
    Streets streets;
    if (kind == "streets")
      streets = makeStreets(numLines);
    else if (!makeCrowd(kind, numLines, streets))
      _exit(1);
    const Outcome outcome = runner.run(streets);
    const bool isTold = write(ends[1], &outcome, sizeof outcome) == static_cast<ssize_t>(sizeof outcome);
    _exit(isTold ? 0 : 1);
  }
  close(ends[1]);
  Outcome outcome;
  const bool isTold = read(ends[0], &outcome, sizeof outcome) == static_cast<ssize_t>(sizeof outcome);
  close(ends[0]);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  if (!isTold || status != 0) {
    std::printf("%-14s%10zu   failed\n", runner.name, numLines);
    return;
  }
  std::printf("%-14s%10zu%10.3f%13.0f%10ld%12zu\n", runner.name, numLines, outcome.seconds,
              static_cast<double>(numLines) / outcome.seconds, usage.ru_maxrss / 1024, outcome.numPieces);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<Runner> runners = {
      {"orvane", 10'000'000, runOurs},
#ifdef ORV_HAS_GEOS
      {"MCIndexNoder", 10'000'000, runIndexNoder},
      {"GEOSNode", 200'000, [](const Streets& streets) { return runThroughC(streets, GEOSNode_r); }},
      {"UnaryUnion", 200'000, [](const Streets& streets) { return runThroughC(streets, GEOSUnaryUnion_r); }},
#endif
  };
  std::string kind = "streets";
  if (argc > 2 && std::strcmp(argv[1], "--data") == 0) {
    kind = argv[2];
    argc -= 2;
    argv += 2;
  }
  const std::string wanted = argc > 1 ? "," + std::string(argv[1]) + "," : "";
  std::vector<std::size_t> sizes;
  for (int i = 2; i < argc; ++i) sizes.push_back(std::strtoul(argv[i], nullptr, 10));
  if (sizes.empty()) sizes = {50'000, 100'000, 200'000, 400'000, 500'000};
  std::printf("%-14s%10s%10s%13s%10s%12s\n", "who", "lines", "seconds", "records/s", "peak MB", "pieces");
  for (std::size_t numLines : sizes)
    for (const Runner& runner : runners) {
      if (wanted.empty() ? numLines > runner.mostLines
                         : wanted.find("," + std::string(runner.name) + ",") == std::string::npos)
        continue;
      measure(runner, kind, numLines);
    }
  return 0;
}
