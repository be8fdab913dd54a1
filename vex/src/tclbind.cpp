#include "vex/src/tclbind.h"

#include "vex/src/platform/platform.h"

// The part of the library's published C interface that is used here.
struct Tcl_Interp;
struct Tcl_Obj;

namespace {

constexpr int kOk = 0;
constexpr int kError = 1;
constexpr int kGlobalOnly = 0x1;
constexpr int kTraceReads = 0x10;
constexpr int kTraceWrites = 0x20;
constexpr int kTraceUnsets = 0x40;
constexpr int kTraceDestroyed = 0x80;  // the trace goes with its variable
constexpr int kInterpDestroyed = 0x100;
constexpr int kTraceArrays = 0x800;
constexpr int kEvalGlobal = 0x20000;
constexpr std::size_t kLongestScript = std::size_t{1} << 30;  // the library counts bytes in an int

using CommandProc = int (*)(void* data, Tcl_Interp* interp, int argc, const char* argv[]);
using DeleteProc = void (*)(void* data);
using TraceProc = char* (*)(void* data, Tcl_Interp* interp, const char* name1, const char* name2, int flags);
using FreeProc = void (*)(char* block);

struct TclLibrary {
  void (*findExecutable)(const char*) = nullptr;
  Tcl_Interp* (*createInterp)() = nullptr;
  void (*deleteInterp)(Tcl_Interp*) = nullptr;
  int (*init)(Tcl_Interp*) = nullptr;
  int (*eval)(Tcl_Interp*, const char*) = nullptr;
  int (*evalFile)(Tcl_Interp*, const char*) = nullptr;
  int (*evalEx)(Tcl_Interp*, const char*, int, int) = nullptr;
  int (*evalObjEx)(Tcl_Interp*, Tcl_Obj*, int) = nullptr;
  Tcl_Obj* (*newStringObj)(const char*, int) = nullptr;
  void (*incrRefCount)(Tcl_Obj*, const char*, int) = nullptr;
  void (*decrRefCount)(Tcl_Obj*, const char*, int) = nullptr;
  const char* (*getStringResult)(Tcl_Interp*) = nullptr;
  void (*setResult)(Tcl_Interp*, char*, FreeProc) = nullptr;
  const char* (*getVar2)(Tcl_Interp*, const char*, const char*, int) = nullptr;
  const char* (*setVar2)(Tcl_Interp*, const char*, const char*, const char*, int) = nullptr;
  int (*unsetVar2)(Tcl_Interp*, const char*, const char*, int) = nullptr;
  int (*traceVar2)(Tcl_Interp*, const char*, const char*, int, TraceProc, void*) = nullptr;
  void* (*createCommand)(Tcl_Interp*, const char*, CommandProc, void*, DeleteProc) = nullptr;
  int (*utfBackslash)(const char*, int*, char*) = nullptr;
  bool isBound = false;

  TclLibrary() {
    platform::DynamicLibrary library;
    if (!library.open({"libtcl8.6.so", "libtcl8.6.so.0"})) return;
    isBound = true;
    bind(library, "Tcl_FindExecutable", findExecutable);
    bind(library, "Tcl_CreateInterp", createInterp);
    bind(library, "Tcl_DeleteInterp", deleteInterp);
    bind(library, "Tcl_Init", init);
    bind(library, "Tcl_Eval", eval);
    bind(library, "Tcl_EvalFile", evalFile);
    bind(library, "Tcl_EvalEx", evalEx);
    bind(library, "Tcl_EvalObjEx", evalObjEx);
    bind(library, "Tcl_NewStringObj", newStringObj);
    bind(library, "Tcl_DbIncrRefCount", incrRefCount);
    bind(library, "Tcl_DbDecrRefCount", decrRefCount);
    bind(library, "Tcl_GetStringResult", getStringResult);
    bind(library, "Tcl_SetResult", setResult);
    bind(library, "Tcl_GetVar2", getVar2);
    bind(library, "Tcl_SetVar2", setVar2);
    bind(library, "Tcl_UnsetVar2", unsetVar2);
    bind(library, "Tcl_TraceVar2", traceVar2);
    bind(library, "Tcl_CreateCommand", createCommand);
    bind(library, "Tcl_UtfBackslash", utfBackslash);
    if (isBound) findExecutable(nullptr);
  }

