#include "vex/src/tabrdr.h"

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/internat/internat.h"
#include "vex/src/homedir.h"
#include "vex/src/platform/platform.h"
#include "vex/src/tclbind.h"
#include "vex/src/tmpfilmn.h"
#include "vex/src/vexconf.h"

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kDefaultWhitespace = " \n\t";
constexpr std::size_t kMacroLimit = 3000;     // replacements in one line
constexpr std::size_t kDeepestInclude = 32;   // each open file holds a buffer
constexpr std::size_t kMostIncludes = 10000;  // files that include each other twice would multiply for ever
constexpr std::size_t kLongestShown = 500;    // bytes of a text that a message repeats

// A text of a file as a message can show it: not without end, and without what steers a terminal.
std::string shown(std::string_view text) {
  std::string start(text.substr(0, kLongestShown));
  for (char& c : start)
    if (static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n') c = '?';
  return text.size() <= kLongestShown ? start : start + "...";
}

std::string_view leftTrimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

// True when `text` begins, behind blanks, with the word and at least one blank; `rest` is what follows these.
bool isDirective(std::string_view text, std::string_view word, std::string_view& rest) {
  text = leftTrimmed(text);
  if (!text.starts_with(word)) return false;
  text.remove_prefix(word.size());
  if (text.empty() || kBlanks.find(text[0]) == std::string_view::npos) return false;
  rest = leftTrimmed(text);
  return true;
}

std::size_t countOf(std::string_view text, std::string_view piece) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(piece, at)) != std::string_view::npos; at += piece.size()) ++count;
  return count;
}

// Replaces the first reference again and again until none is left. `limit` replacements are one too many. A
// reference that does not close stays. lookUp(name, value) fails for an unknown name.
template <class LookUp>
VEXStatus expandReferences(std::string& text, std::string_view open, char close, std::size_t limit, LookUp&& lookUp,
                           bool& isTooLong) {
  std::size_t from = 0;  // no reference begins before this place
  std::string value;
  for (;; --limit) {
    if (limit < 1) return makeStatus(261012, {shown(text)});
    std::size_t start = text.find(open, from);
    if (start == std::string::npos) return nullptr;
    std::size_t end = text.find(close, start + open.size());
    if (end == std::string::npos) return nullptr;
    VEX_TRY(lookUp(std::string_view(text).substr(start + open.size(), end - start - open.size()), value));
    isTooLong = text.size() + value.size() > TableReader::kLongestRow;
    if (isTooLong) return nullptr;
    text.replace(start, end + 1 - start, value);
    from = start > 0 ? start - 1 : 0;  // the value may complete a "$" that stands in front of it
  }
}

// Puts the current directory back that a script has left.
class DirectoryGuard {
 public:
  DirectoryGuard() : directory_(platform::currentDirectory()) {}
  ~DirectoryGuard() { platform::changeDirectory(directory_); }
  DirectoryGuard(const DirectoryGuard&) = delete;
  DirectoryGuard& operator=(const DirectoryGuard&) = delete;

 private:
  std::string directory_;
};

// Runs the steps in order, up to the first that fails.
bool runAll(VEXTclInterp& interp, std::initializer_list<std::string> scripts) {
  for (const std::string& script : scripts)
    if (!interp.eval(script)) return false;
  return true;
}

}  // namespace

// What became of a physical line.
enum class TableReader::LineKind {
  Skipped,    // a comment, a directive, an empty line, a file that gave no row
  Continued,  // data, and the row goes on
  Finished,   // the row is whole
};

TableReader::Syntax TableReader::syntaxOf(const char* commentChar, const char* commentOpen, const char* commentClose,
                                          const char* continuationChar, const char* whitespace) {
  return Syntax{.commentChar = commentChar != nullptr ? commentChar : "",
                .commentOpen = commentOpen != nullptr ? commentOpen : "/*",
                .commentClose = commentClose != nullptr ? commentClose : "*/",
                .continuationChar = continuationChar != nullptr ? continuationChar : "",
                .whitespace = std::string(whitespace != nullptr ? whitespace : kDefaultWhitespace)};
}

