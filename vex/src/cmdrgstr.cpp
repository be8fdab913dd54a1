#include "vex/src/cmdrgstr.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/vexconf.h"

// The makers of all functions, one in each cm file.
#define VEX_COMMAND(file, name) std::unique_ptr<VEXCommand> make_##file();
#include "vex/funcs/cmlist.inc"
#undef VEX_COMMAND

VEXCommandRegistry* VEXCommandRegistry::instance_ = nullptr;

VEXCommandRegistry::VEXCommandRegistry() {
  VEX_ASSERT(instance_ == NULL);
  instance_ = this;
  scopes_.push_back(std::make_unique<Table>());
  current_ = scopes_[0].get();
#define VEX_COMMAND(file, name) registerCommand(make_##file(), name);
#include "vex/funcs/cmlist.inc"
#undef VEX_COMMAND
}

VEXCommandRegistry::~VEXCommandRegistry() {
  VEX_ASSERT(instance_ == this);
  instance_ = nullptr;
}

VEXCommandRegistry& VEXCommandRegistry::instance() {
  VEX_ASSERT(instance_ != NULL);
  return *instance_;
}

void VEXCommandRegistry::registerCommand(std::unique_ptr<VEXCommand> command, const std::string& name) {
  (*current_)[name] = std::move(command);
}

VEXStatus VEXCommandRegistry::unregisterCommand(const VEXCommand* command) {
  if (scopes_.size() > 1 && current_ != scopes_[0].get()) return nullptr;
  if (std::erase_if(*current_, [command](const auto& entry) { return entry.second.get() == command; }) == 0)
    return makeStatus(210001);
  return nullptr;
}

VEXCommand* VEXCommandRegistry::find(std::string_view name) {
  auto found = current_->find(std::string(name));
  return found == current_->end() ? nullptr : found->second.get();
}

std::size_t VEXCommandRegistry::newScope() {
  scopes_.push_back(std::make_unique<Table>());
  current_ = scopes_.back().get();
  return scopes_.size() - 1;
}

VEXStatus VEXCommandRegistry::checkScope(std::size_t id) const {
  if (id == 0 || id >= scopes_.size()) return makeStatus(210006, {integerText(static_cast<std::int64_t>(id))});
  if (scopes_[id] == nullptr) return makeStatus(210007, {integerText(static_cast<std::int64_t>(id))});
  return nullptr;
}

VEXStatus VEXCommandRegistry::selectScope(std::size_t id) {
  VEX_TRY(checkScope(id));
  current_ = scopes_[id].get();
  return nullptr;
}

void VEXCommandRegistry::selectRoot() {
  current_ = scopes_[0].get();
}

VEXStatus VEXCommandRegistry::removeScope(std::size_t id) {
  VEX_TRY(checkScope(id));
  scopes_[id].reset();
  selectRoot();
  return nullptr;
}

VEXStatus VEXCommandRegistry::configureFrom() {
  VEXStringVector row;
  VEXConfiguration::rewind();
  while (VEXConfiguration::nextRow(row))
    if (VEXCommand* command = find(row[0])) VEX_TRY(command->configure(row));
  return nullptr;
}

VEXStatus VEXCommandRegistry::configure(const VEXStringVector& params) {
  VEXCommand* command = params.empty() ? nullptr : find(params[0]);
  if (command == nullptr) return makeStatus(210005, {params.empty() ? std::string() : params[0]});
  return extendStatus(command->configure(params));
}

void VEXCommandRegistry::closeDownAll() {
  VEXStringVector all;
  names(all);
  for (const std::string& name : all)
    ignoreStatus(find(name)->closeDown());  // one failure must not keep the others open
}

void VEXCommandRegistry::logStatisticsAll() {
  VEXStringVector all;
  names(all);
  for (const std::string& name : all) find(name)->logStatistics();
}

void VEXCommandRegistry::names(VEXStringVector& out) const {
  out.clear();
  for (const auto& entry : *current_) out.push_back(entry.first);
  std::sort(out.begin(), out.end());
}
