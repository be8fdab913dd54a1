// What the tests of Shape share: datasets made byte by byte, read and written through the drivers.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/unit/drivers.h"
#include "vex/inc/numtext.h"
#include "vex/shape/shapewch.h"
#include "vex/shape/shapread.h"
#include "vex/src/vexgroup.h"

using Ints = std::vector<std::uint32_t>;
using Reals = std::vector<double>;

inline std::string big(std::uint32_t value) {
  return {char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
}
inline std::string little(std::uint32_t value) {
  return {char(value), char(value >> 8), char(value >> 16), char(value >> 24)};
}
inline std::string reals(const Reals& values) {
  std::string bytes;
  for (const double value : values) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    bytes += little(static_cast<std::uint32_t>(bits)) + little(static_cast<std::uint32_t>(bits >> 32));
  }
  return bytes;
}
// Content of a line or an area: the box is left zero, readers do not look at it.
inline std::string parts(std::uint32_t type, const Ints& starts, const Reals& xy, const Reals& blocks = {}) {
  std::string bytes = little(type) + std::string(32, '\0') + little(static_cast<std::uint32_t>(starts.size())) +
                      little(static_cast<std::uint32_t>(xy.size() / 2));
  for (const std::uint32_t start : starts) bytes += little(start);
  return bytes + reals(xy) + reals(blocks);
}
inline std::string point(std::uint32_t type, const Reals& ordinates) {
  return little(type) + reals(ordinates);
}
inline std::string header(std::uint32_t type, std::size_t fileBytes) {
  return big(9994) + std::string(20, '\0') + big(static_cast<std::uint32_t>(fileBytes / 2)) + little(1000) +
         little(type) + reals({1, 2, 3, 4, 0, 0, 0, 0});
}

class ShapeTest : public ::testing::Test {
 protected:
  ShapeTest() : directory_(scratchDirectory() + "shape/") {
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
    scope_.row("S_DATASET " + directory_);
  }
  std::string at(const std::string& name) const { return directory_ + name; }
  void put(const std::string& name, const std::string& bytes) const {
    std::ofstream(at(name), std::ios::binary) << bytes;
  }
  std::string bytesOf(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(at(name), std::ios::binary).rdbuf();
    return bytes.str();
  }
  // Writes s.shp and s.shx of these contents.
  void putShapes(std::uint32_t type, const std::vector<std::string>& contents) const {
    std::string shp, shx;
    for (std::size_t i = 0; i < contents.size(); ++i) {
      const auto words = static_cast<std::uint32_t>(contents[i].size() / 2);
      shx += big(static_cast<std::uint32_t>((100 + shp.size()) / 2)) + big(words);
      shp += big(static_cast<std::uint32_t>(i + 1)) + big(words) + contents[i];
    }
    put("s.shp", header(type, 100 + shp.size()) + shp);
    put("s.shx", header(type, 100 + shx.size()) + shx);
  }
  // A table with one column N of two characters.
  void putTable(const std::vector<std::string>& rows) const {
    std::string bytes{3, 99, 1, 1};
    bytes += little(static_cast<std::uint32_t>(rows.size())) + std::string{65, 0, 3, 0} + std::string(20, '\0');
    bytes +=
        std::string("N") + std::string(10, '\0') + 'C' + std::string(4, '\0') + '\2' + std::string(15, '\0') + '\r';
    for (const std::string& row : rows) bytes += row;
    put("s.dbf", bytes);
  }
  // Everything the reader gives: features joined by "; ", without what each of them carries, refused ones and
  // failures as "#number".
  std::string readAll() {
    ShapeReader reader("SHAPE", "S");
    VEXStringVector out;
    VEXStatus failure = reader.setup();
    if (failure == nullptr) failure = reader.open({});
    for (bool more = failure == nullptr; more;) {
      VEXFeaturePtr feature;
      failure = reader.read(feature);
      more = failure == nullptr ? feature != nullptr : failure->severity() == kSeverityRejected;
      if (failure != nullptr && more) out.push_back("#" + std::to_string(numberOf(failure)));
      if (feature == nullptr) continue;
      for (const char* name :
           {"SHAPE_GEOMETRY", "ORV_IDENTIFIERS", "orv_global_bounding_box_min_x", "orv_global_bounding_box_min_y",
            "orv_global_bounding_box_max_x", "orv_global_bounding_box_max_y"})
        feature->removeAttribute(std::string_view(name));
      out.push_back(describe(*feature));
    }
    if (failure == nullptr) failure = reader.close();
    if (failure != nullptr) {
      out.push_back("#" + std::to_string(numberOf(failure)));
      reader.abort();
    }
    return joined(out, "; ");
  }
  std::string readAll(std::uint32_t type, const std::vector<std::string>& contents) {
    putShapes(type, contents);
    return readAll();
  }
  // Writes features to s.shp of a type: numbers of the refused ones, and of what failed.
  std::string writeAll(const std::string& type, const std::vector<VEXFeaturePtr>& features, bool aiFix = false,
                       std::uint64_t longestFile = shp::kLongestFile) {
    VEXGroup group("s", "", "");
    if (!type.empty()) group.setSequenced("SHAPE_GEOMETRY", type);
    group.setSequenced(" 1:N", "char(2)");
    ShapeWriteChannel channel(at("s"), group, aiFix, longestFile);
    VEXStringVector out;
    VEXStatus failure;
    for (const VEXFeaturePtr& feature : features) {
      if (failure == nullptr) failure = channel.writeFeatureImp(*feature);
      if (failure == nullptr || failure->severity() != kSeverityRejected) continue;
      out.push_back("#" + std::to_string(numberOf(failure)));
      failure.reset();
    }
    if (failure == nullptr) failure = channel.close();
    if (failure != nullptr) {
      out.push_back("#" + std::to_string(numberOf(failure)));
      channel.abort();
    }
    return joined(out, "; ");
  }
  std::string writeAll(const std::string& type, const std::vector<std::string>& texts) {
    std::vector<VEXFeaturePtr> features;
    for (const std::string& text : texts) features.push_back(makeFeature(text));
    return writeAll(type, features);
  }
  VEXStringVector namesThere() const {
    VEXStringVector names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  TranslationScope scope_;
  std::string directory_;
};
