#include "vex/inc/vextext.h"

void VEXText::setLong(std::string_view value) {
  if (long_ == nullptr) long_ = std::make_unique<std::string>();
  long_->assign(value);
  size_ = value.size();
}

bool VEXText::trim() {
  if (!hasLargeBuffer()) return false;
  if (size_ > long_->capacity() / 4) return true;
  auto needed = size_ > kShort ? std::make_unique<std::string>(view()) : nullptr;
  long_ = std::move(needed);
  return hasLargeBuffer();
}
