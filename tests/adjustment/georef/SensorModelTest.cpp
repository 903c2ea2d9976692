// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <Eigen/Geometry>

#include <ceres/jet.h>
#include <gmock/gmock.h>

#include "adjustment/georef/SensorModel.h"
#include "tests/adjustment/georef/Measurements.h"
#include "tests/platform/tessaly/Places.h"

namespace {

using Jet = ceres::Jet<double, Exact::unknowns>;

constexpr double nanometres10 = 1e-8;  // [m], the floor for northings of 9000 km in double
constexpr double agreement = 1e-9;     // of derivatives

std::array<Jet, Exact::unknowns> jetsOf(const Case& c) {
  std::array<Jet, Exact::unknowns> u;
  for (std::size_t i = 0; i < u.size(); ++i) u[i] = Jet(c.unknowns[i], static_cast<int>(i));
  return u;
}

/// Largest difference of a derivative from the exact twin's, in shares of it; of one below 10 m per
/// unit in shares of 10 m, because the twin's are differences and good to some 1e-9 m.
double worstDerivative(const Case& c) {
  const auto w = worldPointOf(c, jetsOf(c));
  const auto plain = worldPointOf(c, c.unknowns);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(w[k].a, plain[k], 5e-9);
  const auto exact = Exact::derivatives(c.exactMeasurement(), c.exactUnknowns(), c.zone);
  double worst = 0;
  for (std::size_t i = 0; i < Exact::unknowns; ++i) {
    double size = 0, difference = 0;
    for (int k = 0; k < 3; ++k) {
      const auto e = static_cast<double>(exact[i][static_cast<std::size_t>(k)]);
      const double d = std::abs(w[k].v[static_cast<int>(i)] - e);
      size = std::max(size, std::abs(e));
      difference = std::isfinite(d) ? std::max(difference, d) : infinity;
    }
    worst = std::max(worst, difference / std::max(size, 10.0));
  }
  return worst;
}

}  // namespace

class KernelPlace : public testing::TestWithParam<Place> {};

TEST_P(KernelPlace, AgreesWithOtherProgramsBothWays) {
  const auto& place = GetParam();
  const auto projection = Velorn::projectionOf(place.zone());
  const double longitude = place.geographic.x - projection.centralMeridian;
  const Velorn::Place<double> given{Velorn::sineCosine(place.geographic.y),
                                    Velorn::sineCosine(longitude), place.geographic.z};
  const auto point = Velorn::projected(given, projection);
  EXPECT_LT(apart({point[0], point[1], point[2]}, place.projected), betweenPrograms);

  const auto geographic = [&](const Velorn::Place<double>& p) {
    return Geomra::PhysicalSpace::point{
        projection.centralMeridian + std::atan2(p.longitude.sine, p.longitude.cosine),
        std::atan2(p.latitude.sine, p.latitude.cosine), p.height};
  };
  const Velorn::Vector3<double> projected(place.projected.x, place.projected.y, place.projected.z);
  const auto back = Velorn::placeOfProjected(projected, projection);
  EXPECT_LT(apartOnEarth(geographic(back), place.geographic), betweenPrograms);

  const Velorn::Vector3<double> x =
      Eigen::AngleAxisd(projection.centralMeridian, Velorn::Vector3<double>::UnitZ()) *
      Velorn::earthCentred(given, projection);
  EXPECT_LT(apart({x[0], x[1], x[2]}, place.earthCentred), betweenPrograms);
  const Velorn::Vector3<double> turned =
      Eigen::AngleAxisd(-projection.centralMeridian, Velorn::Vector3<double>::UnitZ()) *
      Velorn::Vector3<double>(place.earthCentred.x, place.earthCentred.y, place.earthCentred.z);
  EXPECT_LT(apartOnEarth(geographic(Velorn::placeOf(turned, projection)), place.geographic),
            betweenPrograms);
}

INSTANTIATE_TEST_SUITE_P(Table, KernelPlace, testing::ValuesIn(placesOfTheTable()), nameOf);

TEST(SensorModel, GivesTheWorldPointOfTheExactTwin) {
  RandomCases cases(4);
  double worst = 0;
  for (int i = 0; i < 1000; ++i) {
    const Case c = cases.next();
    const auto exact = Exact::worldPoint(c.exactMeasurement(), c.exactUnknowns(), c.zone);
    worst = std::max(worst, apart(worldPointOf(c, c.unknowns), exact));
  }
  EXPECT_LT(worst, nanometres10);
}

TEST(SensorModel, HasTheDerivativesOfTheExactTwin) {
  RandomCases cases(6);
  for (int i = 0; i < 30; ++i) EXPECT_LT(worstDerivative(cases.next()), agreement) << i;
}

TEST(SensorModel, HasDerivativesWhereFormulasMightDivideByZero) {
  RandomCases cases(7);
  const Case ordinary = cases.next();
  const auto with = [&](auto change) {
    Case c = ordinary;
    change(c);
    return worstDerivative(c);
  };
  const auto east = [](Case& c, double easting, double northing) {
    c.pose.position = {easting, northing, 1000};
  };
  EXPECT_LT(with([](Case& c) { c.scanner = beam(600, 0, 0); }), agreement) << "nadir";
  EXPECT_LT(with([](Case& c) { c.scanner = beam(900, 0, 1.3); }), agreement) << "edge of the swath";
  EXPECT_LT(with([](Case& c) { c.unknowns = {}; }), agreement) << "no corrections";
  EXPECT_LT(with([](Case& c) {
              c.unknowns = {};
              c.pose.attitude.setZero();
            }),
            1e-8)
      << "level";
  EXPECT_LT(with([](Case& c) { c.pose.attitude = {-3.1, 1.5, 40}; }), agreement) << "large angles";
  EXPECT_LT(with([](Case& c) { c.dt = 0; }), agreement) << "start of the section";
  EXPECT_LT(with([&](Case& c) { east(c, 500000, 5e6); }), agreement) << "central meridian";
  EXPECT_LT(with([&](Case& c) { east(c, 500000, 0); }), agreement) << "equator";
  EXPECT_LT(with([&](Case& c) { east(c, 890000, 10000); }), agreement) << "edge of the zone";
  EXPECT_LT(with([&](Case& c) { east(c, 465000, 9.33e6); }), agreement) << "84 degrees north";
}
