// What @CopyAttributes and @RenameAttributes share: pairs of a new and an old name, whose values are all read before the
// first is written. One object a function; its texts keep their buffers from call to call.
#pragma once

#include "vex/src/cmdrule.h"

class VEXPairCopier {
 public:
  // An old attribute that is not there counts as empty.
  void copy(VEXFeature& feature, const VEXArgs& args) {
    if (values_.size() < args.count()) values_.resize(args.count());
    for (std::size_t i = 1; i < args.count(); i += 2) {
      const VEXText* value = feature.findAttribute(args.text(i));
      values_[i].assign(value == nullptr ? std::string_view() : std::string_view(*value));
    }
    for (std::size_t i = 1; i < args.count(); i += 2) feature.setAttribute(args.text(i - 1), values_[i]);
  }

 private:
  VEXStringVector values_;
};