TableReader::TableReader(const Syntax& syntax, VEXMacroTable* macroDict, std::shared_ptr<Includes> includes)
    : syntax_(syntax), macroDict_(macroDict), includes_(std::move(includes)) {
  if (macroDict_ == nullptr) {
    ownMacroDict_ = std::make_unique<VEXMacroTable>(64);
    macroDict_ = ownMacroDict_.get();
  }
  if (includes_ == nullptr) includes_ = std::make_shared<Includes>();
  isDelimiter_ = delimiterSet(syntax_.whitespace);
}

TableReader::TableReader(std::string_view fileName, const char* commentChar, const char* commentOpen,
                         const char* commentClose, const char* continuationChar, const char* whitespace)
    : TableReader(syntaxOf(commentChar, commentOpen, commentClose, continuationChar, whitespace), nullptr, nullptr) {
  open(fileName);
}

TableReader::TableReader(std::string_view fileName, VEXMacroTable& macroDict, const char* commentChar,
                         const char* commentOpen, const char* commentClose, const char* continuationChar,
                         const char* whitespace)
    : TableReader(syntaxOf(commentChar, commentOpen, commentClose, continuationChar, whitespace), &macroDict, nullptr) {
  open(fileName);
}

std::unique_ptr<TableReader> TableReader::overText(std::string_view text) {
  std::unique_ptr<TableReader> reader(
      new TableReader(syntaxOf("#", nullptr, nullptr, "\\", nullptr), nullptr, nullptr));
  reader->memory_ = text;
  reader->readsMemory_ = true;
  reader->includes_->allowed = false;
  reader->fileName_ = "text";
  reader->directory_ = "./";
  reader->enterDirectoryMacros();
  return reader;
}

TableReader::~TableReader() {
  includedFile_.reset();
  if (onStack_) includes_->stack.pop_back();
  removeTempFile();
}

void TableReader::open(std::string_view fileName) {
  fileName_ = VEXConfiguration::normalisePath(fileName);
  std::string_view directory = fileName_;
  while (!directory.empty() && directory.back() != ':' && !platform::isSeparator(directory.back()))
    directory.remove_suffix(1);
  if (directory.empty()) directory = "./";
  while (!directory.empty() && platform::isSeparator(directory.back())) directory.remove_suffix(1);
  directory_ = std::string(directory) + "/";
  enterDirectoryMacros();
  // A name with a zero byte in it would open some other file.
  if (fileName_.find('\0') != std::string::npos || !file_.open(fileName_)) return;
  includes_->stack.push_back(platform::canonicalPath(fileName_));
  onStack_ = true;
}

VEXStatus TableReader::checkOpen() const {
  if (readsMemory_ || file_.isOpen()) return nullptr;
  return makeStatus(261002, {fileName_});
}

void TableReader::enterDirectoryMacros() {
  setMacro("ORV_CF_DIR", directory_);
  setMacro("ORV_MF_DIR", directory_);
  setMacro("ORV_HOME", getHomeDirectory());
}

void TableReader::setMacro(std::string_view name, std::string_view value) {
  macroDict_->insert_or_assign(std::string(name), std::string(value));
}

void TableReader::addMacros(const VEXStringVector& macroNamesAndValues) {
  VEX_ASSERT((macroNamesAndValues.entries() % 2) == 0);
  for (std::size_t i = 0; i < macroNamesAndValues.size(); i += 2)
    setMacro(macroNamesAndValues[i], macroNamesAndValues[i + 1]);
}

std::string TableReader::rowPosition() const {
  if (includedFile_ != nullptr) return includedFile_->rowPosition();
  return "Row came from between lines " + integerText(firstLineOfRow_) + " and " + integerText(lastLineOfRow_) +
         " of file " + fileName_;
}

std::string TableReader::includedFrom() const {
  return " in file included from `" + fileName_ + "'";
}

