// @SQL(<connection>,<statement>[,<attribute>...]): runs a statement on a database that a row
// "SQL <id> SERVER_TYPE <type> ..." has connected. The columns of the first row of the answer become the attributes, in
// order; a name that holds "{}" takes its column from every row. A parameter ":name" of the statement is bound to the
// feature's attribute of that name. The result is the first value of the answer.
#include <algorithm>
#include <map>
#include <unordered_map>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/tables/dbconn.h"

namespace {

constexpr std::size_t kMostStatements = 256;  // kept prepared for one connection

constexpr VEXCommandRule kRule{.name = "SQL",
                               .count = atLeast(2),
                               .onCount = 379001,
                               .onNoFeature = 379005,
                               .onConfigure = 379009,
                               .extract = VEXExtract::Forward};

class VEXSQLCmd final : public VEXRuleCommand {
 public:
  VEXSQLCmd() : VEXRuleCommand(kRule) {}

  VEXStatus configure(const VEXStringVector& params) override {
    if (params.size() % 2 != 0) return makeStatus(379009, {joined(params, " ")});
    VEXDatabasePlace place;
    for (std::size_t i = 2; i < params.size(); i += 2)
      if (!setPart(place, params[i], params[i + 1])) return makeStatus(379010, {params[i], joined(params, " ")});
    if (connections_.contains(params[1])) return makeStatus(379007, {params[1]});
    std::string reason;
    auto database = VEXDatabase::open(place, VEXDatabase::Access::ReadWrite, reason);
    if (database == nullptr)
      return makeStatus(379008, {place.serverType, place.serverName, place.userName,
                                 place.password.empty() ? "" : "***", place.databaseName, reason});
    connections_[params[1]].database = std::move(database);
    return nullptr;
  }

  VEXStatus closeDown() override {
    connections_.clear();
    return nullptr;
  }

 private:
  struct Connection {
    std::unique_ptr<VEXDatabase> database;
    std::unordered_map<std::string, std::unique_ptr<VEXDatabaseStatement>> statements;  // end before the database
  };

  static bool setPart(VEXDatabasePlace& place, std::string_view keyword, const std::string& value) {
    struct Part {
      std::string_view name;
      std::string VEXDatabasePlace::*member;
    };
    for (const Part& part :
         {Part{"SERVER_TYPE", &VEXDatabasePlace::serverType}, Part{"SERVER_NAME", &VEXDatabasePlace::serverName},
          Part{"USER_NAME", &VEXDatabasePlace::userName}, Part{"PASSWORD", &VEXDatabasePlace::password},
          Part{"DB_NAME", &VEXDatabasePlace::databaseName}})
      if (equalsIgnoringCase(part.name, keyword)) {
        place.*part.member = value;
        return true;
      }
    return false;
  }

  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    const auto found = connections_.find(args.text(0));
    if (found == connections_.end()) return makeStatus(379002, {args.text(0)});
    VEXDatabase& database = *found->second.database;
    VEXDatabaseStatement* statement = nullptr;
    VEX_TRY(prepare(found->second, args.text(1), statement));

    values_.clear();
    for (const std::string& name : statement->parameterNames()) {
      const VEXText* value = feature->findAttribute(name);
      values_.push_back(value == nullptr ? VEXDatabaseValue() : VEXDatabaseValue(*value));
    }
    if (!statement->start(values_)) return makeStatus(379004, {args.text(0), args.text(1), database.errorText()});
    VEXStatus failure = takeRows(*feature, args, *statement, database, result);
    statement->reset();
    return extendStatus(std::move(failure));
  }

  static bool isList(const std::string& name) { return name.find("{}") != std::string::npos; }

  static VEXStatus prepare(Connection& connection, const std::string& text, VEXDatabaseStatement*& statement) {
    auto known = connection.statements.find(text);
    if (known == connection.statements.end()) {
      auto prepared = connection.database->prepare(text);
      if (prepared == nullptr) return makeStatus(379003, {text, connection.database->errorText()});
      if (connection.statements.size() >= kMostStatements) connection.statements.clear();
      known = connection.statements.emplace(text, std::move(prepared)).first;
    }
    statement = known->second.get();
    return nullptr;
  }

  // The rows are taken before the feature is touched: an answer that breaks off changes nothing.
  VEXStatus takeRows(VEXFeature& feature, const VEXArgs& args, VEXDatabaseStatement& statement, VEXDatabase& database,
                     std::string& result) {
    const std::size_t numWanted = std::min(args.count() - 2, statement.numColumns());
    bool wantsAll = false;
    for (std::size_t i = 0; i < numWanted; ++i) wantsAll = wantsAll || isList(args.text(i + 2));
    taken_.clear();
    std::size_t numRows = 0;
    VEXDatabaseRow row;
    for (bool atEnd = false;;) {
      if (!statement.next(row, atEnd)) return makeStatus(379004, {args.text(0), args.text(1), database.errorText()});
      if (atEnd) break;
      if (numRows == 0 && !row.empty()) result.append(row[0].value_or(""));
      for (std::size_t i = 0; i < numWanted; ++i)
        taken_.emplace_back(row[i].has_value() ? std::optional<std::string>(*row[i]) : std::nullopt);
      ++numRows;
      if (!wantsAll) break;
    }
    for (std::size_t at = 0; at < taken_.size(); ++at) {
      const std::string& name = args.text(at % numWanted + 2);
      const std::size_t rowIndex = at / numWanted;
      if (!isList(name) && rowIndex > 0) continue;
      const std::string full = replacedAll(name, "{}", "{" + integerText(static_cast<std::int64_t>(rowIndex)) + "}");
      if (taken_[at].has_value())
        feature.setAttribute(full, *taken_[at]);
      else
        feature.removeAttribute(full);
    }
    return nullptr;
  }

  std::map<std::string, Connection, std::less<>> connections_;
  std::vector<VEXDatabaseValue> values_;
  std::vector<std::optional<std::string>> taken_;
};

}  // namespace

VEX_COMMAND_MAKER(cmsql, VEXSQLCmd)
