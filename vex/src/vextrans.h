// VEXTranslator: one translation from a reader to a writer, the frame of it. Calls: initialize, translate; then it is
// destroyed. The reader and the writer are its own.
#pragma once

#include <memory>

#include "vex/src/reader.h"
#include "vex/src/vexcorr.h"
#include "vex/src/vexgrper.h"
#include "vex/src/writer.h"

class VEXTranslator {
 public:
  VEXTranslator() = default;
  virtual ~VEXTranslator();
  VEXTranslator(const VEXTranslator&) = delete;
  VEXTranslator& operator=(const VEXTranslator&) = delete;

  virtual VEXStatus createReader(std::unique_ptr<VEXReaderImp>& reader) = 0;
  virtual VEXStatus createWriter(std::unique_ptr<VEXWriterImp>& writer) = 0;
  // The way out of one feature, which is taken.
  virtual VEXStatus processFeature(VEXCorrelator& correlator, VEXGrouper& grouper, VEXFeaturePtr& feature) = 0;
  virtual VEXStatus run() = 0;
  // setup, open, run and close of both. After a failure of any step everything is aborted, writer first.
  virtual VEXStatus translate(const VEXStringVector& sourceParameters, const VEXStringVector& destinationParameters);
  // Aborts writer, reader and functions, and gives the failure back with one more line in its trace.
  virtual VEXStatus abort(VEXStatus failure);
  virtual std::unique_ptr<VEXGrouper> createGrouper() = 0;

  VEXStatus initialize();  // makes reader and writer

 protected:
  VEXStatus translateSteps(const VEXStringVector& sourceParameters, const VEXStringVector& destinationParameters);

  std::unique_ptr<VEXReader> reader_;
  std::unique_ptr<VEXWriter> writer_;
};