VEXStatus TableReader::getRow(VEXStringVector& row) {
  row.clear();
  if (includedFile_ != nullptr) {
    VEX_TRY(extendStatusText(includedFile_->getRow(row), includedFrom()));
    if (!row.empty()) return nullptr;
    closeInclude();
  }
  firstLineOfRow_ = lineNumber_;
  for (;;) {
    bool found = false;
    VEX_TRY(nextLine(found));
    if (!found) {
      lastLineOfRow_ = lineNumber_;
      if (commentDepth_ != 0) return makeStatus(261003, {fileName_});
      return nullptr;
    }
    LineKind kind = LineKind::Skipped;
    VEX_TRY(takeLine(row, kind));
    if (kind == LineKind::Finished && !row.empty()) return nullptr;
    // A line whose macros or quotes leave nothing gives no row: an empty one would end the input.
    if (kind == LineKind::Finished) firstLineOfRow_ = lineNumber_;
    if (kind == LineKind::Skipped && !row.empty())
      return makeStatus(261008, {fileName_, integerText(lineNumber_), shown(rowText(row))});
  }
}

VEXStatus TableReader::nextLine(bool& found) {
  std::string_view line;
  found = true;
  ++lineNumber_;
  if (readsMemory_) {
    found = !memory_.empty();
    std::size_t end = memory_.find('\n');
    line = memory_.substr(0, end);
    memory_.remove_prefix(end == std::string_view::npos ? memory_.size() : end + 1);
    if (line.size() > kLongestRow) return extendStatus(tooLong());
    if (line.ends_with('\r')) line.remove_suffix(1);
  } else {
    if (VEXStatus closed = checkOpen()) return extendStatus(std::move(closed));
    switch (file_.readLine(line, kLongestRow)) {
      case VEXInputFile::Line::Ok:
        break;
      case VEXInputFile::Line::End:
        found = false;
        break;
      case VEXInputFile::Line::TooLong:
        return extendStatus(tooLong());
      case VEXInputFile::Line::Error:
        return makeStatus(261004, {fileName_});
    }
  }
  line_.assign(line);
  return nullptr;
}

VEXStatus TableReader::tooLong() const {
  return makeStatus(261017, {fileName_, integerText(lineNumber_), integerText(kLongestRow)});
}

VEXStatus TableReader::takeLine(VEXStringVector& row, LineKind& kind) {
  kind = LineKind::Skipped;
  bool isComment = false;
  VEX_TRY(takeBlockComment(isComment));
  if (isComment || takeDelimiterDirective()) {
    ++firstLineOfRow_;
    return nullptr;
  }
  std::string_view rest;
  bool isInclude = isDirective(line_, "INCLUDE", rest);
  bool isMacro = !isInclude && isDirective(line_, "MACRO", rest);
  bool isDefault = !isInclude && !isMacro && isDirective(line_, "DEFAULT_MACRO", rest);
  if ((isInclude || isMacro || isDefault) && row.empty()) {
    std::size_t cut = line_.size() - rest.size();
    VEX_TRY(joinDirectiveLines());
    line_.erase(0, cut);
    if (!isInclude) return extendStatus(takeMacro(isDefault));
    VEX_TRY(takeInclude(row));
    if (!row.empty()) kind = LineKind::Finished;
    return nullptr;
  }
  std::string_view text = leftTrimmed(line_);
  bool isLineComment = !syntax_.commentChar.empty() && text.starts_with(syntax_.commentChar);
  if (isInclude || isMacro || isDefault || isLineComment || text.empty()) return nullptr;
  kind = cutContinuation(line_) ? LineKind::Continued : LineKind::Finished;
  if (kind == LineKind::Finished) lastLineOfRow_ = lineNumber_;
  return extendStatusText(takeData(row), "Original Line was `" + shown(line_) + "' TableReader::GetRow");
}

VEXStatus TableReader::takeBlockComment(bool& isComment) {
  bool opens = !syntax_.commentOpen.empty() && leftTrimmed(line_).starts_with(syntax_.commentOpen);
  std::string_view tail = std::string_view(line_).substr(0, line_.find_last_not_of(kBlanks) + 1);
  bool closes = !syntax_.commentClose.empty() && tail.ends_with(syntax_.commentClose);
  if (opens) ++commentDepth_;
  if (closes) --commentDepth_;
  if (commentDepth_ < 0) return makeStatus(261005, {shown(line_), fileName_});
  isComment = closes || commentDepth_ > 0;
  return nullptr;
}

