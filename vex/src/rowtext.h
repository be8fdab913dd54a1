// The token rules of the row syntax, for one line of text: quotes, parentheses, delimiters.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "vex/inc/stkdefs.h"

using VEXDelimiterSet = std::array<bool, 256>;  // by byte

enum class RowFault {
  None,
  Quote,       // a quote without its partner
  CloseParen,  // ")" without "("
  OpenParen,   // "(" without ")"
};

VEXDelimiterSet delimiterSet(std::string_view characters);

// Appends the tokens of `text`, which is used up as work space. Quotes protect blanks, tabs and parentheses and go
// away, \" stands for a quote, blanks in parentheses vanish, and so do empty tokens. After a fault `row` is as it was.
RowFault tokeniseRow(std::string& text, const VEXDelimiterSet& isDelimiter, VEXStringVector& row);

// A row as it could stand in a mapping file: tokens between blanks, in quotes where they need them.
std::string rowText(const VEXStringVector& row);
