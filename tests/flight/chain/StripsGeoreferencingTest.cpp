// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/plome/StringList.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/FileContainer.h>
#include <velorn/Georeferencing.h>
#include <velorn/flight/Containers.h>
#include <velorn/flight/Georeference.h>

using namespace Velorn::Flights;

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr unsigned week = 2318;

/// [m]; infinite for lists of unequal length and for NaN.
double largestDistance(const std::vector<point>& a, const std::vector<point>& b) {
  double largest = a.size() == b.size() ? 0.0 : std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const vector d = a[i] - b[i];
    const double distance = std::sqrt(dot(d, d));
    if (std::isnan(distance)) return std::numeric_limits<double>::infinity();
    largest = std::max(largest, distance);
  }
  return largest;
}

// [m] Some roundings of a northing; the angles of a parameter file are rounded to 5e-16 rad.
constexpr double sameModel = 1e-8;
constexpr point trajectoryLeverArm{0.1, 0.2, 0.3};  // as TrajectoryFile has them
constexpr point trajectoryMisalignment{0.5, -0.25, 90.0};

/// A folder with a trajectory and two strips, and how to georeference them.
class GeoreferencedStrips : public testing::Test {
 protected:
  GeoreferencedStrips() {
    std::vector<Record> path;
    path.reserve(21);
    for (int i = 0; i < 21; ++i) {
      path.push_back({100.0 + i, {500000.0 + i, 5.3e6 + 60.0 * i, 1500.0}, {1.0, 2.0, 0.1 * i}});
    }
    input.trajectories = {TrajectoryFile({path}, week).save(folder / "trajectory.kx")};
    input.strips = {writeStrip("b.kx", 101.0), writeStrip("a.kx", 110.0)};
    input.outputFolder = folder / "new/out";
  }

  static std::vector<double> timesFrom(double first) {
    std::vector<double> times(100);
    for (double& time : times) time = first + 0.08 * static_cast<double>(&time - times.data());
    return times;
  }

  static std::vector<point> scannerPoints() {
    std::vector<point> points;
    points.reserve(100);
    for (int i = 0; i < 100; ++i) points.push_back({800.0 + i, 0.2 * i - 7, 9.0 * (i - 50)});
    return points;
  }

  fs::path writeStrip(const std::string& name, double firstTime, std::int64_t itsWeek = week) {
    StripColumns strip;
    strip.week = itsWeek;
    strip.world.resize(100);
    strip.scanner = scannerPoints();
    strip.times = timesFrom(firstTime);
    saveStrip(folder / name, std::move(strip));
    return folder / name;
  }

  /// World points by the list operation, with this mounting and nothing else.
  std::vector<point> expectedWorld(double firstTime, const point& leverArm,
                                   const point& misalignment) const {
    Velorn::Trajectory trajectory(input.trajectories);
    EXPECT_EQ(trajectory.importTrajectory(), "");
    Velorn::SolverParameters parameters({"strip.kx"}, Velorn::InputParameter());
    EXPECT_EQ(parameters.setEmptySections(leverArm, misalignment), "");
    std::vector<point> world(100);
    std::vector<vector> directions(100);
    EXPECT_EQ(Velorn::scanner2world(parameters, trajectory, scannerPoints(), timesFrom(firstTime),
                                    week, 0, world, directions, 0.0, false),
              "");
    return world;
  }

  void expectWorld(const std::string& name, double firstTime, const point& leverArm,
                   const point& misalignment) const {
    EXPECT_LT(largestDistance(loadStrip(folder / "new/out" / name).world,
                              expectedWorld(firstTime, leverArm, misalignment)),
              sameModel)
        << name;
  }

  GeoreferencingReport run() {
    told.clear();
    seen.clear();
    Watch watch;
    watch.message = [this](const std::string& line) { told.push_back(line); };
    watch.progress = [this](const std::string&, auto... counts) { seen.emplace_back(counts...); };
    return georeference(input, watch);
  }

  std::string refusal() {
    return refusalOf([this] { run(); }, {});
  }

