// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Measurements all over the zones, for comparing the sensor model with its exact twin.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

#include "adjustment/georef/SensorModel.h"
#include "platform/geomra/Degree.h"
#include "tests/adjustment/georef/ExactModel.h"

/// A measurement with unknowns, in doubles; the exact twin takes the very same numbers.
struct Case {
  Tessaly::TransverseMercatorProjectionParameter zone;
  Velorn::Vector3<double> scanner;
  Velorn::Pose<double> pose;
  double dt = 0;
  std::array<double, Exact::unknowns> unknowns{};

  Exact::Measurement exactMeasurement() const {
    Exact::Measurement m;
    for (int i = 0; i < 3; ++i) {
      const auto k = static_cast<std::size_t>(i);
      m.scanner[k] = scanner[i];
      m.position[k] = pose.position[i];
      m.attitude[k] = pose.attitude[i];
    }
    m.dt = dt;
    return m;
  }
  Exact::Unknowns exactUnknowns() const {
    Exact::Unknowns u{};
    std::copy(unknowns.begin(), unknowns.end(), u.begin());
    return u;
  }
};

/// What a scanner measures at a range, an angle forward of the scan plane, and an angle to the
/// right of nadir.
inline Velorn::Vector3<double> beam(double range, double forward, double right) {
  return Velorn::cartesianForm<double>({range, forward, std::numbers::pi / 2 - right});
}

/// 0 to 84° north, 3.5° to both sides of the central meridian, up to 5 km high, ranges of 20 m to
/// 5 km, any attitude within a turn either way, and corrections of every kind.
class RandomCases {
 public:
  explicit RandomCases(std::uint64_t seed) : random_(seed) {}

  Case next() {
    Case c;
    c.zone = Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(
        between(0, 1) < 0.5 ? 32632 : 25833);
    const double degree = Geomra::degree, latitude = between(0, 84) * degree;
    const double longitude = c.zone.getCentralMeridian() + between(-3.5, 3.5) * degree;
    const double range = std::exp(between(std::log(20.0), std::log(5000.0)));
    const auto p = Tessaly::transverseMercatorProjection(
        {longitude, latitude, std::max(between(-100, 5000), range - 100)}, c.zone, true);
    c.pose.position = {p.x, p.y, p.z};
    c.pose.attitude = {between(-0.5, 0.5), between(-0.3, 0.3), between(-6.3, 6.3)};
    c.scanner = beam(range, between(-0.3, 0.3), between(-0.9, 0.9));
    c.dt = between(0, 60);
    for (std::size_t i = 0; i < c.unknowns.size(); ++i) c.unknowns[i] = unknown(i, c.dt);
    return c;
  }

 private:
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  double unknown(std::size_t i, double dt) {
    if (i < 3) return i == 0 ? between(-0.5, 0.5) : between(-0.01, 0.01);
    if (i < 6) return between(-1e-3, 1e-3);
    if (i < 9) return between(-0.1, 0.1);
    if (i < 12) return between(-2, 2);
    const double size = i < 24 ? 0.5 : 1e-3;  // at the end of the section, whatever the power
    return between(-size, size) / std::pow(std::max(dt, 1.0), static_cast<double>(i % 4));
  }

  std::mt19937_64 random_;
};

/// The world point by the library's model on any scalar.
template <typename T>
Velorn::Vector3<T> worldPointOf(const Case& c, const std::array<T, Exact::unknowns>& u) {
  using Velorn::Vector3;
  Velorn::Mounting<T> mounting;
  mounting.offsets = Vector3<T>(u[0], u[1], u[2]);
  mounting.scales = Vector3<T>(u[3], u[4], u[5]);
  mounting.misalignment = Velorn::rotation(Vector3<T>(u[6], u[7], u[8]));
  mounting.leverArm = Vector3<T>(u[9], u[10], u[11]);
  return Velorn::worldPoint(Velorn::polarForm(c.scanner),
                            Velorn::correctedPose(c.pose, &u[12], &u[24], {4, 4}, c.dt), mounting,
                            Velorn::projectionOf(c.zone));
}

/// Distance from a point of the exact twin [m].
template <typename T>
double apart(const Velorn::Vector3<T>& a, const Exact::Triple& b) {
  return static_cast<double>(std::sqrt((a[0] - b[0]) * (a[0] - b[0]) +
                                       (a[1] - b[1]) * (a[1] - b[1]) +
                                       (a[2] - b[2]) * (a[2] - b[2])));
}
