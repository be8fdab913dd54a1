// The index beside a feature store: searches through one that is broken find no feature that the store has not.
#include <filesystem>
#include <fstream>

#include "fuzz/fuzzfile.h"
#include "vex/src/plangeom.h"
#include "vex/src/sprecord.h"
#include "vex/src/vexrcycl.h"

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

// A store of a few points, lines and features without geometry, made once.
const std::string& directory() {
  static const std::string& path = *new std::string([] {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvfuzzXXXXXX").string();
    check(mkdtemp(pattern.data()) != nullptr);
    std::atexit([] { std::filesystem::remove_all(directory()); });
    VEXSpatialRecorder recorder(pattern + "/s.qds", VEXRecorder::WRITE_RECORDING);
    for (int i = 0; i < 8; ++i) {
      VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature();
      feature->setInteger("n", i);
      for (int at = 0; at < i % 3; ++at) feature->addCoord(i + at, 10 - i);
      feature->setGeomType(i % 3 == 2 ? VEX_GEOM_LINE : i % 3 == 1 ? VEX_GEOM_POINT : VEX_GEOM_UNDEFINED);
      VEXRecordAddress address;
      check(recorder.write(*feature, address) == nullptr);
    }
    check(recorder.close() == nullptr);
    return pattern;
  }());
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzEngine::start();
  [[maybe_unused]] static VEXObjectRecycler* const recycler = new VEXObjectRecycler;
  std::ofstream(directory() + "/s.fsi", std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  VEXSpatialRecorder recorder(directory() + "/s.qds", VEXRecorder::READ_RECORDING);
  for (const bool isClosest : {false, true}) {
    VEXSpatialQuery query;
    VEXBox box{.minX = -100, .minY = -100, .maxX = 100, .maxY = 100};
    VEXStatus failure = isClosest ? recorder.searchClosest(3, 4, 50, query) : recorder.search(box, query);
    std::size_t found = 0;
    while (failure == nullptr) {
      VEXFeaturePtr feature;
      failure = recorder.read(query, feature);
      if (feature == nullptr) break;
      check(feature->numCoords() > 0 && ++found <= (isClosest ? 1U : 8U));
    }
    if (failure != nullptr) check(failure->messageNumber() != 0);
  }
  return 0;
}
