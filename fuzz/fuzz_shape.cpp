// Shape: the three files of a dataset in one input, read through the driver; what comes is written in some type and
// read again. Whatever was written must be there and readable.
//
//   mode 1 | length of the .shx 2 | length of the .dbf 2 | .shx | .dbf | .shp
#include <filesystem>
#include <fstream>

#include "fuzz/fuzzfile.h"
#include "vex/shape/shapeout.h"
#include "vex/shape/shapread.h"
#include "vex/src/vexrcycl.h"

namespace {

const std::string& directory() {
  // Outlives the statics: the handler at exit still needs it.
  static const std::string& path = *new std::string([] {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvfuzzXXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    std::atexit([] { std::filesystem::remove_all(directory()); });
    return pattern;
  }());
  return path;
}

void put(const char* name, std::string_view bytes) {
  std::ofstream(directory() + "/in/" + name, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void check(bool holds) {
  if (!holds) std::abort();
}

// Takes `length` bytes off the front, or what is there.
std::string_view take(std::string_view& bytes, std::size_t length) {
  const std::string_view taken = bytes.substr(0, length);
  bytes.remove_prefix(taken.size());
  return taken;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzEngine::start();
  [[maybe_unused]] static VEXObjectRecycler* const recycler = new VEXObjectRecycler;
  if (size < 5) return 0;
  std::filesystem::create_directory(directory() + "/in");
  const std::uint8_t mode = data[0];
  std::string_view bytes(reinterpret_cast<const char*>(data + 5), size - 5);
  put("s.shx", take(bytes, data[1] + 256 * data[2]));
  put("s.dbf", take(bytes, data[3] + 256 * data[4]));
  put("s.shp", bytes);
  VEXConfiguration::setValue("S_DATASET", directory() + "/in");
  VEXConfiguration::setValue("S_MULTI_PART", mode % 2 == 0 ? "" : "AGGREGATE");
  VEXConfiguration::setValue("S_WITHOUT_INDEX", mode / 2 % 2 == 0 ? "NO" : "YES");
  static constexpr const char* kTypes[] = {"shape_point",  "shape_arc",       "shape_polygon",  "shape_multipoint",
                                           "shape_pointz", "shape_polylinez", "shape_polygonz", "shape_multipointz",
                                           "shape_pointm", "shape_polylinem", "shape_polygonm", "shape_multipointm",
                                           "shape_null"};
  ShapeReader reader("SHAPE", "S");
  VEXShapeOutput output(directory() + "/out");
  output.setAiFix(mode / 4 % 2 == 0);
  VEXStatus failure = reader.setup();
  if (failure == nullptr) failure = reader.open({});
  check(output.open(kTypes[mode / 8 % std::size(kTypes)]) == nullptr);
  std::uint64_t numWritten = 0;
  std::uint64_t numRefused = 0;
  while (failure == nullptr) {
    VEXFeaturePtr feature;
    failure = reader.read(feature);
    if (failure != nullptr && failure->severity() == kSeverityRejected) {
      check(++numRefused <= size);
      failure.reset();
      continue;
    }
    if (failure != nullptr || feature == nullptr) break;
    check(feature->xs().size() == feature->ys().size());
    check(feature->zs().size() == (feature->dimension() == 3 ? feature->xs().size() : 0));
    check(feature->numCoords() <= size);
    VEXStatus refusal = output.write(*feature);
    check(refusal == nullptr || refusal->severity() == kSeverityRejected);
    if (refusal == nullptr) ++numWritten;
    check(numWritten <= size);
  }
  if (failure != nullptr) check(failure->messageNumber() != 0);
  ignoreStatus(reader.close());
  check(output.close() == nullptr && output.numRecords() == numWritten);

  VEXShapeInput again("out", directory() + "/out.shp", directory() + "/out.shx", false);
  check(again.open(nullptr) == nullptr);
  for (VEXFeaturePtr feature;; --numWritten) {
    check(again.read(feature) == nullptr);
    if (feature == nullptr) break;
  }
  check(numWritten == 0 && again.close() == nullptr);
  return 0;
}
