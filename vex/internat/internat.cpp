#include "vex/internat/internat.h"

#include <memory>
#include <unordered_map>
#include <vector>

#include "vex/inc/numtext.h"
#include "vex/src/homedir.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexfile.h"

namespace {

struct MessageTable {
  std::unordered_map<std::uint32_t, std::string> texts{20021};
  bool showsNumbers = false;  // ORV_MSG_NUM_OUTPUT
};

std::unique_ptr<MessageTable>& table() {
  static std::unique_ptr<MessageTable> messages;
  return messages;
}

VEXStatus readMessageLine(std::string_view line) {
  if (line.empty() || line[0] == '/') return nullptr;
  std::size_t comma = line.find(',');
  if (comma == std::string_view::npos)
    return makeTextStatus(kSeverityFailure,
                          "Line `" + std::string(line) + "' does not have the separator character `,' in it");
  std::string_view digits = line.substr(0, comma);
  std::int32_t number = 0;
  if (digits.find_first_not_of("0123456789") != std::string_view::npos || !textToInteger(digits, number))
    return makeTextStatus(kSeverityFailure, "Line `" + std::string(line) + "' does not have a valid message number: `" +
                                                std::string(digits) + "' is not numeric");
  std::string_view text = line.substr(comma + 1);
  if (!text.empty() && text[0] == ' ') text.remove_prefix(1);
  table()->texts[static_cast<std::uint32_t>(number)] = std::string(text);
  return nullptr;
}

VEXStatus unreadable(const std::string& path) {
  return makeTextStatus(kSeverityFailure,
                        "Unable to open file: " + path + ".  Make sure the file exists and can be opened.");
}

VEXStatus readMessageFile(const std::string& path) {
  VEXInputFile file;
  if (!file.open(path)) return unreadable(path);
  std::string_view line;
  for (;;) {
    VEXInputFile::Line got = file.readLine(line);
    if (got == VEXInputFile::Line::End) return nullptr;
    if (got != VEXInputFile::Line::Ok) return unreadable(path);
    VEX_TRY(readMessageLine(line));
  }
}

}  // namespace

VEXStatus loadMessages(const std::string& home) {
  if (table() != nullptr) return nullptr;
  table() = std::make_unique<MessageTable>();
  std::string directory = home + "messages";
  std::vector<std::string> names;
  if (!platform::listDirectory(directory, names)) return unreadable(directory);
  for (auto name = names.rbegin(); name != names.rend(); ++name)
    if (name->size() > 2) VEX_TRY(readMessageFile(directory + "/" + *name));
  std::string value;
  table()->showsNumbers = platform::environment("ORV_MSG_NUM_OUTPUT", value);
  return nullptr;
}

VEXStatus getMessage(std::uint32_t number, std::initializer_list<std::string_view> parameters, std::string& text) {
  if (table() == nullptr) VEX_TRY(loadMessages(getHomeDirectory()));
  auto found = table()->texts.find(number);
  text.clear();
  if (found == table()->texts.end()) {
    if (number == 0) return nullptr;
    return makeTextStatus(kSeverityFailure,
                          "Message #" + std::to_string(number) + " is not present in the message file");
  }
  text = found->second;
  std::size_t index = 0;
  for (std::string_view parameter : parameters)
    text = replacedAll(std::move(text), "%" + std::to_string(index++), parameter);
  if (table()->showsNumbers) text = "(#" + std::to_string(number) + ") " + text;
  return nullptr;
}

std::string formatMessage(std::uint32_t number, std::initializer_list<std::string_view> parameters) {
  std::string text;
  if (VEXStatus failure = getMessage(number, parameters, text)) return failure->message();
  return text;
}
