#include "vex/src/readrimp.h"

#include <algorithm>
#include <unordered_set>

#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNoDataset = 883001;
constexpr std::uint32_t kDefTwice = 883002;
constexpr std::uint32_t kOtherCoordSys = 883004;
constexpr std::uint32_t kCoordSysOverridden = 883007;
constexpr std::uint32_t kDefWithoutType = 883008;

// "C:\data\road.shp" gives "road".
std::string_view fileBaseName(std::string_view path) {
  std::size_t start = path.size();
  while (start > 0 && !platform::isSeparator(path[start - 1])) --start;
  path.remove_prefix(start);
  std::size_t dot = path.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? path : path.substr(0, dot);
}

}  // namespace

// Calls look(full name) for the three places of a short name until one of them answers.
template <class Look>
static bool lookUp(const VEXDriverKeywords& keywords, std::string_view name, Look&& look) {
  if (look(std::string(name))) return true;
  if (look(keywords.keyword() + std::string(name))) return true;
  return keywords.type() != keywords.keyword() && look(keywords.type() + std::string(name));
}

bool VEXDriverKeywords::keywordExists(std::string_view name) const {
  return lookUp(*this, name, [](const std::string& full) { return VEXConfiguration::contains(full); });
}

bool VEXDriverKeywords::getString(std::string_view name, std::string& value) const {
  return lookUp(*this, name, [&](const std::string& full) { return VEXConfiguration::value(full, value); });
}

void VEXDriverKeywords::getString(std::string_view name, std::string& value, std::string_view defaultValue) const {
  if (!getString(name, value)) value.assign(defaultValue);
}

bool VEXDriverKeywords::getDouble(std::string_view name, double& value) const {
  return lookUp(*this, name, [&](const std::string& full) { return VEXConfiguration::doubleValue(full, value); });
}

bool VEXDriverKeywords::getInteger(std::string_view name, std::int32_t& value) const {
  return lookUp(*this, name, [&](const std::string& full) { return VEXConfiguration::intValue(full, value); });
}

bool VEXDriverKeywords::getStringList(std::string_view name, VEXStringVector& values) const {
  return lookUp(*this, name, [&](const std::string& full) { return VEXConfiguration::values(full, values); });
}

std::string VEXDriverKeywords::getDefKeyword(std::string_view suffix) const {
  std::string own = keyword_ + std::string(suffix);
  return VEXConfiguration::contains(own) ? own : type_ + std::string(suffix);
}

VEXStatus VEXDriverKeywords::getDataset(std::string& dataset, std::uint32_t missing) const {
  const std::string byKeyword = keyword_ + "_DATASET";
  const std::string byType = type_ + "_DATASET";
  std::string given;
  if (VEXConfiguration::value(byKeyword, given) || VEXConfiguration::value(byType, given))
    dataset = VEXConfiguration::normalisePath(given);
  else
    dataset.clear();
  if (dataset.empty()) {
    const std::string names = byKeyword == byType ? byKeyword : byKeyword + "' or `" + byType;
    return makeStatus(missing, {names, type_, type_});
  }
  while (dataset.size() > 1 && platform::isSeparator(dataset.back())) dataset.pop_back();
  return nullptr;
}

VEXReaderImp::VEXReaderImp(const std::string& type, const std::string& keyword)
    : keywords_(type, keyword), givenType_(type) {
  coordSysFromMapping_ = keywords_.getString("_COORDINATE_SYSTEM", coordSys_);
}

VEXReaderImp::~VEXReaderImp() = default;

VEXStatus VEXReaderImp::setup() {
  return nullptr;
}

VEXStatus VEXReaderImp::read(VEXFeaturePtr& out) {
  VEX_TRY(readFeature(out));
  if (out == nullptr) return nullptr;
  out->trimCoords();
  out->compactAttributes();
  if (out->coordSys().empty() && !coordSys_.empty()) out->setCoordSys(coordSys_);
  return nullptr;
}

VEXStatus VEXReaderImp::readSchema(const VEXStringVector& parameters, VEXFeatureVector& out) {
  VEX_TRY(readSchemaFeatures(parameters, out));
  for (VEXFeaturePtr& feature : out)
    if (feature->coordSys().empty()) feature->setCoordSys(coordSys_);
  return nullptr;
}

VEXStatus VEXReaderImp::getDataset(std::string& dataset) const {
  return extendStatus(keywords_.getDataset(dataset, kNoDataset));
}

void VEXReaderImp::getIDs(VEXStringVector& ids) const {
  ids.clear();
  if (!VEXConfiguration::values(keyword() + "_IDs", ids)) VEXConfiguration::values(readerType() + "_IDs", ids);
}

VEXStatus VEXReaderImp::getDefLines(VEXLineVector& lines) const {
  lines.clear();
  const std::string defKeyword = keywords_.getDefKeyword();
  std::unordered_set<std::string> types;
  VEXStringVector row;
  for (VEXConfiguration::rewind(); VEXConfiguration::nextRow(row);) {
    if (row[0] != defKeyword) continue;
    if (row.size() < 2) return makeStatus(kDefWithoutType, {defKeyword});
    if (!types.insert(row[1]).second) return makeStatus(kDefTwice, {row[1], defKeyword});
    lines.push_back(std::move(row));
  }
  return nullptr;
}

void VEXReaderImp::keepListedIDs(VEXStringVector& names) const {
  VEXStringVector listed;
  if (!VEXConfiguration::values("ID", listed)) return;
  std::erase_if(names, [&](const std::string& name) {
    return std::find(listed.begin(), listed.end(), fileBaseName(name)) == listed.end();
  });
}

void VEXReaderImp::setCoordSys(const std::string& name) {
  if (coordSysFromMapping_) {
    logMessage(VEXSeverity::Warn, kCoordSysOverridden, {name, coordSys_, readerType()});
    return;
  }
  if (!coordSys_.empty() && coordSys_ != name)
    logMessage(VEXSeverity::Warn, kOtherCoordSys, {name, coordSys_, readerType()});
  coordSys_ = name;
}
