#include "vex/tables/tabwrit.h"

#include <filesystem>

#include "vex/inc/numtext.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexgroup.h"
#include "vex/src/vexlog.h"
#include "vex/tables/tablewch.h"

TabularWriter::TabularWriter(const std::string& type, const std::string& keyword) : VEXWriterImp(type, keyword) {}

TabularWriter::~TabularWriter() = default;

VEXStatus TabularWriter::writeGlobalMetaData(VEXFeature&) {
  return nullptr;
}

// The rows are read here although the groups hold them, too: a wrong one shows before the first feature, and the
// groups keep only the last of two columns with one name.
VEXStatus TabularWriter::open(const VEXStringVector&) {
  logMessage(VEXSeverity::Inform, 316001);
  VEX_TRY(getDatasetDir(directory_));
  definitions_.clear();
  typeOfFile_.clear();
  const std::string defKeyword = keywords().getDefKeyword();
  VEXStringVector row;
  for (VEXConfiguration::rewind(); VEXConfiguration::nextRow(row);)
    if (row[0] == defKeyword) VEX_TRY(addDefinition(row));
  return nullptr;
}

VEXStatus TabularWriter::addDefinition(const VEXStringVector& row) {
  VEXTableDefinition definition;
  if (!VEXTableDefinition::parse(row, definition) || definition.fields.empty())
    return makeStatus(316004, {joined(row, " ")});
  if (findTableKind(definition.kindName) == nullptr)
    return makeStatus(316002, {definition.kindName, definition.featureType, tableKindNames()});
  const std::string path =
      std::filesystem::path(tablePath(directory_, definition.fileName)).lexically_normal().string();
  const auto [known, isNew] = typeOfFile_.try_emplace(path, definition.featureType);
  if (!isNew && known->second != definition.featureType)
    return makeStatus(316003, {path, known->second, definition.featureType});
  definitions_.insert_or_assign(definition.featureType, std::move(definition));
  return nullptr;
}

VEXStatus TabularWriter::createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) {
  auto found = definitions_.find(group.featureType());
  if (found == definitions_.end()) {
    // A group that no row of the mapping file made; its schema is the row.
    VEX_TRY(addDefinition(definitionOf(group)));
    found = definitions_.find(group.featureType());
  }
  const VEXTableDefinition& definition = found->second;
  const VEXTableKind& kind = *findTableKind(definition.kindName);
  out = std::make_unique<TableWriteChannel>(kind.makeOutput(tablePath(directory_, definition.fileName)), definition);
  return nullptr;
}
