#include "vex/tables/dbwrite.h"

#include "vex/inc/numtext.h"
#include "vex/inc/vexobjct.h"
#include "vex/src/vexchan.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexgroup.h"
#include "vex/src/vexlog.h"
#include "vex/tables/dbread.h"

namespace {

constexpr std::uint32_t kNoWriterDataset = 882006;

// Writes the features of one group to one table.
class DatabaseWriteChannel final : public VEXChannel {
 public:
  explicit DatabaseWriteChannel(std::unique_ptr<VEXDatabaseOutput> output) : output_(std::move(output)) {}

  VEXStatus startGroup(VEXGroup&) override {
    VEX_TRY(output_->prepare());
    columns_.clear();
    for (const std::string& name : output_->columnNames()) columns_.emplace_back(name);
    row_.assign(columns_.size(), {});
    return nullptr;
  }

  VEXStatus writeFeatureImp(VEXFeature& feature) override {
    valuesOf(feature, columns_, row_);
    return extendStatus(output_->writeRow(row_));
  }

  VEXStatus close() override {
    VEX_TRY(output_->close());
    return extendStatus(VEXChannel::close());
  }

  void abort() override { output_->abort(); }

 private:
  std::unique_ptr<VEXDatabaseOutput> output_;
  std::vector<VEXColumn> columns_;
  std::vector<std::string_view> row_;
};

}  // namespace

DatabaseWriter::DatabaseWriter(const std::string& type, const std::string& keyword) : VEXWriterImp(type, keyword) {}

DatabaseWriter::~DatabaseWriter() = default;

VEXStatus DatabaseWriter::writeGlobalMetaData(VEXFeature&) {
  return nullptr;
}

VEXStatus DatabaseWriter::open(const VEXStringVector&) {
  logMessage(VEXSeverity::Inform, 318001);
  definitions_.clear();
  typeOfTable_.clear();
  const std::string defKeyword = keywords().getDefKeyword();
  VEXStringVector row;
  for (VEXConfiguration::rewind(); VEXConfiguration::nextRow(row);)
    if (row[0] == defKeyword) VEX_TRY(addDefinition(row));

  std::uint64_t batchRows = VEXDatabaseSession::kBatchRows;
  if (std::string text; keywords().getString("_BATCH_ROWS", text)) {
    std::int64_t count = 0;
    if (!textToInteger(text, count) || count < 1) return makeStatus(318004, {text});
    batchRows = static_cast<std::uint64_t>(count);
  }
  std::string overwrite;
  isOverwriting_ = keywords().getString("_OVERWRITE", overwrite) &&
                   (equalsIgnoringCase(overwrite, "YES") || equalsIgnoringCase(overwrite, "TRUE"));

  VEXDatabasePlace place;
  VEX_TRY(databasePlaceOf(keywords(), kNoWriterDataset, place));
  std::string reason;
  auto database = VEXDatabase::open(place, VEXDatabase::Access::Create, reason);
  if (database == nullptr) return makeStatus(318002, {place.serverType, place.databaseName, reason});
  session_ = std::make_shared<VEXDatabaseSession>(std::move(database), batchRows);
  return nullptr;
}

// keyword, feature type, then pairs: DATABASE_TABLE, or a column and its type.
VEXStatus DatabaseWriter::addDefinition(const VEXStringVector& row) {
  if (row.size() < 4 || row.size() % 2 != 0) return makeStatus(318003, {joined(row, " ")});
  Definition definition{.table = row[1], .columns = {}};
  for (std::size_t i = 2; i < row.size(); i += 2) {
    if (row[i] == "DATABASE_TABLE")
      definition.table = row[i + 1];
    else
      definition.columns.emplace_back(row[i], row[i + 1]);
  }
  if (definition.columns.empty()) return makeStatus(318003, {joined(row, " ")});
  const auto [known, isNew] = typeOfTable_.try_emplace(definition.table, row[1]);
  if (!isNew && known->second != row[1]) return makeStatus(318006, {definition.table, known->second, row[1]});
  definitions_.insert_or_assign(row[1], std::move(definition));
  return nullptr;
}

VEXStatus DatabaseWriter::createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) {
  auto found = definitions_.find(group.featureType());
  if (found == definitions_.end()) {
    // A group that no row of the mapping file made; its schema is the row.
    VEX_TRY(addDefinition(definitionOf(group)));
    found = definitions_.find(group.featureType());
  }
  auto output = std::make_unique<VEXDatabaseOutput>(session_, found->second.table);
  for (const auto& [name, type] : found->second.columns) VEX_TRY(output->addField(name, type));
  if (isOverwriting_) output->setOverwrite();
  out = std::make_unique<DatabaseWriteChannel>(std::move(output));
  return nullptr;
}

VEXStatus DatabaseWriter::close() {
  VEX_TRY(VEXWriterImp::close());
  if (session_ == nullptr) return nullptr;
  if (!session_->commit()) return makeStatus(318005, {session_->database().errorText()});
  logMessage(VEXSeverity::Inform, 318007, {integerText(static_cast<std::int64_t>(session_->numCommitted()))});
  session_.reset();
  return nullptr;
}

void DatabaseWriter::abort() {
  VEXWriterImp::abort();
  if (session_ == nullptr) return;
  const std::uint64_t kept = session_->numCommitted();
  session_->rollback();
  session_.reset();
  if (kept > 0) logMessage(VEXSeverity::Warn, 318008, {integerText(static_cast<std::int64_t>(kept))});
}
