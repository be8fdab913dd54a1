// VEXDanishGrids: moves lines between the grids S34J, S34S and S45B and the UTM systems on ED50 they belong to. The
// polynomials come from a data file (see docs/danish-grids.md); the engine brings none.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/src/vexline.h"

class VEXDanishGrids {
 public:
  // True for the three grids and the two UTM systems.
  static bool isKnown(std::string_view system);

  // 244027: the file cannot be read. 244028: a row of it is wrong.
  VEXStatus load(const std::string& path);
  VEXStatus loadFromHome();  // Reproject/danishgrids.txt of the home directory

  // In one pass between a grid and its UTM system, in two between grids of one UTM system. Header rows of aggregates
  // stay. `numInexact` counts coordinates that do not come back within 0.06: they are stored all the same.
  // 244029: no way between these systems, or no polynomials for it. 244030: a coordinate lies outside the grid's
  // northings. The line is then as it was.
  VEXStatus convert(VEXLine& line, std::string_view from, std::string_view to, std::size_t& numInexact) const;

 private:
  struct Grid;
  static const Grid kGrids[3];
  // Degree, the centre (north, then east or west), then the coefficients by total degree, powers of north falling.
  using Table = std::vector<double>;
  struct Pass {
    Table north;
    Table east;
    bool isComplete() const { return !north.empty() && !east.empty(); }
  };

  static const Grid* findGrid(std::string_view name);
  VEXStatus readRow(std::string_view row, const std::string& place);
  VEXStatus runPass(const Grid& grid, bool toGrid, VEXLine& line, std::size_t& numInexact) const;
  int convertPoint(const Grid& grid, bool toGrid, double& x, double& y) const;

  Pass passes_[3][2];  // by grid; to UTM, to the grid
};
