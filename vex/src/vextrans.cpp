#include "vex/src/vextrans.h"

#include "vex/src/cmdrgstr.h"

VEXTranslator::~VEXTranslator() = default;

VEXStatus VEXTranslator::initialize() {
  std::unique_ptr<VEXReaderImp> reader;
  std::unique_ptr<VEXWriterImp> writer;
  VEX_TRY(createReader(reader));
  VEX_TRY(createWriter(writer));
  reader_ = std::make_unique<VEXReader>(std::move(reader));
  writer_ = std::make_unique<VEXWriter>(std::move(writer));
  return nullptr;
}

VEXStatus VEXTranslator::translate(const VEXStringVector& sourceParameters,
                                   const VEXStringVector& destinationParameters) {
  VEXStatus failure = translateSteps(sourceParameters, destinationParameters);
  return failure == nullptr ? nullptr : extendStatus(abort(std::move(failure)));
}

VEXStatus VEXTranslator::translateSteps(const VEXStringVector& sourceParameters,
                                        const VEXStringVector& destinationParameters) {
  VEX_TRY(reader_->setup());
  VEX_TRY(writer_->setup());
  VEX_TRY(reader_->open(sourceParameters));
  VEX_TRY(writer_->open(destinationParameters));
  VEX_TRY(run());
  VEX_TRY(reader_->close());
  return extendStatus(writer_->close());
}

VEXStatus VEXTranslator::abort(VEXStatus failure) {
  writer_->abort();
  reader_->abort();
  if (VEXCommandRegistry::exists()) VEXCommandRegistry::instance().closeDownAll();
  return extendStatus(std::move(failure));
}
