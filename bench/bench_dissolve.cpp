// Dissolving parcels beside GEOS: noded ones beside its coverage union, overlapping ones beside its unary union. Each
// side runs in a process of its own, so that the peak memory is its own; the areas have to agree. Both sides dissolve a
// few parcels first, which is not measured: the code's own pages, about a megabyte, count for neither.
//   bench_dissolve [parcels] [groups]
#include <geos_c.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/apart.h"
#include "vex/factory/dissolve.h"
#include "vex/inc/vexfeat.h"

namespace {

constexpr int kPerEdge = 4;       // segments of an edge of a parcel
constexpr double kSpread = 1.01;  // of a parcel that overlaps its neighbours

// The same place for everybody who asks: corners and vertices of edges that two parcels share.
double jitter(std::uint64_t x, std::uint64_t y, std::uint64_t axis) {
  std::uint64_t hash = x * 0x9E3779B97F4A7C15U ^ y * 0xC2B2AE3D27D4EB4FU ^ axis * 0x165667B19E3779F9U;
  hash ^= hash >> 29;
  hash *= 0xBF58476D1CE4E5B9U;
  hash ^= hash >> 32;
  return (static_cast<double>(hash >> 11) / 9007199254740992.0 - 0.5) * 0.1;
}

struct Parcel {
  std::vector<double> xs, ys;
};

// Parcels by group: square blocks of a square field.
std::vector<std::vector<Parcel>> makeParcels(int parcels, int groups, double spread) {
  const int side = static_cast<int>(std::sqrt(parcels));
  const int blocks = std::max(1, static_cast<int>(std::sqrt(groups)));
  std::vector<std::vector<Parcel>> made(static_cast<std::size_t>(blocks) * static_cast<std::size_t>(blocks));
  for (int column = 0; column < side; ++column) {
    for (int row = 0; row < side; ++row) {
      Parcel parcel;
      const auto add = [&](int fineX, int fineY) {  // in units of a segment
        const auto x = static_cast<std::uint64_t>(fineX), y = static_cast<std::uint64_t>(fineY);
        const double cx = column + 0.5, cy = row + 0.5;
        const double px = static_cast<double>(fineX) / kPerEdge + jitter(x, y, 1);
        const double py = static_cast<double>(fineY) / kPerEdge + jitter(x, y, 2);
        parcel.xs.push_back(spread == 1.0 ? px : cx + (px - cx) * spread);
        parcel.ys.push_back(spread == 1.0 ? py : cy + (py - cy) * spread);
      };
      const int x0 = column * kPerEdge, y0 = row * kPerEdge;
      for (int i = 0; i < kPerEdge; ++i) add(x0 + i, y0);
      for (int i = 0; i < kPerEdge; ++i) add(x0 + kPerEdge, y0 + i);
      for (int i = 0; i < kPerEdge; ++i) add(x0 + kPerEdge - i, y0 + kPerEdge);
      for (int i = 0; i <= kPerEdge; ++i) add(x0, y0 + kPerEdge - i);
      parcel.xs.back() = parcel.xs.front();
      parcel.ys.back() = parcel.ys.front();
      const int block = column * blocks / side * blocks + row * blocks / side;
      made[static_cast<std::size_t>(block)].push_back(std::move(parcel));
    }
  }
  return made;
}

struct Result {
  double seconds = 0, megabytes = 0, area = 0;
  std::size_t polygons = 0;
};

double since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// What a group gives is measured and let go, as a writer would.
void runOurs(const std::vector<std::vector<Parcel>>& groups, bool isNoded, Result& result) {
  for (const std::vector<Parcel>& parcels : groups) {
    const auto start = std::chrono::steady_clock::now();
    VEXDissolver dissolver(isNoded, false);
    VEXFeature feature;
    std::int32_t number = 0;
    for (const Parcel& parcel : parcels) {
      feature.mutableXs() = parcel.xs;
      feature.mutableYs() = parcel.ys;
      feature.restoreGeometry(VEX_GEOM_POLYGON, 2);
      if (dissolver.add(feature, number++) != nullptr) std::abort();
    }
    if (dissolver.dissolve() != nullptr || !dissolver.faults().empty()) std::abort();
    result.seconds += since(start);
    result.polygons += dissolver.polygons().size();
    for (const VEXLine& polygon : dissolver.polygons()) {
      double area = 0.0;
      ignoreStatus(polygon.area(area));
      result.area += std::fabs(area);
    }
  }
}

void runPeer(const std::vector<std::vector<Parcel>>& groups, bool isNoded, Result& result) {
  initGEOS(nullptr, nullptr);
  for (const std::vector<Parcel>& parcels : groups) {
    const auto start = std::chrono::steady_clock::now();
    std::vector<GEOSGeometry*> polygons;
    for (const Parcel& parcel : parcels) {
      GEOSCoordSequence* sequence = GEOSCoordSeq_copyFromArrays(parcel.xs.data(), parcel.ys.data(), nullptr, nullptr,
                                                                static_cast<unsigned>(parcel.xs.size()));
      polygons.push_back(GEOSGeom_createPolygon(GEOSGeom_createLinearRing(sequence), nullptr, 0));
    }
    GEOSGeometry* all =
        GEOSGeom_createCollection(GEOS_MULTIPOLYGON, polygons.data(), static_cast<unsigned>(polygons.size()));
    GEOSGeometry* dissolved = isNoded ? GEOSCoverageUnion(all) : GEOSUnaryUnion(all);
    GEOSGeom_destroy(all);
    result.seconds += since(start);
    double area = 0.0;
    if (dissolved == nullptr || GEOSArea(dissolved, &area) == 0) std::abort();
    result.area += area;
    result.polygons += static_cast<std::size_t>(GEOSGetNumGeometries(dissolved));
    GEOSGeom_destroy(dissolved);
  }
}

void compare(const char* name, int parcels, int groups, bool isNoded) {
  const std::vector<std::vector<Parcel>> made = makeParcels(parcels, groups, isNoded ? 1.0 : kSpread);
  const std::vector<std::vector<Parcel>> few = makeParcels(9, 1, isNoded ? 1.0 : kSpread);
  Result unused;
  const Result ours =
      apart<Result>([&](Result& result) { runOurs(made, isNoded, result); }, [&] { runOurs(few, isNoded, unused); });
  const Result peer =
      apart<Result>([&](Result& result) { runPeer(made, isNoded, result); }, [&] { runPeer(few, isNoded, unused); });
  std::printf("%-9s%9d%8d%9.2f%9.2f%8.1f%8.1f%8.1f%10zu%10zu  %s\n", name, parcels, groups, ours.seconds, peer.seconds,
              peer.seconds / ours.seconds, ours.megabytes, peer.megabytes, ours.polygons, peer.polygons,
              std::fabs(ours.area - peer.area) <= 1e-9 * peer.area ? "areas agree" : "AREAS DIFFER");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  std::printf("%-9s%9s%8s%9s%9s%8s%8s%8s%10s%10s\n", "job", "parcels", "groups", "orv s", "geos s", "ratio", "orv MB",
              "geos MB", "polygons", "geos");
  if (argc > 2) {
    compare("noded", std::atoi(argv[1]), std::atoi(argv[2]), true);
    compare("raw", std::atoi(argv[1]), std::atoi(argv[2]), false);
    return 0;
  }
  compare("noded", 200000, 2000, true);
  compare("raw", 200000, 2000, false);
  for (int parcels : {50000, 100000, 200000, 400000}) {
    compare("noded", parcels, 1, true);
    compare("raw", parcels, 1, false);
  }
}
