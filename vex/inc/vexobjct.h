// The attribute object: a bag of named texts, the order of those whose order matters, and a type name.
// VEXFeature derives from it; it also serves plain name-and-value records.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexname.h"
#include "vex/inc/vextext.h"

// A value that goes from one table to another one, under another name. `place` is where it stood last, see
// VEXAttributeTable::find; a transfer without names never finds anything.
struct VEXTransfer {
  VEXName from;
  VEXName to;
  std::uint32_t place = ~std::uint32_t{0};
};

// Hash table from interned name to text: open chains over one flat vector of slots. Emptying it keeps every
// buffer, so a table that is filled again with values of the same size allocates nothing; a large buffer that the last
// filling hardly used is let go. It keeps the chains too: records of one kind come with the same names in the same
// order, and a name that is the next one of the last filling needs no look-up. The first name out of that order drops
// what is left of the old chains.
class VEXAttributeTable {
 public:
  struct Slot {
    VEXName name;
    std::int32_t next;  // the chain's next slot, -1 at its end
    VEXText value;
  };

  VEXAttributeTable() : buckets_(kFirstBuckets, -1) {}

  std::size_t entries() const { return used_ - spare_.size(); }
  std::size_t buckets() const { return buckets_.size(); }
  // The text under a name, null when there is none. Valid until the table next changes.
  const VEXText* find(VEXName name) const;
  // The same where one caller looks for one name in many tables: `place` remembers where it stood last.
  const VEXText* find(VEXName name, std::uint32_t& place) const {
    if (place < used_ && slots_[place].name == name) [[likely]]
      return &slots_[place].value;
    return findAnew(name, place);
  }
  // Adds the name when it is absent. `value` may be a text of this table.
  void set(VEXName name, std::string_view value) {
    if (VEXText* text = next(name)) [[likely]]
      store(*text, value);
    else
      setAnew(name, value);
  }
  void set(VEXName name, const VEXText& value) {
    VEXText* text = value.size() <= VEXText::kShort ? next(name) : nullptr;
    if (text != nullptr) [[likely]]
      text->assign(value);
    else
      setAnew(name, value);
  }
  // Carries transfers out, the first of them onward, as long as each value is a short one that stands where it did last
  // time and goes where it did last time. Gives their number: the next one needs a look-up.
  std::size_t takeInOrder(const VEXAttributeTable& source, std::span<const VEXTransfer> transfers);
  bool remove(VEXName name);
  void clear() {
    if (hasLarge_ || !isInOrder_) [[unlikely]]
      tidy();
    used_ = 0;
  }
  // Rebuilds with 4n + 1 buckets when n entries are above half or below an eighth of the buckets.
  void compact() {
    if (entries() * 2 > buckets() || entries() * 8 < buckets()) rebuild(4 * entries() + 1);
  }
  void copyFrom(const VEXAttributeTable& source);  // contents and bucket count
  void swap(VEXAttributeTable& other) noexcept;

  // Walks all entries in bucket order, a fixed order for a given content and history.
  template <class Visit>  // Visit(VEXName, const VEXText&)
  void forEach(Visit&& visit) const {
    for (std::int32_t head : buckets_)
      for (std::int32_t at = head; at >= 0; at = slots_[static_cast<std::size_t>(at)].next)
        if (isLive(at)) visit(slots_[static_cast<std::size_t>(at)].name, slots_[static_cast<std::size_t>(at)].value);
  }

