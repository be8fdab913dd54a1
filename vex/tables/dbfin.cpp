#include "vex/tables/dbfin.h"

#include <algorithm>
#include <bit>

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"
#include "vex/src/wordscan.h"

namespace {

constexpr std::uint8_t kVersionTwo = 0x02;    // dBase II: another layout
constexpr std::uint8_t kVersionSeven = 0x8C;  // dBase 7: another layout

VEXFieldKind kindOf(char type) {
  switch (type) {
    case 'C':
      return VEXFieldKind::Char;
    case 'N':
    case 'F':
      return VEXFieldKind::Number;
    case 'D':
      return VEXFieldKind::Date;
    case 'L':
      return VEXFieldKind::Logical;
    default:
      return VEXFieldKind::Unknown;
  }
}

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// The bits of a field's bytes, see wordscan::ByteBits.
std::uint64_t bitsUpTo(std::uint32_t length) {
  return length >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << length) - 1;
}

// A type letter in a form that can be shown.
std::string shownType(char type) {
  if (type > ' ' && type < 127) return std::string(1, type);
  return "byte " + integerText(static_cast<unsigned char>(type));
}

}  // namespace

VEXDBFInput::~VEXDBFInput() = default;

VEXStatus VEXDBFInput::open() {
  if (!file_.open(path())) return makeStatus(300002, {path(), file_.errorText()});
  VEX_TRY(readHeader());
  std::string list;
  for (const dbf::Field& field : fieldTable_) list += (list.empty() ? "" : ", ") + field.name;
  logMessage(VEXSeverity::Inform, 300003, {path()});
  logText(VEXSeverity::Inform, "DBF File " + path() + " has fields : " + list);
  return nullptr;
}

VEXStatus VEXDBFInput::readHeader() {
  std::string_view bytes;
  const std::uint64_t size = file_.size();
  if (!file_.readBytes(dbf::kHeaderBytes, bytes) || !dbf::decodeHeader(bytes, header_))
    return makeStatus(300004, {path(), integerText(static_cast<std::int64_t>(size)), integerText(dbf::kHeaderBytes)});
  if (header_.version == kVersionTwo || header_.version == kVersionSeven)
    return makeStatus(300022, {path(), integerText(header_.version)});
  if (header_.headerLength < dbf::kHeaderBytes) return makeStatus(300023, {path(), integerText(header_.headerLength)});
  if (header_.recordLength == 0 && header_.numRecords > 0) return makeStatus(300024, {path()});
  header_.recordLength = std::max<std::uint16_t>(header_.recordLength, 1);
  if (!file_.seek(0) || !file_.readBytes(header_.headerLength, bytes))
    return makeStatus(300004,
                      {path(), integerText(static_cast<std::int64_t>(size)), integerText(header_.headerLength)});

  std::vector<std::string> beyond;
  dbf::decodeFields(bytes, header_, fieldTable_, beyond);
  settleFields(beyond);

  const std::uint64_t numThere = (size - header_.headerLength) / header_.recordLength;
  numRecords_ = std::min<std::uint64_t>(header_.numRecords, numThere);
  if (numRecords_ < header_.numRecords)
    logMessage(VEXSeverity::Warn, 300026,
               {path(), integerText(header_.numRecords), integerText(static_cast<std::int64_t>(numThere))});
  return nullptr;
}

// Leaves out what cannot be read as text and gives every column a name of its own.
void VEXDBFInput::settleFields(const std::vector<std::string>& beyond) {
  for (const std::string& name : beyond)
    logMessage(VEXSeverity::Warn, 300027, {path(), name, integerText(header_.recordLength)});
  const auto firstLeftOut = std::stable_partition(fieldTable_.begin(), fieldTable_.end(), [](const dbf::Field& field) {
    return kindOf(field.type) != VEXFieldKind::Unknown;
  });
  leftOut_.assign(firstLeftOut, fieldTable_.end());
  fieldTable_.erase(firstLeftOut, fieldTable_.end());
  for (dbf::Field& field : leftOut_) {
    field.name = dbf::nameForm(field.name);
    logMessage(VEXSeverity::Warn, 300021, {shownType(field.type), field.name});
  }
  columnNames_.clear();
  for (dbf::Field& field : fieldTable_) {
    const std::string inFile = field.name;
    const std::string wanted = dbf::nameForm(inFile);
    field.name = wanted;
    for (std::size_t n = columnNames_.size() + 1; field.name.empty() || hasColumn(field.name); ++n)
      field.name = (wanted.empty() ? "FIELD" : wanted + "_") + integerText(static_cast<std::int64_t>(n));
    if (field.name != wanted) logMessage(VEXSeverity::Warn, 300028, {path(), inFile, field.name});
    columnNames_.push_back(field.name);
  }
  fields_.assign(fieldTable_.size(), {});
  cuts_.clear();
  for (const dbf::Field& field : fieldTable_)
    cuts_.push_back({field.offset, field.length, bitsUpTo(field.length), kindOf(field.type)});
}

VEXStatus VEXDBFInput::close() {
  if (!file_.isOpen()) return nullptr;
  if (numDeleted_ > 0)
    logMessage(VEXSeverity::Inform, 300029, {path(), integerText(static_cast<std::int64_t>(numDeleted_))});
  const bool failed = file_.failed();
  const std::string reason = failed ? file_.errorText() : std::string();
  file_.close();
  if (failed) return makeStatus(300001, {path(), reason});
  return nullptr;
}

