// Holds polygons of ours against GEOS.
//
//   geos_check ends FILE...        the lines of the files as they are: polygons beside GEOSPolygonize
//   geos_check formed FILE...      noded first: polygons beside GEOSUnaryUnion and GEOSPolygonize
//   geos_check single FILE...      the same after all coordinates have been rounded to single precision
//   geos_check arcs FILE...        polygons taken apart into arcs and built again from their arc lists
//   geos_check dissolved FILE...   polygons of every third record dissolved, beside GEOSUnaryUnion
//   geos_check compare A B         two sets of polygons
//
// A file is a .shp, of which only geometry is read, or text with one WKT geometry a line. Prints what it found and
// returns 1 when the two sides differ.
//
// Tolerance. Noding takes points for one that are equal in single precision, so a vertex may move by up to the spacing
// of single-precision numbers at its size, on both axes. A polygon may therefore gain or lose its perimeter times that
// distance; smaller polygons than that may come and go. Without noding nothing may move: the tolerance is that of
// summing areas in double precision. Ends that are one point in single precision close polygons that stay open for
// GEOS: rounding the input gives both sides the same.
#include <geos_c.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "vex/factory/dissolve.h"
#include "vex/src/vexline.h"
#include "vex/topology/arcpolytopology.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/topology.h"

