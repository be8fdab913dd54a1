// QDSReader: the reader of type QDS. The dataset is a feature store, or a directory of them; a store whose name is that
// of a later member of a series is read with the first one. The attributes, type and geometry of a feature are those
// that were written.
//
// Keywords: _IDs the stores that are wanted; _SEARCH_ENVELOPE, _SEARCH_CLOSEST_POINT a search through the index beside
// a store; _RECOVER. Failures: 24102 to 24105, 24107, those of VEXRecorder and VEXSpatialRecorder.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "vex/src/readrimp.h"
#include "vex/src/recorder.h"
#include "vex/src/sprecord.h"

class QDSReader final : public VEXReaderImp {
 public:
  QDSReader(const std::string& type, const std::string& keyword);
  ~QDSReader() override;

  VEXStatus setup() override;
  VEXStatus getGlobalMetaData(VEXFeaturePtr& out) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  VEXStatus readFeature(VEXFeaturePtr& out) override;
  VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) override;
  VEXStatus close() override;
  void abort() override;

 private:
  enum class Search { None, Envelope, Closest };
  VEXStatus parseNumbers(const char* name, std::size_t count, std::uint32_t onFault, bool& isGiven);
  VEXStatus listStores(const std::string& dataset, const VEXStringVector& files, VEXStringVector& stores) const;
  VEXStatus listDirectory(const std::string& directory, const std::unordered_set<std::string>& wanted,
                          VEXStringVector& stores) const;
  VEXStatus openStore(const std::string& path);
  std::unique_ptr<VEXRecorder> makeRecorder(const std::string& path) const;

  Search search_ = Search::None;
  std::array<double, 4> numbers_{};  // of the search: a box, or a point and a distance
  bool recovers_ = false;
  bool isDirectory_ = false;
  bool isOpen_ = false;
  VEXStringVector stores_;  // still to be read, from the last to the first
  std::unique_ptr<VEXRecorder> recorder_;
  std::shared_ptr<VEXSpatialRecorder> spatial_;
  VEXSpatialQuery query_;
};
