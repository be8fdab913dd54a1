#include "vex/inc/vexobjct.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "vex/inc/numtext.h"

// ---- the table ----

const VEXText* VEXAttributeTable::find(VEXName name) const {
  std::uint32_t place = 0;
  return findAnew(name, place);
}

const VEXText* VEXAttributeTable::findAnew(VEXName name, std::uint32_t& place) const {
  if (name.isNull()) return nullptr;
  for (std::int32_t at = buckets_[bucketOf(name)]; at >= 0;) {
    const Slot& slot = slots_[static_cast<std::size_t>(at)];
    if (slot.name == name) {
      place = static_cast<std::uint32_t>(at);
      return isLive(at) ? &slot.value : nullptr;
    }
    at = slot.next;
  }
  return nullptr;
}

void VEXAttributeTable::storeLong(VEXText& text, std::string_view value) {
  text.assign(value);
  hasLarge_ |= text.hasLargeBuffer();
}

// Growing the slots moves the short texts, and the value may be one of them.
void VEXAttributeTable::setAnew(VEXName name, std::string_view value) {
  if (VEXText* text = next(name)) {
    store(*text, value);
  } else if (value.size() <= VEXText::kShort) {
    const VEXText kept(value);
    findOrAdd(name).assign(kept);
  } else {
    store(findOrAdd(name), value);
  }
}

VEXText& VEXAttributeTable::findOrAdd(VEXName name) {
  for (std::int32_t at = buckets_[bucketOf(name)]; at >= 0;) {
    Slot& slot = slots_[static_cast<std::size_t>(at)];
    if (slot.name == name) {
      if (isLive(at)) return slot.value;
      break;
    }
    at = slot.next;
  }
  dropOldChains();
  std::size_t at = used_;
  if (!spare_.empty()) {
    at = static_cast<std::size_t>(spare_.back());
    spare_.pop_back();
  } else {
    linked_ = ++used_;
    if (used_ > slots_.size()) slots_.emplace_back();
  }
  slots_[at].name = name;
  slots_[at].value.clear();
  link(at);
  return slots_[at].value;
}

void VEXAttributeTable::link(std::size_t at) {
  std::int32_t* end = &buckets_[bucketOf(slots_[at].name)];
  while (*end >= 0) end = &slots_[static_cast<std::size_t>(*end)].next;
  *end = static_cast<std::int32_t>(at);
  slots_[at].next = -1;
}

void VEXAttributeTable::unlinkAll() {
  std::fill(buckets_.begin(), buckets_.end(), -1);
}

void VEXAttributeTable::dropOldChains() {
  if (linked_ == used_) return;
  unlinkAll();
  for (std::size_t at = 0; at < used_; ++at) link(at);
  linked_ = used_;
}

[[gnu::noinline]] std::size_t VEXAttributeTable::takeInOrder(const VEXAttributeTable& source,
                                                             std::span<const VEXTransfer> transfers) {
  const Slot* const theirs = source.slots_.data();
  const std::size_t numTheirs = source.used_;
  Slot* mine = slots_.data() + used_;
  const VEXTransfer* transfer = transfers.data();
  const VEXTransfer* const end = transfer + std::min(transfers.size(), linked_ - used_);
  for (; transfer != end && transfer->place < numTheirs; ++transfer, ++mine) {
    const Slot& from = theirs[transfer->place];
    if (from.name != transfer->from || mine->name != transfer->to || from.value.size() > VEXText::kShort) break;
    mine->value.assign(from.value);
  }
  const auto taken = static_cast<std::size_t>(transfer - transfers.data());
  used_ += taken;
  return taken;
}

bool VEXAttributeTable::remove(VEXName name) {
  if (name.isNull()) return false;
  dropOldChains();
  for (std::int32_t* place = &buckets_[bucketOf(name)]; *place >= 0;) {
    Slot& slot = slots_[static_cast<std::size_t>(*place)];
    if (slot.name == name) {
      spare_.push_back(*place);
      isInOrder_ = false;
      *place = slot.next;
      slot.name = VEXName();
      return true;
    }
    place = &slot.next;
  }
  return false;
}

// Before the slots are emptied: what is not kept for the next filling.
void VEXAttributeTable::tidy() {
  if (hasLarge_) {
    hasLarge_ = false;
    for (std::size_t at = 0; at < slots_.size(); ++at) {
      if (at >= used_) slots_[at].value.clear();
      hasLarge_ |= slots_[at].value.trim();
    }
  }
  if (!isInOrder_) {
    unlinkAll();
    spare_.clear();
    linked_ = 0;
    isInOrder_ = true;
  }
}