namespace {

GEOSContextHandle_t geos = nullptr;

struct FreeGeometry {
  void operator()(GEOSGeometry* geometry) const { GEOSGeom_destroy_r(geos, geometry); }
};
using Geometry = std::unique_ptr<GEOSGeometry, FreeGeometry>;

[[noreturn]] void fail(const std::string& text) {
  std::fprintf(stderr, "geos_check: %s\n", text.c_str());
  std::exit(2);
}

void must(const VEXStatus& status) {
  if (status != nullptr) fail(status->message());
}

struct Part {
  std::vector<double> x, y;
};
using Parts = std::vector<Part>;  // of one record

// ---- reading ----

template <class Value>
Value valueAt(const std::string& bytes, std::size_t at) {
  Value value{};
  if (at + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

// Polylines and polygons, with or without z and m.
std::vector<Parts> readShapes(const std::string& bytes) {
  std::vector<Parts> records;
  for (std::size_t at = 100; at + 12 <= bytes.size();) {
    std::size_t length = 0;  // big-endian, in words
    for (std::size_t i = 4; i < 8; ++i) length = length << 8 | static_cast<unsigned char>(bytes[at + i]);
    const std::size_t body = at + 8;
    at = body + 2 * length;
    const int type = valueAt<int>(bytes, body) % 10;
    if (type != 3 && type != 5) continue;
    const std::size_t numParts = valueAt<std::uint32_t>(bytes, body + 36);
    const std::size_t numPoints = valueAt<std::uint32_t>(bytes, body + 40);
    if (body + 44 + 4 * numParts + 16 * numPoints > bytes.size()) fail("a record that does not fit its file");
    Parts parts;
    for (std::size_t part = 0; part < numParts; ++part) {
      const std::size_t first = valueAt<std::uint32_t>(bytes, body + 44 + 4 * part);
      const std::size_t last = part + 1 < numParts ? valueAt<std::uint32_t>(bytes, body + 48 + 4 * part) : numPoints;
      Part& into = parts.emplace_back();
      for (std::size_t i = first; i < last && i < numPoints; ++i) {
        const double x = valueAt<double>(bytes, body + 44 + 4 * numParts + 16 * i);
        const double y = valueAt<double>(bytes, body + 52 + 4 * numParts + 16 * i);
        // Like the engine's reader: a coordinate that stands twice would end a part.
        if (!into.x.empty() && into.x.back() == x && into.y.back() == y) continue;
        into.x.push_back(x);
        into.y.push_back(y);
      }
    }
    records.push_back(std::move(parts));
  }
  return records;
}

Part partOf(const GEOSGeometry* line) {
  Part part;
  const GEOSCoordSequence* sequence = GEOSGeom_getCoordSeq_r(geos, line);
  unsigned int count = 0;
  GEOSCoordSeq_getSize_r(geos, sequence, &count);
  part.x.resize(count);
  part.y.resize(count);
  for (unsigned int i = 0; i < count; ++i) GEOSCoordSeq_getXY_r(geos, sequence, i, &part.x[i], &part.y[i]);
  return part;
}

void collectParts(const GEOSGeometry* geometry, Parts& parts) {
  const int type = GEOSGeomTypeId_r(geos, geometry);
  if (type == GEOS_LINESTRING || type == GEOS_LINEARRING) {
    parts.push_back(partOf(geometry));
  } else if (type == GEOS_POLYGON) {
    parts.push_back(partOf(GEOSGetExteriorRing_r(geos, geometry)));
    for (int i = 0; i < GEOSGetNumInteriorRings_r(geos, geometry); ++i)
      parts.push_back(partOf(GEOSGetInteriorRingN_r(geos, geometry, i)));
  } else {
    for (int i = 0; i < GEOSGetNumGeometries_r(geos, geometry); ++i)
      collectParts(GEOSGetGeometryN_r(geos, geometry, i), parts);
  }
}

std::vector<Parts> readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) fail("cannot read " + path);
  if (path.size() > 4 && path.compare(path.size() - 4, 4, ".shp") == 0)
    return readShapes(std::string(std::istreambuf_iterator<char>(in), {}));
  std::vector<Parts> records;
  GEOSWKTReader* reader = GEOSWKTReader_create_r(geos);
  for (std::string text; std::getline(in, text);) {
    if (text.empty()) continue;
    const Geometry geometry(GEOSWKTReader_read_r(geos, reader, text.c_str()));
    if (!geometry) fail("no WKT in " + path + ": " + text);
    collectParts(geometry.get(), records.emplace_back());
  }
  GEOSWKTReader_destroy_r(geos, reader);
  return records;
}

// ---- to GEOS ----

GEOSCoordSequence* sequenceOf(VEXOrdinates xs, VEXOrdinates ys) {
  return GEOSCoordSeq_copyFromArrays_r(geos, xs.data(), ys.data(), nullptr, nullptr,
                                       static_cast<unsigned int>(xs.size()));
}

Geometry collectionOf(std::vector<GEOSGeometry*>& parts, int type) {
  return Geometry(GEOSGeom_createCollection_r(geos, type, parts.data(), static_cast<unsigned int>(parts.size())));
}

// By the even-odd rule: whatever way rings run, and holes with islands.
Geometry areaOf(const Parts& rings) {
  std::vector<GEOSGeometry*> polygons;
  for (const Part& ring : rings) {
    if (ring.x.size() < 4) continue;
    polygons.push_back(
        GEOSGeom_createPolygon_r(geos, GEOSGeom_createLinearRing_r(geos, sequenceOf(ring.x, ring.y)), nullptr, 0));
  }
  Geometry area(GEOSGeom_createEmptyPolygon_r(geos));
  for (GEOSGeometry* each : polygons) {
    Geometry polygon(each);
    if (GEOSisValid_r(geos, polygon.get()) != 1) polygon.reset(GEOSMakeValid_r(geos, polygon.get()));
    area.reset(GEOSSymDifference_r(geos, area.get(), polygon.get()));
    if (!area) fail("rings that GEOS cannot combine");
  }
  return area;
}

Geometry geosOf(const VEXLine& polygon) {
  std::vector<VEXLineRange> ranges;
  polygon.rings(ranges);
  std::vector<GEOSGeometry*> rings;
  for (const VEXLineRange& range : ranges)
    rings.push_back(GEOSGeom_createLinearRing_r(geos, sequenceOf(polygon.xs().subspan(range.first, range.count),
                                                                 polygon.ys().subspan(range.first, range.count))));
  return Geometry(
      GEOSGeom_createPolygon_r(geos, rings[0], rings.data() + 1, static_cast<unsigned int>(rings.size() - 1)));
}

// ---- comparing ----

double areaOf(const GEOSGeometry* geometry) {
  double area = 0.0;
  GEOSArea_r(geos, geometry, &area);
  return area;
}

// What a geometry may gain or lose when its vertices move by `distance`; without a distance, when its area is summed.
double slackOf(const GEOSGeometry* geometry, double distance) {
  double length = 0.0;
  GEOSLength_r(geos, geometry, &length);
  return distance > 0.0 ? length * distance : 1e-9 * areaOf(geometry);
}

double spacingAt(const std::vector<Geometry>& geometries) {
  double largest = 0.0;
  for (const Geometry& geometry : geometries) {
    double bounds[4] = {};
    GEOSGeom_getXMin_r(geos, geometry.get(), &bounds[0]);
    GEOSGeom_getXMax_r(geos, geometry.get(), &bounds[1]);
    GEOSGeom_getYMin_r(geos, geometry.get(), &bounds[2]);
    GEOSGeom_getYMax_r(geos, geometry.get(), &bounds[3]);
    for (double bound : bounds) largest = std::max(largest, std::fabs(bound));
  }
  const float size = static_cast<float>(largest);
  return 2.0 * (static_cast<double>(std::nextafter(size, INFINITY)) - static_cast<double>(size));
}

struct Found {
  std::vector<std::size_t> at;
};

// Every polygon of `ours` has its like in `theirs`, and the other way round, but for polygons within the tolerance.
bool compare(const std::string& name, const std::vector<Geometry>& ours, const std::vector<Geometry>& theirs,
             double distance) {
  GEOSSTRtree* tree = GEOSSTRtree_create_r(geos, 10);
  std::vector<std::size_t> numbers(theirs.size());
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    numbers[i] = i;
    GEOSSTRtree_insert_r(geos, tree, theirs[i].get(), &numbers[i]);
  }
  std::vector<bool> isTaken(theirs.size(), false);
  double ourArea = 0.0, theirArea = 0.0, difference = 0.0, slack = 0.0;
  std::size_t numInvalid = 0, numOdd = 0, numTiny = 0;
  auto miss = [&](const char* side, const GEOSGeometry* polygon, double differs) {
    if (areaOf(polygon) <= slackOf(polygon, distance)) {
      ++numTiny;
      return;
    }
    if (++numOdd > 5) return;
    const Geometry inside(GEOSPointOnSurface_r(geos, polygon));
    double x = 0.0, y = 0.0;
    GEOSGeomGetX_r(geos, inside.get(), &x);
    GEOSGeomGetY_r(geos, inside.get(), &y);
    std::printf("  %s polygon at %.15g %.15g, area %.9g, has no like: the nearest differs by %.9g\n", side, x, y,
                areaOf(polygon), differs);
  };
  for (const Geometry& polygon : ours) {
    ourArea += areaOf(polygon.get());
    slack += slackOf(polygon.get(), distance);
    if (GEOSisValid_r(geos, polygon.get()) != 1) ++numInvalid;
    Found found;
    GEOSSTRtree_query_r(
        geos, tree, polygon.get(),
        [](void* item, void* data) { static_cast<Found*>(data)->at.push_back(*static_cast<std::size_t*>(item)); },
        &found);
    // The like has nearly the same area and box: tried in the order of how much the area differs.
    std::sort(found.at.begin(), found.at.end(), [&](std::size_t i, std::size_t j) {
      const double mine = areaOf(polygon.get());
      return std::fabs(areaOf(theirs[i].get()) - mine) < std::fabs(areaOf(theirs[j].get()) - mine);
    });
    double nearest = areaOf(polygon.get());
    bool isMatched = false;
    for (std::size_t i = 0; i < found.at.size() && i < 50 && !isMatched; ++i) {
      if (isTaken[found.at[i]]) continue;
      const Geometry differs(GEOSSymDifference_r(geos, polygon.get(), theirs[found.at[i]].get()));
      if (!differs) continue;
      const double area = areaOf(differs.get());
      nearest = std::min(nearest, area);
      if (area > slackOf(polygon.get(), distance)) continue;
      isMatched = true;
      isTaken[found.at[i]] = true;
      difference += area;
    }
    if (!isMatched) miss("our", polygon.get(), nearest);
  }
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    theirArea += areaOf(theirs[i].get());
    if (!isTaken[i]) miss("their", theirs[i].get(), areaOf(theirs[i].get()));
  }
  GEOSSTRtree_destroy_r(geos, tree);
  std::printf(
      "%s: %zu polygons, GEOS %zu; area %.12g, GEOS %.12g; symmetric difference %.3g of %.3g allowed; "
      "%zu too small to count, %zu without like, %zu not valid\n",
      name.c_str(), ours.size(), theirs.size(), ourArea, theirArea, difference, slack, numTiny, numOdd, numInvalid);
  return numOdd == 0 && numInvalid == 0;
}

