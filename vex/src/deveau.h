// VEXDeveau: the simplifications "Deveau" and "Poiker", a walk along one part at a time. start; firstPoint; nextPoint
// for each further point; at the end firstPoint with the last point once more, so that what is held comes out. After
// each of these takeOutput until it gives false.
//
// Around the last retained point stands a fan of points. From each, the lines that pass all points since then within
// half the tolerance fill a corridor. A point that leaves the corridors of the whole fan retains the point before it.
#pragma once

#include <array>
#include <cstddef>

class VEXDeveau {
 public:
  struct Output {
    double x = 0.0, y = 0.0;
    std::size_t number = 0;  // of the point in its part, from 0
  };
  static constexpr int kMostFan = 30;

  // A negative tolerance is 0; a sharp angle outside 0 to 180 (exclusive) is 0. Fan 1: one corridor from the retained
  // point itself, onto whose sides the points retained are moved; 2 to 30: as many corridors; else 30.
  void start(double tolerance, double sharpAngleDegrees, int fanSize);
  void firstPoint(double x, double y);
  void nextPoint(double x, double y);
  bool takeOutput(Output& output);

 private:
  struct Fan {
    double x = 0.0, y = 0.0;
    bool isDead = false;
    bool hasSides = false;
    double leftX = 0.0, leftY = 0.0;    // points left of the corridor's left side, across it
    double rightX = 0.0, rightY = 0.0;  // the same of its right side
  };

  bool isSharp(double x, double y) const;
  void retain();
  void restartFan(double x, double y);
  void testFan(double x, double y);
  void putOut(Output output);
  Output clipped(const Output& point) const;

  double tolerance_ = 0.0, half_ = 0.0, leastStep_ = 0.0, sharpLimit_ = 0.0;
  bool isBand_ = false;
  int fanSize_ = 0;
  int numDead_ = 0;
  std::array<Fan, kMostFan> fan_;
  bool isWalking_ = false;
  Output hold_;                           // the last good point
  bool isHeld_ = false;                   // it has not come out
  double beforeX_ = 0.0, beforeY_ = 0.0;  // the point before it
  bool hasBefore_ = false;
  std::size_t numPoints_ = 0;
  std::array<Output, 4> output_;
  std::size_t numOut_ = 0, taken_ = 0;
};
