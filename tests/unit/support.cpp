#include "tests/unit/support.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "vex/inc/numtext.h"

namespace {

constexpr struct {
  const char* word;
  std::uint32_t code;
} kKinds[] = {{"point", VEX_GEOM_POINT},
              {"line", VEX_GEOM_LINE},
              {"polygon", VEX_GEOM_POLYGON},
              {"donut", VEX_GEOM_DONUT},
              {"aggregate", VEX_GEOM_AGGREGATE}};

std::string_view takeWord(std::string_view& text, std::string_view ends) {
  text = trimmed(text);
  std::size_t end = std::min(text.find_first_of(ends), text.size());
  std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

void addCoords(VEXFeature& feature, std::string_view text) {
  std::vector<std::string> points;
  splitAt(text, ',', points);
  for (const std::string& point : points) {
    std::vector<std::string> numbers;
    splitAt(trimmed(point), ' ', numbers);
    double values[3] = {0.0, 0.0, 0.0};
    for (std::size_t i = 0; i < std::min<std::size_t>(numbers.size(), 3); ++i) textToReal(numbers[i], values[i]);
    if (numbers.size() == 3 && feature.dimension() == 2) feature.setDimension(3);
    feature.addCoord(values[0], values[1], values[2]);
  }
}

}  // namespace

VEXFeaturePtr makeFeature(std::string_view text) {
  VEXFeaturePtr feature(new VEXFeature());
  feature->setFeatureType(takeWord(text, " {"));
  text = trimmed(text);
  if (text.starts_with('{')) {
    std::size_t end = text.find('}');
    // Names of list attributes hold braces themselves: the attributes end at the last one in front of a blank or the
    // end.
    while (end + 1 < text.size() && text[end + 1] != ' ') end = text.find('}', end + 1);
    std::vector<std::string> pairs;
    splitAt(text.substr(1, end - 1), ',', pairs);
    for (const std::string& pair : pairs) {
      std::size_t equals = pair.find('=');
      if (equals != std::string::npos)
        feature->setAttribute(trimmed(std::string_view(pair).substr(0, equals)),
                              std::string_view(pair).substr(equals + 1));
    }
    text = trimmed(text.substr(end + 1));
  }
  if (text.empty()) return feature;
  std::string_view kind = takeWord(text, " ");
  std::int32_t code = 0;
  textToInteger(kind, code);
  for (const auto& row : kKinds)
    if (kind == row.word) code = static_cast<std::int32_t>(row.code);
  if (!trimmed(text).empty()) addCoords(*feature, trimmed(text));
  feature->setGeomType(static_cast<std::uint32_t>(code));
  return feature;
}

std::string describe(const VEXFeature& feature) {
  std::string text = feature.featureType();
  VEXStringVector names;
  feature.allAttributeNames(names);
  std::sort(names.begin(), names.end());
  std::erase(names, "orv_geometry");
  for (std::size_t i = 0; i < names.size(); ++i)
    (text += (i == 0 ? " {" : ", ") + names[i] + "=") += *feature.findAttribute(names[i]);
  if (!names.empty()) text += "}";
  if (feature.geomType() == VEX_GEOM_UNDEFINED && feature.numCoords() == 0) return text;
  std::string kind = integerText(feature.geomType());
  for (const auto& row : kKinds)
    if (feature.geomType() == row.code) kind = row.word;
  text += " " + kind;
  for (std::size_t i = 0; i < feature.numCoords(); ++i) {
    text += (i == 0 ? " " : ", ") + realText(feature.xs()[i]) + " " + realText(feature.ys()[i]);
    if (feature.dimension() == 3) text += " " + realText(feature.zs()[i]);
  }
  return text;
}

const std::string& scratchDirectory() {
  struct Scratch {
    std::string path = std::filesystem::temp_directory_path() / ("orv_tests_" + std::to_string(getpid()) + "/");
    Scratch() { std::filesystem::create_directories(path); }
    ~Scratch() { std::filesystem::remove_all(path); }
  };
  static const Scratch scratch;
  return scratch.path;
}

void EngineScope::row(std::string_view text) {
  VEXStringVector tokens;
  splitAt(text, ' ', tokens);
  std::erase(tokens, "");
  VEXConfiguration::addRow(std::move(tokens));
}
