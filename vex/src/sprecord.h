// VEXSpatialRecorder: a feature store with a spatial index beside it. Writing: write per feature, close. Reading: a
// search fills the caller's query with what it finds, read gives its features one by one. Readers of one store share a
// recorder, which then lives as long as the process: shared().
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "vex/rptree/rptree.h"
#include "vex/src/recorder.h"

// What a search has found and read has not given yet. Belongs to who searches.
struct VEXSpatialQuery {
  std::vector<std::uint32_t> hits;  // places in the index's list of addresses, in the order of the store
  std::size_t next = 0;
  RpBox box;  // every feature found meets it
};

class VEXSpatialRecorder {
 public:
  VEXSpatialRecorder(const std::string& path, VEXRecorder::Mode mode);

  // The recorder that all readers of this path share; made anew when the files have changed since.
  static std::shared_ptr<VEXSpatialRecorder> shared(const std::string& path);

  // ---- writing ----
  VEXStatus write(const VEXFeature& feature, VEXRecordAddress& address);
  // Finishes the store, then writes the index. 395305, 395306.
  VEXStatus close();
  void abort();
  VEXRecorder& store() { return recorder_; }

  // ---- reading; the first search loads the index: 395301 a file is missing, 395303 the index is damaged, 395307 it is
  // that of another store ----
  VEXStatus search(const VEXBox& box, VEXSpatialQuery& query);
  // The nearest feature that is less than `distance` away, if there is one; of two as near, the first in the store.
  VEXStatus searchClosest(double x, double y, double distance, VEXSpatialQuery& query);
  VEXStatus read(VEXSpatialQuery& query, VEXFeaturePtr& feature);  // null behind the last

  // "roads.qds" gives "roads.fsi".
  static std::string indexPath(const std::string& path);

 private:
  VEXStatus loadIndex();
  VEXStatus takeAddresses(VEXByteCursor& bytes);
  VEXStatus checkAddresses();
  VEXStatus readHit(std::uint32_t hit, VEXFeaturePtr& feature);
  VEXStatus notOfThisStore() const;

  VEXRecorder recorder_;
  VEXRecorder::Mode recordingMode_;
  RpTree tree_;
  std::vector<VEXRecordAddress> addresses_;
  std::vector<RpEntry> entries_;  // of the tree that close builds
  std::string indexPath_;
  bool isLoaded_ = false;
};
