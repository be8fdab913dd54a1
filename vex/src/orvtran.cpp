#include "vex/src/orvtran.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>
#include <vector>

#include "vex/inc/numtext.h"
#include "vex/internat/internat.h"
#include "vex/src/creator.h"
#include "vex/src/homedir.h"
#include "vex/src/platform/platform.h"
#include "vex/src/simptran.h"
#include "vex/src/tabrdr.h"
#include "vex/src/tmpfilmn.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"
#include "vex/src/vextask.h"

namespace {

constexpr std::size_t kDeepestFile = 16;  // parameter and command files in each other

std::string bannerText() {
  return std::string(11, ' ') + kVersionText + "\n" + std::string(28, ' ') + "Carries spatial data between formats\n" +
         std::string(31, ' ') + "Comes with no warranty of any kind\n\n";
}

void print(std::FILE* stream, const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stream);
  std::fflush(stream);
}

// The word of a command line: without leading dashes, in upper case; empty when there is none.
std::string wordAt(const VEXStringVector& arguments, std::size_t at) {
  if (at >= arguments.size()) return {};
  std::string_view word = arguments[at];
  while (word.starts_with('-')) word.remove_prefix(1);
  return upperCased(word);
}

// One call of the program: what to print, and where.
struct CommandLine {
  VEXStringVector arguments;
  bool banner = false;
  bool bannerIsOut = false;
  std::string word;  // what to do

  CommandLine(ORV_Int32 argc, const char* const* argv, bool showBanner) : banner(showBanner) {
    for (ORV_Int32 i = 0; argv != nullptr && i < argc; ++i) arguments.emplace_back(argv[i] != nullptr ? argv[i] : "");
    if (arguments.empty()) arguments.emplace_back();
    if (arguments.size() > 3 && equalsIgnoringCase(arguments[2], "LOG_STANDARDOUT")) banner = false;
    word = wordAt(arguments, 1);
  }
  void showBanner(std::FILE* stream) {
    if (banner && !bannerIsOut) print(stream, bannerText());
    bannerIsOut = true;
  }
};

VEXStatus readTokens(const std::string& fileName, VEXStringVector& tokens) {
  TableReader reader(fileName, "#", nullptr, nullptr, "\\");
  VEX_TRY(reader.checkOpen());
  VEXStringVector row;
  do {
    VEX_TRY(reader.getRow(row));
    tokens.insert(tokens.end(), row.begin(), row.end());
  } while (!row.empty());
  return nullptr;
}

// The singletons of one run, made in this order and taken down in reverse.
struct Run {
  VEXLogFile log;
  VEXConfiguration configuration;
  VEXTempFileManager temporaryFiles;
  VEXTaskManagerUse tasks;
};

}  // namespace

ORVTranslator::ORVTranslator(std::string programName) : programName_(std::move(programName)) {}

ORVTranslator::~ORVTranslator() {
  ignoreStatus(shutdown());  // nothing is left to be told
}

void ORVTranslator::setCallbacks(ORV_LogCallback logCallback, ORV_ErrorCallback errorCallback) {
  logCallback_ = logCallback;
  errorCallback_ = errorCallback;
}

VEXStatus ORVTranslator::initialize(std::string& homeOut) {
  homeDirectory_ = homeOut = getHomeDirectory();
  VEX_TRY(loadMessages(homeDirectory_));
  objectRecycler_ = std::make_unique<VEXObjectRecycler>();
  creators_ = std::make_unique<VEXCreator>();
  return extendStatus(creators_->takeStatus());
}

VEXStatus ORVTranslator::shutdown() {
  creators_.reset();
  objectRecycler_.reset();
  return nullptr;
}

VEXStatus ORVTranslator::resetRegistry() {
  creators_.reset();
  creators_ = std::make_unique<VEXCreator>();
  return extendStatus(creators_->takeStatus());
}

VEXStatus ORVTranslator::getUsage(const std::string& programName, std::string& text) {
  text.clear();
  std::string line;
  for (std::uint32_t number : {875102, 875103, 875108, 875104, 875105}) {
    VEX_TRY(getMessage(number, {programName}, line));
    text += line + "\n";
  }
  text += "\n";
  return nullptr;
}

