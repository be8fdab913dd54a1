#include "vex/qds/qdswrit.h"

#include "vex/inc/numtext.h"
#include "vex/src/stpdgrpr.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexgroup.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kBanner = 24111;
constexpr std::uint32_t kBadFlag = 24112;
constexpr std::uint32_t kTwoTypesOneFile = 24113;

}  // namespace

QDSWriter::QDSWriter(const std::string& type, const std::string& keyword) : VEXWriterImp(type, keyword) {}

QDSWriter::~QDSWriter() = default;

bool QDSWriter::isMultiFile() const {
  return VEXConfiguration::contains(keywords().getDefKeyword());
}

std::unique_ptr<VEXGrouper> QDSWriter::createGrouper(VEXWriter& front) {
  if (isMultiFile()) return VEXWriterImp::createGrouper(front);
  return std::make_unique<VEXStupidGrouper>(front);
}

VEXStatus QDSWriter::setup() {
  settings_ = {};
  std::string word;
  if (keywords().getString("_INDEXED", word)) {
    settings_.isIndexed = equalsIgnoringCase(word, "YES") || equalsIgnoringCase(word, "TRUE");
    if (!settings_.isIndexed && !equalsIgnoringCase(word, "NO") && !equalsIgnoringCase(word, "FALSE"))
      return makeStatus(kBadFlag, {keyword() + "_INDEXED", word});
  }
  std::int32_t bytes = 0;
  if (keywords().getInteger("_MAX_FILE_SIZE", bytes) && bytes > 0)
    settings_.maxFileSize = static_cast<std::uint32_t>(bytes);
  return nullptr;
}

VEXStatus QDSWriter::writeGlobalMetaData(VEXFeature&) {
  return nullptr;
}

VEXStatus QDSWriter::open(const VEXStringVector&) {
  settings_.isMultiFile = isMultiFile();
  typeOfFile_.clear();
  files_.clear();
  VEX_TRY(settings_.isMultiFile ? getDatasetDir(dataset_) : getDataset(dataset_));
  logMessage(VEXSeverity::Inform, kBanner, {dataset_});
  if (!settings_.isMultiFile) return nullptr;
  // Known before the first feature, so that no series runs over into the store of another type.
  VEXStringVector row;
  const std::string defKeyword = keywords().getDefKeyword();
  for (VEXConfiguration::rewind(); VEXConfiguration::nextRow(row);)
    if (row[0] == defKeyword && row.size() > 1) files_.insert(QDSWriteChannel::storePath(dataset_, row[1]));
  return nullptr;
}

VEXStatus QDSWriter::createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) {
  if (settings_.isMultiFile) {
    const std::string path = QDSWriteChannel::storePath(dataset_, group.featureType());
    const auto [known, isNew] = typeOfFile_.try_emplace(path, group.featureType());
    if (!isNew && known->second != group.featureType())
      return makeStatus(kTwoTypesOneFile, {path, known->second, group.featureType()});
    files_.insert(path);
  }
  out = std::make_unique<QDSWriteChannel>(dataset_, settings_, files_);
  return nullptr;
}
