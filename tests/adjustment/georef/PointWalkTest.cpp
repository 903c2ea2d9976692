// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What frames serve, and that it is what the platform's operations give point by point.
#include <string>

#include <gtest/gtest.h>

#include "adjustment/georef/InverseModel.h"
#include "adjustment/georef/PointWalk.h"
#include "tests/adjustment/georef/PointByPoint.h"

namespace {

/// Counts the points that no frame serves, and leaves them.
struct ByFrames {
  Velorn::PolarCorrection correction{};
  bool isInverse = false;
  std::vector<double> alones{};  // their times

  bool inFrame(const Velorn::IntervalFrame& frame, const Velorn::PointBatch& batch) const {
    return isInverse ? Velorn::toScanner(frame, batch)
                     : Velorn::toWorld(frame, correction, 0.0, batch);
  }
  void alone(const Velorn::PointBatch& batch, std::size_t i) {
    alones.push_back(batch.times[i]);
    for (std::size_t k = 3 * i; k < 3 * i + 3; ++k) batch.results[k] = std::nan("");
  }
};

template <typename Model>
Velorn::FrameSource framesOf(const Model& model) {
  return {[&](double t) { return model.intervalAbout(t); }, model.mounting(),
          Velorn::projectionOf(model.zone())};
}

/// World points by frames alone.
/// @return the times of points that none served
std::vector<double> toWorldByFrames(Points& points, const Velorn::StripModel& model) {
  ByFrames frames{Velorn::polarCorrectionOf(model.mounting()).value()};
  Velorn::PointWalk walk(framesOf(model));
  walk.serve({&points.scanner[0].x, points.times.data(), &points.world[0].x,
              &points.directions[0].x, points.times.size()},
             frames);
  return frames.alones;
}

enum class Corrected { nothing, offsets, everything };

std::vector<double> correctionsOf(Corrected kind, std::size_t sections) {
  auto values = someCorrections(sections, kind == Corrected::everything);
  if (kind == Corrected::nothing) std::fill(values.end() - 12, values.end() - 6, 0.0);
  return values;
}

}  // namespace

struct Served {
  std::string name;
  Route route;
  Corrected corrected;
  double widestBeam = 0.6;  // to both sides [rad]
};

class ServedStrip : public testing::TestWithParam<Served> {};

TEST_P(ServedStrip, IsServedByFramesWhollyAndAsThePlatformsOperationsDo) {
  const auto& [name, route, corrected, widest] = GetParam();
  const auto trajectory = trajectoryOf(route);
  const std::vector<int> starts{400000, 400007, 400011, 400012};
  const auto parameters = restoredModel(starts, correctionsOf(corrected, starts.size()));
  const Velorn::StripModel model(parameters, trajectory, week, 0, false);
  Points points(route, 4001);
  std::mt19937_64 random(8);
  std::uniform_real_distribution<double> range(0.5, 1), forward(-0.9, 0.9), right(-widest, widest);
  for (std::size_t i = 0; i < points.times.size(); i += 2) {
    const auto s = beam(route.height * range(random), forward(random) * widest, right(random));
    points.scanner[i] = {s[0], s[1], s[2]};
  }
  EXPECT_EQ(toWorldByFrames(points, model).size(), 0U);
  EXPECT_LT(worstDifference(points, model), betweenTwoWays);
}

INSTANTIATE_TEST_SUITE_P(
    Routes, ServedStrip,
    testing::Values(
        Served{"WithoutOffsets", {}, Corrected::nothing},
        Served{"WithOffsets", {}, Corrected::offsets},
        Served{"WithScaledAngles", {}, Corrected::everything},
        Served{"AllAround", {}, Corrected::everything, 3.1415},
        Served{"AllAroundWithOffsets", {}, Corrected::offsets, 3.1415},
        Served{"ThreeKilometresHigh", {.height = 3500}, Corrected::everything},
        Served{"At84DegreesNorth", {535000, 9.33e6, 3500}, Corrected::everything},
        Served{"AtTheEquatorAndTheZonesEdge", {888000, 1, 300}, Corrected::everything},
        Served{"OneRecordPerSecond", {.rate = 1}, Corrected::everything},
        Served{"OneRecordPerSecondFarNorth", {240000, 9.2e6, 2000, 60, 1}, Corrected::offsets},
        Served{"FastWithOneRecordPerSecond", {.speed = 250, .rate = 1}, Corrected::everything},
        Served{"TenRecordsPerSecond", {.rate = 10}, Corrected::nothing},
        Served{"DroneAtTwentyMetres",
               {.height = 20, .speed = 5, .rate = 50},
               Corrected::everything,
               3.1415}),
    [](const auto& served) { return served.param.name; });