VEXStatus ORVTranslator::usageFailure() const {
  std::string usage;
  VEX_TRY(getUsage(programName_, usage));
  return makeTextStatus(kSeverityFailure, std::move(usage));
}

VEXStatus ORVTranslator::notBuilt(const VEXStringVector& arguments, std::size_t least, std::size_t most) const {
  if (arguments.size() < least || arguments.size() > most) return extendStatus(usageFailure());
  return makeStatus(875004, {wordAt(arguments, 1)});
}

void ORVTranslator::reportFailure(const VEXStatusInfo& failure) {
  VEXLogFile* log = VEXLogFile::instance();
  bool isLogged = log != nullptr && log->isOpen();
  if (!isLogged || showOnConsole_)
    print(stderr, "\n" + failure.message() + "\nProgram Terminating\n\nTranslation FAILED.\n");
  if (isLogged) {
    logStatus(failure);
    logMessage(VEXSeverity::Fatal, 875001);
  }
  if (errorCallback_ != nullptr) errorCallback_(failure.message().c_str());
  wasReported_ = true;
}

VEXStatus ORVTranslator::translate(const VEXStringVector& givenArguments, bool& printVerdict) {
  VEXStringVector arguments = givenArguments;
  printVerdict = true;
  VEXLogFile::setConsoleSink(stdout);
  if (wordAt(arguments, 1) == "REDIRECT_STDOUT") {
    VEXLogFile::setConsoleSink(stderr);
    arguments.erase(arguments.begin() + 1);
  }
  std::string_view first = arguments.size() > 1 ? std::string_view(arguments[1]) : std::string_view();
  if (equalsIgnoringCase(first, "PARAMETER_FILE")) return extendStatus(runParameterFile(arguments, printVerdict));
  if (equalsIgnoringCase(first, "COMMAND_FILE")) return extendStatus(runCommandFile(arguments, printVerdict));
  if (equalsIgnoringCase(first, "REGISTER_SOCKET")) return extendStatus(notBuilt(arguments, 4, 5));
  if (equalsIgnoringCase(first, "CREATE_SOCKET")) return extendStatus(notBuilt(arguments, 3, 4));
  return extendStatus(runWork(arguments));
}

VEXStatus ORVTranslator::enterFile(const std::string& name) {
  std::string path = platform::canonicalPath(VEXConfiguration::normalisePath(name));
  bool isOpen = std::find(filesBeingRead_.begin(), filesBeingRead_.end(), path) != filesBeingRead_.end();
  if (isOpen || filesBeingRead_.size() >= kDeepestFile) return makeStatus(875003, {name, integerText(kDeepestFile)});
  filesBeingRead_.push_back(path);
  return nullptr;
}

VEXStatus ORVTranslator::runParameterFile(const VEXStringVector& arguments, bool& printVerdict) {
  if (arguments.size() != 3) return extendStatus(usageFailure());
  VEX_TRY(enterFile(arguments[2]));
  VEXStringVector nested = {arguments[0]};
  VEXStatus failure = readTokens(arguments[2], nested);
  if (failure == nullptr) failure = translate(nested, printVerdict);
  filesBeingRead_.pop_back();
  return extendStatus(std::move(failure));
}

VEXStatus ORVTranslator::runCommandFile(const VEXStringVector& arguments, bool& printVerdict) {
  if (arguments.size() != 3) return extendStatus(usageFailure());
  VEX_TRY(enterFile(arguments[2]));
  TableReader reader(arguments[2], "#", nullptr, nullptr, "\\");
  VEXStatus failure = reader.checkOpen();
  bool wasInCommandFile = std::exchange(inCommandFile_, true);
  for (bool isFirst = true; failure == nullptr; isFirst = false) {
    VEXStringVector row;
    failure = reader.getRow(row);
    if (failure != nullptr || row.empty()) break;
    if (!isFirst) failure = resetRegistry();
    if (failure != nullptr) break;
    row.insert(row.begin(), arguments[0]);
    // A row that fails is told, and the next one is taken.
    if (VEXStatus failedRow = translate(row, printVerdict)) print(stderr, failedRow->message() + "\n");
  }
  inCommandFile_ = wasInCommandFile;
  printVerdict = false;
  filesBeingRead_.pop_back();
  return extendStatus(std::move(failure));
}

