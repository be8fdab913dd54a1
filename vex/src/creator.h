// VEXCreator: the register of everything that a mapping file calls by name: readers, writers, factories, and the
// functions, whose registry it owns. A singleton that the entry owns for one ORV_Translate call.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "vex/inc/instantr.h"
#include "vex/src/readrimp.h"
#include "vex/src/writrimp.h"

class VEXCommandRegistry;
class VEXFactory;
class VEXGrouper;
class VEXWriter;

class VEXCreator {
 public:
  using ReaderTable = InstantiatorTable<VEXReaderImp>;
  using WriterTable = InstantiatorTable<VEXWriterImp>;
  using FactoryMaker = std::unique_ptr<VEXFactory> (*)();

  VEXCreator();
  ~VEXCreator();
  VEXCreator(const VEXCreator&) = delete;
  VEXCreator& operator=(const VEXCreator&) = delete;
  static VEXCreator& instance();
  static bool exists() { return instance_ != nullptr; }
  // The first failure met while building the tables.
  VEXStatus takeStatus() { return std::move(status_); }
  // Builds the tables anew, as between two rows of a command file.
  VEXStatus reset();

  // `type` in upper case; `givenType` as the user spelled it, by which a plug-in is found. A type that is not
  // registered is offered to the Java bridge, then to the plug-ins: 871004, 871005, 871006. A failure that the new
  // object's constructor left is returned.
  static VEXStatus createReader(std::unique_ptr<VEXReaderImp>& out, const std::string& type, const std::string& keyword,
                                const std::string& givenType);
  // 872001: not registered, and no plug-in of that name.
  static VEXStatus createWriter(std::unique_ptr<VEXWriterImp>& out, const std::string& type, const std::string& keyword,
                                const std::string& givenType = {});
  // 872003: the writer gives none.
  static VEXStatus createGrouper(std::unique_ptr<VEXGrouper>& out, VEXWriter& writer, const std::string& type);
  // A name that is not registered is offered to the plug-ins. 873001: no such factory class.
  static VEXStatus createFactory(std::unique_ptr<VEXFactory>& out, const std::string& className);

  const std::string& lastReaderType() const { return lastReaderType_; }
  const std::string& lastWriterType() const { return lastWriterType_; }
  ReaderTable& readers() { return *readerCreator_; }
  WriterTable& writers() { return *writerCreator_; }
  // A class is registered once.
  void addFactory(const std::string& className, FactoryMaker maker);
  void factoryNames(VEXStringVector& names) const;  // sorted

 private:
  void registerFactories();
  void registerReaders();
  void registerWriters();

  static VEXCreator* instance_;
  std::unordered_map<std::string, FactoryMaker> factoryCreator_;
  std::unique_ptr<VEXCommandRegistry> commands_;
  std::unique_ptr<ReaderTable> readerCreator_;
  std::unique_ptr<WriterTable> writerCreator_;
  std::string lastReaderType_;
  std::string lastWriterType_;
  VEXStatus status_;
};