  template <class Function>
  void bind(const platform::DynamicLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.symbol(name));
    isBound = isBound && function != nullptr;
  }
};

const TclLibrary& tcl() {
  static const TclLibrary library;
  return library;
}

// The library ends its texts with a zero byte and spells one inside a text as two other bytes.
constexpr std::string_view kInnerZero = "\xC0\x80";

std::string toTcl(std::string_view text) {
  std::string spelled;
  spelled.reserve(text.size());
  for (char c : text)
    if (c == '\0')
      spelled += kInnerZero;
    else
      spelled += c;
  return spelled;
}

std::string fromTcl(const char* text) {
  std::string plain = text == nullptr ? "" : text;
  for (std::size_t at = 0; (at = plain.find(kInnerZero, at)) != std::string::npos; ++at)
    plain.replace(at, kInnerZero.size(), 1, '\0');
  return plain;
}

const char* elementOf(const std::string& element) {
  return element.empty() ? nullptr : element.c_str();
}

// Marks a text that the library has to copy.
FreeProc volatileText() {
  return reinterpret_cast<FreeProc>(1);
}

}  // namespace

struct VEXTclInterp::TraceEntry {
  Trace trace;
  static char* call(void* data, Tcl_Interp* interp, const char* name1, const char* name2, int flags) {
    if ((flags & kInterpDestroyed) != 0) return nullptr;
    auto* entry = static_cast<TraceEntry*>(data);
    Access access = (flags & kTraceReads) != 0    ? Access::Read
                    : (flags & kTraceWrites) != 0 ? Access::Write
                    : (flags & kTraceArrays) != 0 ? Access::Array
                                                  : Access::Unset;
    entry->trace(access, fromTcl(name2));
    if (access == Access::Unset && (flags & kTraceDestroyed) != 0) entry->watch(interp, name1);
    return nullptr;
  }
  // An unset variable loses its traces; the name stays watched.
  bool watch(Tcl_Interp* interp, const char* name) {
    constexpr int kEveryAccess = kTraceReads | kTraceWrites | kTraceUnsets | kTraceArrays;
    return tcl().traceVar2(interp, name, nullptr, kGlobalOnly | kEveryAccess, call, this) == kOk;
  }
};

struct VEXTclInterp::CommandEntry {
  Command command;
  static int call(void* data, Tcl_Interp* interp, int argc, const char* argv[]) {
    VEXStringVector words;
    for (int i = 1; i < argc; ++i) words.push_back(fromTcl(argv[i]));
    std::string result;
    bool done = static_cast<CommandEntry*>(data)->command(words, result);
    result = toTcl(result);
    tcl().setResult(interp, result.data(), volatileText());
    return done ? kOk : kError;
  }
};

VEXTclInterp::VEXTclInterp() {
  if (!tcl().isBound) return;
  interp_ = tcl().createInterp();
  if (interp_ == nullptr) return;
  tcl().init(interp_);  // its script library is a convenience; the core works without
  // A script can end itself but not the program; texts are the same whatever the locale.
  eval("set tcl_precision 15");
  eval("rename exit {}; encoding system utf-8");
}

VEXTclInterp::~VEXTclInterp() {
  if (interp_ == nullptr) return;
  for (const KeptScript& script : kept_)
    if (script.compiled != nullptr) tcl().decrRefCount(script.compiled, __FILE__, __LINE__);
  tcl().deleteInterp(interp_);
}