void VEXAttributeTable::rebuild(std::size_t numBuckets) {
  if (buckets_.size() == numBuckets) return;
  dropOldChains();
  std::vector<std::int32_t> old(numBuckets, -1);
  old.swap(buckets_);
  isInOrder_ = false;
  for (std::int32_t head : old) {
    for (std::int32_t at = head; at >= 0;) {
      std::int32_t next = slots_[static_cast<std::size_t>(at)].next;
      link(static_cast<std::size_t>(at));
      at = next;
    }
  }
}

void VEXAttributeTable::copyFrom(const VEXAttributeTable& source) {
  clear();
  if (buckets_.size() != source.buckets_.size()) {
    buckets_.assign(source.buckets_.size(), -1);
    linked_ = 0;
  }
  source.forEach([this](VEXName name, const VEXText& value) { set(name, value); });
}

void VEXAttributeTable::swap(VEXAttributeTable& other) noexcept {
  buckets_.swap(other.buckets_);
  slots_.swap(other.slots_);
  spare_.swap(other.spare_);
  std::swap(used_, other.used_);
  std::swap(linked_, other.linked_);
  std::swap(isInOrder_, other.isInOrder_);
  std::swap(hasLarge_, other.hasLarge_);
}

// ---- single attributes ----

namespace {

// The texts of 0 to 255, made once.
const std::string& smallIntegerText(std::size_t value) {
  static const std::array<std::string, 256> texts = [] {
    std::array<std::string, 256> made;
    for (std::size_t i = 0; i < made.size(); ++i) made[i] = integerText(static_cast<std::int64_t>(i));
    return made;
  }();
  return texts[value];
}

}  // namespace

const VEXText* VEXObject::findAttribute(std::string_view name) const {
  return attributes_->find(VEXName::find(name));
}

void VEXObject::setAttribute(std::string_view name, std::string_view value) {
  if (!name.empty()) attributes_->set(VEXName::intern(name), value);
}

void VEXObject::setInteger(std::string_view name, std::int64_t value) {
  if (value >= 0 && value < 256)
    setAttribute(name, smallIntegerText(static_cast<std::size_t>(value)));
  else
    setAttribute(name, integerText(value));
}

void VEXObject::setReal(std::string_view name, double value) {
  setAttribute(name, realText(value));
}

bool VEXObject::getString(std::string_view name, std::string& value) const {
  const VEXText* found = findAttribute(name);
  if (found != nullptr) value = *found;
  return found != nullptr;
}

bool VEXObject::getInteger(std::string_view name, std::int32_t& value) const {
  const VEXText* found = findAttribute(name);
  return found != nullptr && textToInteger(*found, value);
}

bool VEXObject::getReal(std::string_view name, double& value) const {
  const VEXText* found = findAttribute(name);
  return found != nullptr && textToReal(*found, value);
}

void VEXObject::removeAttribute(std::string_view name) {
  attributes_->remove(VEXName::find(name));
}

void VEXObject::allAttributeNames(VEXStringVector& names) const {
  attributes_->forEach([&names](VEXName name, const VEXText&) { names.push_back(name.text()); });
}

// ---- sequence ----

void VEXObject::removeFromSequence(VEXName name) {
  auto place = std::find(sequencedAttrNames_.begin(), sequencedAttrNames_.end(), name);
  if (place != sequencedAttrNames_.end()) sequencedAttrNames_.erase(place);
}

void VEXObject::setSequenced(VEXName name, std::string_view value) {
  if (attributeExists(name)) removeFromSequence(name);  // only a name in the table can stand in the sequence twice
  attributes_->set(name, value);
  sequencedAttrNames_.push_back(name);
}

void VEXObject::orderedAttributes(VEXStringVector& names, VEXStringVector& values) const {
  std::vector<VEXName> offered;
  for (VEXName name : sequencedAttrNames_) {
    const VEXText* value = attributes_->find(name);
    if (name.isListName() || value == nullptr) continue;
    const std::string& text = name.text();
    std::size_t colon = text[0] == ' ' ? text.find(':') : std::string::npos;
    names.push_back(colon == std::string::npos ? text : text.substr(colon + 1));
    values.emplace_back(*value);
    offered.push_back(name);
  }
  attributes_->forEach([&](VEXName name, const VEXText& value) {
    if (name.isListName() || std::find(offered.begin(), offered.end(), name) != offered.end()) return;
    names.push_back(name.text());
    values.emplace_back(value);
  });
}

// ---- lists ----

namespace {

VEXStatus checkListTemplate(std::string_view name, std::size_t& brace) {
  brace = name.find("{}");
  if (brace == std::string_view::npos) return makeStatus(879001, {name});
  if (name.find("{}", brace + 2) != std::string_view::npos) return makeStatus(879002, {name});
  return nullptr;
}

// "part{}.height" and 3 to "part{3}.height".
std::string elementName(std::string_view listName, std::size_t brace, std::size_t index) {
  std::string name(listName.substr(0, brace + 1));
  appendInteger(name, static_cast<std::int64_t>(index));
  return name += listName.substr(brace + 1);
}

}  // namespace