  /// Divides the strips and writes the files of an adjustment with this mounting.
  /// @param interval  longest section [s]
  void writeAdjustment(const point& leverArm, const point& misalignment, double interval = 3) {
    Velorn::InputParameter configuration;
    configuration.ParameterPath = folder.path();
    configuration.DefaultInterval = {interval, interval, interval};
    const auto names = std::make_shared<Plome::StringList>();
    for (const auto& strip : input.strips) names->add(strip.string());
    const auto truth = writeStrip("truth.kx", 101.0).string();
    Velorn::FileContainer files;  // sorts them: the user's order is another one
    ASSERT_EQ(files.add(names, truth, input.trajectories[0].string()), "");
    files.writeStripID(folder / "StripID.txt", false);
    Velorn::SolverParameters parameters(files.getStripFiles(), configuration);
    ASSERT_EQ(parameters.setSections("LINEAR", {}, leverArm, misalignment, ".txt", {}, {}), "");
    parameters.writeParameterFile(".txt");
    input.model = {folder / "Sections.txt", folder / "Parameter.txt", folder / "StripID.txt"};
  }

  const TemporaryFolder folder;
  GeoreferencingInput input;
  std::vector<std::string> told;
  std::vector<std::pair<std::size_t, std::size_t>> seen;
};

}  // namespace

TEST_F(GeoreferencedStrips, GoToANewFolderWithTheMountingOfTheTrajectory) {
  const std::string before = contentOf(folder / "a.kx");
  const auto result = run();
  EXPECT_THAT(told, IsEmpty());
  EXPECT_EQ(result.strips, 2u);
  EXPECT_EQ(result.points, 200u);
  EXPECT_THAT(seen, ElementsAre(std::pair(0, 2), std::pair(1, 2)));
  expectWorld("b_SA.kx", 101.0, trajectoryLeverArm, trajectoryMisalignment);
  expectWorld("a_SA.kx", 110.0, trajectoryLeverArm, trajectoryMisalignment);
  EXPECT_EQ(contentOf(folder / "a.kx"), before);
}

TEST_F(GeoreferencedStrips, TheInverseInPlaceLeadsBackToTheScannerCoordinates) {
  input.outputFolder.clear();
  input.selected = {1};
  const std::string unselected = contentOf(folder / "b.kx");
  EXPECT_EQ(run().points, 100u);
  auto strip = loadStrip(folder / "a.kx");
  strip.scanner.assign(100, {});
  saveStrip(folder / "a.kx", strip);

  input.inverse = true;
  run();
  EXPECT_THAT(told, IsEmpty());
  const auto points = loadStrip(folder / "a.kx").scanner;
  EXPECT_LT(largestDistance(points, scannerPoints()), 2e-8);  // the model's bound, there and back
  EXPECT_EQ(contentOf(folder / "b.kx"), unselected);
}

TEST_F(GeoreferencedStrips, ByTheModelOfAnAdjustmentAreWhereItsMountingPutsThem) {
  constexpr point leverArm{1.0, -2.0, 0.5};
  constexpr point misalignment{0.25, 0.5, -0.75};
  writeAdjustment(leverArm, misalignment);
  input.strips.insert(input.strips.begin(), writeStrip("c.kx", 104.0));
  EXPECT_THAT(run().unknown, ElementsAre("c.kx")) << "the global corrections alone act on it";
  EXPECT_THAT(told, IsEmpty());
  expectWorld("b_SA.kx", 101.0, leverArm, misalignment);
  expectWorld("a_SA.kx", 110.0, leverArm, misalignment);
  expectWorld("c_SA.kx", 104.0, leverArm, misalignment);

  input.overwrite = true;
  input.selected = {1};
  EXPECT_THAT(run().unknown, IsEmpty());
  input.strips.erase(input.strips.begin() + 2);  // one that the adjustment did know
  EXPECT_THROW(run(), Error);
}

TEST_F(GeoreferencedStrips, OneWithAFaultIsToldAndDoesNotStopTheOthers) {
  writeContent(folder / "c.kx", "no container");
  input.strips = {folder / "c.kx", folder / "a.kx"};
  EXPECT_THAT(refusal(), HasSubstr("1 of 2 strips with a fault; 1 without one"));
  EXPECT_THAT(told, ElementsAre(HasSubstr((folder / "c.kx").string() + ": ")));
  EXPECT_TRUE(fs::exists(folder / "new/out/a_SA.kx"));
}

