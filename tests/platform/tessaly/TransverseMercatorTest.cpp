// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <charconv>
#include <cmath>
#include <numbers>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>

#include "platform/geomra/Degree.h"
#include "platform/tessaly/TransverseMercator.h"
#include "tests/platform/tessaly/Places.h"
#include "tests/support/TemporaryFolder.h"

using Geomra::degree;
using Geomra::PhysicalSpace::point;
using Tessaly::Ellipsoid, Tessaly::inverseTransverseMercatorProjection,
    Tessaly::meridianConvergence, Tessaly::transverseMercatorProjection;
using Zone = Tessaly::TransverseMercatorProjectionParameter;

class ProjectedPlace : public testing::TestWithParam<Place> {};

TEST_P(ProjectedPlace, AgreesWithOtherProgramsBothWaysWithEitherFlag) {
  const Place& place = GetParam();
  for (const bool flag : {true, false}) {
    const point projected = transverseMercatorProjection(place.geographic, place.zone(), flag);
    EXPECT_LT(apart(projected, place.projected), betweenPrograms);
    const point geographic =
        inverseTransverseMercatorProjection(place.projected, place.zone(), flag);
    EXPECT_LT(apartOnEarth(geographic, place.geographic), betweenPrograms);
    EXPECT_LE(std::abs(geographic.x), std::numbers::pi);
    EXPECT_EQ(projected.z, place.geographic.z);
    EXPECT_EQ(geographic.z, place.projected.z);
  }
}

INSTANTIATE_TEST_SUITE_P(Table, ProjectedPlace, testing::ValuesIn(placesOfTheTable()), nameOf);

namespace {

std::string text(double value) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

struct ByTool {
  point projected;     // [m]
  double convergence;  // [deg]
};

// What GeographicLib's tool with the exact projection makes of geographic points.
std::vector<ByTool> projectedByTool(const std::vector<point>& places, double meridian,
                                    const std::string& flattening) {
  std::string lines;
  for (const auto& p : places) lines += text(p.x / degree) + " " + text(p.y / degree) + "\n";
  const TemporaryFolder folder;
  writeContent(folder / "places", lines);
  std::istringstream output(outputOf("TransverseMercatorProj -t -w -p 9 -k 0.9996 -l " +
                                     text(meridian) + " -e 6378137 " + flattening +
                                     " --input-file " + (folder / "places").string()));
  output.imbue(std::locale::classic());
  std::vector<ByTool> projected;
  double x = 0, y = 0, convergence = 0, scale = 0;
  while (output >> x >> y >> convergence >> scale) {
    projected.push_back({{x + 500000.0, y, places.at(projected.size()).z}, convergence});
  }
  return projected;
}

struct System {
  unsigned int epsg;
  double meridian;  // [deg]
  const char* flattening;
};

}  // namespace

TEST(TransverseMercator, AgreesWithTheExactProjectionAtRandomPlaces) {
  for (const auto& system :
       {System{32601, -177, "1/298.257223563"}, System{32660, 177, "1/298.257223563"},
        System{25832, 9, "1/298.257222101"}}) {
    const auto zone = Zone::UTMfromEPSG(system.epsg);
    const auto places = randomPlaces(system.meridian, 500, system.epsg);
    const auto wanted = projectedByTool(places, system.meridian, system.flattening);
    ASSERT_EQ(wanted.size(), places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
      SCOPED_TRACE(testing::Message() << "seed " << system.epsg << ", place " << i);
      const auto& [projected, convergence] = wanted[i];
      EXPECT_LT(apart(transverseMercatorProjection(places[i], zone, true), projected),
                betweenPrograms);
      EXPECT_LT(apartOnEarth(inverseTransverseMercatorProjection(projected, zone, true), places[i]),
                betweenPrograms);
      // Rounding of longitudes of 180 degrees, 4e-16 rad of 3 rad.
      EXPECT_NEAR(meridianConvergence(places[i], zone), convergence * degree, 2e-15);
    }
  }
}

