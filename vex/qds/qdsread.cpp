#include "vex/qds/qdsread.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <unordered_map>
#include <unordered_set>

#include "vex/inc/numtext.h"
#include "vex/src/plangeom.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kBanner = 24101;
constexpr std::uint32_t kBadEnvelope = 24102;
constexpr std::uint32_t kTwoSearches = 24103;
constexpr std::uint32_t kBadClosest = 24104;
constexpr std::uint32_t kNothingThere = 24105;
constexpr std::uint32_t kNotWanted = 24106;
constexpr std::uint32_t kBadFlag = 24107;
constexpr std::uint32_t kNotOpen = 24108;

constexpr std::string_view kExtension = ".qds";

bool isStoreName(const std::string& name) {
  return name.size() > kExtension.size() &&
         equalsIgnoringCase(std::string_view(name).substr(name.size() - kExtension.size()), kExtension);
}

std::string baseNameOf(const std::string& path) {
  return std::filesystem::path(platform::nativePath(path)).stem().string();
}

}  // namespace

QDSReader::QDSReader(const std::string& type, const std::string& keyword) : VEXReaderImp(type, keyword) {}

QDSReader::~QDSReader() = default;

// ---- keywords ----

VEXStatus QDSReader::setup() {
  bool hasEnvelope = false;
  bool hasClosest = false;
  VEX_TRY(parseNumbers("_SEARCH_ENVELOPE", 4, kBadEnvelope, hasEnvelope));
  VEX_TRY(parseNumbers("_SEARCH_CLOSEST_POINT", 3, kBadClosest, hasClosest));
  if (hasEnvelope && hasClosest)
    return makeStatus(kTwoSearches, {keyword() + "_SEARCH_ENVELOPE", keyword() + "_SEARCH_CLOSEST_POINT"});
  search_ = hasEnvelope ? Search::Envelope : hasClosest ? Search::Closest : Search::None;
  std::string word;
  recovers_ = false;
  if (keywords().getString("_RECOVER", word)) {
    recovers_ = equalsIgnoringCase(word, "YES") || equalsIgnoringCase(word, "TRUE");
    if (!recovers_ && !equalsIgnoringCase(word, "NO") && !equalsIgnoringCase(word, "FALSE"))
      return makeStatus(kBadFlag, {keyword() + "_RECOVER", word});
  }
  return nullptr;
}

VEXStatus QDSReader::parseNumbers(const char* name, std::size_t count, std::uint32_t onFault, bool& isGiven) {
  VEXStringVector words;
  isGiven = keywords().getStringList(name, words) || keywords().keywordExists(name);
  if (!isGiven) return nullptr;
  std::array<double, 4> numbers{};
  bool isRight = words.size() == count;
  for (std::size_t at = 0; isRight && at < count; ++at)
    isRight = textToReal(words[at], numbers[at]) && !std::isnan(numbers[at]);
  if (count == 4) isRight = isRight && numbers[0] <= numbers[2] && numbers[1] <= numbers[3];  // a box holds something
  if (!isRight) return makeStatus(onFault, {keyword() + name, joined(words, " ")});
  numbers_ = numbers;
  return nullptr;
}

// ---- which stores ----

VEXStatus QDSReader::open(const VEXStringVector& parameters) {
  std::string dataset;
  VEX_TRY(getDataset(dataset));
  logMessage(VEXSeverity::Inform, kBanner, {dataset});
  VEX_TRY(listStores(dataset, parameters, stores_));
  isDirectory_ = platform::isDirectory(platform::nativePath(dataset));
  isOpen_ = true;
  return nullptr;
}

// `files` names stores of the dataset; without any, the dataset is one store, or a directory of them. The list is read
// from its end.
VEXStatus QDSReader::listStores(const std::string& dataset, const VEXStringVector& files,
                                VEXStringVector& stores) const {
  stores.clear();
  const std::string native = platform::nativePath(dataset);
  const bool isDirectory = platform::isDirectory(native);
  VEXStringVector ids;
  getIDs(ids);
  std::unordered_set<std::string> wanted;
  for (const std::string& id : ids) wanted.insert(upperCased(fileNameForm(id)));
  if (!files.empty()) {
    for (const std::string& file : files)
      stores.push_back(platform::isAbsolutePath(file) || !isDirectory ? file : dataset + "/" + file);
  } else if (isDirectory) {
    VEX_TRY(listDirectory(native, wanted, stores));
  } else {
    stores.push_back(dataset);
  }
  if (!wanted.empty()) {
    std::unordered_set<std::string> missing = wanted;
    std::erase_if(stores, [&](const std::string& store) {
      const std::string name = upperCased(baseNameOf(store));
      missing.erase(name);
      return !wanted.contains(name);
    });
    VEXStringVector absent(missing.begin(), missing.end());
    std::sort(absent.begin(), absent.end());
    for (const std::string& name : absent) logMessage(VEXSeverity::Warn, kNotWanted, {name, dataset});
  }
  if (stores.empty()) return makeStatus(kNothingThere, {dataset, readerType()});
  return nullptr;
}