 private:
  static constexpr std::size_t kFirstBuckets = 17;
  // Scales the hash to the bucket count: a multiplication where a remainder would cost a division.
  std::size_t bucketOf(VEXName name) const { return (std::uint64_t{name.hash()} * buckets_.size()) >> 32; }
  bool isLive(std::int32_t at) const { return static_cast<std::size_t>(at) < used_; }
  // Where the value of a name goes that follows in the order of the last filling; null when another one stands there.
  VEXText* next(VEXName name) {
    return used_ < linked_ && slots_[used_].name == name ? &slots_[used_++].value : nullptr;
  }
  void store(VEXText& text, std::string_view value) {
    if (value.size() <= VEXText::kShort) [[likely]]
      text.assign(value);
    else
      storeLong(text, value);
  }
  // The slow ways are kept out of the fast ones, which are inlined.
  [[gnu::noinline]] void storeLong(VEXText& text, std::string_view value);
  [[gnu::noinline]] void setAnew(VEXName name, std::string_view value);
  [[gnu::noinline]] const VEXText* findAnew(VEXName name, std::uint32_t& place) const;
  VEXText& findOrAdd(VEXName name);
  void tidy();
  void rebuild(std::size_t numBuckets);
  void unlinkAll();
  void link(std::size_t at);  // to the end of its chain
  void dropOldChains();       // those of the last filling that were not used again

  std::vector<Slot> slots_;
  std::size_t used_ = 0;               // slots_[0 .. used_) hold the entries (and the spare ones)
  std::size_t linked_ = 0;             // slots_[used_ .. linked_) stand in the chains since the last filling
  bool isInOrder_ = true;              // the chains are as filling the slots one after the other makes them
  bool hasLarge_ = false;              // some text has a buffer that clear() looks at
  std::vector<std::int32_t> buckets_;  // chain heads, -1 when empty
  std::vector<std::int32_t> spare_;    // slots freed by remove(), unlinked and nameless
};

class VEXObject {
 public:
  VEXObject() = default;
  virtual ~VEXObject() = default;
  VEXObject(const VEXObject&) = delete;
  VEXObject& operator=(const VEXObject&) = delete;

  // ---- single attributes; names are compared byte for byte ----
  bool attributeExists(std::string_view name) const { return findAttribute(name) != nullptr; }
  bool attributeExists(VEXName name) const { return attributes_->find(name) != nullptr; }
  // Null when absent; valid until the object next changes.
  const VEXText* findAttribute(VEXName name) const { return attributes_->find(name); }
  const VEXText* findAttribute(VEXName name, std::uint32_t& place) const { return attributes_->find(name, place); }
  const VEXText* findAttribute(std::string_view name) const;
  // Setters replace an existing value. An empty name is ignored.
  void setAttribute(VEXName name, std::string_view value) { attributes_->set(name, value); }
  void setAttribute(VEXName name, const VEXText& value) { attributes_->set(name, value); }
  void setAttribute(std::string_view name, std::string_view value);
  void setInteger(std::string_view name, std::int64_t value);
  void setReal(std::string_view name, double value);  // 15 significant digits
  void setFlag(std::string_view name) { setAttribute(name, std::string_view()); }
  // True when the attribute exists and, for numbers, its text converts (an integer as textToInteger says).
  bool getString(std::string_view name, std::string& value) const;
  bool getInteger(std::string_view name, std::int32_t& value) const;
  bool getReal(std::string_view name, double& value) const;
  // Silent when absent. A sequenced name stays in the sequence.
  void removeAttribute(VEXName name) { attributes_->remove(name); }
  void removeAttribute(std::string_view name);
  void removeFromSequence(VEXName name);
  std::size_t numAttributes() const { return attributes_->entries(); }
  // Appends every name, in table order.
  void allAttributeNames(VEXStringVector& names) const;
  template <class Visit>
  void forEachAttribute(Visit&& visit) const {
    attributes_->forEach(visit);
  }

  // ---- attributes whose order matters ----
  // Sets the value and moves the name to the end of the sequence.
  void setSequenced(VEXName name, std::string_view value);
  void setSequenced(std::string_view name, std::string_view value) { setSequenced(VEXName::intern(name), value); }
  const std::vector<VEXName>& sequence() const { return sequencedAttrNames_; }
  void addToSequence(VEXName name) { sequencedAttrNames_.push_back(name); }
  void clearSequence() { sequencedAttrNames_.clear(); }
  void setSequence(std::vector<VEXName> names) { sequencedAttrNames_ = std::move(names); }
  // Names and values as a writer is offered them: the sequence first (a name that begins with a blank is
  // reported by the text behind its first ":"), then the rest in table order; names holding "{" are left out.
  void orderedAttributes(VEXStringVector& names, VEXStringVector& values) const;

