// The table from a type's upper-case name to the maker of its driver class: one instance for readers, one for
// writers, owned by VEXCreator.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexassert.h"

// Makes one driver class.
template <class Base>
class Instantiator {
 public:
  virtual ~Instantiator() = default;
  virtual std::unique_ptr<Base> create(const std::string& type, const std::string& keyword) const = 0;
};

template <class Base, class Driver>
class DriverInstantiator final : public Instantiator<Base> {
 public:
  std::unique_ptr<Base> create(const std::string& type, const std::string& keyword) const override {
    return std::make_unique<Driver>(type, keyword);
  }
};

template <class Base>
class InstantiatorTable {
 public:
  // A type is registered once; a second time is a mistake of the engine.
  void addInstantiator(const std::string& className, std::unique_ptr<Instantiator<Base>> instantiator) {
    VEX_ASSERT(!(instantiatorMapping_.contains(className)));
    instantiatorMapping_.emplace(className, std::move(instantiator));
  }
  // Null when the name is there.
  VEXStatus lookup(const std::string& className) const {
    if (instantiatorMapping_.contains(className)) return nullptr;
    return makeTextStatus(kSeverityFailure,
                          "Attempt to create unknown class '" + className + "'.  Class has not been registered.");
  }
  // The new driver; null when the name is not there.
  std::unique_ptr<Base> create(const std::string& className, const std::string& type, const std::string& keyword) const {
    auto found = instantiatorMapping_.find(className);
    return found == instantiatorMapping_.end() ? nullptr : found->second->create(type, keyword);
  }

 private:
  std::unordered_map<std::string, std::unique_ptr<Instantiator<Base>>> instantiatorMapping_;
};
