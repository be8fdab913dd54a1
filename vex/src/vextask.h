// VEXTaskManager: holds on to what functions keep open over a run. Counted by use: the first acquire makes it, the
// last release takes it and every task down. The entry holds one use for the length of a run.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

class VEXTask {
 public:
  virtual ~VEXTask() = default;
};

class VEXTaskManager {
 public:
  static VEXTaskManager& acquire();
  static void release();
  static bool exists() { return instance_ != nullptr; }

  // Takes the task and gives the number it got, from 1 on.
  std::int32_t add(std::unique_ptr<VEXTask> task);
  VEXTask* find(std::int32_t number) const;  // null when there is none

 private:
  static VEXTaskManager* instance_;
  static std::int32_t refcount_;
  std::unordered_map<std::string, std::unique_ptr<VEXTask>> tasks_;
  std::int32_t lastNumber_ = 0;
};

// One use of the task manager, for as long as the object lives.
class VEXTaskManagerUse {
 public:
  VEXTaskManagerUse() { VEXTaskManager::acquire(); }
  ~VEXTaskManagerUse() { VEXTaskManager::release(); }
  VEXTaskManagerUse(const VEXTaskManagerUse&) = delete;
  VEXTaskManagerUse& operator=(const VEXTaskManagerUse&) = delete;
};
