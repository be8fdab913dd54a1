#include "vex/src/multread.h"

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/creator.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"

namespace {

constexpr int kDeepest = 8;  // readers of this type within each other

struct DepthGuard {
  DepthGuard() { ++depth; }
  ~DepthGuard() { --depth; }
  static inline int depth = 0;
};

std::string numbered(std::string_view name, std::size_t index) {
  return std::string(name) + "{" + std::to_string(index) + "}";
}

void configure(const std::string& name, const std::string& value, bool isVerbose) {
  VEXConfiguration::setValue(name, value);
  if (isVerbose) logMessage(VEXSeverity::Inform, 224005, {name, value});
}

// Directory and pattern; a directory alone stands for all of its files.
void cutPattern(const std::string& dataset, std::string& directory, std::string& pattern) {
  if (platform::isDirectory(dataset)) {
    directory = dataset + "/";
    pattern = "*";
    return;
  }
  const std::size_t cut = dataset.rfind('/');
  directory = cut == std::string::npos ? std::string() : dataset.substr(0, cut + 1);
  pattern = dataset.substr(directory.size());
}

}  // namespace

VEXMultiReader::VEXMultiReader(const std::string& type, const std::string& keyword) : VEXReaderImp(type, keyword) {
  theReaders_.reserve(64);
}

VEXMultiReader::~VEXMultiReader() = default;

bool VEXMultiReader::value(const std::string& name, std::string& text) const {
  return VEXConfiguration::value(keyword() + name, text) || VEXConfiguration::value(readerType() + name, text);
}

VEXStatus VEXMultiReader::setup() {
  const DepthGuard guard;
  if (guard.depth > kDeepest) return makeStatus(224006, {keyword(), readerType()});
  std::string coordSys;
  keywords().getString("_COORDINATE_SYSTEM", coordSys);
  std::string type;
  if (value("_TYPE{*}", type)) VEX_TRY(expandWildcard(type));
  for (std::size_t i = 0; value(numbered("_TYPE", i), type); ++i) VEX_TRY(addReader(i, type, coordSys));
  if (theReaders_.empty()) return makeStatus(224002, {"_TYPE{", readerType()});
  return nullptr;
}

// Each file gets a keyword of its own, so that what is configured for one, by this reader or by the file's own, does
// not reach another of the same type.
VEXStatus VEXMultiReader::expandWildcard(const std::string& type) {
  std::string dataset;
  VEX_TRY(getDataset(dataset));
  std::string directory, pattern, verbose;
  cutPattern(dataset, directory, pattern);
  const bool isVerbose = keywords().getString("_VERBOSE", verbose) && !equalsIgnoringCase(verbose, "no");
  VEXStringVector names;
  platform::listDirectory(directory.empty() ? "." : directory, names);
  for (const std::string& name : names) {
    const std::string path = VEXConfiguration::normalisePath(directory.empty() ? name : directory + "\\" + name);
    if (!platform::matchesWildcard(name, pattern) || platform::isDirectory(path)) continue;
    const std::size_t index = pathNames_.size();
    const std::string own = type + "_" + std::to_string(index);
    configure(numbered(keyword() + "_TYPE", index), type, isVerbose);
    configure(numbered(keyword() + "_KEYWORD", index), own, isVerbose);
    configure(own + "_DATASET", path, isVerbose);
    const std::size_t point = name.find('.');
    pathNames_.push_back(path);
    baseNames_.push_back(name.substr(0, point));
    fileNames_.push_back(name);
    extensions_.push_back(point == std::string::npos ? std::string() : name.substr(point + 1));
  }
  return nullptr;
}

VEXStatus VEXMultiReader::addReader(std::size_t index, const std::string& givenType, const std::string& coordSys) {
  const std::string type = upperCased(givenType);
  std::string own = type;
  value(numbered("_KEYWORD", index), own);
  std::unique_ptr<VEXReaderImp> reader;
  VEX_TRY(VEXCreator::createReader(reader, type, own, givenType));
  VEX_ASSERT(reader != NULL);
  logMessage(VEXSeverity::Inform, 224001, {own, type});
  if (!coordSys.empty() && reader->coordSys() != coordSys) reader->setCoordSys(coordSys);
  VEX_TRY(reader->setup());
  theReaders_.push_back(std::move(reader));
  return nullptr;
}

VEXStatus VEXMultiReader::open(const VEXStringVector&) {
  VEX_ASSERT(theReaders_.size() != 0);
  logMessage(VEXSeverity::Inform, 224003);
  curIndex_ = 0;
  isOpen_ = true;
  return extendStatus(openNext());
}

// Leaves curReader_ null behind the last one.
VEXStatus VEXMultiReader::openNext() {
  if (curReader_ != nullptr) {
    VEXReaderImp* const done = curReader_;
    curReader_ = nullptr;
    VEX_TRY(done->close());
  }
  if (curIndex_ == theReaders_.size()) return nullptr;
  id_ = std::to_string(curIndex_);
  curReader_ = theReaders_[curIndex_++].get();
  VEX_TRY(curReader_->open({}));
  VEXFeaturePtr metaData;  // belongs to this dataset alone, so nobody is told
  return extendStatus(curReader_->getGlobalMetaData(metaData));
}

VEXStatus VEXMultiReader::getGlobalMetaData(VEXFeaturePtr& out) {
  out.reset();
  return nullptr;
}

VEXStatus VEXMultiReader::readFeature(VEXFeaturePtr& out) {
  VEX_ASSERT(isOpen_);
  out.reset();
  while (curReader_ != nullptr) {
    VEX_TRY(curReader_->read(out));
    if (out != nullptr) {
      setAttributes(*out);
      return nullptr;
    }
    VEX_TRY(openNext());
  }
  return nullptr;
}

void VEXMultiReader::setAttributes(VEXFeature& feature) const {
  feature.setAttribute(idName_, id_);
  if (curIndex_ > pathNames_.size()) return;
  feature.setAttribute(pathName_, pathNames_[curIndex_ - 1]);
  feature.setAttribute(baseName_, baseNames_[curIndex_ - 1]);
  feature.setAttribute(fileName_, fileNames_[curIndex_ - 1]);
  feature.setAttribute(extensionName_, extensions_[curIndex_ - 1]);
}

float VEXMultiReader::progress() {
  if (theReaders_.empty() || curIndex_ == 0) return 0.0F;
  const float within = curReader_ == nullptr ? 100.0F : curReader_->progress();
  return (static_cast<float>(curIndex_ - 1) * 100.0F + within) / static_cast<float>(theReaders_.size());
}

VEXStatus VEXMultiReader::readSchemaFeatures(const VEXStringVector&, VEXFeatureVector&) {
  return makeStatus(224004, {readerType()});
}

VEXStatus VEXMultiReader::close() {
  isOpen_ = false;
  if (curReader_ == nullptr) return nullptr;
  VEXReaderImp* const done = curReader_;
  curReader_ = nullptr;
  return extendStatus(done->close());
}

void VEXMultiReader::abort() {
  if (curReader_ != nullptr) curReader_->abort();
  curReader_ = nullptr;
}
