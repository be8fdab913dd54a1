// VEXCommandRegistry: the table of all functions, a singleton made with the engine. Lookups use the current
// scope; scope 0 is the root table.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vex/src/vexcomnd.h"

class VEXCommandRegistry {
 public:
  VEXCommandRegistry();   // enters every function of cmlist.inc
  ~VEXCommandRegistry();
  VEXCommandRegistry(const VEXCommandRegistry&) = delete;
  VEXCommandRegistry& operator=(const VEXCommandRegistry&) = delete;
  static VEXCommandRegistry& instance();
  static bool exists() { return instance_ != nullptr; }

  void registerCommand(std::unique_ptr<VEXCommand> command, const std::string& name);
  VEXStatus unregisterCommand(const VEXCommand* command);  // 210001: no such function
  VEXCommand* find(std::string_view name);                 // null when there is none; a name is matched exactly
  std::size_t newScope();                                  // makes it current and gives its id
  VEXStatus selectScope(std::size_t id);                   // 210006, 210007
  void selectRoot();
  VEXStatus removeScope(std::size_t id);                   // 210006, 210007
  // Hands every configuration row that begins with a function's name to that function.
  VEXStatus configureFrom();
  VEXStatus configure(const VEXStringVector& params);      // 210005: unknown name
  void closeDownAll();                                     // closeDown failures are dropped
  void logStatisticsAll();
  void names(VEXStringVector& out) const;                  // of the current scope, sorted

 private:
  using Table = std::unordered_map<std::string, std::unique_ptr<VEXCommand>>;
  VEXStatus checkScope(std::size_t id) const;
  static VEXCommandRegistry* instance_;
  std::vector<std::unique_ptr<Table>> scopes_;
  Table* current_;
};
