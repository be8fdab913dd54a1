// Field substitution: what a field of a fixed ASCII record stands for. A command puts something in the place of an
// attribute (AS_CONSTANT(<text>), AS_LINEEND, AS_COORDINATELIST, AS_COMPLEX_GEOMETRY), or a type tells how the
// attribute is spelled (CHAR(<n>), INTEGER(<n>), FLOAT(<w>,<d>), DATE, STRINGLIST(<n>)). Geometry as text is here, too.
//
// Failures: 312001 a word that is none of these, 312002 a size that is missing or wrong, 312003 (refusal) a value that
// does not suit its field, 312004 (refusal) a geometry that the table does not take, 312005 a kind of geometry that is
// none, 312006 coordinates that cannot be read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/tables/vextabio.h"

class VEXFieldSubstitution {
 public:
  enum class Kind : std::uint8_t {
    Constant,
    LineEnd,
    CoordinateList,
    ComplexGeometry,
    Char,
    Integer,
    Float,
    Date,
    StringList
  };

  static VEXStatus parse(std::string_view name, std::string_view spec, VEXFieldSubstitution& field);

  Kind kind() const { return kind_; }
  // Where the value comes from: a date's part "built.yyyy" takes the attribute "built".
  const std::string& attribute() const { return attribute_; }
  const std::string& constant() const { return constant_; }
  std::size_t width() const { return width_; }  // bytes in the record; 0 for what ends with its line
  bool isColumn() const { return kind_ != Kind::Constant && kind_ != Kind::LineEnd; }
  VEXColumnRole role() const { return role_; }

  // Appends the field as the record has it.
  VEXStatus write(std::string_view value, std::string& record) const;
  // The attribute's value from the bytes of the record.
  void read(std::string_view bytes, std::string& value) const;

 private:
  bool spell(std::string_view value, std::string& text) const;
  bool spellDate(std::string_view value, std::string& text) const;

  std::string name_;
  std::string attribute_;
  std::string constant_;
  Kind kind_ = Kind::Char;
  VEXColumnRole role_ = VEXColumnRole::Attribute;
  std::size_t width_ = 0;
  int decimals_ = 0;
  std::string part_;  // of a date: yyyy, yy, mm, dd
};

namespace fieldsub {

// [+-]?[0-9]+
bool isInteger(std::string_view text);
// [+-]?[0-9]+[.]?[0-9]* with or without [eE][+-]?[0-9]+
bool isReal(std::string_view text);

// True for Point, Line, Area, PointAndLine, PointAndArea, LineAndArea.
bool isGeometryKind(std::string_view kind);
// The text of one role: a number, "<count> x y ..." or "<parts> <count> x y ... <count> x y ...". 312004.
VEXStatus geometryText(const VEXFeature& feature, VEXColumnRole role, std::string_view kind, std::string& text);
// Gives the feature the coordinates of such a text, and the geometry that the kind asks for. 312005, 312006.
VEXStatus buildGeometry(std::string_view text, VEXColumnRole role, std::string_view kind, VEXFeature& feature);

}  // namespace fieldsub
