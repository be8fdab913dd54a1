// VEXTclInterp: one Tcl interpreter. The library is bound at run time, at the first interpreter; without it
// isReady() stays false and every call fails. Texts are UTF-8 going in and coming out.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/stkdefs.h"

struct Tcl_Interp;
struct Tcl_Obj;

class VEXTclInterp {
 public:
  enum class Access { Read, Write, Unset, Array };
  // Called before a read of the variable (which it may set), after a write, after an unset, and before an operation
  // on an array as a whole, such as "array names" (it may set and unset elements). `element` is the array element,
  // empty for a scalar or a whole array.
  using Trace = std::function<void(Access access, const std::string& element)>;
  // The words behind the command's name come in; `result` becomes the command's result, or its error text when
  // the call gives false.
  using Command = std::function<bool(const VEXStringVector& words, std::string& result)>;

  VEXTclInterp();   // its first command is "set tcl_precision 15"
  ~VEXTclInterp();  // traces and commands go with it
  VEXTclInterp(const VEXTclInterp&) = delete;
  VEXTclInterp& operator=(const VEXTclInterp&) = delete;
  bool isReady() const { return interp_ != nullptr; }

  // Runs a script; false when it fails, with the error in result() and errorInfo().
  bool eval(const std::string& script);
  bool evalFile(const std::string& path);
  // The same at global level, for a text that is likely to come again: from its second time on its compiled form is
  // kept.
  bool evalKept(std::string_view script);
  std::string result() const;
  std::string errorInfo() const;

  // A global variable, or an element of a global array when `element` is not empty.
  bool getVar(const std::string& name, std::string& value, const std::string& element = {}) const;
  bool setVar(const std::string& name, std::string_view value, const std::string& element = {});
  bool unsetVar(const std::string& name, const std::string& element = {});
  // Watches a global variable. To watch the elements of an array, make the array first ("array set name {}"). Inside
  // a trace the variable itself is not watched.
  bool traceVar(const std::string& name, Trace trace);
  bool createCommand(const std::string& name, Command command);

  // The text with Tcl's back-slash sequences replaced, as in a quoted word; false without the library.
  static bool decodeBackslashes(std::string_view text, std::string& decoded);

 private:
  struct TraceEntry;
  struct CommandEntry;
  // A script by the hash of its text; the newest of one slot stays.
  struct KeptScript {
    std::string text;
    Tcl_Obj* compiled = nullptr;
  };
  Tcl_Interp* interp_ = nullptr;
  std::array<KeptScript, 256> kept_;
  std::vector<std::unique_ptr<TraceEntry>> traces_;
  std::vector<std::unique_ptr<CommandEntry>> commands_;
};
