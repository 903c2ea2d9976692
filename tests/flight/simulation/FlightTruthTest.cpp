// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "flight/simulation/FlightPlan.h"
#include "flight/simulation/SensorChain.h"
#include "flight/strips/OrFail.h"
#include "platform/geomra/Degree.h"
#include "platform/tessaly/PolarCoordinates.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/flight/simulation/TrueWorld.h"
#include <velorn/Georeferencing.h>

using namespace Velorn::Flights;

namespace {

using Geomra::degree;

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;

constexpr const char* scannerChart = Strandel::scannerChartName;

double largest(const vector& v) {
  return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

TEST(SyntheticFlight, PointsWithoutNoiseLieOnTheirPlanesUnderTheTruth) {
  const TemporaryFolder folder;
  auto options = smallFlight();
  options.rangeNoise = options.angleNoise = 0.0;
  make(folder.path(), options);
  const auto planes = planesIn(folder.path());
  for (std::size_t strip = 0; strip < 4; ++strip) {
    const auto world = trueWorld(folder.path(), strip);
    const auto sidecar = surfacesOf(folder.path(), stripsIn(folder.path())[strip]);
    const auto places = sidecar.world<point>("Positions");
    const auto numbers = sidecar.world<std::uint32_t>("Plane");
    ASSERT_EQ(world.size(), places.size());
    double offPlane = 0.0, offPlace = 0.0;
    for (std::size_t i = 0; i < world.size(); ++i) {
      const auto& plane = planes.at(numbers[i]);
      offPlane = std::max(offPlane, std::abs(dot(world[i] - plane.through, plane.normal)));
      offPlace = std::max(offPlace, largest(world[i] - places[i]));
    }
    EXPECT_LT(offPlane, 1e-6) << strip;
    EXPECT_LT(offPlace, 1e-6) << strip;
  }
}

TEST(SyntheticFlight, DeliveredWorldPointsAreThoseOfTheLibrary) {
  const TemporaryFolder folder;
  make(folder.path(), smallFlight());
  const auto trajectory = trajectoryIn(folder.path());
  const auto strips = stripsIn(folder.path());
  Velorn::SolverParameters parameters(strips, Velorn::InputParameter{});
  orFail(parameters.setSections("LINEAR", {}, trajectory.getLeverarm(),
                                trajectory.getMisalignment(), "", {}, {}));
  for (unsigned int strip = 0; strip < strips.size(); ++strip) {
    const OneGridFile file(strips[strip]);
    const auto delivered = file.world<point>("Positions");
    const auto deltas = file.column<vector>(scannerChart, "Waveforms.DirectionDelta");
    std::vector<point> world(delivered.size());
    std::vector<vector> directions(delivered.size());
    EXPECT_EQ(
        Velorn::scanner2world(parameters, trajectory, file.column<point>(scannerChart, "Positions"),
                              file.world<double>("GPSTime"), Simulation::FlightPlan::week, strip,
                              world, directions, 0.0, true),
        "");
    double off = 0.0;
    for (std::size_t i = 0; i < world.size(); ++i) {
      off = std::max({off, largest(world[i] - delivered[i]), largest(directions[i] - deltas[i])});
    }
    EXPECT_LT(off, 1e-6) << strip;
  }
}

TEST(SyntheticFlight, ErrorsMoveStripsByDecimetresAndWithoutThemNothingMoves) {
  for (const double scale : {0.0, 1.0}) {
    const TemporaryFolder folder;
    auto options = smallFlight();
    options.rangeNoise = options.angleNoise = 0.0;
    options.errorScale = scale;
    make(folder.path(), options);
    for (const auto& strip : stripsIn(folder.path())) {
      const auto delivered = OneGridFile(strip).world<point>("Positions");
      const auto real = surfacesOf(folder.path(), strip).world<point>("Positions");
      double sum = 0.0;
      for (std::size_t i = 0; i < real.size(); ++i) {
        sum += dot(delivered[i] - real[i], delivered[i] - real[i]);
      }
      const double rms = std::sqrt(sum / static_cast<double>(real.size()));
      EXPECT_GE(rms, scale == 0.0 ? 0.0 : 0.2);
      EXPECT_LT(rms, scale == 0.0 ? 1e-7 : 2.0);
    }
  }
}

TEST(SyntheticFlight, NoiseHasTheSizeAskedFor) {
  const TemporaryFolder quiet, noisy;
  auto options = smallFlight();
  make(noisy.path(), options);
  options.rangeNoise = options.angleNoise = 0.0;
  make(quiet.path(), options);
  const auto exact = OneGridFile(quiet / "strip_01.kx").column<point>(scannerChart, "Positions");
  const auto rough = OneGridFile(noisy / "strip_01.kx").column<point>(scannerChart, "Positions");
  ASSERT_EQ(exact.size(), rough.size());
  vector sums;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    const vector d = Tessaly::polarCoordinatesFromCartesian(rough[i]) -
                     Tessaly::polarCoordinatesFromCartesian(exact[i]);
    sums = sums + vector{d.x * d.x, d.y * d.y, d.z * d.z};
  }
  const auto n = static_cast<double>(exact.size());
  const double tolerance = 4.0 / std::sqrt(2.0 * n);  // four standard deviations of a deviation
  EXPECT_NEAR(std::sqrt(sums.x / n) / 0.02, 1.0, tolerance);
  EXPECT_NEAR(std::sqrt(sums.y / n) / (0.0005 * degree), 1.0, tolerance);
  EXPECT_NEAR(std::sqrt(sums.z / n) / (0.0005 * degree), 1.0, tolerance);
}

TEST(SyntheticFlight, TheAircraftPointsWhereItFliesFromTrueNorthWithoutJumps) {
  const TemporaryFolder folder;
  make(folder.path(), smallFlight());
  const OneGridFile file(folder / "trajectory.kx");
  const auto positions = file.world<point>("Positions");
  const auto yaw = file.world<double>("Yaw"), roll = file.world<double>("Roll");
  const auto times = file.world<double>("GPSTime");
  for (std::size_t i = 1; i < yaw.size(); ++i) {
    EXPECT_NEAR(times[i] - times[i - 1], 0.005, 1e-9);
    EXPECT_LT(std::abs(yaw[i] - yaw[i - 1]), 0.5) << i;  // 100 degrees per second
    EXPECT_LT(std::abs(roll[i] - roll[i - 1]), 0.5) << i;
  }
  const auto truth = truthIn(folder.path());
  for (const auto& strip : truth["strips"]) {
    const double seconds = strip["firstTime"].get<double>() - times.front();
    const auto i = static_cast<std::size_t>(seconds * 200.0);
    const vector way = positions[i + 100] - positions[i];
    const double crab = yaw[i] * degree - std::atan2(way.x, way.y);
    EXPECT_LT(std::abs(std::remainder(crab, 2.0 * std::numbers::pi)), 7.0 * degree);
  }
}

TEST(SyntheticFlight, GridNorthIsTheMeridianConvergenceAwayFromTrueNorth) {
  const auto zone = Simulation::Projection::UTMfromEPSG(32632);
  for (const double easting : {400'000.0, 500'000.0, 600'000.0, 800'000.0}) {
    const point place{easting, 5'250'000.0, 0.0};  // above, the two radii change the azimuth
    const point geographic = Tessaly::inverseTransverseMercatorProjection(place, zone, false);
    EXPECT_NEAR(Simulation::azimuthOfGridNorth(place, zone),
                Tessaly::meridianConvergence(geographic, zone), 1e-9);  // 2e-8 m of 20 m
  }
}

}  // namespace
