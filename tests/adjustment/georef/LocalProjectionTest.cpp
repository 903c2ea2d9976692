// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <random>

#include <gtest/gtest.h>

#include "adjustment/georef/LocalProjection.h"
#include "adjustment/georef/TransverseMercator.h"

namespace {

using Velorn::Vector3;
using Exactly = Vector3<long double>;

constexpr double aFifthOfAPlace = 1e-9;  // [m]; a northing in doubles has places of 1e-9 or 2e-9 m
constexpr double ofARotation = 2e-13;    // 1e-9 m at 5 km

Velorn::Projection utm() {
  return Velorn::projectionOf(Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(32632));
}

Exactly earthCentred(const Exactly& projected, const Velorn::Projection& projection) {
  return Velorn::earthCentred(Velorn::placeOfProjected(projected, projection), projection);
}

/// Places as far from the others' origin as `reach`, all about.
class RandomOffsets {
 public:
  Vector3<double> next() {
    Vector3<double> d;
    do {
      for (double& x : d) x = side_(random_);
    } while (!(d.norm() < Velorn::reach && d.norm() > 1));
    return d;
  }

 private:
  std::mt19937_64 random_{5};
  std::uniform_real_distribution<double> side_{-Velorn::reach, Velorn::reach};
};

struct Centre {
  const char* name;
  double easting, northing, height;
};

class PolynomialsAbout : public testing::TestWithParam<Centre> {};

}  // namespace

TEST_P(PolynomialsAbout, APlaceAreGoodAsFarAsTheyReachBothWays) {
  const auto projection = utm();
  const Vector3<double> centre{GetParam().easting, GetParam().northing, GetParam().height};
  const auto local = Velorn::polynomialsAbout(centre, projection);
  const Exactly origin = earthCentred(centre.cast<long double>(), projection);
  RandomOffsets offsets;
  double there = 0, back = 0, turned = 0;
  for (int i = 0; i < 300; ++i) {
    const Vector3<double> off = offsets.next();
    const Exactly place = (centre + off).cast<long double>();
    const Vector3<double> earthCentredOff =
        (earthCentred(place, projection) - origin).cast<double>();
    const Vector3<double> exactOff = (place - centre.cast<long double>()).cast<double>();
    if (earthCentredOff.norm() > Velorn::reach) continue;  // the projection's scale
    there = std::max(there, (projectedNear(local, earthCentredOff) - exactOff).norm());
    const auto sensor = sensorPlaceNear(local, exactOff);
    back = std::max(back, (sensor.earthCentred - earthCentredOff).norm());
    const auto exact = Velorn::placeOfProjected(place, projection);
    const Velorn::Matrix3<long double> level =
        Velorn::localLevelRotation(exact.latitude, exact.longitude);
    turned = std::max(turned, (sensor.localLevel - level.cast<double>()).cwiseAbs().maxCoeff());
  }
  EXPECT_LT(there, aFifthOfAPlace);
  EXPECT_LT(back, aFifthOfAPlace);
  EXPECT_LT(turned, ofARotation);
}

INSTANTIATE_TEST_SUITE_P(Places, PolynomialsAbout,
                         testing::Values(Centre{"InTheMiddle", 600000, 5250000, 800},
                                         Centre{"OnTheCentralMeridian", 500000, 4000000, 0},
                                         Centre{"AtTheEquatorAndTheZonesEdge", 890000, 0, 300},
                                         Centre{"At45DegreesAndTheZonesEdge", 220000, 4990000,
                                                2000},
                                         Centre{"At84DegreesNorth", 535000, 9330000, 4900},
                                         Centre{"High", 700000, 6000000, 12000}),
                         [](const auto& centre) { return centre.param.name; });

TEST(Cells, AreCubesWhoseMiddleIsInThem) {
  EXPECT_EQ(Velorn::cellOf({511.9, 512.0, -0.1}), (Velorn::Cell{0, 1, -1}));
  EXPECT_EQ(Velorn::centreOf({0, 1, -1}), Vector3<double>(256, 768, -256));
  const auto projection = utm();
  EXPECT_TRUE(Velorn::isInZone({600000, 9.3e6, 5000}, projection));
  for (const Vector3<double>& off : {Vector3<double>(2e6, 5e6, 0), Vector3<double>(5e5, 9.9e6, 0),
                                     Vector3<double>(5e5, 5e6, std::nan(""))}) {
    EXPECT_FALSE(Velorn::isInZone(off, projection));
  }
}
