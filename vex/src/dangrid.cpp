#include "vex/src/dangrid.h"

#include <cmath>

#include "vex/inc/numtext.h"
#include "vex/src/homedir.h"
#include "vex/src/vexfile.h"

struct VEXDanishGrids::Grid {
  const char* name;
  const char* utm;
  double leastNorthing;  // of the UTM coordinate
  double mostNorthing;
};

const VEXDanishGrids::Grid VEXDanishGrids::kGrids[3] = {
    {"S34J", "UTM32-ED50", 5.9e6, 6.5e6},
    {"S34S", "UTM32-ED50", 5.9e6, 6.4e6},
    {"S45B", "UTM33-ED50", 6.0e6, 6.2e6},
};

namespace {

constexpr double kRoundTrip = 0.06;
constexpr int kMostDegree = 20;
enum PointStatus { kFine = 0, kInexact = -1, kOutside = -2 };

double evaluate(const std::vector<double>& table, double north, double east) {
  const int degree = static_cast<int>(table[0]);
  const double u = north - table[1];
  const double v = east - table[2];
  std::size_t at = 3;
  double sum = 0.0;
  for (int total = 0; total <= degree; ++total)
    for (int power = total; power >= 0; --power) sum += table[at++] * std::pow(u, power) * std::pow(v, total - power);
  return sum;
}

}  // namespace

const VEXDanishGrids::Grid* VEXDanishGrids::findGrid(std::string_view name) {
  for (const Grid& grid : kGrids)
    if (name == grid.name) return &grid;
  return nullptr;
}

bool VEXDanishGrids::isKnown(std::string_view system) {
  for (const Grid& grid : kGrids)
    if (system == grid.name || system == grid.utm) return true;
  return false;
}

// ---- the data file ----

VEXStatus VEXDanishGrids::loadFromHome() {
  return extendStatus(load(getHomeDirectory() + "Reproject/danishgrids.txt"));
}

VEXStatus VEXDanishGrids::load(const std::string& path) {
  for (auto& grid : passes_)
    for (Pass& pass : grid) pass = Pass();
  VEXInputFile file;
  if (!file.open(path)) return makeStatus(244027, {path, file.errorText()});
  std::string_view row;
  for (std::int64_t number = 1;; ++number) {
    VEXInputFile::Line read = file.readLine(row, 65536);
    if (read == VEXInputFile::Line::End) return nullptr;
    if (read != VEXInputFile::Line::Ok) return makeStatus(244027, {path, file.errorText()});
    row = trimmed(row.substr(0, row.find('#')));
    if (!row.empty()) VEX_TRY(readRow(row, path + ":" + integerText(number)));
  }
}

// <from> <to> N|E <degree> <centre north> <centre east> <coefficient>...
VEXStatus VEXDanishGrids::readRow(std::string_view row, const std::string& place) {
  auto takeWord = [&row] {
    row = trimmed(row);
    std::string_view word = row.substr(0, row.find_first_of(" \t"));
    row.remove_prefix(word.size());
    return word;
  };
  const std::string_view from = takeWord();
  const std::string_view to = takeWord();
  const std::string_view axis = takeWord();
  const Grid* grid = findGrid(from);
  const bool toGrid = grid == nullptr;
  if (toGrid) grid = findGrid(to);
  if (grid == nullptr || (toGrid ? from : to) != grid->utm || (axis != "N" && axis != "E"))
    return makeStatus(244028, {place, std::string(from) + " " + std::string(to) + " " + std::string(axis)});
  Pass& pass = passes_[grid - kGrids][toGrid ? 1 : 0];
  Table& table = axis == "N" ? pass.north : pass.east;
  std::size_t wanted = 1;
  bool isSound = table.empty();  // a row comes once
  for (double value = 0.0; isSound && !trimmed(row).empty(); table.push_back(value)) {
    const std::string_view word = takeWord();
    isSound = textToReal(word, value) && std::isfinite(value);
    if (table.empty() && isSound) {
      isSound = value >= 0.0 && value <= kMostDegree && value == std::trunc(value);
      wanted = static_cast<std::size_t>(3.0 + (value + 1.0) * (value + 2.0) / 2.0);
    }
  }
  if (!isSound || table.size() != wanted) return makeStatus(244028, {place, std::string(from) + " " + std::string(to)});
  return nullptr;
}

// ---- converting ----

// Both wrappers hand the polynomials north first. A grid counts its other axis westward.
int VEXDanishGrids::convertPoint(const Grid& grid, bool toGrid, double& x, double& y) const {
  const auto& passes = passes_[&grid - kGrids];
  const Pass& there = passes[toGrid ? 1 : 0];
  const Pass& back = passes[toGrid ? 0 : 1];
  const double north = y;
  const double east = toGrid ? x : -x;
  const double newNorth = evaluate(there.north, north, east);
  const double newEast = evaluate(there.east, north, east);
  const double northing = toGrid ? north : newNorth;
  if (!(northing >= grid.leastNorthing && northing <= grid.mostNorthing)) return kOutside;
  const double northAgain = evaluate(back.north, newNorth, newEast);
  const double eastAgain = evaluate(back.east, newNorth, newEast);
  x = toGrid ? -newEast : newEast;
  y = newNorth;
  const bool comesBack = std::fabs(northAgain - north) < kRoundTrip && std::fabs(eastAgain - east) < kRoundTrip;
  return comesBack ? kFine : kInexact;
}

VEXStatus VEXDanishGrids::runPass(const Grid& grid, bool toGrid, VEXLine& line, std::size_t& numInexact) const {
  const auto& passes = passes_[&grid - kGrids];
  if (!passes[0].isComplete() || !passes[1].isComplete())
    return makeStatus(244029, {toGrid ? grid.utm : grid.name, toGrid ? grid.name : grid.utm});
  std::vector<VEXLineRange> ranges;
  VEX_TRY(line.leaves(ranges));
  std::span<double> xs = line.mutableXs();
  std::span<double> ys = line.mutableYs();
  for (const VEXLineRange& range : ranges) {
    for (std::size_t i = range.first; i < range.first + range.count; ++i) {
      const int status = convertPoint(grid, toGrid, xs[i], ys[i]);
      if (status == kOutside) return makeStatus(244030, {realText(xs[i]), realText(ys[i]), grid.name});
      if (status == kInexact) ++numInexact;
    }
  }
  return nullptr;
}

VEXStatus VEXDanishGrids::convert(VEXLine& line, std::string_view from, std::string_view to,
                                  std::size_t& numInexact) const {
  numInexact = 0;
  const Grid* source = findGrid(from);
  const Grid* target = findGrid(to);
  const std::string_view sourceUtm = source != nullptr ? std::string_view(source->utm) : from;
  const std::string_view targetUtm = target != nullptr ? std::string_view(target->utm) : to;
  if ((source == nullptr && target == nullptr) || sourceUtm != targetUtm) return makeStatus(244029, {from, to});
  if (source == target) return nullptr;
  VEXLine moved = line.clone();
  if (source != nullptr) VEX_TRY(runPass(*source, false, moved, numInexact));
  if (target != nullptr) VEX_TRY(runPass(*target, true, moved, numInexact));
  line = std::move(moved);
  return nullptr;
}
