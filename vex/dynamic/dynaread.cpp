#include "vex/dynamic/dynaread.h"

#include "vex/dynamic/plugmod.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kNotAReader = 871009;
constexpr std::uint32_t kReaderFailed = 871010;
constexpr std::uint32_t kBanner = 871011;
constexpr std::uint32_t kNameWithoutType = 883003;

}  // namespace

DynaReader::~DynaReader() {
  closeHandle();
}

VEXStatus DynaReader::loadModule() {
  VEX_TRY(loadPlugin(givenType(), plugin_));
  if (plugin_->openReader == nullptr || plugin_->readFeature == nullptr) return makeStatus(kNotAReader, {givenType()});
  return nullptr;
}

VEXStatus DynaReader::open(const VEXStringVector&) {
  if (plugin_ == nullptr) return makeStatus(kNotAReader, {givenType()});  // asked for by its own name
  logMessage(VEXSeverity::Inform, kBanner, {"Dynamic Reader Version 1.0 (May 08, 1999)"});
  std::string dataset;
  VEX_TRY(getDataset(dataset));
  handle_ = plugin_->openReader(readerType().c_str(), keyword().c_str(), dataset.c_str());
  if (handle_ == nullptr) return makeStatus(kReaderFailed, {givenType(), pluginError(*plugin_)});
  return nullptr;
}

VEXStatus DynaReader::readFeature(VEXFeaturePtr& out) {
  out = VEXObjectRecycler::instance().getFeature();
  const std::int32_t result = handle_ == nullptr ? 0 : plugin_->readFeature(handle_, pluginHandle(*out));
  if (result <= 0) out.reset();
  if (result < 0) return makeStatus(kReaderFailed, {givenType(), pluginError(*plugin_)});
  return nullptr;
}

VEXStatus DynaReader::close() {
  closeHandle();
  return nullptr;
}

void DynaReader::closeHandle() {
  if (handle_ != nullptr && plugin_->closeReader != nullptr) plugin_->closeReader(handle_);
  handle_ = nullptr;
}

VEXStatus DynaReader::readSchemaFeatures(const VEXStringVector&, VEXFeatureVector& out) {
  VEXLineVector lines;
  VEX_TRY(getDefLines(lines));
  for (const VEXStringVector& line : lines) {
    if (line.size() % 2 != 0) return makeStatus(kNameWithoutType, {line.back(), line[1]});
    VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature();
    feature->setFeatureType(line[1]);
    for (std::size_t at = 2; at + 1 < line.size(); at += 2) feature->setSequenced(line[at], line[at + 1]);
    out.push_back(std::move(feature));
  }
  return nullptr;
}