TEST_F(GeoreferencedStrips, AreRefusedWhereTheTrajectoryHasNoRecord) {
  input.strips = {folder / "c.kx"};
  for (const auto& [first, itsWeek, message] :
       {std::tuple(115.0, week,
                   "c.kx: measured from 115.000 to 122.920 s of week 2318, but the "
                   "trajectory is from 100.000 to 120.000 s of week 2318"),
        {99.99, week, "measured from 99.990"},
        {92.0, week, "18 s of leap seconds would make them fit"},
        {110.0, week + 1, "to 117.920 s of week 2319, but the trajectory has no record"}}) {
    writeStrip("c.kx", first, itsWeek);
    EXPECT_THAT(refusal(), HasSubstr(message));
    EXPECT_THAT(told, IsEmpty());
  }
  input.strips.push_back(folder / "a.kx");
  input.selected = {1};
  EXPECT_EQ(refusal(), "not refused") << "the other one is not selected";
  input.selected = {0};
  writeStrip("c.kx", 100.0);
  EXPECT_EQ(refusal(), "not refused");
  input.overwrite = input.reportEarlyTimes = true;
  EXPECT_THAT(refusal(), HasSubstr("1 of 1 strips with a fault"));
}

TEST_F(GeoreferencedStrips, AreRefusedWithTheModelOfAnotherTime) {
  writeAdjustment({}, {}, 86400);
  input.overwrite = true;
  writeStrip("a.kx", 109.9);  // its section begins at 110 s
  EXPECT_THAT(refusal(),
              HasSubstr("a.kx: measured from 109.900 to 117.820 s of week 2318, but its "
                        "sections in the model begin at 110.000 s: the model of another"));
  writeStrip("a.kx", 112.0);  // what is left of a strip that was cut
  EXPECT_EQ(refusal(), "not refused");
  writeStrip("b.kx", 112.0);  // its section begins at 101 s, and it lasts 8 s
  EXPECT_THAT(refusal(), HasSubstr("b.kx: measured from 112.000"));
}

TEST_F(GeoreferencedStrips, WhatCannotGoWellIsRefusedByNameBeforeAnyWork) {
  writeStrip("a_SA.kx", 101.0);
  fs::create_directory(folder / "other");
  writeStrip("other/a.kx", 101.0);
  writeContent(folder / "flight.sbet", std::string(136, '\0'));
  const GeoreferencingInput good = input;
  struct Case {
    std::function<void()> spoil;
    const char* told;
  };
  for (const auto& [spoil, message] : std::vector<Case>{
           {[&] { input.strips.emplace_back("none.kx"); }, "none.kx: no such file"},
           {[&] { input.strips.push_back(folder.path()); }, ": is not a file"},
           {[&] { input.trajectories = {folder / "flight.sbet"}; }, "flight.sbet: is an SBET file"},
           {[&] { input.strips.push_back(folder / "other/a.kx"); },
            "other/a.kx: two strips of one"},
           {[&] { input.selected.insert(2); }, "--select 2: there are 2 strips, counted from 0"},
           {[&] { input.selected = {-1}; }, "--select -1"},
           {[&] { input.model.sections = folder / "a.kx"; }, "give all three or none"},
           {[&] { input.outputFolder = folder / "a.kx"; }, "a.kx: cannot be made a folder"},
           {[&] {  // would replace an input, which --overwrite does not mean
              input.overwrite = true;
              input.strips.push_back(folder / "a_SA.kx");
              input.outputFolder = folder / "other/..";
            },
            "would replace the input"},
           {[&] { input.outputFolder = folder.path(); },
            "a_SA.kx: exists; --overwrite replaces it"}}) {
    input = good;
    spoil();
    EXPECT_THAT(refusal(), HasSubstr(message));
    EXPECT_FALSE(fs::exists(folder / "new"));
  }
  input.overwrite = true;  // of the last case
  EXPECT_EQ(refusal(), "not refused");
}
