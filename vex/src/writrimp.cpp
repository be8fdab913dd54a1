#include "vex/src/writrimp.h"

#include <algorithm>

#include "vex/inc/vexassert.h"
#include "vex/src/platform/platform.h"
#include "vex/src/simpgrpr.h"
#include "vex/src/vexgroup.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kCloseFailed = 882001;
constexpr std::uint32_t kNoChannelLeft = 882002;
constexpr std::uint32_t kBadChannel = 882003;
constexpr std::uint32_t kNoChannels = 882004;
constexpr std::uint32_t kCannotMakeDirectory = 882005;
constexpr std::uint32_t kNoDataset = 882006;

}  // namespace

VEXWriterImp::VEXWriterImp(const std::string& type, const std::string& keyword) : keywords_(type, keyword) {}

VEXWriterImp::~VEXWriterImp() {
  bool isLogged = false;
  for (std::unique_ptr<VEXChannel>& channel : channels_) {
    VEXStatus failure = channel->close();
    if (failure && !isLogged) {
      logMessage(VEXSeverity::Error, kCloseFailed, {failure->message()});
      isLogged = true;
    }
  }
}

std::unique_ptr<VEXGrouper> VEXWriterImp::createGrouper(VEXWriter& front) {
  return std::make_unique<VEXSimpleGrouper>(front);
}

VEXStatus VEXWriterImp::setup() {
  return nullptr;
}

VEXStatus VEXWriterImp::close() {
  for (std::unique_ptr<VEXChannel>& channel : channels_) {
    VEX_TRY(channel->close());
    channel->reportRejected();
  }
  channels_.clear();
  return nullptr;
}

VEXStatus VEXWriterImp::getChannel(VEXGroup& group, VEXChannel*& out) {
  out = nullptr;
  if (channels_.size() >= static_cast<std::size_t>(std::max(maxChannels(), 0)))
    return makeStatus(kNoChannelLeft, {std::to_string(channels_.size()), writerType(), group.featureType()});
  std::unique_ptr<VEXChannel> made;
  VEX_TRY(createChannel(group, made));
  if (made == nullptr || made->tag() != VEXChannel::kTag)
    return makeStatus(kBadChannel, {writerType(), group.featureType()});
  channels_.push_back(std::move(made));
  out = channels_.back().get();
  return nullptr;
}

VEXStatus VEXWriterImp::createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>&) {
  return makeStatus(kNoChannels, {writerType(), group.featureType()});
}

VEXStatus VEXWriterImp::closeChannel(VEXChannel* channel) {
  auto at = std::find_if(channels_.begin(), channels_.end(), [&](const auto& open) { return open.get() == channel; });
  VEXChannel* chan = at == channels_.end() ? nullptr : at->get();
  VEX_ASSERT(chan != NULL);
  VEX_TRY(chan->close());  // one that fails stays in the list, so that abort() still cleans up after it
  chan->reportRejected();
  channels_.erase(at);
  return nullptr;
}

void VEXWriterImp::abort() {
  for (std::unique_ptr<VEXChannel>& channel : channels_) channel->abort();
  channels_.clear();
}

VEXStatus VEXWriterImp::getDataset(std::string& dataset) const {
  return extendStatus(keywords_.getDataset(dataset, kNoDataset));
}

VEXStatus VEXWriterImp::getDatasetDir(std::string& directory) const {
  VEX_TRY(getDataset(directory));
  const bool isThere = platform::fileExists(directory);
  if (!isThere && !platform::makeDirectories(directory))
    return makeStatus(kCannotMakeDirectory, {directory, writerType(), writerType()});
  if (!platform::isSeparator(directory.back())) directory += '/';
  return nullptr;
}

VEXStringVector VEXWriterImp::definitionOf(const VEXGroup& group) const {
  VEXStringVector row = {keywords_.getDefKeyword(), group.featureType()};
  for (const VEXName name : group.sequence()) {
    const VEXText* value = group.findAttribute(name);
    row.push_back(name.text());
    row.emplace_back(value == nullptr ? std::string_view() : *value);
  }
  return row;
}
