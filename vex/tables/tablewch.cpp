#include "vex/tables/tablewch.h"

#include <filesystem>

#include "vex/src/platform/platform.h"
#include "vex/tables/fieldsub.h"

TableWriteChannel::TableWriteChannel(std::unique_ptr<VEXTableOutput> output, VEXTableDefinition definition)
    : output_(std::move(output)), definition_(std::move(definition)) {}

TableWriteChannel::~TableWriteChannel() = default;

VEXStatus TableWriteChannel::startGroup(VEXGroup&) {
  const std::string directory = std::filesystem::path(output_->path()).parent_path().string();
  if (!directory.empty() && !platform::isDirectory(directory) && !platform::makeDirectories(directory))
    return makeStatus(316005, {directory, output_->path(), definition_.featureType});
  VEX_TRY(output_->open());
  for (const auto& [name, typeSpec] : definition_.fields) VEX_TRY(output_->addField(name, typeSpec));
  columns_.clear();
  for (const std::string& name : output_->columnNames()) columns_.emplace_back(name);
  row_.assign(columns_.size(), {});
  geometryColumns_.clear();
  for (std::size_t i = 0; i < columns_.size(); ++i)
    if (output_->columnRole(i) != VEXColumnRole::Attribute) geometryColumns_.push_back(i);
  geometryTexts_.resize(geometryColumns_.size());
  return nullptr;
}

VEXStatus TableWriteChannel::writeFeatureImp(VEXFeature& feature) {
  valuesOf(feature, columns_, row_);
  for (std::size_t i = 0; i < geometryColumns_.size(); ++i) {
    const std::size_t column = geometryColumns_[i];
    if (feature.numCoords() == 0 && row_[column].data() != nullptr) continue;  // an attribute in its place
    VEX_TRY(fieldsub::geometryText(feature, output_->columnRole(column), output_->geometryKind(), geometryTexts_[i]));
    row_[column] = geometryTexts_[i];
  }
  return extendStatus(output_->writeRow(row_));
}

VEXStatus TableWriteChannel::close() {
  VEX_TRY(output_->close());
  return extendStatus(VEXChannel::close());
}

void TableWriteChannel::abort() {
  output_->abort();
}
