#include "vex/src/vextask.h"

#include "vex/inc/vexassert.h"

VEXTaskManager* VEXTaskManager::instance_ = nullptr;
std::int32_t VEXTaskManager::refcount_ = 0;

VEXTaskManager& VEXTaskManager::acquire() {
  if (refcount_++ == 0) instance_ = new VEXTaskManager;
  return *instance_;
}

void VEXTaskManager::release() {
  const std::int32_t refcount = --refcount_;
  VEX_ASSERT(refcount >= 0);
  if (refcount > 0) return;
  delete instance_;
  instance_ = nullptr;
}

std::int32_t VEXTaskManager::add(std::unique_ptr<VEXTask> task) {
  VEX_ASSERT(task != NULL);
  ++lastNumber_;
  tasks_.emplace(std::to_string(lastNumber_), std::move(task));
  return lastNumber_;
}

VEXTask* VEXTaskManager::find(std::int32_t number) const {
  auto found = tasks_.find(std::to_string(number));
  return found == tasks_.end() ? nullptr : found->second.get();
}
