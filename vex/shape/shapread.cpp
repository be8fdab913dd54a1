#include "vex/shape/shapread.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <unordered_map>

#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::string_view kGeometryKey = "SHAPE_GEOMETRY";
constexpr std::string_view kColumnDefsKey = "SHAPE_COLUMN_DEFS";
constexpr std::string_view kNotRequested = " was not requested for translation";

const VEXName kIdentifiers = VEXName::intern("ORV_IDENTIFIERS");
const VEXName kGeometry = VEXName::intern(kGeometryKey);

std::string notPresent(const std::string& directory) {
  return " was not present in directory '" + directory + "'";
}

std::string numberText(std::uint64_t value) {
  return integerText(static_cast<std::int64_t>(value));
}

// The ending of a name in lower case, "" without one.
std::string endingOf(const std::string& name) {
  std::string ending = std::filesystem::path(name).extension().string();
  for (char& c : ending) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return ending;
}

std::string baseNameOf(const std::string& name) {
  return std::filesystem::path(name).stem().string();
}

}  // namespace

ShapeReader::ShapeReader(const std::string& type, const std::string& keyword) : VEXReaderImp(type, keyword) {}

ShapeReader::~ShapeReader() = default;

// ---- keywords ----

VEXStatus ShapeReader::setup() {
  wanted_.clear();
  definitions_.clear();
  VEXStringVector ids;
  getIDs(ids);
  for (const std::string& id : ids) wanted_.insert(upperCased(id));
  VEXLineVector lines;
  VEX_TRY(getDefLines(lines));
  for (const VEXStringVector& line : lines) {
    VEX_TRY(addDefinition(line));
    if (ids.empty()) wanted_.insert(upperCased(line[1]));
  }
  std::string value;
  makesAggregates_ = keywords().getString("_MULTI_PART", value);
  if (makesAggregates_ && !equalsIgnoringCase(value, "AGGREGATE"))
    return makeStatus(207017, {keyword() + "_MULTI_PART", value, "AGGREGATE"});
  readsWithoutIndex_ = false;
  if (keywords().getString("_WITHOUT_INDEX", value)) {
    readsWithoutIndex_ = equalsIgnoringCase(value, "YES");
    if (!readsWithoutIndex_ && !equalsIgnoringCase(value, "NO"))
      return makeStatus(207017, {keyword() + "_WITHOUT_INDEX", value, "YES, NO"});
  }
  return nullptr;
}

VEXStatus ShapeReader::addDefinition(const VEXStringVector& row) {
  if (row.size() % 2 != 0) return makeStatus(207018, {joined(row, " ")});
  Definition definition;
  definition.featureType = row[1];
  for (std::size_t at = 2; at + 1 < row.size(); at += 2) {
    if (row[at] == kColumnDefsKey) continue;
    if (row[at] != kGeometryKey) {
      definition.columns.emplace_back(row[at], row[at + 1]);
      continue;
    }
    definition.type = shp::findType(row[at + 1]);
    if (definition.type == nullptr) return makeStatus(207016, {row[at + 1], row[1], shp::typeNames()});
  }
  definitions_.push_back(std::move(definition));
  return nullptr;
}

// ---- which files ----

VEXStatus ShapeReader::open(const VEXStringVector&) {
  std::string dataset;
  VEX_TRY(getDataset(dataset));
  logMessage(VEXSeverity::Inform, 207005, {dataset});
  VEX_TRY(listFiles(dataset));
  selectFiles(dataset);
  if (files_.empty()) return makeStatus(207006, {dataset, readerType()});
  nextFile_ = 0;
  isOpen_ = true;
  return nullptr;
}

// Every .shp of the directory with the files beside it, or the one file that the dataset is.
VEXStatus ShapeReader::listFiles(const std::string& dataset) {
  files_.clear();
  const bool isFile = platform::fileExists(dataset) && !platform::isDirectory(dataset);
  std::string directory = isFile ? std::filesystem::path(dataset).parent_path().string() : dataset;
  if (directory.empty()) directory = ".";
  const std::string fileName = isFile ? std::filesystem::path(dataset).filename().string() : std::string();
  std::vector<std::string> names;
  if (!platform::listDirectory(directory, names)) return makeStatus(207008, {dataset});
  if (!platform::isSeparator(directory.back())) directory += '/';
  std::unordered_map<std::string, std::size_t> placeOf;
  for (const std::string& name : names) {
    if (endingOf(name) != ".shp" || (isFile && name != fileName)) continue;
    placeOf.emplace(baseNameOf(name), files_.size());
    files_.push_back({.baseName = baseNameOf(name), .shp = directory + name, .shx = {}, .dbf = {}});
  }
  if (isFile && files_.empty()) return makeStatus(207008, {dataset});
  for (const std::string& name : names) {
    const std::string ending = endingOf(name);
    if (ending != ".shx" && ending != ".dbf") continue;
    const auto found = placeOf.find(baseNameOf(name));
    if (found == placeOf.end()) continue;
    Files& files = files_[found->second];
    (ending == ".shx" ? files.shx : files.dbf) = directory + name;
  }
  return nullptr;
}

