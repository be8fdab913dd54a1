#include "vex/src/sharfile.h"

#include "vex/inc/vexassert.h"

namespace {

constexpr std::uint32_t kCannotCreate = 229001;
constexpr std::uint32_t kCannotWrite = 229002;
constexpr unsigned kProtection = 0644;

}  // namespace

VEXStatus VEXSharedFile::open() {
  VEX_ASSERT(!isBusy_);
  isBusy_ = true;
  VEXStatus failure;
  if (numClients_ == 0) {
    stream_ = std::make_unique<VEXOutputFile>();
    if (!stream_->open(path_, kProtection)) {
      failure = makeStatus(kCannotCreate, {path_, stream_->errorText()});
      stream_.reset();
    }
  }
  if (failure == nullptr) ++numClients_;
  isBusy_ = false;
  return failure;
}

VEXStatus VEXSharedFile::close() {
  VEX_ASSERT(numClients_ != 0);
  VEX_ASSERT(!isBusy_);
  isBusy_ = true;
  VEXStatus failure;
  if (--numClients_ == 0) {
    if (!stream_->close()) failure = makeStatus(kCannotWrite, {path_, stream_->errorText()});
    stream_.reset();
  }
  isBusy_ = false;
  return failure;
}
