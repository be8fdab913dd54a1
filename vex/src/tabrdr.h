// TableReader: reads any text in the engine's row syntax (mapping files, parameter and command files, lookup
// tables) and gives one row at a time, a row being an ordered list of tokens. Make it, ask checkOpen(), then
// call getRow() until it gives an empty row.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/src/rowtext.h"
#include "vex/src/vexfile.h"

struct VEXTextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};
// From a macro's name to its raw value; one table serves a file and all that it includes.
using VEXMacroTable = std::unordered_map<std::string, std::string, VEXTextHash, std::equal_to<>>;

class TableReader {
 public:
  // The strings that shape the syntax, taken as they stand. Null is the default: no comment character, no
  // continuation, "/*", "*/" and the delimiters blank, newline and tab.
  TableReader(std::string_view fileName, const char* commentChar, const char* commentOpen = nullptr,
              const char* commentClose = nullptr, const char* continuationChar = nullptr,
              const char* whitespace = nullptr);
  // The same over a macro table of the caller's, which must outlive the reader.
  TableReader(std::string_view fileName, VEXMacroTable& macroDict, const char* commentChar,
              const char* commentOpen = nullptr, const char* commentClose = nullptr,
              const char* continuationChar = nullptr, const char* whitespace = nullptr);
  ~TableReader();
  TableReader(const TableReader&) = delete;
  TableReader& operator=(const TableReader&) = delete;

  // A reader of text in memory, which must outlive it, in the syntax of mapping files: comments begin with "#",
  // a back-slash continues a row. It stands for a file of the current directory and includes nothing (261018).
  static std::unique_ptr<TableReader> overText(std::string_view text);

  VEXStatus checkOpen() const;  // 261002: the file cannot be opened
  // The next row; an empty one is the end of the input. After a failure the reader is of no further use.
  // 261001 undefined environment variable; 261002 a file cannot be opened; 261003 the file ends inside a block
  // comment; 261004 read error; 261005 comment close without open; 261006 circular include; 261007 macro without
  // a name; 261008 continuation followed by no data; 261009 unbalanced quote; 261010, 261011 unbalanced
  // parentheses; 261012 macros never end; 261013 undefined macro; 261014 Tcl include failed; 261015 program
  // include failed; 261016 too many includes; 261017 a line is too long; 261018 no includes here.
  VEXStatus getRow(VEXStringVector& row);
  // "Row came from between lines <first> and <last> of file <name>", for the row given last.
  std::string rowPosition() const;

  void setMacro(std::string_view name, std::string_view value);
  void addMacros(const VEXStringVector& macroNamesAndValues);  // name, value, name, value
  // An unknown macro becomes the empty text instead of a failure, and is defined so from then on.
  void allowUndefinedMacros(bool allowed) { undefinedMacrosAllowed_ = allowed; }

  // Bytes of a line, before and after expansion.
  static constexpr std::size_t kLongestRow = VEXInputFile::kLongestLine;

 private:
  enum class LineKind;
  // What a file shares with all that it includes.
  struct Includes {
    VEXStringVector stack;      // canonical paths, from the outermost file to the one being read
    std::size_t numOpened = 0;  // files included so far
    bool allowed = true;
  };
  struct Syntax {
    std::string commentChar;
    std::string commentOpen;
    std::string commentClose;
    std::string continuationChar;
    std::string whitespace;
  };

  TableReader(const Syntax& syntax, VEXMacroTable* macroDict, std::shared_ptr<Includes> includes);
  static Syntax syntaxOf(const char* commentChar, const char* commentOpen, const char* commentClose,
                         const char* continuationChar, const char* whitespace);
  void open(std::string_view fileName);
  void enterDirectoryMacros();
  VEXStatus nextLine(bool& found);  // the next physical line, in line_
  VEXStatus takeLine(VEXStringVector& row, LineKind& kind);
  VEXStatus takeBlockComment(bool& isComment);
  bool takeDelimiterDirective();
  bool cutContinuation(std::string& text) const;
  VEXStatus joinDirectiveLines();
  VEXStatus takeMacro(bool isDefault);
  VEXStatus takeInclude(VEXStringVector& row);
  VEXStatus runInclude(const std::string& rest);
  VEXStatus openInclude(const std::string& name);
  void closeInclude();
  void removeTempFile();
  VEXStatus takeData(VEXStringVector& row);
  VEXStatus expandMacros(std::string& text);
  VEXStatus expandEnvironment(std::string& text) const;
  VEXStatus tooLong() const;
  std::string includedFrom() const;

  VEXInputFile file_;
  std::string_view memory_;  // what is left of a text in memory
  bool readsMemory_ = false;
  Syntax syntax_;
  VEXDelimiterSet isDelimiter_{};
  std::string fileName_;   // normalised
  std::string directory_;  // ends in "/"
  std::uint32_t lineNumber_ = 0;
  std::uint32_t firstLineOfRow_ = 0;
  std::uint32_t lastLineOfRow_ = 0;
  std::int64_t commentDepth_ = 0;
  std::unique_ptr<VEXMacroTable> ownMacroDict_;
  VEXMacroTable* macroDict_;
  std::shared_ptr<Includes> includes_;
  bool onStack_ = false;  // this file's path is the last of the include stack
  std::unique_ptr<TableReader> includedFile_;
  bool undefinedMacrosAllowed_ = false;
  std::unique_ptr<VEXFile> tempFile_;  // what a running script or program include reads
  std::string line_;
  std::string work_;  // the expanded copy of a data line
};