  // ---- list attributes: `name` is a template such as "part{}.height", with "{}" exactly once ----
  // 879001 when the template has no "{}", 879002 when it has two. `found` is true with at least one value.
  VEXStatus getList(std::string_view name, VEXStringVector& values, bool& found) const;
  // Values beyond the end of the new list stay.
  VEXStatus setList(std::string_view name, const VEXStringVector& values);
  VEXStatus removeList(std::string_view name);
  // Reads "name 0x02 value 0x02 name ..." and stores each pair under the template with the part of its name
  // in front of "{" put into place. 879003 for a name without "{".
  VEXStatus setPairs(std::string_view nameTemplate, std::string_view pairText);
  // All attributes whose names begin with `prefix`, in table order, as such a text.
  std::string pairs(std::string_view prefix) const;

  // ---- the whole object ----
  const std::string& featureType() const { return *featureType_; }
  void setFeatureType(std::string_view type) {
    if (!wordscan::isSame(ownType_, type)) ownType_.assign(type);  // a reader's features keep theirs
    featureType_ = &ownType_;
  }
  // The same for a type that a mapping file or a table names once for many objects: nothing is copied.
  void setFeatureType(VEXName type) { featureType_ = &type.text(); }
  void resetAttributes();   // table, sequence and type; buckets are kept
  void clearAttributes() {  // table and sequence; the type stays
    attributes_->clear();
    sequencedAttrNames_.clear();
  }
  void cloneAttributes(const VEXObject& source);      // table, sequence and type replaced by copies
  void mergeAttributes(const VEXObject& source);      // copies names that are new here
  void overwriteAttributes(const VEXObject& source);  // copies all, the source's value wins
  void upperCaseNames();
  std::string textForm() const;  // type, then "+name+value" in table order
  void compactAttributes() { attributes_->compact(); }
  // Empties the attributes, but leaves their texts where they are until the next reset or shelving: what looks
  // into them stays valid while this object is filled anew.
  void shelveAttributes() {
    std::swap(attributes_, shelf_);
    clearAttributes();
  }
  // A text that was put aside; null when there is none.
  const VEXText* findShelved(VEXName name, std::uint32_t& place) const { return shelf_->find(name, place); }
  // From the texts that were put aside to the new ones, see VEXAttributeTable::takeInOrder.
  std::size_t takeShelved(std::span<const VEXTransfer> transfers) {
    return attributes_->takeInOrder(*shelf_, transfers);
  }
  const VEXAttributeTable& table() const { return *attributes_; }

 private:
  VEXAttributeTable tables_[2];
  VEXAttributeTable* attributes_ = &tables_[0];
  VEXAttributeTable* shelf_ = &tables_[1];
  std::vector<VEXName> sequencedAttrNames_;
  static inline const std::string kNoType;
  std::string ownType_;                        // the last one that was given as a text
  const std::string* featureType_ = &kNoType;  // or that one, or the text of an interned name
};

// One name that is looked for in many objects of one kind: a column that is written.
class VEXColumn {
 public:
  explicit VEXColumn(std::string_view name) : name_(VEXName::intern(name)) {}
  // The object's value; an absent one has no data. Valid until the object next changes.
  std::string_view valueIn(const VEXObject& object) {
    const VEXText* value = object.findAttribute(name_, place_);
    return value == nullptr ? std::string_view() : value->view();
  }

 private:
  VEXName name_;
  std::uint32_t place_ = 0;
};

// The values of all columns; `row` has as many places.
void valuesOf(const VEXObject& object, std::span<VEXColumn> columns, std::span<std::string_view> row);

// Replaces the characters that a file name, or an identifier, cannot hold by "_".
std::string fileNameForm(std::string_view text);
std::string identifierForm(std::string_view text);
