// What the tests of feature stores share: a directory of their own, stores written and read by the recorder or through
// the drivers, and what was read as text.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/unit/drivers.h"
#include "vex/inc/numtext.h"
#include "vex/qds/qdsread.h"
#include "vex/qds/qdswch.h"
#include "vex/src/recorder.h"
#include "vex/src/sprecord.h"

class StoreTest : public ::testing::Test {
 protected:
  StoreTest() : directory_(scratchDirectory() + "store/") {
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
  }
  std::string at(const std::string& name) const { return directory_ + name; }
  void put(const std::string& name, std::string_view bytes) const {
    std::ofstream(at(name), std::ios::binary) << bytes;
  }
  std::string bytesOf(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(at(name), std::ios::binary).rdbuf();
    return bytes.str();
  }
  bool isThere(const std::string& name) const { return std::filesystem::exists(at(name)); }
  std::string names() const {
    VEXStringVector found;
    for (const auto& entry : std::filesystem::directory_iterator(directory_)) found.push_back(entry.path().filename());
    std::sort(found.begin(), found.end());
    return joined(found, " ");
  }
  // "#number" of a failure at its end.
  std::string writeAll(const std::string& name, const VEXStringVector& features, std::uint32_t maxFileSize = 0,
                       bool isPortable = false) const {
    VEXRecorder recorder(at(name), VEXRecorder::WRITE_RECORDING, false, isPortable);
    if (maxFileSize > 0) recorder.setMaxFileSize(maxFileSize);
    VEXStatus failure;
    VEXRecordAddress address;
    for (const std::string& text : features)
      if (failure == nullptr) failure = recorder.write(*makeFeature(text), address);
    if (failure == nullptr) failure = recorder.close();
    return failure == nullptr ? "" : "#" + std::to_string(numberOf(failure));
  }
  // Features joined by "; ", "#number" of a failure at the end.
  std::string readAll(const std::string& name, bool recovers = false) const {
    VEXRecorder recorder(at(name), VEXRecorder::READ_RECORDING, false, false);
    recorder.setRecovers(recovers);
    VEXStringVector out;
    for (VEXFeaturePtr feature;;) {
      VEXStatus failure = recorder.read(feature);
      if (failure != nullptr) out.push_back("#" + std::to_string(numberOf(failure)));
      if (feature == nullptr) return joined(out, "; ");
      out.push_back(describe(*feature));
    }
  }
  // The same through the reader, its keywords behind "S".
  std::string readDataset(const std::string& dataset) {
    VEXConfiguration::setValue("S_DATASET", dataset);
    QDSReader reader("QDS", "S");
    VEXStringVector out;
    VEXStatus failure = reader.setup();
    if (failure == nullptr) failure = reader.open({});
    while (failure == nullptr) {
      VEXFeaturePtr feature;
      failure = reader.read(feature);
      if (feature == nullptr) break;
      out.push_back(describe(*feature));
    }
    if (failure != nullptr) out.push_back("#" + std::to_string(numberOf(failure)));
    reader.abort();
    return joined(out, "; ");
  }

  std::optional<TranslationScope> scope_{std::in_place};
  std::string directory_;
};
