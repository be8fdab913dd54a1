// The spatial index beside GEOS STRtree: build over a million boxes, box queries and point queries. Each side runs in a
// process of its own, so that the peak memory is its own; both count their hits, which have to agree.
//   bench_index [boxes] [queries] [overlap]     overlap: mean side of a box as a share of the mean distance, 0.7
#include <geos_c.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bench/apart.h"
#include "vex/rptree/rptree.h"

namespace {

constexpr unsigned kSeed = 7;

struct Input {
  std::vector<RpEntry> entries;
  std::vector<RpBox> boxes, points;
};

Input makeInput(std::size_t numBoxes, std::size_t numQueries, double overlap) {
  Input input;
  std::mt19937_64 random(kSeed);
  const double extent = std::sqrt(static_cast<double>(numBoxes));  // a box to a unit square
  std::uniform_real_distribution<double> place(0.0, extent), side(0.0, 2.0 * overlap);
  const auto box = [&](double width, double height) {
    const double x = place(random), y = place(random);
    return RpBox{x, y, x + width, y + height};
  };
  for (std::size_t i = 0; i < numBoxes; ++i) {
    const double width = side(random);
    input.entries.push_back({box(width, side(random)), static_cast<std::uint32_t>(i)});
  }
  for (std::size_t i = 0; i < numQueries; ++i) {
    input.boxes.push_back(box(2.8, 2.8));
    input.points.push_back(box(0.0, 0.0));
  }
  return input;
}

struct Result {
  double buildSeconds = 0, boxSeconds = 0, pointSeconds = 0, growSeconds = 0, megabytes = 0;
  std::uint64_t boxHits = 0, pointHits = 0;
};

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void runTree(const Input& input, Result& result) {
  RpTree tree;
  std::vector<RpEntry> entries = input.entries;
  result.buildSeconds = secondsOf([&] { tree.bulkLoad(std::move(entries)); });
  RpHits hits;
  result.boxSeconds = secondsOf([&] {
    for (const RpBox& box : input.boxes) {
      tree.searchIntersecting(box, hits);
      result.boxHits += hits.size();
    }
  });
  result.pointSeconds = secondsOf([&] {
    for (const RpBox& box : input.points) {
      tree.searchPoint(box.minX, box.minY, hits);
      result.pointHits += hits.size();
    }
  });
}

void runGrown(const Input& input, Result& result) {
  RpTree tree;
  result.growSeconds = secondsOf([&] {
    for (const RpEntry& entry : input.entries) tree.insert(entry.box, entry.id);
  });
}

void runPeer(const Input& input, Result& result) {
  initGEOS(nullptr, nullptr);
  const auto rectangles = [](const std::vector<RpBox>& boxes) {
    std::vector<GEOSGeometry*> made;
    for (const RpBox& box : boxes) made.push_back(GEOSGeom_createRectangle(box.minX, box.minY, box.maxX, box.maxY));
    return made;
  };
  std::vector<RpBox> all;
  for (const RpEntry& entry : input.entries) all.push_back(entry.box);
  const std::vector<GEOSGeometry*> items = rectangles(all), boxes = rectangles(input.boxes);
  std::vector<GEOSGeometry*> points;
  for (const RpBox& box : input.points) points.push_back(GEOSGeom_createPointFromXY(box.minX, box.minY));
  GEOSSTRtree* tree = GEOSSTRtree_create(10);
  std::vector<std::uint32_t> hits;
  const auto take = [](void* item, void* found) {
    static_cast<std::vector<std::uint32_t>*>(found)->push_back(
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(item)));
  };
  result.buildSeconds = secondsOf([&] {
    for (std::size_t i = 0; i < items.size(); ++i) GEOSSTRtree_insert(tree, items[i], reinterpret_cast<void*>(i));
    GEOSSTRtree_query(tree, points[0], take, &hits);  // builds it
  });
  const auto query = [&](const std::vector<GEOSGeometry*>& queries, std::uint64_t& count) {
    for (const GEOSGeometry* geometry : queries) {
      hits.clear();
      GEOSSTRtree_query(tree, geometry, take, &hits);
      count += hits.size();
    }
  };
  result.boxSeconds = secondsOf([&] { query(boxes, result.boxHits); });
  result.pointSeconds = secondsOf([&] { query(points, result.pointHits); });
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t numBoxes = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1000000;
  const std::size_t numQueries = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 100000;
  const double overlap = argc > 3 ? std::strtod(argv[3], nullptr) : 0.7;
  const Input input = makeInput(numBoxes, numQueries, overlap);
  const Result ours = apart<Result>([&](Result& result) { runTree(input, result); });
  const Result grown = apart<Result>([&](Result& result) { runGrown(input, result); });
  const Result peer = apart<Result>([&](Result& result) { runPeer(input, result); });
  const auto boxes = static_cast<double>(numBoxes), queries = static_cast<double>(numQueries);
  std::printf("%zu boxes, %.1f hits a box query, %.1f a point query\n", numBoxes,
              static_cast<double>(ours.boxHits) / queries, static_cast<double>(ours.pointHits) / queries);
  std::printf("%-16s %14s %14s %8s\n", "", "tree", "STRtree", "ratio");
  const auto row = [](const char* name, double mine, double theirs, double ratio) {
    std::printf("%-16s %14.0f %14.0f %8.2f\n", name, mine, theirs, ratio);
  };
  const auto rate = [&](const char* name, double count, double mine, double theirs) {
    row(name, count / mine, count / theirs, theirs / mine);
  };
  rate("build, boxes/s", boxes, ours.buildSeconds, peer.buildSeconds);
  rate("box queries/s", queries, ours.boxSeconds, peer.boxSeconds);
  rate("point queries/s", queries, ours.pointSeconds, peer.pointSeconds);
  row("peak MB", ours.megabytes, peer.megabytes, peer.megabytes / ours.megabytes);
  std::printf("%-16s %14.0f\n", "grown, boxes/s", boxes / grown.growSeconds);
  if (ours.boxHits != peer.boxHits || ours.pointHits != peer.pointHits) {
    std::printf("hits differ: %llu and %llu, %llu and %llu\n", static_cast<unsigned long long>(ours.boxHits),
                static_cast<unsigned long long>(peer.boxHits), static_cast<unsigned long long>(ours.pointHits),
                static_cast<unsigned long long>(peer.pointHits));
    return 1;
  }
  return 0;
}