VEXStatus QDSReader::listDirectory(const std::string& directory, const std::unordered_set<std::string>& wanted,
                                   VEXStringVector& stores) const {
  VEXStringVector names;
  if (!platform::listDirectory(directory, names)) return makeStatus(kNothingThere, {directory, readerType()});
  std::erase_if(names, [](const std::string& name) { return !isStoreName(name); });
  // Members that follow the first one without a gap are read with it, unless one is wanted and the first is not.
  auto isWanted = [&wanted](const std::string& name) { return wanted.contains(upperCased(baseNameOf(name))); };
  std::map<std::string, std::vector<std::uint32_t>> members;
  std::string first;
  std::uint32_t number = 0;
  for (const std::string& name : names)
    if (VEXRecorder::isLaterMember(name, first, number)) members[first].push_back(number);
  const std::unordered_set<std::string> there(names.begin(), names.end());
  std::unordered_set<std::string> later;
  for (auto& [firstName, numbers] : members) {
    if (!there.contains(firstName)) continue;
    std::sort(numbers.begin(), numbers.end());
    for (std::uint32_t at = 0; at < numbers.size() && numbers[at] == at + 1; ++at) {
      std::string member = VEXRecorder::memberPath(firstName, numbers[at]);
      if (!isWanted(member) || isWanted(firstName)) later.insert(std::move(member));
    }
  }
  // By name from the end, as the list is read from its end.
  for (auto name = names.rbegin(); name != names.rend(); ++name)
    if (!later.contains(*name)) stores.push_back(directory + "/" + *name);
  return nullptr;
}

// ---- features ----

std::unique_ptr<VEXRecorder> QDSReader::makeRecorder(const std::string& path) const {
  auto recorder = std::make_unique<VEXRecorder>(path, VEXRecorder::READ_RECORDING, true, false);
  recorder->setRecovers(recovers_);
  // In a directory what looks like a gap may be the store of another type, which is read, too.
  recorder->setAllowsGap(isDirectory_);
  return recorder;
}

VEXStatus QDSReader::openStore(const std::string& path) {
  if (search_ == Search::None) {
    recorder_ = makeRecorder(path);
    return nullptr;
  }
  spatial_ = VEXSpatialRecorder::shared(path);
  if (search_ == Search::Closest)
    return extendStatus(spatial_->searchClosest(numbers_[0], numbers_[1], numbers_[2], query_));
  VEXBox box;
  box.minX = numbers_[0];
  box.minY = numbers_[1];
  box.maxX = numbers_[2];
  box.maxY = numbers_[3];
  return extendStatus(spatial_->search(box, query_));
}

VEXStatus QDSReader::getGlobalMetaData(VEXFeaturePtr& out) {
  out.reset();
  return nullptr;
}

VEXStatus QDSReader::readFeature(VEXFeaturePtr& out) {
  out.reset();
  if (!isOpen_) return makeStatus(kNotOpen, {readerType()});
  for (;;) {
    if (recorder_ == nullptr && spatial_ == nullptr) {
      if (stores_.empty()) return nullptr;
      const std::string path = std::move(stores_.back());
      stores_.pop_back();
      VEX_TRY(openStore(path));
    }
    VEX_TRY(recorder_ != nullptr ? recorder_->read(out) : spatial_->read(query_, out));
    if (out != nullptr) return nullptr;
    recorder_.reset();
    spatial_.reset();
  }
}

VEXStatus QDSReader::close() {
  abort();
  return nullptr;
}

void QDSReader::abort() {
  isOpen_ = false;
  stores_.clear();
  recorder_.reset();
  // The shared recorder lives on, without the file: the store may be written next.
  if (spatial_ != nullptr) ignoreStatus(spatial_->close());
  spatial_.reset();
}

// ---- schema ----

// A store tells no schema but its features: the names that those of a type have, in the order in which they come, each
// with the length of its longest value.
VEXStatus QDSReader::readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) {
  std::string dataset;
  VEX_TRY(getDataset(dataset));
  VEXStringVector stores;
  VEX_TRY(listStores(dataset, parameters, stores));
  isDirectory_ = platform::isDirectory(platform::nativePath(dataset));
  struct Schema {
    std::string coordSys;
    VEXStringVector names;
    std::unordered_map<std::string, std::size_t> longest;
  };
  std::vector<std::string> types;
  std::unordered_map<std::string, Schema> schemas;
  for (auto path = stores.rbegin(); path != stores.rend(); ++path) {
    std::unique_ptr<VEXRecorder> recorder = makeRecorder(*path);
    for (VEXFeaturePtr feature;;) {
      VEX_TRY(recorder->read(feature));
      if (feature == nullptr) break;
      const auto [found, isNew] = schemas.try_emplace(feature->featureType());
      Schema& schema = found->second;
      if (isNew) {
        types.push_back(feature->featureType());
        schema.coordSys = feature->coordSys();
      }
      VEXStringVector names;
      VEXStringVector values;
      feature->orderedAttributes(names, values);
      for (std::size_t at = 0; at < names.size(); ++at) {
        if (names[at] == "orv_geometry") continue;
        const auto [entry, isNewName] = schema.longest.try_emplace(names[at], 1);
        if (isNewName) schema.names.push_back(names[at]);
        entry->second = std::max(entry->second, values[at].size());
      }
    }
  }
  for (const std::string& type : types) {
    const Schema& schema = schemas[type];
    VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature();
    feature->setFeatureType(type);
    feature->setCoordSys(schema.coordSys);
    for (const std::string& name : schema.names)
      feature->setSequenced(name, "char(" + integerText(static_cast<std::int64_t>(schema.longest.at(name))) + ")");
    out.push_back(std::move(feature));
  }
  return nullptr;
}
