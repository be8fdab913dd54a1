// @Lookup(<table>,<key>): the value of a key in a table, on the source side the key of a value. Tables are rows
// "Lookup <table> <key> <value> [<key> <value>...]"; the key <DEFAULT> answers for all that are not in the table, with
// KEY in its value replaced by what was asked for.
#include <unordered_map>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/rowtext.h"
#include "vex/src/tabrdr.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Lookup",
                               .count = exactly(2),
                               .onCount = 828001,
                               .onConfigure = 828006,  // of a row that holds too little
                               .extract = VEXExtract::Own};

using Entries = std::unordered_map<std::string, std::string, VEXTextHash, std::equal_to<>>;
struct Lookup {
  Entries forward;
  Entries reverse;
};

// How a row writes the empty text, which it cannot hold.
std::string fromRow(const std::string& token) {
  return token == "<DEFAULT>" ? std::string() : token;
}

class VEXLookupCmd final : public VEXRuleCommand {
 public:
  VEXLookupCmd() : VEXRuleCommand(kRule) {}

  VEXStatus extract(VEXFeaturePtr&, const VEXStringVector& params, std::string& result) override {
    if (!kRule.count.accepts(params.size())) return makeStatus(828003, {callText(kRule.name, params)});
    const auto table = tables_.find(params[0]);
    if (table == tables_.end()) return makeStatus(828004, {params[0]});
    return extendStatus(find(table->second.reverse, params, result));
  }

  VEXStatus configure(const VEXStringVector& params) override {
    if (params.size() < 3) return makeStatus(828006, {rowText(params)});
    const std::string& name = params[1];
    if (params.size() % 2 != 0) return makeStatus(828007, {name});
    if (tables_.contains(name)) return makeStatus(828008, {name});
    Lookup& table = tables_[name];
    table.forward.reserve(params.size() / 2);
    table.reverse.reserve(params.size() / 2);
    for (std::size_t i = 2; i < params.size(); i += 2) {
      const std::string key = fromRow(params[i]);
      const std::string value = fromRow(params[i + 1]);
      if (!table.forward.insert_or_assign(key, value).second) logMessage(VEXSeverity::Warn, 828009, {name, params[i]});
      // The default is nobody's key while the value has one of its own.
      std::string& back = table.reverse[value];
      if (!key.empty()) back = key;
    }
    return nullptr;
  }

  VEXStatus closeDown() override {
    tables_.clear();
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    const auto table = tables_.find(args.text(0));
    if (table == tables_.end()) return makeStatus(828002, {args.text(0)});
    return extendStatus(find(table->second.forward, args.texts(), result));
  }

  static VEXStatus find(const Entries& entries, const VEXStringVector& params, std::string& result) {
    if (const auto found = entries.find(params[1]); found != entries.end()) {
      result = found->second;
      return nullptr;
    }
    const auto fallback = entries.find(std::string_view());
    if (fallback == entries.end()) return makeStatus(828005, {params[0], params[1]});
    result = replacedAll(fallback->second, "KEY", params[1]);
    return nullptr;
  }

  std::unordered_map<std::string, Lookup> tables_;
};

}  // namespace

VEX_COMMAND_MAKER(cmlookup, VEXLookupCmd)