VEXStatus VEXDBFInput::addField(std::string_view name, std::string_view typeSpec) {
  const std::string form = dbf::nameForm(name);
  const auto isMeant = [&](const dbf::Field& field) { return field.name == form || field.name == name; };
  if (const auto found = std::find_if(fieldTable_.begin(), fieldTable_.end(), isMeant); found != fieldTable_.end()) {
    VEX_TRY(checkType(*found, name, typeSpec));
    columnNames_[static_cast<std::size_t>(found - fieldTable_.begin())].assign(name);
    return nullptr;
  }
  const auto found = std::find_if(leftOut_.begin(), leftOut_.end(), isMeant);
  if (found != leftOut_.end()) return extendStatus(checkType(*found, name, typeSpec));
  return makeStatus(300005, {path(), name, joined(columnNames_, ", ")});
}

VEXStatus VEXDBFInput::checkType(const dbf::Field& field, std::string_view name, std::string_view typeSpec) const {
  const VEXFieldDescription declared = VEXFieldDescription::of(name, typeSpec);
  const VEXFieldKind kind = kindOf(field.type);
  const std::string width = integerText(field.length);
  const bool isSameKind = declared.kind == kind;
  switch (kind) {
    case VEXFieldKind::Char:
      if (!isSameKind) return makeStatus(300006, {name, fieldKindName(kind)});
      if (!declared.hasWidth) return makeStatus(300008, {name, width});
      if (declared.width != field.length) return makeStatus(300007, {name, width, integerText(declared.width)});
      return nullptr;
    case VEXFieldKind::Number:
      if (!isSameKind) return makeStatus(300009, {name, fieldKindName(kind)});
      if (!declared.hasWidth) return makeStatus(300011, {name, width});
      if (declared.width != field.length) return makeStatus(300010, {name, width, integerText(declared.width)});
      if (!declared.hasDecimals) return makeStatus(300014, {name, integerText(field.decimals)});
      if (declared.decimals != field.decimals)
        return makeStatus(300012, {name, integerText(field.decimals), integerText(declared.decimals)});
      return nullptr;
    case VEXFieldKind::Date:
      if (!isSameKind) return makeStatus(300013, {name, fieldKindName(kind)});
      if (field.length != 8) return makeStatus(300019, {name, "8"});
      return nullptr;
    case VEXFieldKind::Logical:
      if (!isSameKind) return makeStatus(300015, {name, typeSpec});
      if (field.length != 1) return makeStatus(300016, {name, width});
      return nullptr;
    case VEXFieldKind::Unknown:
      break;
  }
  return isLetter(field.type) ? makeStatus(300018, {name, shownType(field.type)})
                              : makeStatus(300017, {name, "C, N, F, D, L"});
}

VEXStatus VEXDBFInput::startRows() {
  return extendStatus(moveToRecord(0));
}

VEXStatus VEXDBFInput::moveToRecord(std::uint64_t record) {
  nextRecord_ = std::min(record, numRecords_);
  if (!file_.seek(header_.headerLength + nextRecord_ * header_.recordLength))
    return makeStatus(300025, {path(), integerText(static_cast<std::int64_t>(nextRecord_)), file_.errorText()});
  return nullptr;
}

std::string_view VEXDBFInput::valueOf(std::string_view bytes, VEXFieldKind kind) {
  bytes = dbf::cutAtZero(bytes);
  if (kind == VEXFieldKind::Number) return dbf::numberValue(bytes);
  return kind == VEXFieldKind::Logical ? dbf::logicalValue(bytes) : dbf::textValue(bytes);
}

// The same for at most 64 bytes, all of them looked at together.
inline std::string_view VEXDBFInput::valueOfShort(const char* bytes, const Cut& cut) {
  const wordscan::ByteBits bits = wordscan::bitsOf(bytes, cut.length);
  if ((bits.zero & cut.bits) != 0) [[unlikely]]
    return valueOf({bytes, cut.length}, cut.kind);
  if (cut.kind == VEXFieldKind::Logical) return dbf::logicalValue({bytes, cut.length});
  const std::uint64_t nonBlank = bits.nonBlank & cut.bits;
  const std::size_t end = static_cast<std::size_t>(std::bit_width(nonBlank));
  if (cut.kind != VEXFieldKind::Number) return {bytes, end};
  if (end == 0) return "0";
  const auto first = static_cast<std::size_t>(std::countr_zero(nonBlank));
  const std::string_view number(bytes + first, end - first);
  return number.back() == '0' || number.back() == '.' ? dbf::withoutSpareZeros(number) : number;
}

VEXStatus VEXDBFInput::getRow(VEXTableRow& row, bool& endOfFile) {
  std::string_view record;
  for (;;) {
    endOfFile = nextRecord_ >= numRecords_;
    row = {};
    if (endOfFile) return nullptr;
    if (!file_.readBytes(header_.recordLength, record)) [[unlikely]]
      return makeStatus(300025, {path(), integerText(static_cast<std::int64_t>(nextRecord_)), file_.errorText()});
    ++nextRecord_;
    if (record[0] != dbf::kDeleted) break;
    ++numDeleted_;
  }
  static_assert(VEXInputFile::kSlack >= 16, "fields are looked at by sixteens");
  for (std::size_t i = 0; i < cuts_.size(); ++i) {
    const Cut& cut = cuts_[i];
    const char* const bytes = record.data() + cut.offset;
    fields_[i] = cut.length <= 64 ? valueOfShort(bytes, cut) : valueOf({bytes, cut.length}, cut.kind);
  }
  row = fields_;
  return nullptr;
}

VEXStatus VEXDBFInput::fieldType(std::size_t index, std::string& typeText) const {
  if (index >= fieldTable_.size()) return makeStatus(300020, {integerText(static_cast<std::int64_t>(index))});
  const dbf::Field& field = fieldTable_[index];
  typeText =
      VEXFieldDescription{.name = {}, .kind = kindOf(field.type), .width = field.length, .decimals = field.decimals}
          .typeText();
  return nullptr;
}
