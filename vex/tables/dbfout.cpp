#include "vex/tables/dbfout.h"

#include <algorithm>
#include <cstring>

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"
#include "vex/tables/vexfdesc.h"

namespace {

constexpr std::size_t kLongestShown = 80;  // bytes of a lost value that are told

}  // namespace

VEXDBFOutput::~VEXDBFOutput() {
  if (VEXStatus failure = close()) logMessage(VEXSeverity::Error, 301001, {path(), failure->message()});
}

VEXStatus VEXDBFOutput::open() {
  if (!file_.open(path())) return makeStatus(301003, {path(), file_.errorText()});
  header_ = dbf::Header();
  dbf::setToday(header_);
  headerWritten_ = false;
  fieldTable_.clear();
  lost_.clear();
  columnNames_.clear();
  return nullptr;
}

VEXStatus VEXDBFOutput::addField(std::string_view name, std::string_view typeSpec) {
  if (hasColumn(name)) return makeStatus(301005, {path(), name});
  if (name.empty() || name.size() > dbf::kLongestName)
    return makeStatus(301006, {path(), name, integerText(dbf::kLongestName)});
  if (dbf::hasLowerCase(name)) return makeStatus(301007, {path(), name});
  dbf::Field field;
  field.name.assign(name);
  VEX_TRY(describeField(typeSpec, field));
  if (fieldTable_.size() >= dbf::kMostFields) return makeStatus(301012, {path(), name, integerText(dbf::kMostFields)});
  if (header_.recordLength + field.length > dbf::kLongestRecord)
    return makeStatus(301013, {path(), name, integerText(dbf::kLongestRecord)});
  field.offset = header_.recordLength;
  header_.recordLength = static_cast<std::uint16_t>(header_.recordLength + field.length);
  header_.headerLength = static_cast<std::uint16_t>(header_.headerLength + dbf::kFieldBytes);
  fieldTable_.push_back(std::move(field));
  lost_.emplace_back();
  columnNames_.emplace_back(name);
  return nullptr;
}

VEXStatus VEXDBFOutput::describeField(std::string_view typeSpec, dbf::Field& field) const {
  const VEXFieldDescription declared = VEXFieldDescription::of(field.name, typeSpec);
  field.length = declared.width;
  switch (declared.kind) {
    case VEXFieldKind::Date:
      field.type = 'D';
      break;
    case VEXFieldKind::Logical:
      field.type = 'L';
      break;
    case VEXFieldKind::Char:
      if (!declared.hasWidth) return makeStatus(301008, {typeSpec, path(), field.name});
      field.type = 'C';
      if (field.length > dbf::kWidestField) {
        logMessage(VEXSeverity::Warn, 301009,
                   {integerText(field.length), path(), field.name, integerText(dbf::kWidestField)});
        field.length = dbf::kWidestField;
      }
      break;
    case VEXFieldKind::Number:
      if (!declared.hasDecimals) return makeStatus(301010, {typeSpec, path(), field.name});
      field.type = 'N';
      field.decimals = declared.decimals;
      break;
    case VEXFieldKind::Unknown:
      return makeStatus(301011, {typeSpec, path(), field.name});
  }
  if (field.length == 0 || field.length > dbf::kWidestField || field.decimals > dbf::kWidestField)
    return makeStatus(301014, {typeSpec, path(), field.name, integerText(dbf::kWidestField)});
  return nullptr;
}

// The header as it now stands, with all descriptors. Errors stick to the file.
void VEXDBFOutput::writeHeader() {
  std::string bytes;
  dbf::encodeHeader(header_, bytes);
  for (const dbf::Field& field : fieldTable_) dbf::encodeField(field, bytes);
  bytes += dbf::kHeaderEnd;
  file_.append(bytes);
  headerWritten_ = true;
}

VEXStatus VEXDBFOutput::writeRow(VEXTableRow fields) {
  if (!headerWritten_) writeHeader();
  if (header_.numRecords >= mostRecords_) {
    VEX_TRY(close());
    return makeStatus(301016, {path(), integerText(mostRecords_)});
  }
  char* const record = file_.appendSpace(header_.recordLength);
  if (record == nullptr) [[unlikely]]
    return makeStatus(301015, {path(), file_.errorText()});
  std::memset(record, ' ', header_.recordLength);
  const std::size_t count = std::min(fields.size(), fieldTable_.size());
  for (std::size_t i = 0; i < count; ++i) {
    const dbf::Field& field = fieldTable_[i];
    char* const place = record + field.offset;
    if (field.type != 'N')
      dbf::putText(place, field.length, fields[i]);
    else if (!dbf::putNumber(place, field.length, field.decimals, fields[i])) [[unlikely]]
      lose(i, fields[i]);
  }
  ++header_.numRecords;
  return nullptr;
}

void VEXDBFOutput::lose(std::size_t column, std::string_view value) {
  Lost& lost = lost_[column];
  if (lost.count++ > 0) return;
  lost.firstRow = header_.numRecords + 1;
  lost.firstValue = cutToBytes(value, kLongestShown);
}

VEXStatus VEXDBFOutput::close() {
  if (!file_.isOpen()) return nullptr;
  for (std::size_t i = 0; i < lost_.size(); ++i)
    if (lost_[i].count > 0)
      logMessage(VEXSeverity::Warn, 299001,
                 {integerText(fieldTable_[i].length), fieldTable_[i].name, lost_[i].firstValue,
                  integerText(lost_[i].firstRow), integerText(lost_[i].count), path()});
  if (!headerWritten_) writeHeader();
  file_.append(std::string_view(&dbf::kFileEnd, 1));
  std::string bytes;
  dbf::encodeHeader(header_, bytes);
  file_.patch(0, bytes);
  return extendStatus(finish(301002));
}
