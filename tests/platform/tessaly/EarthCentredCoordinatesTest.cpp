// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "platform/geomra/Degree.h"
#include "platform/tessaly/EarthCentredCoordinates.h"
#include "tests/platform/tessaly/Places.h"

using Geomra::degree;
using Geomra::PhysicalSpace::point;
using Tessaly::cartesianToEllipsoidalWithConvergedInfo, Tessaly::Ellipsoid,
    Tessaly::ellipsoidalToCartesian;

class EarthCentredPlace : public testing::TestWithParam<Place> {};

TEST_P(EarthCentredPlace, AgreesWithOtherProgramsBothWaysWithEitherFlag) {
  const Place& place = GetParam();
  const Ellipsoid ellipsoid = place.zone().getEllipsoid();
  for (const bool flag : {true, false}) {
    EXPECT_LT(apart(ellipsoidalToCartesian(place.geographic, ellipsoid, flag), place.earthCentred),
              betweenPrograms);
    const auto [geographic, converged] =
        cartesianToEllipsoidalWithConvergedInfo(place.earthCentred, ellipsoid, flag);
    EXPECT_TRUE(converged);
    EXPECT_LT(apartOnEarth(geographic, place.geographic), betweenPrograms);
    EXPECT_LE(std::abs(geographic.x), std::numbers::pi);
  }
}

INSTANTIATE_TEST_SUITE_P(Table, EarthCentredPlace, testing::ValuesIn(placesOfTheTable()), nameOf);

TEST(EarthCentred, ThereAndBackIsTheSamePoint) {
  for (const auto& ellipsoid : {Ellipsoid::wgs84(), Ellipsoid::grs80()}) {
    for (const double meridian : {-177.0, 9.0, 177.0}) {
      for (const point& place : randomPlaces(meridian, 500, 2)) {
        const auto [back, converged] = cartesianToEllipsoidalWithConvergedInfo(
            ellipsoidalToCartesian(place, ellipsoid, true), ellipsoid, true);
        EXPECT_TRUE(converged);
        EXPECT_LT(apartOnEarth(place, back), thereAndBack) << "seed 2, meridian " << meridian;
      }
    }
  }
}

TEST(EarthCentred, TheEllipsoidsAreThePublishedOnes) {
  // Published: 0.00669437999014 (WGS84), 0.00669438002290 (GRS80).
  EXPECT_NEAR(Ellipsoid::wgs84().getFirstSquaredEccentricity(), 0.00669437999014, 1e-14);
  EXPECT_NEAR(Ellipsoid::grs80().getFirstSquaredEccentricity(), 0.00669438002290, 1e-14);
  EXPECT_EQ(Ellipsoid::grs80().getSemiMajorAxis(), 6378137.0);
}

TEST(EarthCentred, HaveNoGeographicFormNearTheEarthsCentre) {
  const Ellipsoid ellipsoid;
  for (const point& p : {point{0, 0, 0}, {42e3, 0, 0}, {0, 0, -42e3}, {-0.0, 1e-300, 0}}) {
    const auto [geographic, converged] =
        cartesianToEllipsoidalWithConvergedInfo(p, ellipsoid, true);
    EXPECT_FALSE(converged);
    EXPECT_TRUE(isFinite(geographic));
  }
  for (const point& p : {point{44e3, 0, 0}, {0, 0, -44e3}, {3e4, 3e4, 3e4}}) {
    EXPECT_TRUE(cartesianToEllipsoidalWithConvergedInfo(p, ellipsoid, true).second);
  }
}

TEST(EarthCentred, OfNonFiniteInputAreNotANumberAndNotConverged) {
  const Ellipsoid ellipsoid;
  const auto isNothing = [](const point& p) {
    return std::isnan(p.x) && std::isnan(p.y) && std::isnan(p.z);
  };
  const point inEarth{4e6, 3e6, 4e6}, onEarth{0.2, 0.8, 100};
  for (const double bad : {notANumber, infinity, -infinity}) {
    for (const auto member : {&point::x, &point::y, &point::z}) {
      point p = inEarth, g = onEarth;
      p.*member = g.*member = bad;
      const auto [geographic, converged] =
          cartesianToEllipsoidalWithConvergedInfo(p, ellipsoid, true);
      EXPECT_FALSE(converged);
      EXPECT_TRUE(isNothing(geographic));
      EXPECT_TRUE(isNothing(ellipsoidalToCartesian(g, ellipsoid, true)));
      EXPECT_TRUE(isNothing(ellipsoidalToCartesian({0.2, 91 * degree, 0}, ellipsoid, true)));
    }
  }
  EXPECT_FALSE(
      cartesianToEllipsoidalWithConvergedInfo({1.7e308, 1.7e308, 0}, ellipsoid, true).second);
}
