#include "vex/src/vexvars.h"

std::size_t VEXVariableTable::slotOf(std::string_view name) {
  auto found = index_.find(name);
  if (found != index_.end()) return found->second;
  slots_.push_back(std::make_unique<Slot>());
  return index_.emplace(std::string(name), slots_.size() - 1).first->second;
}

void VEXVariableTable::clear() {
  ++generation_;
}

void VEXVariableTable::set(std::size_t slot, std::string_view value) {
  slots_[slot]->owned.assign(value);
  setView(slot, slots_[slot]->owned);
}

bool VEXVariableTable::find(std::string_view name, std::string_view& value) const {
  auto found = index_.find(name);
  return found != index_.end() && get(found->second, value);
}

void VEXVariableTable::copyViews() {
  for (std::size_t slot = 0; slot < slots_.size(); ++slot)
    if (slots_[slot]->generation == generation_ && slots_[slot]->value.data() != slots_[slot]->owned.data())
      set(slot, slots_[slot]->value);
}