// "DELIM" at the very beginning of a line, with nothing demanded behind it.
bool TableReader::takeDelimiterDirective() {
  constexpr std::string_view kWord = "DELIM";
  if (!line_.starts_with(kWord)) return false;
  std::string_view rest = leftTrimmed(std::string_view(line_).substr(kWord.size()));
  syntax_.whitespace = rest.empty() ? kDefaultWhitespace : rest.substr(0, 1);
  isDelimiter_ = delimiterSet(syntax_.whitespace);
  return true;
}

bool TableReader::cutContinuation(std::string& text) const {
  if (syntax_.continuationChar.empty()) return false;
  std::string_view body = std::string_view(text).substr(0, text.find_last_not_of(kBlanks) + 1);
  if (!body.ends_with(syntax_.continuationChar)) return false;
  text.resize(body.size() - syntax_.continuationChar.size());
  return true;
}

VEXStatus TableReader::joinDirectiveLines() {
  std::string joinedLines = std::move(line_);
  while (cutContinuation(joinedLines)) {
    bool found = false;
    VEX_TRY(nextLine(found));
    ++firstLineOfRow_;
    if (!found) break;
    if (joinedLines.size() + line_.size() > kLongestRow) return extendStatus(tooLong());
    joinedLines += line_;
  }
  line_ = std::move(joinedLines);
  return nullptr;
}

// line_ holds name and value.
VEXStatus TableReader::takeMacro(bool isDefault) {
  std::string_view rest = leftTrimmed(line_);
  std::string_view name = rest.substr(0, rest.find_first_of(kBlanks));
  if (name.empty()) return makeStatus(261007, {fileName_, integerText(lineNumber_)});
  std::string_view value = trimmed(rest.substr(name.size()), kBlanks);
  if (!isDefault || !macroDict_->contains(name)) setMacro(name, value);
  return nullptr;
}

// line_ holds what is to be included.
VEXStatus TableReader::takeInclude(VEXStringVector& row) {
  VEX_ASSERT(includedFile_ == NULL);
  std::string rest(trimmed(line_, kBlanks));
  if (!includes_->allowed) return makeStatus(261018, {shown(rest), fileName_});
  VEX_TRY(expandMacros(rest));
  if (rest.starts_with('[') || rest.starts_with('|')) VEX_TRY(runInclude(rest));
  std::string name = tempFile_ == nullptr ? std::string() : tempFile_->path();
  if (name.empty()) {
    VEX_TRY(expandEnvironment(rest));
    for (char c : rest)
      if (c != '"') name += c;
    if (!platform::isAbsolutePath(name)) name.insert(0, directory_);
  }
  VEX_TRY(openInclude(VEXConfiguration::normalisePath(name)));
  VEX_TRY(extendStatusText(includedFile_->getRow(row), includedFrom()));
  if (row.empty()) closeInclude();
  return nullptr;
}

// Runs a Tcl script, "[...]", or a program, "|...", and leaves what it prints in a temporary file.
VEXStatus TableReader::runInclude(const std::string& rest) {
  bool isProgram = rest[0] == '|';
  std::string body = rest.substr(1);
  if (!isProgram && body.ends_with(']')) body.pop_back();
  VEXTclInterp interp;
  std::string error;
  if (interp.isReady()) {
    std::string folder = VEXTempFileManager::folder();
    if (!platform::isAbsolutePath(folder)) folder = platform::currentDirectory() + "/" + folder;
    tempFile_ = VEXTempFileManager::createFile(folder);
    if (tempFile_ == nullptr) return makeStatus(236101, {folder});
    interp.setVar("gDirectory", directory_);
    interp.setVar("gOutputName", tempFile_->path());
    DirectoryGuard guard;
    const std::string enter = "set gOldWorkingDir [pwd] ; cd $gDirectory";
    const std::string leave = "cd $gOldWorkingDir";
    bool done = isProgram ? runAll(interp, {enter, "exec " + body + " >& $gOutputName", leave})
                          : runAll(interp, {enter, "rename puts puts_real", "set gOutputFile [open $gOutputName w]",
                                            "proc puts {val} { global gOutputFile ; puts_real $gOutputFile $val }",
                                            body, "close $gOutputFile", leave});
    if (done) return nullptr;
    error = interp.errorInfo();
  } else {
    error = formatMessage(261019);
  }
  if (isProgram) return makeStatus(261015, {shown(trimmed(body)), shown(error)});
  return makeStatus(261014, {shown(error)});
}

