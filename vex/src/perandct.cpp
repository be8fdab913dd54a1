#include "vex/src/perandct.h"

#include <cstring>
#include <vector>

#include "vex/inc/numtext.h"

namespace {

constexpr std::size_t kLeastEntry = 8;  // bytes of an entry beside the name's own

void appendU32(std::string& bytes, std::uint32_t value) {
  char form[sizeof value];
  std::memcpy(form, &value, sizeof value);
  bytes.append(form, sizeof form);
}

// Takes numbers and texts off a file up to an end; a read beyond it fails.
class RegionReader {
 public:
  RegionReader(VEXInputFile& file, std::uint64_t end) : file_(file), end_(end) {}
  std::uint64_t left() const { return end_ > file_.offset() ? end_ - file_.offset() : 0; }
  bool take(std::uint32_t& value) {
    std::string_view bytes;
    if (left() < sizeof value || !file_.readBytes(sizeof value, bytes)) return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    return true;
  }
  bool take(std::string& text) {
    std::uint32_t length = 0;
    std::string_view bytes;
    if (!take(length) || length > left() || !file_.readBytes(length, bytes)) return false;
    text.assign(bytes);
    return true;
  }

 private:
  VEXInputFile& file_;
  std::uint64_t end_;
};

}  // namespace

void VEXPersistentDictionary::save(std::string& bytes) const {
  VEXName name;
  appendU32(bytes, static_cast<std::uint32_t>(entries()));
  for (std::uint32_t index = 0; nameAt(index, name); ++index) {
    appendU32(bytes, static_cast<std::uint32_t>(name.text().size()));
    bytes += name.text();
    appendU32(bytes, index);
  }
  appendU32(bytes, static_cast<std::uint32_t>(entries()));
  for (std::uint32_t index = 0; nameAt(index, name); ++index) {
    appendU32(bytes, index);
    appendU32(bytes, static_cast<std::uint32_t>(name.text().size()));
    bytes += name.text();
  }
}

bool VEXPersistentDictionary::restore(VEXInputFile& file, std::uint64_t end, std::string& fault) {
  clear();
  RegionReader region(file, end);
  auto fails = [&](std::string_view what) {
    fault = what;
    fault += " (byte " + integerText(static_cast<std::int64_t>(file.offset())) + ")";
    return false;
  };
  // Both tables hold the same pairs, in any order. The first says which names there are.
  std::uint32_t count = 0;
  if (!region.take(count) || count > region.left() / kLeastEntry) return fails("the count of names");
  std::vector<VEXName> names(count);
  bool isWhole = true;
  for (std::uint32_t entry = 0; entry < count && isWhole; ++entry) {
    std::string text;
    std::uint32_t index = 0;
    isWhole = region.take(text) && region.take(index) && !text.empty() && index < count && names[index].isNull();
    if (isWhole) names[index] = VEXName::intern(text);
  }
  for (const VEXName name : names) {
    if (name.isNull()) break;
    if (indexOf(name) + 1 != entries()) return fails("a name that stands twice");
  }
  if (!isWhole || entries() != count) return fails("a name or its index");
  std::uint32_t again = 0;
  if (!region.take(again) || again != count) return fails("the count of indexes");
  std::vector<bool> isMet(count);
  for (std::uint32_t entry = 0; entry < count; ++entry) {
    std::string text;
    std::uint32_t index = 0;
    if (!region.take(index) || !region.take(text) || index >= count || isMet[index] || names[index].text() != text)
      return fails("an index or its name");
    isMet[index] = true;
  }
  return region.left() == 0 || fails("bytes behind the last name");
}

void VEXPersistentDictionary::addUnknown() {
  std::string text = "attribute_" + integerText(static_cast<std::int64_t>(entries()));
  for (const std::size_t before = entries(); entries() == before; text += '_') indexOf(VEXName::intern(text));
}
