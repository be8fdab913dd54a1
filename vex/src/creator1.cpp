// The register itself: its life and the tables of formats.
#include "vex/inc/vexassert.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/creator.h"

// The drivers' headers; the rows themselves are read below.
#define VEX_READER(type, Class)
#define VEX_WRITER(type, Class)
#include "vex/src/formatlist.inc"
#undef VEX_READER
#undef VEX_WRITER

VEXCreator* VEXCreator::instance_ = nullptr;

VEXCreator::VEXCreator() {
  VEX_ASSERT(instance_ == NULL);
  instance_ = this;
  if (!VEXCommandRegistry::exists()) commands_ = std::make_unique<VEXCommandRegistry>();
  status_ = reset();
}

VEXCreator::~VEXCreator() {
  VEX_ASSERT(instance_ == this);
  instance_ = nullptr;
}

VEXCreator& VEXCreator::instance() {
  VEX_ASSERT(instance_ != NULL);
  return *instance_;
}

VEXStatus VEXCreator::reset() {
  registerFactories();
  registerReaders();
  registerWriters();
  lastReaderType_.clear();
  lastWriterType_.clear();
  return nullptr;
}

void VEXCreator::registerReaders() {
  readerCreator_ = std::make_unique<ReaderTable>();
#define VEX_READER(type, Class) \
  readerCreator_->addInstantiator(type, std::make_unique<DriverInstantiator<VEXReaderImp, Class>>());
#define VEX_WRITER(type, Class)
#include "vex/src/formatlist.inc"
#undef VEX_READER
#undef VEX_WRITER
}

void VEXCreator::registerWriters() {
  writerCreator_ = std::make_unique<WriterTable>();
#define VEX_READER(type, Class)
#define VEX_WRITER(type, Class) \
  writerCreator_->addInstantiator(type, std::make_unique<DriverInstantiator<VEXWriterImp, Class>>());
#include "vex/src/formatlist.inc"
#undef VEX_READER
#undef VEX_WRITER
}
