// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/LocalPlaces.h"

#include "adjustment/engine/ExactEarth.h"
#include "adjustment/georef/LocalSeries.h"

namespace Velorn {
namespace {

// Farther than the corners of a cell are from its centre, 443 m, and than beams of one height
// differ in length.
constexpr double farEnough = 800.0;  // [m]

LocalPlace::OfSensor ofSensor(const Place<InPlane>& place, const Projection& projection) {
  const Radii<InPlane> radii(place, projection);
  const InPlane parallel = radii.across * place.latitude.cosine;
  const InPlane phiByPsi = parallel / radii.along;
  const auto derivative = gridDerivative(place, projection);
  LocalPlace::OfSensor of{};
  for (std::size_t i = 0; i < 2; ++i) {
    const auto psi = derivative.grid(InPlane(1.0), InPlane(0.0));
    const auto lambda = derivative.grid(InPlane(0.0), InPlane(1.0));
    putFalling<4>(psi[i] * phiByPsi, of.phi[i]);
    putFalling<4>(lambda[i], of.lambda[i]);
  }
  putFalling<3>(radii.along, of.meridian);
  putFalling<3>(parallel, of.parallel);
  return of;
}

}  // namespace

LocalPlace localPlaceAbout(const Vector3<double>& centre, const Projection& projection) {
  const LocalSeries series = seriesAbout(centre, projection);
  LocalPlace place{polynomialsOf(series, centre), {}, ofSensor(series.place, projection)};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      putFalling<3>(series.projected[static_cast<Eigen::Index>(i)].derivative(j),
                    place.byEarthCentred[i][j]);
    }
  }
  return place;
}

std::uint32_t LocalPlaces::near(const Vector3<double>& ground, std::uint32_t last) {
  if (!isInZone(ground, projection_)) return none;
  if (last != none) {
    const Vector3<double> centre(places_[last].polynomials.centre);
    if ((ground - centre).norm() < farEnough) return last;
  }
  const Cell cell = cellOf(ground);
  const auto [entry, isNew] =
      numbers_.try_emplace(cell, static_cast<std::uint32_t>(places_.size()));
  if (isNew) places_.push_back(localPlaceAbout(centreOf(cell), projection_));
  return entry->second;
}

}  // namespace Velorn
