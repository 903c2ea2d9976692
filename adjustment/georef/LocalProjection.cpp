// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/LocalProjection.h"

#include <cmath>

#include "adjustment/georef/PowerSeries.h"
#include "adjustment/georef/TransverseMercator.h"

namespace Velorn {
namespace {

constexpr double cellSize = 512.0;  // [m]
constexpr std::size_t order = 4;
using InSpace = PowerSeries<3, order>;
using InPlane = PowerSeries<2, order>;

/// The orders of coefficients that LocalPolynomials explains.
/// @{
void put(const InSpace& series, double* k) {
  for (std::size_t m = 0; m <= order; ++m) {
    for (std::size_t q = 0; q <= m; ++q) {
      for (std::size_t r = 0; r <= q; ++r) {
        *k++ = series[InSpace::place({order - m, m - q, q - r})];
      }
    }
  }
}

void put(const InPlane& series, double* k) {
  for (std::size_t m = 0; m <= order; ++m) {
    for (std::size_t q = 0; q <= m; ++q) *k++ = series[InPlane::place({order - m, m - q})];
  }
}
/// @}

double inPlane(const double* k, double x, double y) {
  double sum = 0.0;
  for (std::size_t m = 0; m <= order; ++m) {
    double inner = 0.0;
    for (std::size_t q = 0; q <= m; ++q) inner = inner * y + *k++;
    sum = sum * x + inner;
  }
  return sum;
}

double inSpace(const double* k, const Vector3<double>& x) {
  double sum = 0.0;
  for (std::size_t m = 0; m <= order; ++m) {
    double plane = 0.0;
    for (std::size_t q = 0; q <= m; ++q) {
      double inner = 0.0;
      for (std::size_t r = 0; r <= q; ++r) inner = inner * x[2] + *k++;
      plane = plane * x[1] + inner;
    }
    sum = sum * x[0] + plane;
  }
  return sum;
}

}  // namespace

Cell cellOf(const Vector3<double>& projected) {
  Cell cell{};
  for (std::size_t i = 0; i < 3; ++i) {
    cell[i] =
        static_cast<std::int64_t>(std::floor(projected[static_cast<Eigen::Index>(i)] / cellSize));
  }
  return cell;
}

Vector3<double> centreOf(const Cell& cell) {
  const auto middle = [&](std::size_t i) {
    return (static_cast<double>(cell[i]) + 0.5) * cellSize;
  };
  return {middle(0), middle(1), middle(2)};
}

bool isInZone(const Vector3<double>& p, const Projection& projection) {
  return std::abs(p[0] - projection.falseEasting) < 1e6 &&
         std::abs(p[1] - projection.falseNorthing) < 9.5e6 && p[2] > -10e3 && p[2] < 50e3;
}

LocalPolynomials polynomialsAbout(const Vector3<double>& centre, const Projection& projection) {
  LocalPolynomials local{};
  for (int i = 0; i < 3; ++i) local.centre[i] = centre[i];

  const Vector3<InPlane> flat{InPlane::variable(centre[0], 0), InPlane::variable(centre[1], 1),
                              InPlane(centre[2])};
  const Place<InPlane> place = placeOfProjected(flat, projection);
  const Vector3<InPlane> fromPlane = earthCentred(place, projection);
  put(place.latitude.cosine * place.longitude.cosine, local.up[0]);
  put(place.latitude.cosine * place.longitude.sine, local.up[1]);
  put(place.latitude.sine, local.up[2]);
  Vector3<InSpace> x;
  for (int i = 0; i < 3; ++i) {
    InPlane off = fromPlane[i];
    x[i] = InSpace::variable(off[0], static_cast<std::size_t>(i));
    off[0] = 0.0;  // differences from the place
    put(off, local.earthCentred[i]);
  }
  const Vector3<InSpace> fromSpace = projected(placeOf(x, projection), projection);
  for (int i = 0; i < 3; ++i) {
    InSpace off = fromSpace[i];
    off[0] = 0.0;
    put(off, local.projected[i]);
  }
  return local;
}

Vector3<double> projectedNear(const LocalPolynomials& local, const Vector3<double>& earthCentred) {
  return {inSpace(local.projected[0], earthCentred), inSpace(local.projected[1], earthCentred),
          inSpace(local.projected[2], earthCentred)};
}

SensorPlace sensorPlaceNear(const LocalPolynomials& local, const Vector3<double>& projected) {
  SensorPlace place;
  Vector3<double> up;
  for (int i = 0; i < 3; ++i) {
    up[i] = inPlane(local.up[i], projected[0], projected[1]);
    place.earthCentred[i] =
        inPlane(local.earthCentred[i], projected[0], projected[1]) + projected[2] * up[i];
  }
  const double cosine = std::sqrt(up[0] * up[0] + up[1] * up[1]);
  place.localLevel = localLevelRotation<double>({up[2], cosine}, {up[1] / cosine, up[0] / cosine});
  return place;
}

}  // namespace Velorn