// ---- the checks ----

std::vector<Geometry> geometriesOf(const std::vector<Parts>& records) {
  std::vector<Geometry> geometries;
  for (const Parts& record : records) {
    Geometry area = areaOf(record);
    if (GEOSisEmpty_r(geos, area.get()) == 0) geometries.push_back(std::move(area));
  }
  return geometries;
}

bool checkFormed(const std::string& name, const std::vector<Parts>& records, bool isNoded) {
  VEXTopology topology;
  VEXLineIntersector intersector;
  std::vector<GEOSGeometry*> lines;
  for (const Parts& record : records) {
    for (const Part& part : record) {
      if (part.x.size() < 2) continue;
      lines.push_back(GEOSGeom_createLineString_r(geos, sequenceOf(part.x, part.y)));
      if (isNoded)
        must(topology.addLine(part.x, part.y, {}));
      else
        must(intersector.addLine(VEXLine(part.x, part.y, VEX_GEOM_LINE), 0));
    }
  }
  if (!isNoded) {
    must(intersector.computeIntersections());
    VEXChainPiece piece;
    while (intersector.nextPiece(piece)) must(topology.addLine(piece.xs, piece.ys, piece.zs));
  }
  VEXTopologyResult result;
  must(topology.buildPolygons(result, {.removeDangles = true, .removeSpikes = true, .removeCorridors = true}));
  std::vector<Geometry> ours;
  for (const VEXTopologyPolygon& polygon : result.polygons) ours.push_back(geosOf(polygon.line));
  for (const VEXTopologyFault& fault : result.faults)
    std::printf("  no polygon at %.15g %.15g: %zu arcs\n", fault.x, fault.y, fault.arcs.size());

  Geometry all = collectionOf(lines, GEOS_MULTILINESTRING);
  if (!isNoded) all.reset(GEOSUnaryUnion_r(geos, all.get()));
  const GEOSGeometry* input[] = {all.get()};
  const Geometry formed(GEOSPolygonize_r(geos, input, 1));
  std::vector<Geometry> theirs;
  for (int i = 0; i < GEOSGetNumGeometries_r(geos, formed.get()); ++i)
    theirs.emplace_back(GEOSGeom_clone_r(geos, GEOSGetGeometryN_r(geos, formed.get(), i)));
  std::printf("  %zu dangling arcs, %zu corridors, %zu faults\n", result.dangles.size(), result.corridors.size(),
              result.faults.size());
  return compare(name, ours, theirs, isNoded ? 0.0 : spacingAt(theirs));
}