TEST_P(ServedStrip, GoesBackToTheScannerByFramesWhollyToo) {
  const auto& [name, route, corrected, widest] = GetParam();
  const auto trajectory = trajectoryOf(route);
  const auto parameters = restoredModel({400000}, someCorrections(1));
  Points points(route, 4001);
  points.georeference(parameters, trajectory);
  const Velorn::InverseModel model(parameters, trajectory, week);
  ByFrames frames;
  frames.isInverse = true;
  Velorn::PointWalk walk(framesOf(model));
  walk.serve(
      {&points.world[0].x, points.times.data(), &points.scanner[0].x, nullptr, points.times.size()},
      frames);
  EXPECT_EQ(frames.alones.size(), 0U);
  for (std::size_t i = 0; i < points.times.size(); ++i) {
    const auto plain = model.measurementOf(points.world[i], points.times[i]);
    ASSERT_LT(lengthOf(points.scanner[i] - plain), betweenTwoWays) << i;
  }
}

TEST(PointWalk, LeavesAloneWhatNoFrameIsGoodFor) {
  const Route route;
  const auto trajectory = trajectoryOf(route);
  const auto parameters = restoredModel({400002}, someCorrections(1));
  const Velorn::StripModel model(parameters, trajectory, week, 0, false);
  Points points(route, 8);
  points.times = {400001, 400003, 400004, 400005, 400006, 400007, 400000, 400020.001};
  points.scanner[1] = {6000, 10, 10};  // too far
  points.scanner[2] = {500, std::nan(""), 0};
  points.scanner[3] = {0, 0, 0};    // no angle that could be corrected
  points.scanner[4] = {0, 500, 0};  // none in the scan plane
  points.times[5] = std::nan("");
  EXPECT_EQ(toWorldByFrames(points, model).size(), 8U);
  const auto isServed = [&](const Geomra::PhysicalSpace::point& scanner, double t) {
    Points one(1);
    one.scanner[0] = scanner;
    one.times[0] = t;
    return toWorldByFrames(one, model).empty();
  };
  EXPECT_TRUE(isServed({4000, 10, 10}, 400003));
  EXPECT_TRUE(isServed({600, 0, 0}, 400020));  // the last record itself
}

TEST(PointWalk, LeavesAloneWhatMovesOrTurnsTooFarBetweenTwoRecords) {
  const auto isServed = [](const Route& route, double easting, double degrees) {
    const Velorn::Trajectory flown = [&] {
      std::vector<Record> records(4);
      for (std::size_t i = 0; i < records.size(); ++i) {
        const auto s = static_cast<double>(i);
        records[i] = {route.start + s,
                      {easting + route.speed * s, route.northing, route.height},
                      {0, 0, 100 + degrees * s}};
      }
      const TemporaryFolder folder;
      Velorn::Trajectory read({TrajectoryFile({records}).save(folder / "trajectory.kx")});
      EXPECT_EQ(read.importTrajectory(), "");
      return read;
    }();
    const auto parameters = restoredModel({400000}, std::vector<double>(36));
    const Velorn::StripModel model(parameters, flown, week, 0, false);
    Points one(1);
    one.scanner[0] = {600, 0, 0};
    one.times[0] = route.start + 1.5;
    return toWorldByFrames(one, model).empty();
  };
  EXPECT_TRUE(isServed({.speed = 290}, 600000, 10));
  EXPECT_FALSE(isServed({.speed = 310}, 600000, 10));
  EXPECT_FALSE(isServed({.speed = 60}, 600000, 14));
  EXPECT_FALSE(isServed({.speed = 60}, 1.6e6, 10));  // no zone reaches there
}

TEST(PointWalk, ServesAFlightThroughMoreCellsThanItRemembers) {
  const Route route{.speed = 290, .rate = 1, .seconds = 2000};  // 580 km
  const auto trajectory = trajectoryOf(route);
  const auto parameters = restoredModel({400000}, std::vector<double>(36));
  const Velorn::StripModel model(parameters, trajectory, week, 0, false);
  Points points(route, 4000);
  EXPECT_EQ(toWorldByFrames(points, model).size(), 0U);
  EXPECT_LT(worstDifference(points, model), betweenTwoWays);
}

TEST(PolarCorrection, IsRefusedWhereTheSeriesOfSmallAnglesEnd) {
  const auto correctionOf = [](double offset, double scale) {
    Velorn::Mounting<double> mounting{{0, 0, offset}, {0, 0, scale}, {}, {}};
    return Velorn::polarCorrectionOf(mounting);
  };
  using Kind = Velorn::PolarCorrection::Kind;
  EXPECT_EQ(correctionOf(0, 0)->kind, Kind::none);
  EXPECT_EQ(correctionOf(1.5, 0)->kind, Kind::offsets);  // exact for any
  EXPECT_EQ(correctionOf(0.01, 0.02)->kind, Kind::scaledAngles);
  EXPECT_FALSE(correctionOf(0.01, 0.04));
  EXPECT_FALSE(correctionOf(0.2, 1e-9));
  EXPECT_FALSE(correctionOf(0, std::nan("")));
}
