// Feature stores: a file read whole and in recovery; what could be read is written anew and read again.
#include <unistd.h>

#include <filesystem>

#include "fuzz/fuzzfile.h"
#include "vex/src/recorder.h"
#include "vex/src/vexrcycl.h"

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzEngine::start();
  [[maybe_unused]] static VEXObjectRecycler* const recycler = new VEXObjectRecycler;
  const FuzzFile file(data, size);
  static const std::string& copyPath = *new std::string(
      (std::filesystem::temp_directory_path() / ("orvfuzzqds" + std::to_string(getpid()) + ".qds")).string());
  for (const bool recovers : {false, true}) {
    VEXRecorder reader(file.path(), VEXRecorder::READ_RECORDING, false, false);
    reader.setRecovers(recovers);
    VEXRecorder writer(copyPath, VEXRecorder::WRITE_RECORDING, false, recovers);
    std::size_t numRead = 0;
    for (;;) {
      VEXFeaturePtr feature;
      VEXStatus failure = reader.read(feature);
      if (failure != nullptr) check(failure->messageNumber() != 0);
      if (feature == nullptr) break;
      check(feature->xs().size() == feature->ys().size());
      check(feature->zs().size() == (feature->dimension() == 3 ? feature->xs().size() : 0));
      check(feature->numCoords() <= size && ++numRead <= size);
      VEXRecordAddress address;
      check(writer.write(*feature, address) == nullptr);
    }
    check(writer.close() == nullptr);
    if (numRead == 0) continue;
    VEXRecorder again(copyPath, VEXRecorder::READ_RECORDING, false, false);
    for (VEXFeaturePtr feature;; --numRead) {
      check(again.read(feature) == nullptr);
      if (feature == nullptr) break;
    }
    check(numRead == 0);
    unlink(copyPath.c_str());
  }
  return 0;
}