VEXStatus VEXObject::getList(std::string_view name, VEXStringVector& values, bool& found) const {
  std::size_t brace = 0;
  VEX_TRY(checkListTemplate(name, brace));
  values.clear();
  while (const VEXText* value = findAttribute(elementName(name, brace, values.size()))) values.emplace_back(*value);
  found = !values.empty();
  return nullptr;
}

VEXStatus VEXObject::setList(std::string_view name, const VEXStringVector& values) {
  std::size_t brace = 0;
  VEX_TRY(checkListTemplate(name, brace));
  for (std::size_t i = 0; i < values.size(); ++i) setSequenced(elementName(name, brace, i), values[i]);
  return nullptr;
}

VEXStatus VEXObject::removeList(std::string_view name) {
  std::size_t brace = 0;
  VEX_TRY(checkListTemplate(name, brace));
  for (std::size_t i = 0;; ++i) {
    VEXName element = VEXName::find(elementName(name, brace, i));
    if (!attributes_->remove(element)) return nullptr;
  }
}

VEXStatus VEXObject::setPairs(std::string_view nameTemplate, std::string_view pairText) {
  std::size_t brace = 0;
  VEX_TRY(checkListTemplate(nameTemplate, brace));
  std::vector<std::string> pieces;
  if (!pairText.empty()) splitAt(pairText, kListMark, pieces);
  if (pieces.size() % 2 != 0) pieces.emplace_back();
  for (std::size_t i = 0; i < pieces.size(); i += 2)
    if (pieces[i].find('{') == std::string::npos) return makeStatus(879003, {pieces[i]});
  for (std::size_t i = 0; i < pieces.size(); i += 2) {
    std::string_view index = std::string_view(pieces[i]).substr(0, pieces[i].find('{'));
    std::string name(nameTemplate.substr(0, brace + 1));
    name += index;
    name += nameTemplate.substr(brace + 1);
    setAttribute(name, pieces[i + 1]);
  }
  return nullptr;
}

std::string VEXObject::pairs(std::string_view prefix) const {
  std::string text;
  attributes_->forEach([&](VEXName name, const VEXText& value) {
    if (!std::string_view(name.text()).starts_with(prefix)) return;
    if (!text.empty()) text += kListMark;
    text += name.text();
    text += kListMark;
    text += value;
  });
  return text;
}

// ---- the whole object ----

void VEXObject::resetAttributes() {
  attributes_ = &tables_[0];  // each table meets the names again that it held before
  shelf_ = &tables_[1];
  clearAttributes();
  featureType_ = &kNoType;
}

void VEXObject::cloneAttributes(const VEXObject& source) {
  attributes_->copyFrom(*source.attributes_);
  sequencedAttrNames_ = source.sequencedAttrNames_;
  setFeatureType(source.featureType());
}

void VEXObject::mergeAttributes(const VEXObject& source) {
  source.attributes_->forEach([this](VEXName name, const VEXText& value) {
    if (attributes_->find(name) == nullptr) attributes_->set(name, value);
  });
}

void VEXObject::overwriteAttributes(const VEXObject& source) {
  source.attributes_->forEach([this](VEXName name, const VEXText& value) { attributes_->set(name, value); });
}

void VEXObject::upperCaseNames() {
  VEXAttributeTable upper;
  attributes_->forEach(
      [&](VEXName name, const VEXText& value) { upper.set(VEXName::intern(upperCased(name.text())), value); });
  attributes_->swap(upper);
  for (VEXName& name : sequencedAttrNames_) name = VEXName::intern(upperCased(name.text()));
}

std::string VEXObject::textForm() const {
  std::string text = featureType();
  attributes_->forEach([&text](VEXName name, const VEXText& value) { ((text += '+') += name.text() + '+') += value; });
  return text;
}

[[gnu::noinline]] void valuesOf(const VEXObject& object, std::span<VEXColumn> columns,
                                std::span<std::string_view> row) {
  std::string_view* value = row.data();
  for (VEXColumn& column : columns) *value++ = column.valueIn(object);
}

namespace {

std::string withUnderscores(std::string_view text, std::string_view replaced) {
  std::string form(text);
  for (char& c : form)
    if (replaced.find(c) != std::string_view::npos) c = '_';
  return form;
}

}  // namespace

std::string fileNameForm(std::string_view text) {
  return withUnderscores(text, "<>:\"/\\|.");
}

std::string identifierForm(std::string_view text) {
  return withUnderscores(text, "<>\"/\\&-@#$|:!~ ");
}