void ShapeReader::selectFiles(const std::string& dataset) {
  std::unordered_set<std::string> missing = wanted_;
  std::erase_if(files_, [&](const Files& files) {
    const std::string name = upperCased(files.baseName);
    missing.erase(name);
    if (wanted_.empty() || wanted_.contains(name)) return false;
    skip(files.baseName, kNotRequested);
    return true;
  });
  std::vector<std::string> absent(missing.begin(), missing.end());
  std::sort(absent.begin(), absent.end());
  for (const std::string& name : absent) skip(name, notPresent(dataset));
}

void ShapeReader::skip(std::string_view name, std::string_view reason) const {
  logMessage(VEXSeverity::Inform, 207007, {name, reason});
}

const ShapeReader::Definition* ShapeReader::definitionOf(const std::string& baseName) const {
  const std::string name = upperCased(baseName);
  for (const Definition& definition : definitions_)
    if (upperCased(definition.featureType) == name) return &definition;
  return nullptr;
}

// ---- one dataset ----

VEXStatus ShapeReader::openFiles(const Files& files) {
  const Definition* definition = definitionOf(files.baseName);
  type_ = VEXName::intern(files.baseName);
  std::string shxPath = files.shx;
  if (readsWithoutIndex_)
    shxPath.clear();
  else if (shxPath.empty())  // opened all the same: the failure names the file that is wanted
    shxPath = files.shp.substr(0, files.shp.size() - 3) + "shx";
  input_ = std::make_unique<VEXShapeInput>(files.baseName, files.shp, shxPath, makesAggregates_);
  VEX_TRY(input_->open(definition == nullptr ? nullptr : definition->type));
  isFirstFeature_ = true;
  numWithoutRow_ = numDeleted_ = 0;
  return extendStatus(openTable(files, definition));
}

VEXStatus ShapeReader::openTable(const Files& files, const Definition* definition) {
  columns_.clear();
  hasRow_ = isTableAtEnd_ = false;
  if (files.dbf.empty()) {
    logMessage(VEXSeverity::Warn, 203022, {files.shp});
    return nullptr;
  }
  table_ = std::make_unique<VEXDBFInput>(files.dbf);
  VEX_TRY(table_->open());
  if (definition != nullptr)
    for (const auto& [name, typeSpec] : definition->columns) VEX_TRY(table_->addField(name, typeSpec));
  VEX_TRY(table_->startRows());
  for (const std::string& name : table_->columnNames()) columns_.push_back(VEXName::intern(name));
  return nullptr;
}

VEXStatus ShapeReader::closeFiles() {
  if (input_ == nullptr) return nullptr;
  VEXStatus failure = input_->close();
  if (failure == nullptr && table_ != nullptr) failure = table_->close();
  input_.reset();
  table_.reset();
  return extendStatus(std::move(failure));
}

// Told when all shapes have been read.
void ShapeReader::reportRows() const {
  if (table_ == nullptr) return;
  const std::uint64_t numShapes = input_->recordNumber();
  if (table_->expectedRows() != numShapes)
    logMessage(VEXSeverity::Warn, 203017,
               {table_->path(), numberText(table_->expectedRows()), numberText(numShapes), numberText(numWithoutRow_)});
  if (numDeleted_ > 0) logMessage(VEXSeverity::Inform, 203026, {table_->path(), numberText(numDeleted_)});
}

VEXStatus ShapeReader::getGlobalMetaData(VEXFeaturePtr& out) {
  out.reset();
  return nullptr;
}

VEXStatus ShapeReader::readFeature(VEXFeaturePtr& out) {
  out.reset();
  if (!isOpen_) return makeStatus(203009, {readerType()});
  for (;;) {
    if (input_ == nullptr) {
      if (nextFile_ >= files_.size()) return nullptr;
      VEX_TRY(openFiles(files_[nextFile_++]));
    }
    VEX_TRY(input_->read(out));
    if (out == nullptr) {
      reportRows();
      VEX_TRY(closeFiles());
      continue;
    }
    bool isDeleted = false;
    VEX_TRY(addAttributes(*out, isDeleted));
    if (!isDeleted) return nullptr;
    ++numDeleted_;
    out.reset();
  }
}

