// Making readers, writers and groupers by the names that users write.
#include "vex/dynamic/dynaread.h"
#include "vex/dynamic/dynawrit.h"
#include "vex/inc/vexassert.h"
#include "vex/jvmintfc/javaread.h"
#include "vex/src/creator.h"
#include "vex/src/vexgrper.h"
#include "vex/src/vexlog.h"
#include "vex/src/writer.h"

namespace {

constexpr std::uint32_t kNoJavaReader = 871004;
constexpr std::uint32_t kReaderUnknown = 871005;
constexpr std::uint32_t kNoDynaReader = 871006;
constexpr std::uint32_t kWriterUnknown = 872001;
constexpr std::uint32_t kNoDynaWriter = 872002;
constexpr std::uint32_t kNoGrouper = 872003;

// `failure` in the place of an earlier one, which stays readable in the trace.
VEXStatus behind(const VEXStatusInfo& earlier, VEXStatus failure) {
  return extendStatusText(std::move(failure), earlier.message());
}

VEXStatus makeJavaReader(const VEXCreator::ReaderTable& table, std::unique_ptr<VEXReaderImp>& out,
                         const std::string& type, const std::string& keyword) {
  auto made = table.create("JavaReader", type, keyword);
  VEX_TRY(static_cast<JavaReader&>(*made).loadClass(type));
  out = std::move(made);
  return nullptr;
}

VEXStatus makeDynaReader(const VEXCreator::ReaderTable& table, std::unique_ptr<VEXReaderImp>& out,
                         const std::string& type, const std::string& keyword, const std::string& givenType) {
  auto made = table.create("DynaReader", type, keyword);
  made->setGivenType(givenType);
  VEX_TRY(static_cast<DynaReader&>(*made).loadModule());
  out = std::move(made);
  return nullptr;
}

VEXStatus makeDynaWriter(const VEXCreator::WriterTable& table, std::unique_ptr<VEXWriterImp>& out,
                         const std::string& type, const std::string& keyword, const std::string& moduleName) {
  auto made = table.create("DynaWriter", type, keyword);
  VEX_TRY(static_cast<DynaWriter&>(*made).loadModule(moduleName));
  out = std::move(made);
  return nullptr;
}

}  // namespace

VEXStatus VEXCreator::createReader(std::unique_ptr<VEXReaderImp>& out, const std::string& type,
                                   const std::string& keyword, const std::string& givenType) {
  VEXCreator& creator = instance();
  VEX_ASSERT(instance_->readerCreator_ != NULL);
  const ReaderTable& table = *creator.readerCreator_;
  creator.lastReaderType_ = type;
  out = table.create(type, type, keyword);
  if (out != nullptr) {
    out->setGivenType(givenType);
    return extendStatus(out->takeStatus());
  }
  VEXStatus unknown = table.lookup(type);
  if (table.lookup("JavaReader") != nullptr) return behind(*unknown, makeStatus(kNoJavaReader, {type}));
  if (makeJavaReader(table, out, type, keyword) == nullptr) return extendStatus(out->takeStatus());
  if (VEXStatus missing = table.lookup("DynaReader")) {
    logText(VEXSeverity::Inform, missing->message());
    return behind(*unknown, makeStatus(kNoDynaReader, {type}));
  }
  if (VEXStatus failure = makeDynaReader(table, out, type, keyword, givenType)) {
    logText(VEXSeverity::Warn, failure->message());
    logMessage(VEXSeverity::Error, kReaderUnknown, {type});
    return behind(*unknown, makeStatus(kReaderUnknown, {type}));
  }
  return extendStatus(out->takeStatus());
}

VEXStatus VEXCreator::createWriter(std::unique_ptr<VEXWriterImp>& out, const std::string& type,
                                   const std::string& keyword, const std::string& givenType) {
  VEXCreator& creator = instance();
  VEX_ASSERT(instance_->writerCreator_ != NULL);
  const WriterTable& table = *creator.writerCreator_;
  creator.lastWriterType_ = type;
  out = table.create(type, type, keyword);
  if (out != nullptr) return extendStatus(out->takeStatus());
  VEXStatus unknown = table.lookup(type);
  if (table.lookup("DynaWriter") != nullptr) {
    logMessage(VEXSeverity::Error, kNoDynaWriter, {type});
    return behind(*unknown, makeStatus(kWriterUnknown, {type}));
  }
  if (VEXStatus failure = makeDynaWriter(table, out, type, keyword, givenType.empty() ? type : givenType)) {
    logText(VEXSeverity::Warn, failure->message());
    logMessage(VEXSeverity::Error, kWriterUnknown, {type});
    return behind(*unknown, makeStatus(kWriterUnknown, {type}));
  }
  return extendStatus(out->takeStatus());
}

VEXStatus VEXCreator::createGrouper(std::unique_ptr<VEXGrouper>& out, VEXWriter& writer, const std::string& type) {
  out = writer.createGrouper();
  if (out == nullptr) return makeStatus(kNoGrouper, {type});
  return nullptr;
}