TEST(TransverseMercator, TakesALongitudeAnyTurnsAway) {
  const auto zone = Zone::UTMfromEPSG(32601);
  const point place{-180.5 * degree, 52 * degree, 7};
  const point projected = transverseMercatorProjection(place, zone, true);
  for (const double turns : {-1.0, 1.0, 2.0}) {
    const point turned{place.x + turns * 2 * std::numbers::pi, place.y, place.z};
    // The longitude itself is rounded to 9e-16 rad at two turns: 6e-9 m on the equator.
    EXPECT_LT(apart(transverseMercatorProjection(turned, zone, true), projected), betweenPrograms);
  }
  EXPECT_NEAR(inverseTransverseMercatorProjection(projected, zone, true).x, 179.5 * degree, 4e-15);
}

TEST(TransverseMercator, ParameterFollowsTheCode) {
  for (int k = 0; k < 60; ++k) {
    const auto zone = Zone::UTMfromEPSG(static_cast<unsigned>(32601 + k));
    EXPECT_DOUBLE_EQ(zone.getCentralMeridian(), (6 * k - 177) * degree);
    EXPECT_EQ(zone.getEllipsoid(), Ellipsoid::wgs84());
  }
  for (int k = 0; k < 10; ++k) {
    const auto zone = Zone::UTMfromEPSG(static_cast<unsigned>(25828 + k));
    EXPECT_DOUBLE_EQ(zone.getCentralMeridian(), (6 * k - 15) * degree);
    EXPECT_EQ(zone.getEllipsoid(), Ellipsoid::grs80());
    EXPECT_EQ(zone.getScaleAtCentralMeridian(), 0.9996);
    EXPECT_EQ(zone.getFalseEasting(), 500000.0);
    EXPECT_EQ(zone.getFalseNorthing(), 0.0);
  }
}

TEST(TransverseMercator, ACodeThatIsNoNorthernUtmZoneIsRefusedByName) {
  for (const unsigned int epsg : {0u, 4326u, 25827u, 25838u, 32600u, 32661u, 32732u, 4294967295u}) {
    EXPECT_THAT([&] { Zone::UTMfromEPSG(epsg); },
                testing::ThrowsMessage<std::invalid_argument>(
                    testing::HasSubstr("EPSG code " + std::to_string(epsg) + " ")));
  }
}

TEST(TransverseMercator, ADefaultParameterProjectsAboutGreenwich) {
  const Zone none;
  const auto zone31 = Zone::UTMfromEPSG(32631);
  const point atGreenwich{2 * degree, 50 * degree, 9}, in31{5 * degree, 50 * degree, 9};
  const point projected = transverseMercatorProjection(atGreenwich, none, true);
  EXPECT_LT(apart(projected, transverseMercatorProjection(in31, zone31, true)), thereAndBack);
  EXPECT_LT(apartOnEarth(inverseTransverseMercatorProjection(projected, none, true), atGreenwich),
            thereAndBack);
  EXPECT_EQ(none.getEllipsoid(), Ellipsoid::wgs84());
}

TEST(TransverseMercator, OfNonFiniteInputIsNotANumber) {
  const auto zone = Zone::UTMfromEPSG(25832);
  const auto hasNoPlace = [](const point& p) { return std::isnan(p.x) && std::isnan(p.y); };
  for (const double bad : {notANumber, infinity, -infinity}) {
    for (const auto member : {&point::x, &point::y}) {
      point onEarth{9 * degree, 48 * degree, 100}, onMap{5e5, 5e6, 100};
      onEarth.*member = onMap.*member = bad;
      EXPECT_TRUE(hasNoPlace(transverseMercatorProjection(onEarth, zone, true)));
      EXPECT_TRUE(hasNoPlace(inverseTransverseMercatorProjection(onMap, zone, true)));
    }
    EXPECT_TRUE(hasNoPlace(transverseMercatorProjection({bad, 90 * degree, 0}, zone, true)));
    EXPECT_FALSE(isFinite(transverseMercatorProjection({0.1, 0.8, bad}, zone, true)));
    EXPECT_FALSE(isFinite(inverseTransverseMercatorProjection({5e5, 5e6, bad}, zone, true)));
  }
  EXPECT_TRUE(hasNoPlace(transverseMercatorProjection({0.1, 91 * degree, 0}, zone, true)));
  for (const point& bad : {point{notANumber, 0.8, 0}, point{infinity, 90 * degree, 0},
                           point{0.1, notANumber, 0}, point{0.1, 91 * degree, 0}}) {
    EXPECT_TRUE(std::isnan(meridianConvergence(bad, zone)));
  }
}
