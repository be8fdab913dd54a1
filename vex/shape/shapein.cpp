#include "vex/shape/shapein.h"

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"

namespace {

std::string numberText(std::uint64_t value) {
  return integerText(static_cast<std::int64_t>(value));
}

}  // namespace

VEXShapeInput::VEXShapeInput(std::string featureType, std::string shpPath, std::string shxPath, bool makesAggregates)
    : featureType_(std::move(featureType)),
      shpPath_(std::move(shpPath)),
      shxPath_(std::move(shxPath)),
      decoder_(makesAggregates) {}

VEXStatus VEXShapeInput::open(const shp::Type* declared) {
  VEX_TRY(file_.open(shpPath_, shxPath_));
  numRefused_ = 0;
  if (!isReported_) logMessage(VEXSeverity::Inform, 203004, {shpPath_});
  isReported_ = true;
  VEX_TRY(checkType(declared));
  const auto& box = file_.header().box;
  logMessage(VEXSeverity::Inform, 207014, {shpPath_, integerText(type_->code), type_->name});
  logMessage(VEXSeverity::Inform, 207015,
             {shpPath_, realText(box[0]), realText(box[1]), realText(box[2]), realText(box[3])});
  return nullptr;
}

// Two names may stand for one code, and a multipoint with z goes by the name of a point with z, too.
VEXStatus VEXShapeInput::checkType(const shp::Type* declared) {
  const std::int32_t code = file_.header().type;
  type_ = shp::findType(code);
  const std::string codeText = integerText(code);
  if (type_ == nullptr || type_->family == shp::Family::Patch)
    return makeStatus(207013, {shpPath_, codeText, type_ == nullptr ? "unknown" : type_->name});
  if (declared == nullptr || declared->code == code || type_->family == shp::Family::None) return nullptr;
  if (type_->readName == std::string_view(declared->name)) return nullptr;
  switch (type_->family) {
    case shp::Family::Point:
      return makeStatus(207009, {shpPath_, codeText, type_->name, declared->name});
    case shp::Family::Line:
      return makeStatus(207010, {shpPath_, codeText, type_->name, declared->name});
    case shp::Family::Area:
      return makeStatus(207011, {shpPath_, codeText, type_->name, declared->name});
    default:
      return makeStatus(207012, {shpPath_, codeText, type_->name, declared->name});
  }
}

VEXStatus VEXShapeInput::close() {
  if (numRefused_ > 0) logMessage(VEXSeverity::Warn, 203019, {shpPath_, numberText(numRefused_)});
  numRefused_ = 0;
  return extendStatus(file_.close());
}

VEXStatus VEXShapeInput::refuse(std::uint32_t number) const {
  return makeRejection(number, {numberText(file_.recordNumber()), shpPath_, numberText(file_.recordOffset())});
}

VEXStatus VEXShapeInput::refuseRecord(shp::RecordFault fault, const shp::Record& record,
                                      std::size_t contentBytes) const {
  if (fault == shp::RecordFault::TooShort || fault == shp::RecordFault::Counts) {
    return makeRejection(203013, {numberText(file_.recordNumber()), shpPath_, numberText(file_.recordOffset()),
                                  numberText(contentBytes), numberText(record.numParts), numberText(record.numPoints)});
  }
  if (fault == shp::RecordFault::UnknownType) {
    return makeRejection(203018, {"Unknown shape type of '" + integerText(record.type) + "' specified for file.",
                                  numberText(file_.recordNumber()), shpPath_, numberText(file_.recordOffset())});
  }
  if (record.type != 0 && record.type != file_.header().type) {
    return makeRejection(203012, {"ShapeType found is '" + integerText(record.type) + "'. ShapeType expected is '" +
                                      integerText(file_.header().type) + "'.",
                                  numberText(file_.recordNumber()), shpPath_, numberText(file_.recordOffset())});
  }
  return refuse(203014);
}

VEXStatus VEXShapeInput::read(VEXFeaturePtr& out) {
  out.reset();
  if (!file_.isOpen()) return makeStatus(203008, {shpPath_});
  std::string_view content;
  bool end = false;
  VEXStatus failure = file_.next(content, end);
  if (end) return nullptr;
  VEXObjectRecycler& recycler = VEXObjectRecycler::instance();
  shp::Points ring;
  if (failure == nullptr && file_.header().type == shp::kPlainAreaType && shp::findSingleRing(content, ring)) {
    out = recycler.getFeatureToFill(2);
    if (ShapeDecoder::decodePlainRing(ring, *out)) [[likely]]
      return nullptr;
    out.reset();
  }
  shp::Record record;
  if (failure == nullptr) {
    const shp::RecordFault fault = shp::decodeRecord(content, record);
    const bool isOfType = record.type == 0 || record.type == file_.header().type;
    if (fault != shp::RecordFault::None || !isOfType) [[unlikely]]
      failure = refuseRecord(fault, record, content.size());
  }
  if (failure == nullptr) {
    out = recycler.getFeatureToFill(ShapeDecoder::dimensionOf(record));
    if (!decoder_.decode(record, *out)) failure = refuse(203015);
  }
  if (failure != nullptr) [[unlikely]] {
    out.reset();
    if (failure->severity() == kSeverityRejected) ++numRefused_;
    return extendStatus(std::move(failure));
  }
  for (const std::uint32_t count : decoder_.skippedRings())
    logMessage(VEXSeverity::Warn, 203021,
               {numberText(count), featureType_, shpPath_, numberText(file_.recordNumber())});
  return nullptr;
}
