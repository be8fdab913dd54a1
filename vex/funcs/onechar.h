// Single characters as an argument writes them: one character of UTF-8, or a back-slash sequence of Tcl.
#pragma once

#include <string>
#include <string_view>

// One byte, or the bytes of one character.
bool isOneCharacter(std::string_view text);
// Decodes \t, \n, \x09, \011, \u00e9 and their like, as Tcl does in a quoted word. False when the text is not exactly
// one such sequence.
bool decodeBackslash(std::string_view text, std::string& character);
