// Crossing street lines to polygons: noding and face walk beside GEOSUnaryUnion and GEOSPolygonize. Each side runs in a
// process of its own, so that the peak memory is its own; the input's is left out.
//   bench_polygons                 50,000 to 400,000 lines of ours, 100,000 and 500,000 beside GEOS
//   bench_polygons LINES...        these beside GEOS
#include <geos_c.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/streets.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/topology.h"

namespace {

struct Result {
  double fillSeconds = 0, nodeSeconds = 0, graphSeconds = 0, buildSeconds = 0, megabytes = 0, area = 0;
  std::size_t numPieces = 0, numPolygons = 0, numFaults = 0;
  double seconds() const { return fillSeconds + nodeSeconds + graphSeconds + buildSeconds; }
};

double peakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

class Clock {
 public:
  double lap() {
    const auto before = start_;
    start_ = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(start_ - before).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void must(const VEXStatus& status) {
  if (status == nullptr) return;
  std::fprintf(stderr, "%s\n", status->message().c_str());
  std::exit(1);
}

Result runOurs(const std::vector<Street>& streets) {
  Result result;
  const double before = peakMegabytes();
  Clock clock;
  VEXTopologyResult polygons;
  {
    std::size_t numCoords = 0;
    for (const Street& street : streets) numCoords += street.x.size();
    VEXTopology topology;
    {
      VEXLineIntersector intersector;
      intersector.reserve(streets.size(), numCoords);
      for (const Street& street : streets) must(intersector.addLine(VEXLine(street.x, street.y, VEX_GEOM_LINE), 0));
      result.fillSeconds = clock.lap();
      must(intersector.computeIntersections());
      result.nodeSeconds = clock.lap();
      for (VEXChainPiece piece; intersector.nextPiece(piece); ++result.numPieces)
        must(topology.addLine(piece.xs, piece.ys, piece.zs));
    }
    result.graphSeconds = clock.lap();
    must(topology.buildPolygons(polygons, {.removeDangles = true, .removeCorridors = true}));
    result.buildSeconds = clock.lap();
  }
  result.megabytes = peakMegabytes() - before;
  result.numPolygons = polygons.polygons.size();
  result.numFaults = polygons.faults.size();
  for (const VEXTopologyPolygon& polygon : polygons.polygons) {
    double area = 0.0;
    must(polygon.line.area(area));
    result.area += area;
  }
  return result;
}

Result runGeos(const std::vector<Street>& streets) {
  GEOSContextHandle_t geos = GEOS_init_r();
  Result result;
  const double before = peakMegabytes();
  Clock clock;
  std::vector<GEOSGeometry*> lines;
  for (const Street& street : streets)
    lines.push_back(GEOSGeom_createLineString_r(
        geos, GEOSCoordSeq_copyFromArrays_r(geos, street.x.data(), street.y.data(), nullptr, nullptr,
                                            static_cast<unsigned>(street.x.size()))));
  GEOSGeometry* all =
      GEOSGeom_createCollection_r(geos, GEOS_MULTILINESTRING, lines.data(), static_cast<unsigned>(lines.size()));
  result.fillSeconds = clock.lap();
  GEOSGeometry* noded = GEOSUnaryUnion_r(geos, all);
  result.nodeSeconds = clock.lap();
  const GEOSGeometry* input[] = {noded};
  GEOSGeometry* formed = GEOSPolygonize_r(geos, input, 1);
  result.buildSeconds = clock.lap();
  result.megabytes = peakMegabytes() - before;
  result.numPieces = static_cast<std::size_t>(GEOSGetNumGeometries_r(geos, noded));
  result.numPolygons = static_cast<std::size_t>(GEOSGetNumGeometries_r(geos, formed));
  GEOSArea_r(geos, formed, &result.area);
  return result;  // the process ends here: nothing is freed
}

Result inProcess(Result (*run)(const std::vector<Street>&), const std::vector<Street>& streets) {
  int ends[2];
  if (pipe(ends) != 0) std::exit(1);
  const pid_t child = fork();
  if (child == 0) {
    const Result result = run(streets);
    const bool isWritten = write(ends[1], &result, sizeof result) == static_cast<ssize_t>(sizeof result);
    _exit(isWritten ? 0 : 1);
  }
  close(ends[1]);
  Result result;
  const bool isRead = read(ends[0], &result, sizeof result) == static_cast<ssize_t>(sizeof result);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!isRead || status != 0) {
    std::fprintf(stderr, "a run failed\n");
    std::exit(1);
  }
  return result;
}

void print(const char* name, std::size_t numLines, const Result& result) {
  std::printf(
      "%-6s %8zu lines %8.3f s (fill %.3f, noding %.3f, graph %.3f, polygons %.3f) %9.0f lines/s %6.0f MB  "
      "%zu pieces, %zu polygons, area %.9g, %zu faults\n",
      name, numLines, result.seconds(), result.fillSeconds, result.nodeSeconds, result.graphSeconds,
      result.buildSeconds, static_cast<double>(numLines) / result.seconds(), result.megabytes, result.numPieces,
      result.numPolygons, result.area, result.numFaults);
  std::fflush(stdout);
}

void besideGeos(std::size_t numLines) {
  const std::vector<Street> streets = makeStreets(numLines);
  const Result ours = inProcess(runOurs, streets);
  print("ours", numLines, ours);
  const Result geos = inProcess(runGeos, streets);
  print("GEOS", numLines, geos);
  std::printf("       time of GEOS / ours %.1f, memory of ours / GEOS %.2f\n", geos.seconds() / ours.seconds(),
              ours.megabytes / geos.megabytes);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) {
    for (int i = 1; i < argc; ++i) besideGeos(std::strtoul(argv[i], nullptr, 10));
    return 0;
  }
  for (std::size_t numLines : {50000UL, 100000UL, 200000UL, 400000UL}) {
    const std::vector<Street> streets = makeStreets(numLines);
    print("ours", numLines, inProcess(runOurs, streets));
  }
  besideGeos(100000);
  besideGeos(500000);
  return 0;
}
