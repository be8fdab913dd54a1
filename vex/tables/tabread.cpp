#include "vex/tables/tabread.h"

#include <algorithm>
#include <filesystem>

#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"
#include "vex/tables/fieldsub.h"

namespace {

constexpr std::string_view kNotRequested = " was not requested for translation";

std::string notPresent(const std::string& directory) {
  return " was not present in directory '" + directory + "'";
}

// The last part of a path, and that part without its ending.
std::string fileNameOf(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}
std::string baseNameOf(const std::string& path) {
  return std::filesystem::path(path).stem().string();
}

}  // namespace

TabularReader::TabularReader(const std::string& type, const std::string& keyword) : VEXReaderImp(type, keyword) {}

TabularReader::~TabularReader() = default;

VEXStatus TabularReader::setup() {
  VEXLineVector lines;
  VEX_TRY(getDefLines(lines));
  definitions_.clear();
  for (const VEXStringVector& line : lines) {
    VEXTableDefinition& definition = definitions_.emplace_back();
    if (!VEXTableDefinition::parse(line, definition)) return makeStatus(315006, {joined(line, " ")});
    const VEXTableKind* kind = findTableKind(definition.kindName);
    if (kind == nullptr || kind->makeInput == nullptr)
      return makeStatus(315005, {definition.kindName, definition.featureType, tableKindNames()});
  }
  getIDs(ids_);
  return nullptr;
}

VEXStatus TabularReader::open(const VEXStringVector&) {
  logMessage(VEXSeverity::Inform, 315001);
  std::string dataset;
  VEX_TRY(getDataset(dataset));
  tables_.clear();
  nextTable_ = 0;
  if (platform::fileExists(dataset) && !platform::isDirectory(dataset)) {
    listTablesOfFile(dataset);
  } else {
    std::string directory = dataset;
    keywords().getString("_LOCATION", directory, dataset);
    for (const VEXTableDefinition& definition : definitions_)
      tables_.push_back({.definition = definition, .path = tablePath(directory, definition.fileName)});
    std::erase_if(tables_, [&](const Table& table) {
      if (platform::fileExists(table.path)) return false;
      skip(table, notPresent(directory));
      return true;
    });
  }
  std::erase_if(tables_, [this](const Table& table) {
    if (isWanted(table.definition)) return false;
    skip(table, kNotRequested);
    return true;
  });
  if (tables_.empty()) return makeStatus(315002, {dataset, readerType()});
  return nullptr;
}

// The dataset is a file: the one definition is about it, whatever file it names; of several, the ones that name this
// file are. Without any, the file's ending tells its kind and its base name is the feature type.
void TabularReader::listTablesOfFile(const std::string& file) {
  if (definitions_.empty()) {
    std::string ending = upperCased(std::filesystem::path(file).extension().string());
    if (!ending.empty()) ending.erase(0, 1);
    const std::string kind = findTableKind(ending) != nullptr ? ending : "CSV";
    tables_.push_back(
        {.definition = {.featureType = baseNameOf(file), .kindName = kind, .fileName = fileNameOf(file), .fields = {}},
         .path = file});
    return;
  }
  for (const VEXTableDefinition& definition : definitions_) {
    const bool isMeant = definitions_.size() == 1 || fileNameOf(definition.fileName) == fileNameOf(file);
    Table table{.definition = definition, .path = file};
    if (isMeant)
      tables_.push_back(std::move(table));
    else
      skip(table, notPresent(file));
  }
}

bool TabularReader::isWanted(const VEXTableDefinition& definition) const {
  return ids_.empty() || std::any_of(ids_.begin(), ids_.end(), [&](const std::string& id) {
           return id == definition.featureType || id == definition.fileName || id == baseNameOf(definition.fileName);
         });
}

void TabularReader::skip(const Table& table, std::string_view reason) const {
  logMessage(VEXSeverity::Inform, 315003, {table.definition.fileName, table.definition.featureType, reason});
}

VEXStatus TabularReader::openTable(const Table& table) {
  input_ = findTableKind(table.definition.kindName)->makeInput(table.path);
  VEX_TRY(input_->open());
  for (const auto& [name, value] : table.definition.fields) VEX_TRY(input_->addField(name, value));
  VEX_TRY(input_->startRows());
  columns_.clear();
  for (const std::string& name : input_->columnNames()) columns_.push_back(VEXName::intern(name));
  hasGeometry_ = false;
  for (std::size_t i = 0; i < columns_.size(); ++i)
    hasGeometry_ = hasGeometry_ || input_->columnRole(i) != VEXColumnRole::Attribute;
  return nullptr;
}

// A row some of whose columns are the feature's geometry. Coordinates by themselves, or a point inside when there is
// nothing else, make a point.
VEXStatus TabularReader::takeRow(VEXTableRow row, VEXFeature& feature) const {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  bool hasX = false;
  bool hasY = false;
  bool hasZ = false;
  for (std::size_t i = 0; i < row.size(); ++i) {
    switch (input_->columnRole(i)) {
      case VEXColumnRole::Attribute:
        feature.setAttribute(columns_[i], row[i]);
        break;
      case VEXColumnRole::X:
      case VEXColumnRole::InsideX:
        hasX = textToReal(row[i], x);
        break;
      case VEXColumnRole::Y:
      case VEXColumnRole::InsideY:
        hasY = textToReal(row[i], y);
        break;
      case VEXColumnRole::Z:
        hasZ = textToReal(row[i], z);
        break;
      case VEXColumnRole::CoordinateList:
      case VEXColumnRole::ComplexGeometry:
        VEX_TRY(fieldsub::buildGeometry(row[i], input_->columnRole(i), input_->geometryKind(), feature));
        break;
    }
  }
  if (feature.numCoords() > 0 || !hasX || !hasY) return nullptr;
  if (hasZ) feature.setDimension(3);
  feature.addCoord(x, y, z);
  feature.setGeomType(VEX_GEOM_POINT);
  return nullptr;
}

VEXStatus TabularReader::getGlobalMetaData(VEXFeaturePtr& out) {
  out.reset();
  return nullptr;
}

VEXStatus TabularReader::readFeature(VEXFeaturePtr& out) {
  out.reset();
  for (;;) {
    if (input_ == nullptr) {
      if (nextTable_ >= tables_.size()) return nullptr;
      VEX_TRY(openTable(tables_[nextTable_++]));
    }
    VEXTableRow row;
    bool endOfFile = false;
    VEX_TRY(input_->getRow(row, endOfFile));
    if (!endOfFile) {
      out = VEXObjectRecycler::instance().getFeature();
      out->setFeatureType(tables_[nextTable_ - 1].definition.featureType);
      if (!hasGeometry_) [[likely]] {
        for (std::size_t i = 0; i < row.size(); ++i) out->setAttribute(columns_[i], row[i]);
        return nullptr;
      }
      return extendStatus(takeRow(row, *out));
    }
    VEX_TRY(input_->close());
    input_.reset();
  }
}

VEXStatus TabularReader::readSchemaFeatures(const VEXStringVector&, VEXFeatureVector&) {
  return makeStatus(315004, {readerType()});
}

VEXStatus TabularReader::close() {
  if (input_ == nullptr) return nullptr;
  VEXStatus failure = input_->close();
  input_.reset();
  return extendStatus(std::move(failure));
}

void TabularReader::abort() {
  input_.reset();
}
