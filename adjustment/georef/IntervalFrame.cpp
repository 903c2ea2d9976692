// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/IntervalFrame.h"

#include <cmath>
#include <numbers>

#include "adjustment/georef/FrameMotion.h"

namespace Velorn {
namespace {

// Place and local level are cubics through four exact points at least, which leave out 0.008 of the
// fourth power of u: of the earth's curvature d⁴ / R³, 3e-11 m for the farthest move, and
// (p1 p3 + p2² / 2) / R of a path that bends, 2e-10 m for the strongest.
constexpr double farthestMove = 300.0;  // [m]
constexpr double strongestBend = 0.1;   // [m²]

// With x half of what the three angles turn together in an interval, polynomials through four or
// eight nodes miss 0.0052 x⁴ or 1.9e-7 x⁸ of a rotation. Here that is 1e-14, or 5e-11 m at 5 km;
// quadratic and cubic terms at most double it where they are as far below the linear ones as
// `turnsWithin` asks for.
constexpr double widestLowSwing = 1e-3;   // [rad]
constexpr double widestHighSwing = 0.12;  // [rad], where the kernel's series of small angles end
constexpr double widestIncrement = 0.12;  // [rad], too

/// The line from before to after, and on it the cubic k of the time since the section's start, as
/// powers of u.
/// @param middle  time from the section's start to the middle of the interval [s]
/// @param length  of the interval [s]
std::array<Vector3<double>, 4> path(const Vector3<double>& before, const Vector3<double>& after,
                                    const std::array<double, 12>& k, double middle, double length) {
  std::array<Vector3<double>, 4> powers;
  for (int j = 0; j < 3; ++j) {
    const double* const c = &k[4 * static_cast<std::size_t>(j)];
    const double difference = after[j] - before[j];
    powers[0][j] = before[j] + difference / 2.0 + correction(k.data(), j, 4, middle);
    powers[1][j] = difference + length * (c[1] + middle * (2.0 * c[2] + middle * 3.0 * c[3]));
    powers[2][j] = length * length * (c[2] + 3.0 * middle * c[3]);
    powers[3][j] = length * length * length * c[3];
  }
  return powers;
}

}  // namespace

IntervalPath::IntervalPath(const Interval& interval)
    : first_(interval.first), perSecond_(1.0 / (interval.last - interval.first)) {
  const double length = interval.last - interval.first;
  const double middle = interval.first - interval.sectionStart + length / 2.0;
  const auto &before = interval.before, &after = interval.after;
  const auto& corrections = interval.corrections;
  position_ = path(before.position, after.position, corrections.position, middle, length);
  attitude_ = path(before.attitude, after.attitude, corrections.angles, middle, length);
}

bool IntervalPath::isSmooth() const {
  const auto& p = position_;
  const double line = p[1].norm(), parabola = p[2].norm(), cubic = p[3].norm();
  return line + parabola + cubic < farthestMove &&
         line * cubic + parabola * parabola < strongestBend && std::isfinite(perSecond_);
}

bool IntervalPath::turnsWithin(double widest) const {
  const auto half = [&](std::size_t m) { return attitude_[m].cwiseAbs().sum(); };
  return half(1) / 2.0 < widest && half(2) / 4.0 < 0.01 * widest * widest &&
         half(3) / 8.0 < 0.001 * widest * widest * widest;
}

std::optional<IntervalFrame> IntervalPath::frame(const Mounting<double>& mounting,
                                                 const LocalPolynomials& local) const {
  if (!isSmooth() || !turnsWithin(widestHighSwing)) return {};
  std::optional<IntervalFrame> made(std::in_place);
  IntervalFrame& frame = *made;
  frame.first = first_;
  frame.perSecond = perSecond_;
  frame.local = &local;
  frame.degree = turnsWithin(widestLowSwing) ? IntervalFrame::lowDegree : IntervalFrame::highDegree;
  FrameMounting motion{};
  for (Eigen::Index i = 0; i < 3; ++i) {
    for (std::size_t m = 0; m < 4; ++m) {
      frame.position[i][m] = position_[m][i] - (m == 0 ? local.centre[i] : 0.0);
      motion.turning[i][m] = m == 0 ? 0.0 : attitude_[m][i];
    }
    const auto [sine, cosine] = sineCosine(attitude_[0][i]);
    motion.sines[i] = sine;
    motion.cosines[i] = cosine;
    motion.leverArm[i] = mounting.leverArm[i];
    const Vector3<double> scanner = scannerAxes<double>(mounting.misalignment.row(i));
    for (Eigen::Index j = 0; j < 3; ++j) motion.misalignment[i][j] = scanner[j];
  }
  setMotion(frame, motion);
  return made;
}

std::optional<PolarCorrection> polarCorrectionOf(const Mounting<double>& mounting) {
  using Kind = PolarCorrection::Kind;
  const auto &o = mounting.offsets, &c = mounting.scales;
  PolarCorrection correction{};
  for (int i = 0; i < 3; ++i) {
    correction.offsets[i] = o[i];
    correction.scales[i] = c[i];
    correction.sines[i] = std::sin(o[i]);
    correction.cosines[i] = std::cos(o[i]);
  }
  const bool isScaled = c[1] != 0.0 || c[2] != 0.0;
  correction.kind = isScaled                         ? Kind::scaledAngles
                    : o.isZero(0.0) && c.isZero(0.0) ? Kind::none
                                                     : Kind::offsets;
  for (int i = 1; i < 3 && isScaled; ++i) {
    const double widest = i == 1 ? std::numbers::pi / 2 : std::numbers::pi;  // of the angle
    if (!(std::abs(c[i]) * widest + std::abs(o[i]) < widestIncrement)) return {};
  }
  return correction;
}

}  // namespace Velorn
