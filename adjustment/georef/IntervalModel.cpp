// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/IntervalModel.h"

#include <cmath>

#include "adjustment/georef/LocalProjection.h"
#include "adjustment/georef/PhysicalSpace.h"

namespace Velorn {
namespace {

// The path within an interval is taken as a parabola through three exact points. What it leaves out
// is 0.05 of the third-order terms: d³ / R² of the earth's curvature, 4e-9 m · 0.05 / 6 for 100 m,
// and the cubic coefficient itself.
constexpr double farthestMove = 100.0;  // [m]
constexpr double strongestBend = 1e-9;  // [m]
constexpr double farthestPoint = 50e3;  // [m]
constexpr double widestSwing = 0.02;    // [rad], where the series of sine and cosine end

/// Sine and cosine of an angle below widestSwing; the first term left out is below 3e-16.
SineCosine<double> ofSmall(double x) {
  const double x2 = x * x;
  return {x * (1.0 - x2 / 6.0 * (1.0 - x2 / 20.0)),
          1.0 - x2 / 2.0 * (1.0 - x2 / 12.0 * (1.0 - x2 / 30.0))};
}

SineCosine<double> sum(const SineCosine<double>& a, const SineCosine<double>& b) {
  return {a.sine * b.cosine + a.cosine * b.sine, a.cosine * b.cosine - a.sine * b.sine};
}

template <typename Value, std::size_t terms>
Value polynomial(const std::array<Value, terms>& k, double u) {
  Value value = k[terms - 1];
  for (std::size_t m = terms - 1; m-- > 0;) value = value * u + k[m];
  return value;
}

/// The parabola through the values at u = -1/2, 0 and 1/2.
template <typename Value>
std::array<Value, 3> parabola(const Value& before, const Value& middle, const Value& after) {
  return {middle, after - before, 2.0 * ((after - middle) + (before - middle))};
}

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

/// s(q') of a measurement. The angles themselves are needed only where they are scaled.
Vector3<double> correctedInSteps(const Geomra::PhysicalSpace::point& s,
                                 const Mounting<double>& mounting) {
  const auto &o = mounting.offsets, &c = mounting.scales;
  if (o.isZero(0.0) && c.isZero(0.0)) return vectorOf(s);
  const double inPlane = std::sqrt(s.x * s.x + s.z * s.z);
  const double range = std::sqrt(inPlane * inPlane + s.y * s.y);
  if (inPlane == 0.0 || c[1] != 0.0 || c[2] != 0.0) {
    return cartesianForm(correctedPolarForm(polarForm(vectorOf(s)), o, c));
  }
  const auto forward = sum({s.y / range, inPlane / range}, sineCosine(o[1]));
  const auto right = sum({s.x / inPlane, s.z / inPlane}, sineCosine(o[2]));
  const double corrected = (1.0 + c[0]) * range + o[0];
  return {corrected * forward.cosine * right.sine, corrected * forward.sine,
          corrected * forward.cosine * right.cosine};
}

}  // namespace

std::optional<IntervalModel> IntervalModel::of(const Interval& interval,
                                               const Mounting<double>& mounting,
                                               const Projection& projection) {
  IntervalModel model(interval, mounting, projection);
  const auto& p = model.position_;
  const double move = p[1].norm() + p[2].norm() + p[3].norm();
  const bool isSmooth = move < farthestMove && p[3].norm() < strongestBend;
  if (!isSmooth || !isInZone(p[0], projection)) return {};  // also what is not finite
  model.placeSensor();
  return model;
}

IntervalModel::IntervalModel(const Interval& interval, const Mounting<double>& mounting,
                             const Projection& projection)
    : mounting_(&mounting),
      projection_(&projection),
      interval_(interval),
      perSecond_(1.0 / (interval.last - interval.first)) {
  const double length = interval.last - interval.first;
  const double middle = interval.first - interval.sectionStart + length / 2.0;
  const auto &before = interval.before, &after = interval.after;
  const auto& corrections = interval.corrections;
  position_ = path(before.position, after.position, corrections.position, middle, length);
  attitude_ = path(before.attitude, after.attitude, corrections.angles, middle, length);
  const auto& a = attitude_;
  swings_ = !((a[1].cwiseAbs() + a[2].cwiseAbs() + a[3].cwiseAbs()).maxCoeff() < 2 * widestSwing);
  for (int j = 0; j < 3; ++j) middle_[static_cast<std::size_t>(j)] = sineCosine(a[0][j]);
}

void IntervalModel::placeSensor() {
  std::array<Vector3<double>, 3> x;
  std::array<Matrix3<double>, 3> c;
  for (std::size_t i = 0; i < 3; ++i) {
    const Place<double> place =
        placeOfProjected(polynomial(position_, 0.5 * (static_cast<double>(i) - 1.0)), *projection_);
    x[i] = Velorn::earthCentred(place, *projection_);
    c[i] = localLevelRotation(place.latitude, place.longitude);
  }
  earthCentred_ = parabola(x[0], x[1], x[2]);
  localLevel_ = parabola(c[0], c[1], c[2]);
}

/// N = R(a'(u))
Matrix3<double> IntervalModel::attitudeAt(double u) const {
  if (swings_) return rotation(polynomial(attitude_, u));
  const Vector3<double> swing = ((attitude_[3] * u + attitude_[2]) * u + attitude_[1]) * u;
  return rotation(sum(middle_[0], ofSmall(swing[0])), sum(middle_[1], ofSmall(swing[1])),
                  sum(middle_[2], ofSmall(swing[2])));
}

std::optional<Georeferenced> IntervalModel::georeference(
    const Geomra::PhysicalSpace::point& scanner, double t) const {
  const double u = (t - interval_.first) * perSecond_ - 0.5;
  const Vector3<double> level =
      attitudeAt(u) * bodyVector(correctedInSteps(scanner, *mounting_), mounting_->misalignment,
                                 mounting_->leverArm);
  if (!(level.squaredNorm() < farthestPoint * farthestPoint)) return {};
  const Matrix3<double> c = (localLevel_[2] * u + localLevel_[1]) * u + localLevel_[0];
  // The small terms first: the sum is rounded once.
  const Vector3<double> fromMiddle = (earthCentred_[2] * u + earthCentred_[1]) * u + c * level;
  const Vector3<double> x = earthCentred_[0] + fromMiddle;
  return Georeferenced{pointOf(projected(placeOf(x, *projection_), *projection_)),
                       pointOf(polynomial(position_, u)), Code::none};
}

}  // namespace Velorn
