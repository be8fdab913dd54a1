#include "vex/dynamic/dynawrit.h"

#include <utility>

#include "vex/dynamic/plugmod.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNotAWriter = 872004;
constexpr std::uint32_t kWriterFailed = 872005;
constexpr std::uint32_t kRefused = 872006;
constexpr std::uint32_t kBanner = 872007;

class DynaChannel final : public VEXChannel {
 public:
  explicit DynaChannel(DynaWriter& writer) : writer_(writer) {}
  VEXStatus writeFeatureImp(VEXFeature& feature) override { return extendStatus(writer_.writeFeature(feature)); }

 private:
  DynaWriter& writer_;
};

}  // namespace

DynaWriter::~DynaWriter() {
  abort();
}

VEXStatus DynaWriter::loadModule(const std::string& moduleName) {
  moduleName_ = moduleName;
  VEX_TRY(loadPlugin(moduleName, plugin_));
  if (plugin_->openWriter == nullptr || plugin_->writeFeature == nullptr || plugin_->closeWriter == nullptr)
    return makeStatus(kNotAWriter, {moduleName_});
  return nullptr;
}

VEXStatus DynaWriter::open(const VEXStringVector&) {
  if (plugin_ == nullptr) return makeStatus(kNotAWriter, {writerType()});  // asked for by its own name
  logMessage(VEXSeverity::Inform, kBanner, {"Dynamic Writer Version 1.0 (May 09, 1999)"});
  std::string dataset;
  VEX_TRY(getDataset(dataset));
  handle_ = plugin_->openWriter(writerType().c_str(), keyword().c_str(), dataset.c_str());
  if (handle_ == nullptr) return makeStatus(kWriterFailed, {moduleName_, pluginError(*plugin_)});
  return nullptr;
}

VEXStatus DynaWriter::createChannel(VEXGroup&, std::unique_ptr<VEXChannel>& out) {
  out = std::make_unique<DynaChannel>(*this);
  return nullptr;
}

VEXStatus DynaWriter::writeFeature(VEXFeature& feature) {
  const std::int32_t result = handle_ == nullptr ? -1 : plugin_->writeFeature(handle_, pluginHandle(feature));
  if (result < 0) return makeStatus(kWriterFailed, {moduleName_, pluginError(*plugin_)});
  if (result > 0) return makeRejection(kRefused, {moduleName_, pluginError(*plugin_)});
  return nullptr;
}

VEXStatus DynaWriter::close() {
  VEX_TRY(VEXWriterImp::close());
  void* handle = std::exchange(handle_, nullptr);
  if (handle != nullptr && plugin_->closeWriter(handle, 0) < 0)
    return makeStatus(kWriterFailed, {moduleName_, pluginError(*plugin_)});
  return nullptr;
}

void DynaWriter::abort() {
  VEXWriterImp::abort();
  void* handle = std::exchange(handle_, nullptr);
  if (handle != nullptr) plugin_->closeWriter(handle, 1);
}
