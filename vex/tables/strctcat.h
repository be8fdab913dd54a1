// VEXCatalogueLayout: the record of a structured catalogue, field behind field, as docs/formats/catalogue.md tells it.
//
// Failures: 302001 a kind that is none, 302002 a size that is missing or wrong, 302003 a VarString without an Integer
// field "<name>_length" in front of it, 302004 a column twice, 302005 a terminator that is none, 302006 no fields.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/tables/vextabio.h"

struct VEXCatalogueField {
  enum class Kind : std::uint8_t {
    String,
    VarString,
    Integer,
    Real,
    OptReal,
    ExpReal,
    DMS,
    XCoordinate,
    YCoordinate,
    ZCoordinate,
    BigEndianInt,
    BigEndianReal,
    Constant
  };

  std::string name;
  std::string typeText;
  Kind kind = Kind::String;
  std::size_t width = 0;  // bytes; of a VarString 0
  int decimals = 0;
  std::string constant;
  std::size_t column = 0;        // of the row; not for a constant
  std::size_t lengthColumn = 0;  // of a VarString
  bool isLength = false;         // holds the length of a VarString: the writer fills it

  static constexpr const char* kLengthSuffix = "_length";

  // Appends the value's bytes; false when it does not suit.
  bool encode(std::string_view value, std::string& record) const;
  // Replaces `value` by what the bytes hold; false when they hold no such thing.
  bool decode(std::string_view bytes, std::string& value) const;
};

class VEXCatalogueLayout {
 public:
  // SCAT_LINE_TERMINATOR: LF, CRLF, CR or NONE.
  VEXStatus setTerminator(std::string_view word);
  VEXStatus addField(std::string_view name, std::string_view typeText, VEXStringVector& columns);
  VEXStatus check(std::string_view path) const;  // that there are fields

  const std::vector<VEXCatalogueField>& fields() const { return fields_; }
  const std::string& terminator() const { return terminator_; }
  const std::string& terminatorWord() const { return terminatorWord_; }
  VEXColumnRole roleOf(std::size_t column) const;

 private:
  std::vector<VEXCatalogueField> fields_;
  std::string terminator_ = "\n";
  std::string terminatorWord_ = "LF";
};
