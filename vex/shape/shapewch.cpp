#include "vex/shape/shapewch.h"

#include "vex/inc/vexobjct.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::string_view kGeometryKey = "SHAPE_GEOMETRY";
constexpr std::string_view kColumnDefsKey = "SHAPE_COLUMN_DEFS";
constexpr std::uint32_t kFull = 204021;

}  // namespace

class ShapeWriteChannel::ShapeSink final : public VEXFeatureConsumer {
 public:
  explicit ShapeSink(VEXShapeOutput& shape) : shape_(shape) {}
  VEXStatus consume(const VEXFeature& feature) override { return extendStatus(shape_.write(feature)); }

 private:
  VEXShapeOutput& shape_;
};

class ShapeWriteChannel::TableSink final : public VEXFeatureConsumer {
 public:
  explicit TableSink(VEXDBFOutput& table) : table_(table) {
    for (const std::string& name : table.columnNames()) columns_.emplace_back(name);
    row_.resize(columns_.size());
  }
  VEXStatus consume(const VEXFeature& feature) override {
    valuesOf(feature, columns_, row_);
    return extendStatus(table_.writeRow(row_));
  }

 private:
  VEXDBFOutput& table_;
  std::vector<VEXColumn> columns_;
  std::vector<std::string_view> row_;
};

ShapeWriteChannel::ShapeWriteChannel(const std::string& basePath, const VEXFeature& schema, bool aiFix,
                                     std::uint64_t longestFile)
    : shape_(basePath, longestFile), table_(basePath + ".dbf") {
  shape_.setAiFix(aiFix);
  for (const VEXName name : schema.sequence()) {
    const VEXText* value = schema.findAttribute(name);
    std::string_view column = name.text();
    // A name that begins with a blank is there for its place in the order; the real one stands behind the colon.
    if (column.starts_with(' ')) column.remove_prefix(std::min(column.find(':'), column.size() - 1) + 1);
    if (column == kGeometryKey) {
      hasTypeName_ = true;
      typeName_ = value == nullptr ? std::string_view() : *value;
    } else if (column != kColumnDefsKey) {
      columns_.emplace_back(column, value == nullptr ? std::string_view() : *value);
    }
  }
}

ShapeWriteChannel::~ShapeWriteChannel() {
  if (VEXStatus failure = finish()) logMessage(VEXSeverity::Error, 205001, {shape_.basePath(), failure->message()});
}

VEXStatus ShapeWriteChannel::startFeature() {
  if (!hasTypeName_) logMessage(VEXSeverity::Warn, 205002, {shape_.basePath()});
  VEX_TRY(shape_.open(typeName_));
  addSink({.channel = nullptr, .consumer = std::make_unique<ShapeSink>(shape_)});
  VEX_TRY(extendStatusText(setupDBF(), "ShapeWriteChannel::setupDBF"));
  addSink({.channel = nullptr, .consumer = std::make_unique<TableSink>(table_)});
  logMessage(VEXSeverity::Inform, 205003, {shape_.basePath(), hasTypeName_ ? typeName_ : "none"});
  return nullptr;
}

VEXStatus ShapeWriteChannel::setupDBF() {
  VEX_TRY(table_.open());
  for (const auto& [name, typeText] : columns_) VEX_TRY(table_.addField(name, typeText));
  return nullptr;
}

VEXStatus ShapeWriteChannel::writeFeatureImp(VEXFeature& feature) {
  if (!isStarted_) [[unlikely]] {
    isStarted_ = true;
    VEX_TRY(startFeature());
  }
  VEXStatus failure = VEXChannel::writeFeatureImp(feature);
  if (failure != nullptr && failure->messageNumber() == kFull) VEX_TRY(finish());
  return extendStatus(std::move(failure));
}

VEXStatus ShapeWriteChannel::finish() {
  VEXStatus failure = shape_.close();
  VEXStatus tableFailure = table_.close();
  if (failure == nullptr) failure = std::move(tableFailure);
  return extendStatus(std::move(failure));
}

VEXStatus ShapeWriteChannel::close() {
  VEX_TRY(finish());
  return extendStatus(VEXChannel::close());
}

void ShapeWriteChannel::abort() {
  shape_.abort();
  table_.abort();
}
