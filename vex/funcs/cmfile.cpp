// @File(<filename>,<mode>,<value>): reads a whole file, replaces its content, or adds to it. The mode tells both
// directions: DestWriteSrcRead, DestReadSrcWrite, DestAppendSrcRead, DestReadSrcAppend. Rows "File STARTUP_DELETE
// <name>" and "File SHUTDOWN_DELETE <name>" delete a file when the translation starts or ends.
#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>

#include "vex/src/cmdrule.h"
#include "vex/src/platform/platform.h"
#include "vex/src/rowtext.h"
#include "vex/src/vexconf.h"

namespace {

constexpr VEXCommandRule kRule{.name = "File",
                               .count = exactly(3),
                               .onCount = 356001,
                               .onConfigure = 356006,  // of a row that is neither of the two
                               .extract = VEXExtract::Own};
constexpr std::size_t kMostOpen = 64;                   // names may come from features
constexpr std::size_t kLargest = std::size_t{1} << 30;  // a device may never end

enum class Deed { Read, Write, Append };

struct Mode {
  std::string_view word;
  Deed destination, source;
};
constexpr Mode kModes[] = {{"DestWriteSrcRead", Deed::Write, Deed::Read},
                           {"DestReadSrcWrite", Deed::Read, Deed::Write},
                           {"DestAppendSrcRead", Deed::Append, Deed::Read},
                           {"DestReadSrcAppend", Deed::Read, Deed::Append}};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

VEXStatus readAll(const std::string& path, std::string& text) {
  const FilePtr file(std::fopen(path.c_str(), "rb"));
  if (file == nullptr) return makeStatus(356004, {path, platform::errorText(errno)});
  char block[16384];
  while (const std::size_t count = std::fread(block, 1, sizeof block, file.get())) {
    text.append(block, count);
    if (text.size() > kLargest) return makeStatus(356005, {path, platform::errorText(EFBIG)});
  }
  if (std::ferror(file.get()) != 0) return makeStatus(356005, {path, platform::errorText(errno)});
  return nullptr;
}

class VEXFileCmd final : public VEXRuleCommand {
 public:
  VEXFileCmd() : VEXRuleCommand(kRule) {}

  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    VEX_TRY(test(feature, params));
    return extendStatus(perform(VEXArgs(params), &Mode::source, result));
  }

  VEXStatus configure(const VEXStringVector& params) override {
    if (params.size() != 3 || (params[1] != "STARTUP_DELETE" && params[1] != "SHUTDOWN_DELETE"))
      return makeStatus(356006, {rowText(params)});
    // While the mapping file is still being worked out nothing starts and nothing ends.
    if (VEXConfiguration::isComputing()) return nullptr;
    const std::string path = VEXConfiguration::normalisePath(params[2]);
    if (params[1] == "STARTUP_DELETE")
      platform::removeFile(path);
    else
      doomed_.push_back(path);
    return nullptr;
  }

  VEXStatus closeDown() override {
    files_.clear();
    for (const std::string& path : doomed_) platform::removeFile(path);
    doomed_.clear();
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    return extendStatus(perform(args, &Mode::destination, result));
  }

  VEXStatus perform(const VEXArgs& args, Deed Mode::*direction, std::string& result) {
    for (const Mode& mode : kModes) {
      if (args.text(1) != mode.word) continue;
      const std::string path = VEXConfiguration::normalisePath(args.text(0));
      // The system would see the name up to its zero byte: another file.
      if (path.find('\0') != std::string::npos) return makeStatus(356004, {path, platform::errorText(EINVAL)});
      if (mode.*direction == Deed::Read) return extendStatus(readAll(path, result));
      return extendStatus(write(path, mode.*direction, args.text(2)));
    }
    return makeStatus(356002, {args.text(1)});
  }

  // What is written is in the file at once, so that a read of it, or a command of the system, finds it.
  VEXStatus write(const std::string& path, Deed deed, const std::string& value) {
    if (deed == Deed::Write) files_.erase(path);
    auto found = files_.find(path);
    if (found == files_.end()) {
      if (files_.size() >= kMostOpen) files_.clear();
      FilePtr file(std::fopen(path.c_str(), deed == Deed::Write ? "wb+" : "ab"));
      if (file == nullptr) return makeStatus(356004, {path, platform::errorText(errno)});
      found = files_.emplace(path, std::move(file)).first;
    }
    std::FILE* file = found->second.get();
    if (std::fwrite(value.data(), 1, value.size(), file) != value.size() || std::fflush(file) != 0)
      return makeStatus(356007, {path, platform::errorText(errno)});
    return nullptr;
  }

  std::map<std::string, FilePtr> files_;  // being written
  VEXStringVector doomed_;                // to be deleted at the end
};

}  // namespace

VEX_COMMAND_MAKER(cmfile, VEXFileCmd)
