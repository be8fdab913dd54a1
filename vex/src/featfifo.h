// VEXFeatureFIFO: features in their stored form on a temporary file, written at the end and read from the
// front. VEXFeatureStore: the same with an identifier for each feature.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/vexfile.h"

// Attribute names to indices and back, as stored features refer to them: the first name has index 0.
class VEXNameDictionary {
 public:
  std::uint32_t indexOf(VEXName name);                     // added when new
  bool nameAt(std::uint32_t index, VEXName& name) const {  // false for an unknown index
    if (index >= names_.size()) [[unlikely]] {
      lastUnknown_ = index;
      return false;
    }
    name = names_[index];
    return true;
  }
  std::uint32_t lastUnknown() const { return lastUnknown_; }  // the last index that nameAt() did not know
  std::size_t entries() const { return names_.size(); }
  void clear() {
    names_.clear();
    heads_.clear();
    next_.clear();
  }

 private:
  std::vector<VEXName> names_;
  std::vector<std::int32_t> heads_;  // open hash over names_
  std::vector<std::int32_t> next_;
  mutable std::uint32_t lastUnknown_ = 0;
  void rehash();
};

// The stored form of a feature, little-endian: how many bytes it takes, put at a place that has room for them, and
// appended to `out`.
std::size_t storedBytes(const VEXFeature& feature);
void putStoredFeature(char* at, const VEXFeature& feature, VEXNameDictionary& names);
void appendStoredFeature(std::string& out, const VEXFeature& feature, VEXNameDictionary& names);
// Reads one stored feature from the front of `bytes` into a reset feature and sets `used` to its length.
// 879010: unknown name index. 879011: the record does not fit its bytes.
VEXStatus readStoredFeature(std::string_view bytes, const VEXNameDictionary& names, VEXFeature& feature,
                            std::size_t& used);
// The same for bytes that may end too soon: then `used` is 0, and `wanted` says how many bytes the record takes at
// least.
VEXStatus readStoredFeature(std::string_view bytes, const VEXNameDictionary& names, VEXFeature& feature,
                            std::size_t& used, std::size_t& wanted);

class VEXFeatureFIFO {
 public:
  VEXFeatureFIFO() = default;
  virtual ~VEXFeatureFIFO();
  VEXFeatureFIFO(const VEXFeatureFIFO&) = delete;
  VEXFeatureFIFO& operator=(const VEXFeatureFIFO&) = delete;

  VEXStatus open();                            // 236101
  VEXStatus write(const VEXFeature& feature);  // 218002
  // The next feature in the order of writing; `got` is false at the end, until a further write.
  VEXStatus read(VEXFeature& feature, bool& got);
  std::int64_t count() const { return count_; }

 protected:
  VEXStatus flush();
  VEXFile* file_ = nullptr;
  std::unique_ptr<VEXNameDictionary> attrMap_;
  std::uint64_t readPosition_ = 0;
  std::uint64_t writePosition_ = 0;
  std::size_t readAhead_ = std::size_t{256} << 10;  // bytes that a read brings in at least

 private:
  std::int64_t count_ = 0;
  std::string pending_;  // written features not yet in the file
  std::string block_;    // read ahead: the bytes from blockStart_
  std::uint64_t blockStart_ = 0;
};

class VEXFeatureStore : public VEXFeatureFIFO {
 public:
  // Appends the feature and lets it go; `id` is where it lies.
  VEXStatus store(VEXFeaturePtr& feature, std::uint64_t& id);
  // 218003: there is no feature at that place.
  VEXStatus fetch(VEXFeaturePtr& feature, std::uint64_t id);

 private:
  bool isOpen_ = false;
};
