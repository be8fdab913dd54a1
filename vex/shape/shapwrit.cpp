#include "vex/shape/shapwrit.h"

#include "vex/shape/shapewch.h"
#include "vex/src/vexgroup.h"
#include "vex/src/vexlog.h"

ShapeWriter::ShapeWriter(const std::string& type, const std::string& keyword) : VEXWriterImp(type, keyword) {}

ShapeWriter::~ShapeWriter() = default;

VEXStatus ShapeWriter::setup() {
  aiFix_ = keywords().keywordExists("_AI_FIX");
  if (aiFix_) logMessage(VEXSeverity::Inform, 206002);
  return nullptr;
}

VEXStatus ShapeWriter::writeGlobalMetaData(VEXFeature&) {
  return nullptr;
}

VEXStatus ShapeWriter::open(const VEXStringVector&) {
  groupOfFile_.clear();
  VEX_TRY(getDatasetDir(directory_));
  logMessage(VEXSeverity::Inform, 206001, {directory_});
  return nullptr;
}

VEXStatus ShapeWriter::createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) {
  const std::string basePath = directory_ + fileNameForm(group.featureType());
  const auto [known, isNew] = groupOfFile_.try_emplace(basePath, group.featureType());
  if (!isNew && known->second != group.featureType())
    return makeStatus(206004, {basePath, known->second, group.featureType()});
  out = std::make_unique<ShapeWriteChannel>(basePath, group, aiFix_);
  return nullptr;
}
