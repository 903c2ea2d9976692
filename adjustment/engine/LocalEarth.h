// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where sensor and point are on the ellipsoid, by polynomials about a place near both. The members
// are those of ExactEarth, but all coordinates are off the place, so that nothing large is rounded.
#pragma once

#include "adjustment/engine/LocalPlace.h"
#include "adjustment/georef/Polynomials.h"
#include "adjustment/georef/Rotation.h"

namespace Velorn {

class LocalEarth {
 public:
  static constexpr bool isLocal = true;

  /// @param place  must outlive this
  explicit LocalEarth(const LocalPlace& place) : place_(place) {}

  const double* centre() const { return place_.polynomials.centre; }

  template <typename T>
  class Sensor {
   public:
    Sensor(const LocalEarth& earth, const Vector3<T>& position)
        : place_(earth.place_), position_(position) {
      using std::sqrt;
      const auto& [unused, projected, earthCentred, up] = place_.polynomials;
      const T &e = position[0], &n = position[1];
      const Vector3<T> u(OnLanes::falling<4>(up[0], e, n), OnLanes::falling<4>(up[1], e, n),
                         OnLanes::falling<4>(up[2], e, n));
      for (int i = 0; i < 3; ++i) {
        earthCentred_[i] = OnLanes::falling<4>(earthCentred[i], e, n) + position[2] * u[i];
      }
      latitude_ = {u[2], sqrt(u[0] * u[0] + u[1] * u[1])};
      const T inverse = 1.0 / latitude_.cosine;
      localLevel_ = localLevelRotation(latitude_, {u[1] * inverse, u[0] * inverse});
    }

    const Vector3<T>& earthCentred() const { return earthCentred_; }
    const Matrix3<T>& localLevel() const { return localLevel_; }

    Vector3<T> gradient(const Vector3<T>& by, const Vector3<T>& torque) const {
      const auto& of = place_.ofSensor;
      const T &e = position_[0], &n = position_[1];
      const auto& [sp, cp] = latitude_;
      const T height = position_[2] + place_.polynomials.centre[2];
      const T byPhi = (OnLanes::falling<3>(of.meridian, e, n) + height) * by[0] - torque[1];
      const T byLambda = (OnLanes::falling<3>(of.parallel, e, n) + height * cp) * by[1] +
                         cp * torque[0] - sp * torque[2];
      const auto byGrid = [&](std::size_t i) {
        return T(byPhi * OnLanes::falling<4>(of.phi[i], e, n) +
                 byLambda * OnLanes::falling<4>(of.lambda[i], e, n));
      };
      return {byGrid(0), byGrid(1), -by[2]};
    }

    /// Where the polynomials are good; no for what is not a number.
    auto isNear() const {
      const T &e = position_[0], &n = position_[1];
      return e * e + n * n < T(widestOfSensor * widestOfSensor);
    }

   private:
    const LocalPlace& place_;
    Vector3<T> position_, earthCentred_;
    SineCosine<T> latitude_;
    Matrix3<T> localLevel_;
  };

  template <typename T>
  class Point {
   public:
    Point(const LocalEarth& earth, const Vector3<T>& earthCentred)
        : place_(earth.place_), earthCentred_(earthCentred) {}

    Vector3<T> world() const {
      const auto& projected = place_.polynomials.projected;
      return {at<4>(projected[0]), at<4>(projected[1]), at<4>(projected[2])};
    }

    Vector3<T> gradient(const Vector3<T>& by) const {
      const auto& k = place_.byEarthCentred;
      Vector3<T> sum;
      for (int j = 0; j < 3; ++j) {
        sum[j] = by[0] * at<3>(k[0][j]) + by[1] * at<3>(k[1][j]) + by[2] * at<3>(k[2][j]);
      }
      return sum;
    }

    auto isNear() const { return earthCentred_.squaredNorm() < T(widestOfPoint * widestOfPoint); }

   private:
    template <std::size_t degree>
    T at(const double* k) const {
      return OnLanes::falling<degree>(k, earthCentred_[0], earthCentred_[1], earthCentred_[2]);
    }

    const LocalPlace& place_;
    Vector3<T> earthCentred_;
  };

 private:
  const LocalPlace& place_;
};

}  // namespace Velorn