bool VEXTclInterp::eval(const std::string& script) {
  return isReady() && tcl().eval(interp_, toTcl(script).c_str()) == kOk;
}

bool VEXTclInterp::evalFile(const std::string& path) {
  return isReady() && tcl().evalFile(interp_, toTcl(path).c_str()) == kOk;
}

bool VEXTclInterp::evalKept(std::string_view script) {
  if (!isReady() || script.size() > kLongestScript) return false;
  const std::string text = toTcl(script);
  KeptScript& slot = kept_[std::hash<std::string_view>()(text) % kept_.size()];
  if (slot.text != text) {
    slot.text = text;
    if (slot.compiled != nullptr) tcl().decrRefCount(slot.compiled, __FILE__, __LINE__);
    slot.compiled = nullptr;
    return tcl().evalEx(interp_, text.c_str(), static_cast<int>(text.size()), kEvalGlobal) == kOk;
  }
  if (slot.compiled == nullptr) {
    slot.compiled = tcl().newStringObj(text.c_str(), static_cast<int>(text.size()));
    tcl().incrRefCount(slot.compiled, __FILE__, __LINE__);
  }
  // A script that runs others may lose its slot while it runs.
  Tcl_Obj* running = slot.compiled;
  tcl().incrRefCount(running, __FILE__, __LINE__);
  const bool done = tcl().evalObjEx(interp_, running, kEvalGlobal) == kOk;
  tcl().decrRefCount(running, __FILE__, __LINE__);
  return done;
}

std::string VEXTclInterp::result() const {
  return isReady() ? fromTcl(tcl().getStringResult(interp_)) : std::string();
}

std::string VEXTclInterp::errorInfo() const {
  std::string info;
  return getVar("errorInfo", info) ? info : result();
}

bool VEXTclInterp::getVar(const std::string& name, std::string& value, const std::string& element) const {
  if (!isReady()) return false;
  const char* text = tcl().getVar2(interp_, name.c_str(), elementOf(element), kGlobalOnly);
  if (text != nullptr) value = fromTcl(text);
  return text != nullptr;
}

bool VEXTclInterp::setVar(const std::string& name, std::string_view value, const std::string& element) {
  return isReady() &&
         tcl().setVar2(interp_, name.c_str(), elementOf(element), toTcl(value).c_str(), kGlobalOnly) != nullptr;
}

bool VEXTclInterp::unsetVar(const std::string& name, const std::string& element) {
  return isReady() && tcl().unsetVar2(interp_, name.c_str(), elementOf(element), kGlobalOnly) == kOk;
}

bool VEXTclInterp::traceVar(const std::string& name, Trace trace) {
  if (!isReady()) return false;
  traces_.push_back(std::make_unique<TraceEntry>(TraceEntry{std::move(trace)}));
  return traces_.back()->watch(interp_, name.c_str());
}

bool VEXTclInterp::createCommand(const std::string& name, Command command) {
  if (!isReady()) return false;
  commands_.push_back(std::make_unique<CommandEntry>(CommandEntry{std::move(command)}));
  return tcl().createCommand(interp_, name.c_str(), CommandEntry::call, commands_.back().get(), nullptr) != nullptr;
}

bool VEXTclInterp::decodeBackslashes(std::string_view text, std::string& decoded) {
  if (!tcl().isBound) return false;
  std::string spelled = toTcl(text);
  decoded.clear();
  for (std::size_t at = 0; at < spelled.size();) {
    if (spelled[at] != '\\') {
      decoded += spelled[at++];
      continue;
    }
    int taken = 0;
    char bytes[8] = {};  // the library writes at most TCL_UTF_MAX bytes
    int count = tcl().utfBackslash(spelled.c_str() + at, &taken, bytes);
    decoded.append(bytes, static_cast<std::size_t>(count));
    at += static_cast<std::size_t>(taken);
  }
  decoded = fromTcl(decoded.c_str());
  return true;
}
