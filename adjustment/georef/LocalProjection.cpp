// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/LocalProjection.h"

#include <cmath>

#include "adjustment/georef/LocalSeries.h"
#include "adjustment/georef/Polynomials.h"

namespace Velorn {
namespace {

constexpr double cellSize = 512.0;  // [m]

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

LocalSeries seriesAbout(const Vector3<double>& centre, const Projection& projection) {
  const Vector3<InPlane> flat{InPlane::variable(centre[0], 0), InPlane::variable(centre[1], 1),
                              InPlane(centre[2])};
  LocalSeries series{placeOfProjected(flat, projection), {}, {}};
  series.earthCentred = earthCentred(series.place, projection);
  Vector3<InSpace> x;
  for (int i = 0; i < 3; ++i) {
    x[i] = InSpace::variable(series.earthCentred[i][0], static_cast<std::size_t>(i));
  }
  series.projected = projected(placeOf(x, projection), projection);
  for (int i = 0; i < 3; ++i) series.earthCentred[i][0] = series.projected[i][0] = 0.0;
  return series;
}

LocalPolynomials polynomialsAbout(const Vector3<double>& centre, const Projection& projection) {
  return polynomialsOf(seriesAbout(centre, projection), centre);
}

LocalPolynomials polynomialsOf(const LocalSeries& series, const Vector3<double>& centre) {
  const auto& [latitude, longitude, height] = series.place;
  LocalPolynomials local{};
  putFalling<4>(latitude.cosine * longitude.cosine, local.up[0]);
  putFalling<4>(latitude.cosine * longitude.sine, local.up[1]);
  putFalling<4>(latitude.sine, local.up[2]);
  for (int i = 0; i < 3; ++i) {
    local.centre[i] = centre[i];
    putFalling<4>(series.earthCentred[i], local.earthCentred[i]);
    putFalling<4>(series.projected[i], local.projected[i]);
  }
  return local;
}

Vector3<double> projectedNear(const LocalPolynomials& local, const Vector3<double>& earthCentred) {
  Vector3<double> projected;
  for (int i = 0; i < 3; ++i) {
    projected[i] =
        OnLanes::falling<4>(local.projected[i], earthCentred[0], earthCentred[1], earthCentred[2]);
  }
  return projected;
}

SensorPlace sensorPlaceNear(const LocalPolynomials& local, const Vector3<double>& projected) {
  SensorPlace place;
  Vector3<double> up;
  for (int i = 0; i < 3; ++i) {
    up[i] = OnLanes::falling<4>(local.up[i], projected[0], projected[1]);
    place.earthCentred[i] = OnLanes::falling<4>(local.earthCentred[i], projected[0], projected[1]) +
                            projected[2] * up[i];
  }
  const double cosine = std::sqrt(up[0] * up[0] + up[1] * up[1]);
  place.localLevel = localLevelRotation<double>({up[2], cosine}, {up[1] / cosine, up[0] / cosine});
  return place;
}

}  // namespace Velorn