VEXStatus TableReader::openInclude(const std::string& name) {
  std::string path = platform::canonicalPath(name);
  for (const std::string& open : includes_->stack)
    if (open == path) return makeStatus(261006, {name, fileName_});
  if (includes_->stack.size() >= kDeepestInclude || includes_->numOpened >= kMostIncludes)
    return makeStatus(261016, {name, fileName_, integerText(kDeepestInclude), integerText(kMostIncludes)});
  ++includes_->numOpened;
  includedFile_.reset(new TableReader(syntax_, macroDict_, includes_));
  includedFile_->open(name);
  includedFile_->undefinedMacrosAllowed_ = undefinedMacrosAllowed_;
  return extendStatusText(includedFile_->checkOpen(), includedFrom());
}

void TableReader::closeInclude() {
  includedFile_.reset();
  removeTempFile();
  setMacro("ORV_CF_DIR", directory_);
  setMacro("ORV_MF_DIR", directory_);
}

void TableReader::removeTempFile() {
  if (tempFile_ != nullptr) platform::removeFile(tempFile_->path());
  tempFile_.reset();
}

VEXStatus TableReader::takeData(VEXStringVector& row) {
  work_ = line_;
  VEX_TRY(expandMacros(work_));
  VEX_TRY(expandEnvironment(work_));
  switch (tokeniseRow(work_, isDelimiter_, row)) {
    case RowFault::None:
      return nullptr;
    case RowFault::Quote:
      return makeStatus(261009, {shown(line_), fileName_, integerText(lineNumber_)});
    case RowFault::CloseParen:
      return makeStatus(261010, {shown(line_), fileName_, integerText(lineNumber_)});
    case RowFault::OpenParen:
      return makeStatus(261011, {shown(line_), fileName_, integerText(lineNumber_)});
  }
  return nullptr;
}

VEXStatus TableReader::expandMacros(std::string& text) {
  auto lookUp = [this](std::string_view name, std::string& value) -> VEXStatus {
    auto found = macroDict_->find(name);
    if (found == macroDict_->end()) {
      if (!undefinedMacrosAllowed_) return makeStatus(261013, {shown(name), fileName_});
      found = macroDict_->emplace(name, std::string()).first;
    }
    // A macro that holds a directory can stand in front of a file name.
    if (found->second.ends_with('\\')) found->second.back() = '/';
    value = found->second;
    return nullptr;
  };
  bool isTooLong = false;
  VEX_TRY(expandReferences(text, "$(", ')', kMacroLimit, lookUp, isTooLong));
  return isTooLong ? extendStatus(tooLong()) : nullptr;
}

VEXStatus TableReader::expandEnvironment(std::string& text) const {
  auto lookUp = [this](std::string_view name, std::string& value) -> VEXStatus {
    bool isDefined =
        name.find('\0') == std::string_view::npos && platform::environment(std::string(name).c_str(), value);
    return isDefined ? nullptr : makeStatus(261001, {shown(name), fileName_});
  };
  // Every reference of the line itself is replaced; the limit is for those that the values bring.
  std::size_t limit = kMacroLimit + countOf(text, "${");
  bool isTooLong = false;
  VEX_TRY(expandReferences(text, "${", '}', limit, lookUp, isTooLong));
  return isTooLong ? extendStatus(tooLong()) : nullptr;
}
