// ShapeDecoder: turns the content of one record into the geometry of a feature. Parts of a line follow each other in
// one list, the last coordinate of a part standing twice where another follows; rings of an area follow each other,
// each closed; points of a multipoint stand twice. Or, when aggregates are wanted, each part gets a header row.
// The third ordinate is z, or the measure in a type that has measures and no z.
#pragma once

#include <cstdint>
#include <vector>

#include "vex/inc/vexfeat.h"
#include "vex/shape/shpcodec.h"
#include "vex/shape/shprings.h"

// Measures of a z type, as an attribute: a number for each coordinate of the feature, blanks between, "-" for none.
VEXName shapeMeasuresName();

class ShapeDecoder {
 public:
  explicit ShapeDecoder(bool makesAggregates) : makesAggregates_(makesAggregates) {}

  // 3 when the record has z, or measures in place of it.
  static int dimensionOf(const shp::Record& record);
  // Fills a feature of that dimension without attributes; what coordinates it has go. False: a coordinate is infinite
  // or, except in a point, no number. A point that is no number gives a feature without coordinates, as a null shape
  // does.
  bool decode(const shp::Record& record, VEXFeature& feature);
  // The same for shp::findSingleRing()'s points and a feature of dimension 2, when there is nothing to drop, to add or
  // to close. False: decode() has to look closer.
  static bool decodePlainRing(const shp::Points& points, VEXFeature& feature);
  // Stored point counts of the rings that were left out of the last area: fewer than three edges.
  const std::vector<std::uint32_t>& skippedRings() const { return skippedRings_; }

 private:
  struct Source {
    const char* points;
    const char* third;
    const char* measures;
  };
  void start(VEXFeature& feature);
  bool decodePoint(const Source& from);
  bool decodePoints(const Source& from, std::size_t count);
  // False: a coordinate is infinite or no number.
  template <bool kIsRing>
  bool takeParts(const shp::Record& record, const Source& from);
  template <bool kIsRing>
  bool takePart(const Source& from, std::size_t count);
  template <bool kIsRing>
  bool takePlainPart(const Source& from, std::size_t count, std::size_t start, bool& isFinite);
  template <bool kIsRing>
  void takeOddPart(const Source& from, std::size_t count, std::size_t start);
  void put(std::size_t at, double x, double y, double third, double measure);
  void ensure(std::size_t count) {  // makes room for `count` coordinates in all
    if (count > size_) [[unlikely]]
      grow(count);
  }
  void grow(std::size_t count);
  void gatherLines();
  void gatherRings();
  void gatherPoints();
  void startGathering();
  void addHeaderRow(std::uint32_t code, std::size_t count);
  void addRange(const ShapeRing& range);
  void finishGathering();
  void setMeasures();

  const bool makesAggregates_;
  bool hasThird_ = false;
  bool hasMeasures_ = false;
  VEXFeature* feature_ = nullptr;
  double* x_ = nullptr;  // of the feature, with room for size_
  double* y_ = nullptr;
  double* z_ = nullptr;
  std::size_t size_ = 0;
  std::size_t at_ = 0;  // coordinates filled
  std::vector<double> measures_;
  std::string measuresText_;
  std::vector<ShapeRing> parts_;  // when aggregates are made
  std::vector<std::uint32_t> skippedRings_;
  ShapeRingOrder ringOrder_;
  std::vector<std::vector<std::size_t>> holes_;  // of each ring
  std::vector<double> gatheredX_, gatheredY_, gatheredZ_, gatheredM_;
};