VEXFeaturePtr featureOf(const Parts& record) {
  VEXFeaturePtr feature(new VEXFeature(2));
  feature->setGeomType(VEX_GEOM_POLYGON);
  for (const Part& ring : record)
    for (std::size_t i = 0; i < ring.x.size(); ++i) feature->addCoord(ring.x[i], ring.y[i]);
  return feature;
}

// Every third record is one group, as an attribute with three values would have it.
bool checkDissolved(const std::string& name, const std::vector<Parts>& records) {
  constexpr std::size_t kNumGroups = 3;
  std::vector<Geometry> ours, theirs;
  for (std::size_t group = 0; group < kNumGroups; ++group) {
    VEXDissolver dissolver(false, false);
    std::vector<GEOSGeometry*> members;
    for (std::size_t at = group; at < records.size(); at += kNumGroups) {
      Geometry area = areaOf(records[at]);
      if (GEOSisEmpty_r(geos, area.get()) != 0) continue;
      must(dissolver.add(*featureOf(records[at]), static_cast<std::int32_t>(at)));
      members.push_back(area.release());
    }
    must(dissolver.dissolve());
    for (const VEXLine& polygon : dissolver.polygons()) ours.push_back(geosOf(polygon));
    for (const VEXTopologyFault& fault : dissolver.faults())
      std::printf("  no polygon at %.15g %.15g: %zu arcs\n", fault.x, fault.y, fault.arcs.size());
    const Geometry all = collectionOf(members, GEOS_GEOMETRYCOLLECTION);
    const Geometry joined(GEOSUnaryUnion_r(geos, all.get()));
    for (int i = 0; i < GEOSGetNumGeometries_r(geos, joined.get()); ++i)
      theirs.emplace_back(GEOSGeom_clone_r(geos, GEOSGetGeometryN_r(geos, joined.get(), i)));
  }
  return compare(name, ours, theirs, spacingAt(theirs));
}

