#include "vex/src/deveau.h"

#include <cmath>

#include "vex/inc/vexassert.h"

namespace {

constexpr double kRadians = 0.017453292519944444;
constexpr float kFullTurn = 6.2831855f;

}  // namespace

void VEXDeveau::start(double tolerance, double sharpAngleDegrees, int fanSize) {
  tolerance_ = tolerance > 0.0 ? tolerance : 0.0;
  half_ = tolerance_ * 0.5;
  leastStep_ = tolerance_ * tolerance_ * 0.0001;
  if (!(sharpAngleDegrees >= 0.0 && sharpAngleDegrees < 180.0)) sharpAngleDegrees = 0.0;
  const double cosine = std::cos(sharpAngleDegrees * kRadians);
  sharpLimit_ = -cosine * std::fabs(cosine);
  isBand_ = fanSize == 1;
  fanSize_ = fanSize >= 1 && fanSize <= kMostFan ? fanSize : kMostFan;
  isWalking_ = isHeld_ = hasBefore_ = false;
  numDead_ = 0;
  numPoints_ = numOut_ = taken_ = 0;
}

void VEXDeveau::firstPoint(double x, double y) {
  VEX_ASSERT(numOut_ == 0);
  if (isWalking_ && isHeld_) putOut(clipped(hold_));
  isWalking_ = true;
  isHeld_ = hasBefore_ = false;
  hold_ = {x, y, 0};
  numPoints_ = 1;
  restartFan(x, y);
}

void VEXDeveau::nextPoint(double x, double y) {
  VEX_ASSERT(numOut_ == 0);
  const std::size_t number = numPoints_++;
  const double dx = x - hold_.x, dy = y - hold_.y;
  const double step = dx * dx + dy * dy;
  if (hold_.x + hold_.y != hold_.x + hold_.y) {  // a walk that begins with NaN begins with what comes then
    hold_ = {x, y, number};
    putOut(hold_);
    restartFan(x, y);
    return;
  }
  if (!(step >= leastStep_) || step == 0.0) return;
  testFan(x, y);
  if (isHeld_ && (numDead_ == fanSize_ || isSharp(x, y))) {
    retain();
    testFan(x, y);
  }
  beforeX_ = hold_.x;
  beforeY_ = hold_.y;
  hasBefore_ = true;
  hold_ = {x, y, number};
  isHeld_ = true;
}

// The square of the turn's cosine, with its sign, against that of the limit: no root is taken.
bool VEXDeveau::isSharp(double x, double y) const {
  if (!hasBefore_) return false;
  const double lastX = hold_.x - beforeX_, lastY = hold_.y - beforeY_;
  const double nextX = x - hold_.x, nextY = y - hold_.y;
  const double last = lastX * lastX + lastY * lastY, next = nextX * nextX + nextY * nextY;
  const double dot = lastX * nextX + lastY * nextY;
  const double least = tolerance_ * tolerance_;
  return last >= least && next >= least && dot * std::fabs(dot) < sharpLimit_ * last * next;
}

void VEXDeveau::retain() {
  const Output output = clipped(hold_);
  putOut(output);
  isHeld_ = false;
  restartFan(output.x, output.y);
}

void VEXDeveau::restartFan(double x, double y) {
  numDead_ = 0;
  const double turn = static_cast<double>(kFullTurn / static_cast<float>(fanSize_));
  for (int i = 0; i < fanSize_; ++i) {
    Fan& point = fan_[static_cast<std::size_t>(i)];
    point = Fan();
    point.x = isBand_ ? x : x + half_ * std::cos(i * turn);
    point.y = isBand_ ? y : y + half_ * std::sin(i * turn);
  }
}

void VEXDeveau::testFan(double x, double y) {
  for (int i = 0; i < fanSize_; ++i) {
    Fan& point = fan_[static_cast<std::size_t>(i)];
    if (point.isDead) continue;
    const double dx = x - point.x, dy = y - point.y;
    const double beyondLeft = dx * point.leftX + dy * point.leftY;
    const double beyondRight = dx * point.rightX + dy * point.rightY;
    if (point.hasSides && (beyondLeft >= half_ || beyondRight <= -half_)) {
      point.isDead = true;
      ++numDead_;
      continue;
    }
    const double distance = std::hypot(dx, dy);
    if (!(distance > half_)) continue;  // every line through the fan point is near enough
    // The tangents to the circle of half the tolerance around the point.
    const double sine = half_ / distance, cosine = std::sqrt((1.0 - sine) * (1.0 + sine));
    const double ux = dx / distance, uy = dy / distance;
    if (!point.hasSides || beyondLeft < -half_) {
      point.leftX = -(uy * cosine + ux * sine);
      point.leftY = ux * cosine - uy * sine;
    }
    if (!point.hasSides || beyondRight > half_) {
      point.rightX = -(uy * cosine - ux * sine);
      point.rightY = ux * cosine + uy * sine;
    }
    point.hasSides = true;
  }
}

// In a band, a point beyond a side is moved onto that side: the line to it then passes all points that were left out.
VEXDeveau::Output VEXDeveau::clipped(const Output& point) const {
  const Fan& band = fan_[0];
  if (!isBand_ || !band.hasSides) return point;
  const double dx = point.x - band.x, dy = point.y - band.y;
  const double beyondLeft = dx * band.leftX + dy * band.leftY;
  const double beyondRight = dx * band.rightX + dy * band.rightY;
  const bool isLeft = beyondLeft > 0.0, isRight = beyondRight < 0.0;
  if (!isLeft && !isRight) return point;
  if (isLeft && (!isRight || beyondLeft >= -beyondRight)) {
    return {point.x - beyondLeft * band.leftX, point.y - beyondLeft * band.leftY, point.number};
  }
  return {point.x - beyondRight * band.rightX, point.y - beyondRight * band.rightY, point.number};
}

void VEXDeveau::putOut(Output output) {
  output_[numOut_++] = output;
}

bool VEXDeveau::takeOutput(Output& output) {
  if (taken_ == numOut_) {
    taken_ = numOut_ = 0;
    return false;
  }
  output = output_[taken_++];
  return true;
}