VEXStatus ShapeReader::addAttributes(VEXFeature& feature, bool& isDeleted) {
  const std::uint64_t record = input_->recordNumber() - 1;
  bool hasRow = false;
  if (table_ != nullptr) VEX_TRY(findRow(record, hasRow, isDeleted));
  if (isDeleted) return nullptr;
  if (table_ != nullptr && !hasRow) ++numWithoutRow_;
  feature.setFeatureType(type_);
  char number[20];
  const char* numberEnd = std::to_chars(number, number + sizeof number, record + 1).ptr;
  feature.setAttribute(kIdentifiers, std::string_view(number, static_cast<std::size_t>(numberEnd - number)));
  if (*input_->typeName() != '\0') feature.setAttribute(kGeometry, input_->typeName());
  for (std::size_t i = 0; i < columns_.size(); ++i)
    feature.setAttribute(columns_[i], hasRow ? row_[i] : std::string_view());
  if (!isFirstFeature_) return nullptr;
  isFirstFeature_ = false;
  const auto& box = input_->header().box;
  feature.setReal("orv_global_bounding_box_min_x", box[0]);
  feature.setReal("orv_global_bounding_box_min_y", box[1]);
  feature.setReal("orv_global_bounding_box_max_x", box[2]);
  feature.setReal("orv_global_bounding_box_max_y", box[3]);
  return nullptr;
}

// The row of a record. The table passes over deleted rows, so what it gives may be a later one, which is kept.
VEXStatus ShapeReader::findRow(std::uint64_t record, bool& isThere, bool& isDeleted) {
  if (!hasRow_ || rowRecord_ < record) {
    if (isTableAtEnd_) {
      isDeleted = record < table_->expectedRows();
      return nullptr;
    }
    if (hasRow_ ? rowRecord_ + 1 != record : record != 0) VEX_TRY(table_->moveToRecord(record));
    VEX_TRY(table_->getRow(row_, isTableAtEnd_));
    hasRow_ = !isTableAtEnd_;
    if (isTableAtEnd_) {
      isDeleted = record < table_->expectedRows();
      return nullptr;
    }
    rowRecord_ = table_->nextRecord() - 1;
  }
  isThere = rowRecord_ == record;
  isDeleted = !isThere;
  return nullptr;
}

VEXStatus ShapeReader::close() {
  isOpen_ = false;
  return extendStatus(closeFiles());
}

void ShapeReader::abort() {
  isOpen_ = false;
  input_.reset();
  table_.reset();
}

// ---- schema ----

VEXStatus ShapeReader::readSchemaFeatures(const VEXStringVector&, VEXFeatureVector& out) {
  std::string dataset;
  if (VEXStatus failure = getDataset(dataset)) return makeStatus(207001, {failure->message()});
  if (!platform::fileExists(dataset)) return makeStatus(207002, {dataset});
  std::vector<Files> reading = std::move(files_);
  VEXStatus failure = listFiles(dataset);
  std::vector<Files> found = std::exchange(files_, std::move(reading));
  VEX_TRY(std::move(failure));
  if (found.empty()) return makeStatus(207003, {dataset});
  std::erase_if(
      found, [this](const Files& files) { return !wanted_.empty() && !wanted_.contains(upperCased(files.baseName)); });
  VEXStringVector names;
  for (const Files& files : found) names.push_back(files.baseName);
  keepListedIDs(names);
  if (names.empty()) return makeStatus(207004, {dataset});
  for (const Files& files : found)
    if (std::find(names.begin(), names.end(), files.baseName) != names.end()) VEX_TRY(addSchema(files, out));
  return nullptr;
}

VEXStatus ShapeReader::addSchema(const Files& files, VEXFeatureVector& out) const {
  ShapeFileReader file;
  VEX_TRY(file.open(files.shp, std::string()));
  const std::int32_t code = file.header().type;
  VEX_TRY(file.close());
  const shp::Type* type = shp::findType(code);
  if (type != nullptr && type->family == shp::Family::None) return makeStatus(203006, {files.shp});
  if (type == nullptr || type->family == shp::Family::Patch)
    return makeStatus(203007, {files.shp, integerText(code), type == nullptr ? "unknown" : type->name});
  VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature();
  feature->setFeatureType(files.baseName);
  feature->setSequenced(kGeometry, type->readName);
  if (!files.dbf.empty()) {
    VEXDBFInput table(files.dbf);
    VEX_TRY(table.open());
    for (std::size_t i = 0; i < table.columnNames().size(); ++i) {
      std::string typeText;
      VEX_TRY(table.fieldType(i, typeText));
      feature->setSequenced(table.columnNames()[i], typeText);
    }
    VEX_TRY(table.close());
  }
  out.push_back(std::move(feature));
  return nullptr;
}