bool checkArcs(const std::string& name, const std::vector<Parts>& records) {
  VEXArcPolyTopology model;
  std::vector<Geometry> theirs;
  for (const Parts& record : records) {
    Geometry area = areaOf(record);
    if (GEOSisEmpty_r(geos, area.get()) != 0) continue;
    VEXFeaturePtr feature = featureOf(record);
    must(model.addFeature(feature));
    theirs.push_back(std::move(area));
  }
  VEXFeatureVector arcs, polygons;
  VEXFeaturePtr universe;
  VEXArcPolyNames names;
  names.arcList = "arcs";
  must(model.run(names, arcs, polygons, universe));
  if (universe) polygons.push_back(std::move(universe));
  auto rebuild = [&](const VEXFeature& feature) {
    Parts rings(1);
    for (std::size_t i = 0;; ++i) {
      const VEXText* entry = feature.findAttribute(VEXName::intern("arcs{" + std::to_string(i) + "}"));
      if (entry == nullptr) break;
      const long id = std::stol(entry->c_str());
      if (id == 0) {
        rings.emplace_back();
        continue;
      }
      const VEXFeature& arc = *arcs[static_cast<std::size_t>(std::labs(id)) - 1];
      Part& ring = rings.back();
      for (std::size_t k = 0; k < arc.numCoords(); ++k) {
        const std::size_t at = id > 0 ? k : arc.numCoords() - 1 - k;
        if (k == 0 && !ring.x.empty()) {
          if (ring.x.back() != arc.xs()[at] || ring.y.back() != arc.ys()[at]) fail(name + ": arcs that do not meet");
          continue;
        }
        ring.x.push_back(arc.xs()[at]);
        ring.y.push_back(arc.ys()[at]);
      }
    }
    for (const Part& ring : rings)
      if (ring.x.front() != ring.x.back() || ring.y.front() != ring.y.back()) fail(name + ": a ring does not close");
    return areaOf(rings);
  };
  std::vector<Geometry> ours;
  for (const VEXFeaturePtr& polygon : polygons) ours.push_back(rebuild(*polygon));
  // The universe's rings are the boundary of all polygons together.
  std::vector<GEOSGeometry*> copies;
  for (const Geometry& area : theirs) copies.push_back(GEOSGeom_clone_r(geos, area.get()));
  const Geometry collection = collectionOf(copies, GEOS_GEOMETRYCOLLECTION);
  theirs.emplace_back(GEOSUnaryUnion_r(geos, collection.get()));
  std::printf("  %zu arcs\n", arcs.size());
  return compare(name, ours, theirs, spacingAt(theirs));
}

void report(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  std::printf("\n");
}

int check(const std::vector<std::string>& words) {
  const std::string& mode = words[0];
  bool isGood = true;
  if (mode == "compare" && words.size() == 3) {
    const std::vector<Geometry> theirs = geometriesOf(readFile(words[2]));
    isGood = compare(words[1], geometriesOf(readFile(words[1])), theirs, spacingAt(theirs));
  } else if (mode == "arcs" || mode == "formed" || mode == "single" || mode == "ends" || mode == "dissolved") {
    std::vector<Parts> records;
    std::string names;
    for (std::size_t i = 1; i < words.size(); ++i) {
      std::vector<Parts> more = readFile(words[i]);
      std::move(more.begin(), more.end(), std::back_inserter(records));
      names += (i > 1 ? " + " : "") + words[i].substr(words[i].rfind('/') + 1);
    }
    for (std::size_t i = 0; i < records.size() && mode == "single"; ++i)
      for (Part& part : records[i])
        for (std::vector<double>* ordinates : {&part.x, &part.y})
          for (double& value : *ordinates) value = static_cast<double>(static_cast<float>(value));
    isGood = mode == "arcs"        ? checkArcs(names, records)
             : mode == "dissolved" ? checkDissolved(names, records)
                                   : checkFormed(names, records, mode == "ends");
  } else {
    fail("ends, formed, single, arcs or dissolved FILE..., or compare A B");
  }
  return isGood ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) fail("ends, formed, single, arcs or dissolved FILE..., or compare A B");
  geos = initGEOS_r(nullptr, report);
  const int result = check(std::vector<std::string>(argv + 1, argv + argc));
  finishGEOS_r(geos);
  return result;
}
