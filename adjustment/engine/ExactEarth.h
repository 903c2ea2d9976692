// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where sensor and point are on the ellipsoid, by the sensor model's own formulas, everywhere in
// the zone. LocalEarth.h has the same members, near a place.
#pragma once

#include "adjustment/engine/GridDerivative.h"

namespace Velorn {

/// Radii of curvature: ν across the meridian and M along it [m].
template <typename T>
struct Radii {
  T across, along;
  Radii(const Place<T>& place, const Projection& projection) {
    using std::sqrt;
    const T w2 = 1.0 - projection.squaredEccentricity * place.latitude.sine * place.latitude.sine;
    across = projection.semiMajorAxis / sqrt(w2);
    along = across * (1.0 - projection.squaredEccentricity) / w2;
  }
};

class ExactEarth {
 public:
  static constexpr bool isLocal = false;

  /// @param projection  must outlive this
  explicit ExactEarth(const Projection& projection) : projection_(projection) {}

  /// What projected coordinates are off: easting, northing, height [m].
  static const double* centre() {
    static constexpr double origin[3] = {};
    return origin;
  }

  /// Of a corrected position.
  template <typename T>
  class Sensor {
   public:
    /// @param position  easting, northing, height [m]
    Sensor(const ExactEarth& earth, const Vector3<T>& position)
        : projection_(earth.projection_),
          place_(placeOfProjected(position, projection_)),
          localLevel_(localLevelRotation(place_.latitude, place_.longitude)) {}

    Vector3<T> earthCentred() const { return Velorn::earthCentred(place_, projection_); }

    /// From north, east, down to earth-centred axes.
    const Matrix3<T>& localLevel() const { return localLevel_; }

    /// By the position, of a number that depends on a point which is carried along: the sensor
    /// moves, and its local level turns, by dλ about the earth's axis and by dφ about west.
    /// @param by      gradient by the point's vector: north, east, down
    /// @param torque  of the vector from sensor to point and `by`
    Vector3<T> gradient(const Vector3<T>& by, const Vector3<T>& torque) const {
      const Radii radii(place_, projection_);
      const auto& [sp, cp] = place_.latitude;
      const T phi = (radii.along + place_.height) * by[0] - torque[1];
      const T lambda =
          (radii.across + place_.height) * cp * by[1] + cp * torque[0] - sp * torque[2];
      const T psi = phi * radii.across * cp / radii.along;
      const auto [easting, northing] = gridDerivative(place_, projection_).grid(psi, lambda);
      return {easting, northing, -by[2]};
    }

   private:
    const Projection& projection_;
    Place<T> place_;
    Matrix3<T> localLevel_;
  };

  /// Of earth-centred coordinates.
  template <typename T>
  class Point {
   public:
    Point(const ExactEarth& earth, const Vector3<T>& earthCentred)
        : projection_(earth.projection_), place_(placeOf(earthCentred, projection_)) {}

    /// w: easting, northing, height [m].
    Vector3<T> world() const { return projected(place_, projection_); }

    /// Gradient by the earth-centred coordinates from that by the projected ones. A step north is
    /// (M + h) dφ with dψ = M / (ν cos φ) dφ, one east (ν + h) cos φ dλ.
    Vector3<T> gradient(const Vector3<T>& by) const {
      const Radii radii(place_, projection_);
      const auto [psi, lambda] = gridDerivative(place_, projection_).isometric(by[0], by[1]);
      const T inverseCosine = 1.0 / place_.latitude.cosine;
      const Vector3<T> northEastDown(
          psi * inverseCosine * radii.along / (radii.across * (radii.along + place_.height)),
          lambda * inverseCosine / (radii.across + place_.height), -by[2]);
      return localLevelRotation(place_.latitude, place_.longitude) * northEastDown;
    }

   private:
    const Projection& projection_;
    Place<T> place_;
  };

 private:
  const Projection& projection_;
};

}  // namespace Velorn
