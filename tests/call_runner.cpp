// Runs single function calls for the examples of a document. Rows on the standard input, a word and its text:
//   row <row>          a row of the configuration; those before the first call configure the functions
//   feature <feature>  the feature that the calls behind it begin with, as makeFeature reads it
//   execute <call>, extract <call>
// For each call three rows come out: message number (0: none), result, feature afterwards (empty when deleted).
#include <iostream>

#include "tests/unit/support.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdparm.h"
#include "vex/src/vexlog.h"

int main() {
  EngineScope engine;
  VEXVariableTable variables;
  std::string line;
  std::string featureText;
  bool isConfigured = false;
  while (std::getline(std::cin, line)) {
    const std::size_t cut = line.find(' ');
    const std::string word = line.substr(0, cut);
    const std::string text = cut == std::string::npos ? std::string() : line.substr(cut + 1);
    if (word == "row") engine.row(text);
    if (word == "feature") featureText = text;
    if (word != "execute" && word != "extract") continue;
    if (!isConfigured) {
      VEXStatus failure = VEXCommandRegistry::instance().configureFrom();
      if (failure != nullptr) std::cerr << failure->message() << "\n";
      isConfigured = failure == nullptr;
    }
    VEXFeaturePtr feature = makeFeature(featureText);
    VEXCommandParm call;
    std::string result;
    VEXStatus failure = call.parse(text);
    if (failure == nullptr)
      failure = word == "extract" ? call.extract(feature, variables, result) : call.execute(feature, variables, result);
    std::cout << (failure == nullptr ? 0U : failure->messageNumber()) << "\n"
              << replacedAll(failure == nullptr ? result : failure->message(), "\n", "\\n") << "\n"
              << (feature == nullptr ? std::string() : describe(*feature)) << "\n";
  }
  VEXCommandRegistry::instance().closeDownAll();
}
