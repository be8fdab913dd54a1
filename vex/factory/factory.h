// VEXFactory: base of every factory of a pipeline. A factory takes features one at a time, holds or changes them, and
// puts features out under its output tags. Calls: configure, processFeature per feature, finish. The base finds the
// clauses of a FACTORY_DEF row, tests their words and calls the handler; what is left to a class is process, allDone
// and its summary.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexspec.h"

class VEXPipeline;

// One clause of a FACTORY_DEF row: its keyword and the words behind it.
class VEXClauseWords {
 public:
  VEXClauseWords(const VEXStringVector& tokens, std::size_t start, std::size_t end)
      : tokens_(tokens), start_(start), end_(end) {}
  std::size_t count() const { return end_ - start_; }  // words behind the keyword
  const std::string& keyword() const { return tokens_[start_]; }
  const std::string& word(std::size_t at) const { return tokens_[start_ + 1 + at]; }
  std::string lineText() const;    // the whole row, as messages show it
  std::string clauseText() const;  // keyword and words
  // Parses the words from `first` on as a feature specification; none is 252001.
  VEXStatus parseSpec(std::size_t first, VEXFeatureSpec& spec) const;

 private:
  const VEXStringVector& tokens_;
  std::size_t start_;
  std::size_t end_;  // index of the clause's last token
};

// A row of a class's clause table. A wrong count fails with keyword, line and clause as parameters.
template <class Factory>
struct VEXClause {
  const char* keyword;
  VEXArgCount count;
  std::uint32_t onCount;
  VEXStatus (Factory::*parse)(const VEXClauseWords& clause);
};

// Numbers of the faults of an OUTPUT clause, for classes that have their own. Parameters of the first two: tag, line
// and clause; of the third: class, line and clause.
struct VEXOutputFaults {
  std::uint32_t unknownTag;
  std::uint32_t twice;
  std::uint32_t noType;
};

class VEXFactory {
 public:
  struct ClauseRule {
    const char* keyword;
    VEXArgCount count;
    std::uint32_t onCount;
    std::function<VEXStatus(const VEXClauseWords&)> parse;
  };

  explicit VEXFactory(std::string className);
  virtual ~VEXFactory();
  VEXFactory(const VEXFactory&) = delete;
  VEXFactory& operator=(const VEXFactory&) = delete;

  const std::string& name() const { return className_; }
  const std::string& factoryName() const { return factoryName_; }
  // Reads the clauses of a whole FACTORY_DEF row. `index` gives the default name.
  VEXStatus configure(const VEXStringVector& row, std::size_t index);
  // Where what leaves this factory goes: the next one, or out of the pipeline.
  void setNext(VEXFactory* next) { next_ = next; }
  void setPipeline(VEXPipeline* pipeline) { pipeline_ = pipeline; }
  void setTrace(bool isOn) { trace_ = isOn; }

  // Gives the feature to process() when an INPUT clause takes it (or there is none), else passes it on.
  VEXStatus processFeature(VEXFeaturePtr& feature);
  VEXStatus finish();  // the end of input: allDone of this factory, then of those behind it

  // One clause, from its keyword at `start` to its last token at `end`.
  virtual VEXStatus parseClause(const VEXStringVector& tokens, std::size_t start, std::size_t end);
  // A class empties what it holds by flush, logs its summary, and calls this one, which goes on to the next factory.
  virtual VEXStatus allDone();
  // True once when features came after allDone, sent back by a factory further down; they are put out by flush.
  bool takesLate();
  // The end of a group of features; empty for all of them. A class that holds features puts them out here, and must
  // be able to take features again afterwards.
  virtual VEXStatus flush(const std::string& group);

  std::span<const ClauseRule> clauseRules() const { return clauseRules_; }
  const std::set<std::string, std::less<>>& inputTagNames() const { return inputTagNames_; }
  const std::set<std::string, std::less<>>& outputTagNames() const { return outputTagNames_; }

 protected:
  virtual VEXStatus process(VEXFeaturePtr& feature) = 0;  // takes the feature
  virtual VEXStatus start() { return nullptr; }           // before the first feature, or before the end without any

  // ---- for constructors ----
  template <class Factory, std::size_t count>
  void useClauses(const VEXClause<Factory> (&table)[count]) {
    for (const VEXClause<Factory>& row : table)
      clauseRules_.push_back(
          {row.keyword, row.count, row.onCount, [this, parse = row.parse](const VEXClauseWords& clause) {
             return (static_cast<Factory*>(this)->*parse)(clause);
           }});
  }
  void setClassName(std::string className) { className_ = std::move(className); }
  void addInputTags(std::initializer_list<const char*> tags) { inputTagNames_.insert(tags.begin(), tags.end()); }
  void addOutputTags(std::initializer_list<const char*> tags) { outputTagNames_.insert(tags.begin(), tags.end()); }

  // ---- for process and allDone ----
  // Applies the tag's output specification and sends the feature on. Without one the feature is dropped.
  VEXStatus output(std::string_view tag, VEXFeaturePtr& feature);
  VEXStatus sendOn(VEXFeaturePtr& feature);  // unchanged
  // The work of an OUTPUT <TAG> clause, for a class whose own clause table holds it.
  VEXStatus addOutput(const VEXClauseWords& clause, const VEXOutputFaults& faults);
  // Logs a message behind "<factory name>(<class>): ".
  void log(VEXSeverity severity, std::uint32_t number, std::initializer_list<std::string_view> parameters) const;
  // Lets go of a feature that cannot be used: logs why, a message of its type and the reason, and then the feature.
  void rejectFeature(std::uint32_t number, std::string_view reason, VEXFeaturePtr& feature) const;
  const std::string& matchedTag() const { return matchedTag_; }  // of the current feature; empty when untagged
  bool hasOutput(std::string_view tag) const { return outputs_.find(tag) != outputs_.end(); }
  bool hasInputs() const { return !inputSpecs_.empty() || !taggedInputs_.empty(); }
  VEXPipeline* pipeline() const { return pipeline_; }

 private:
  struct TaggedInput {
    std::string tag;
    std::unique_ptr<VEXFeatureSpec> spec;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  bool isClauseName(const std::string& word) const;
  VEXStatus parseInput(const VEXClauseWords& clause);
  VEXStatus parseOutput(const VEXClauseWords& clause);
  VEXStatus match(VEXFeaturePtr& feature, bool& matched);
  VEXStatus passBy(VEXFeaturePtr& feature);
  VEXStatus startOnce();
  void extendTrace(VEXFeature& feature) const;

  std::string className_;
  std::string factoryName_;
  VEXFactory* next_ = nullptr;
  VEXPipeline* pipeline_ = nullptr;
  std::vector<ClauseRule> clauseRules_;
  std::set<std::string, std::less<>> inputTagNames_;
  std::set<std::string, std::less<>> outputTagNames_;
  std::vector<std::unique_ptr<VEXFeatureSpec>> inputSpecs_;
  std::vector<TaggedInput> taggedInputs_;
  std::unordered_map<std::string, std::unique_ptr<VEXFeatureSpec>, Hash, std::equal_to<>> outputs_;
  std::string matchedTag_;
  bool isStarted_ = false;
  bool allDone_ = false;
  bool tookLate_ = false;
  bool trace_ = false;
};

// Ends an fct file: the maker that the list of factories calls.
#define VEX_FACTORY_MAKER(file, Class)        \
  std::unique_ptr<VEXFactory> make_##file();  \
  std::unique_ptr<VEXFactory> make_##file() { \
    return std::make_unique<Class>();         \
  }