VEXStatus ORVTranslator::runWork(const VEXStringVector& arguments) {
  Run run;
  std::string word = wordAt(arguments, 1);
  if (word == "GENERATE" || word == "CFGENERATE") {
    run.log.setCallback(logCallback_);
    // Formats, dataset and mapping file, then pairs.
    if (arguments.size() % 2 != 0) return extendStatus(usageFailure());
    return extendStatus(notBuilt(arguments, 6, arguments.size()));
  }
  if (arguments.size() < 2) return extendStatus(usageFailure());
  VEXStatus failure = runMappingFile(arguments);
  if (failure == nullptr) return nullptr;
  // Now, as long as the log is open.
  if (!inCommandFile_)
    reportFailure(*failure);
  else if (run.log.isOpen())
    logStatus(*failure);
  return extendStatus(std::move(failure));
}

VEXStatus ORVTranslator::runMappingFile(const VEXStringVector& arguments) {
  std::vector<const char*> pairs;
  for (std::size_t i = 2; i < arguments.size(); ++i) pairs.push_back(arguments[i].c_str());
  VEX_TRY(VEXConfiguration::load(arguments[1], static_cast<int>(pairs.size()), pairs.data()));
  VEX_TRY(VEXLogFile::instance()->open());
  VEXLogFile::instance()->setCallback(logCallback_);
  logMessage(VEXSeverity::Inform, 875002, {kVersionText});
  VEXSimpleTranslator translator;
  VEX_TRY(translator.initialize());
  VEXStringVector sourceParameters;
  VEXStringVector destinationParameters;
  VEXStatus failure = translator.translate(sourceParameters, destinationParameters);
  featuresOutput_ = translator.featuresOutput();
  coordinatesOutput_ = translator.coordinatesOutput();
  VEX_TRY(std::move(failure));
  for (VEXSeverity severity : {VEXSeverity::Inform, VEXSeverity::StatRp})
    logMessage(severity, 875106, {integerText(featuresOutput_), integerText(coordinatesOutput_)});
  return nullptr;
}

std::int32_t ORVTranslator::runCommandLine(ORV_Int32 argc, const char* const* argv, ORV_Int32 showBanner,
                                           ORV_LogCallback logCallback, ORV_ErrorCallback errorCallback) {
  platform::FloatingPointGuard floatingPoint;
  CommandLine line(argc, argv, showBanner != 0);
  ORVTranslator translator(line.arguments[0]);
  translator.setCallbacks(logCallback, errorCallback);
  translator.showOnConsole(line.banner);
  auto failed = [&translator](VEXStatus failure) {
    if (failure == nullptr) return false;
    if (!translator.wasReported()) translator.reportFailure(*failure);
    return true;
  };
  try {
    std::string home;
    if (failed(translator.initialize(home))) return -1;
    if (line.word == "REDIRECT_STDOUT") {
      line.showBanner(stderr);
      if (line.arguments.size() < 3) return 0;
      line.word = wordAt(line.arguments, 2);
    }
    if (line.arguments.size() < 2) {
      std::string usage;
      if (failed(getUsage(line.arguments[0], usage))) return -1;
      line.showBanner(stdout);
      print(stderr, usage);
      return 0;
    }
    if (line.word == "VERSION" || line.word == "HOME") {
      bool isVersion = line.word == "VERSION";
      print(stderr, isVersion ? std::string(kVersionText) + "\n" : "ORV_HOME is: `" + home + "'\n");
      return 0;
    }
    line.showBanner(stdout);
    bool printVerdict = true;
    if (failed(translator.translate(line.arguments, printVerdict))) return -1;
    if (failed(translator.shutdown())) return -1;
    if (line.banner && printVerdict) print(stderr, "Translation was SUCCESSFUL.\n");
    return 0;
  } catch (const std::bad_alloc&) {
    failed(makeStatus(875005));
  } catch (const std::exception& thrown) {
    failed(makeStatus(875006, {thrown.what()}));
  }
  return -1;
}
