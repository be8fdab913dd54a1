// The message table: number and parameters to the text a user reads. Texts lie in <home>/messages, one
// message a line: "number, text"; "/" begins a comment; %0, %1 are parameters.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "vex/inc/statinfo.h"

// Reads all message files of `home`. A second call does nothing.
VEXStatus loadMessages(const std::string& home);
// Fails when the number has no text; number 0 gives the empty text. Loads the files first when nobody has.
VEXStatus getMessage(std::uint32_t number, std::initializer_list<std::string_view> parameters, std::string& text);
// The text; a failure of the look-up becomes the text of the failure.
std::string formatMessage(std::uint32_t number, std::initializer_list<std::string_view> parameters = {});
