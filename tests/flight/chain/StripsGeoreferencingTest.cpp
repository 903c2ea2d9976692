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

#include "flight/chain/StripsGeoreferencing.h"
#include "platform/plome/StringList.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/FileContainer.h>
#include <velorn/Georeferencing.h>
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr unsigned week = 2318;
const Strandel::MyStorage storage(0, 0, 1, 1);

struct NoProgress : Kestrum::LoaderProgress {
  void report(const std::string&, std::size_t current, std::size_t total) override {
    seen.emplace_back(current, total);
  }
  std::vector<std::pair<std::size_t, std::size_t>> seen;
};

/// A folder with a trajectory and two strips, and a job for them.
class JobTest : public testing::Test {
 protected:
  JobTest() {
    std::vector<Record> path;
    path.reserve(21);
    for (int i = 0; i < 21; ++i) {
      path.push_back({100.0 + i, {500000.0 + i, 5.3e6 + 60.0 * i, 1500.0}, {1.0, 2.0, 0.1 * i}});
    }
    job.trajectories = {TrajectoryFile({path}, week).save(folder / "trajectory.kx")};
    job.strips = {writeStrip("b.kx", 101.0), writeStrip("a.kx", 110.0)};
    job.outputFolder = folder / "new/out";
  }

  static std::vector<double> timesFrom(double first) {
    std::vector<double> times;
    times.reserve(100);
    for (int i = 0; i < 100; ++i) times.push_back(first + 0.08 * i);
    return times;
  }

  static std::vector<point> scannerPoints() {
    std::vector<point> points;
    points.reserve(100);
    for (int i = 0; i < 100; ++i) points.push_back({800.0 + i, 0.2 * i - 7, 9.0 * (i - 50)});
    return points;
  }

  fs::path writeStrip(const std::string& name, double firstTime, std::int64_t itsWeek = week) {
    Strandel::Bundle bundle;
    const auto grid = bundle.makeSlice(0)->makeGrid("strip");
    grid->attributes().set("WeekNumber", itsWeek);
    const auto scanner = grid->makeChart(Strandel::scannerChartName);
    scanner->makeField("Positions", Strandel::ValueType::Point)
        ->setValues<point>({0}, scannerPoints());
    const auto times = scanner->makeField("GPSTime", Strandel::ValueType::Double);
    times->setValues<double>({0}, timesFrom(firstTime));
    grid->makeChart(Strandel::worldChartName)->shareField(times);
    if (const auto fault = storage.save(bundle, folder / name, "wd"); !fault.empty()) {
      throw std::runtime_error(fault);
    }
    return folder / name;
  }

  static std::vector<point> positionsIn(const fs::path& file, const char* chart) {
    Strandel::Bundle bundle;
    EXPECT_EQ(storage.load(file, bundle), "");
    const auto field = bundle.grids().front()->chart(chart)->field("Positions");
    return *field->values<point>({0}).values;
  }

  /// World points by the list operation, with this mounting and nothing else.
  std::vector<point> expectedWorld(double firstTime, const point& leverArm,
                                   const point& misalignment) const {
    Velorn::Trajectory trajectory(job.trajectories);
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

  JobResult run() {
    checkJob(job);
    return runJob(job, progress, [this](const std::string& line) { told.push_back(line); });
  }

  std::string refusal() const {
    try {
      checkJob(job);
    } catch (const Error& failure) {
      return failure.what();
    }
    return "not refused";
  }

  /// Divides the strips and writes the files of an adjustment with this mounting.
  void writeAdjustment(const point& leverArm, const point& misalignment) {
    Velorn::InputParameter configuration;
    configuration.ParameterPath = folder.path();
    configuration.DefaultInterval = {3, 3, 3};
    const auto names = std::make_shared<Plome::StringList>();
    for (const auto& strip : job.strips) names->add(strip.string());
    const auto truth = writeStrip("truth.kx", 101.0).string();
    Velorn::FileContainer files;  // sorts them: the user's order is another one
    ASSERT_EQ(files.add(names, truth, job.trajectories[0].string()), "");
    files.writeStripID(folder / "StripID.txt", false);
    Velorn::SolverParameters parameters(files.getStripFiles(), configuration);
    ASSERT_EQ(parameters.setSections("LINEAR", {}, leverArm, misalignment, ".txt", {}, {}), "");
    parameters.writeParameterFile(".txt");
    job.sections = folder / "Sections.txt";
    job.parameters = folder / "Parameter.txt";
    job.stripIds = folder / "StripID.txt";
  }

  const TemporaryFolder folder;
  GeoreferencingJob job;
  NoProgress progress;
  std::vector<std::string> told;
};

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

}  // namespace

TEST_F(JobTest, StripsGoToANewFolderWithTheMountingOfTheTrajectory) {
  const std::string before = contentOf(folder / "a.kx");
  const auto result = run();
  EXPECT_THAT(told, IsEmpty());
  EXPECT_EQ(result.strips, 2u);
  EXPECT_EQ(result.points, 200u);
  EXPECT_EQ(result.faults, 0u);
  EXPECT_THAT(progress.seen, ElementsAre(std::pair(0, 2), std::pair(1, 2)));
  EXPECT_LT(largestDistance(positionsIn(folder / "new/out/b_SA.kx", Strandel::worldChartName),
                            expectedWorld(101.0, trajectoryLeverArm, trajectoryMisalignment)),
            sameModel);
  EXPECT_LT(largestDistance(positionsIn(folder / "new/out/a_SA.kx", Strandel::worldChartName),
                            expectedWorld(110.0, trajectoryLeverArm, trajectoryMisalignment)),
            sameModel);
  EXPECT_EQ(contentOf(folder / "a.kx"), before);
}

TEST_F(JobTest, TheInverseInPlaceLeadsBackToTheScannerCoordinates) {
  job.outputFolder.clear();
  job.selected = {1};
  const std::string unselected = contentOf(folder / "b.kx");
  EXPECT_EQ(run().points, 100u);
  Strandel::Bundle bundle;
  ASSERT_EQ(storage.load(folder / "a.kx", bundle), "");
  bundle.grids()
      .front()
      ->chart(Strandel::scannerChartName)
      ->field("Positions")
      ->setValues<point>({0}, std::vector<point>(100));
  ASSERT_EQ(storage.save(bundle, folder / "a.kx", "wd"), "");

  job.inverse = true;
  run();
  EXPECT_THAT(told, IsEmpty());
  const auto points = positionsIn(folder / "a.kx", Strandel::scannerChartName);
  EXPECT_LT(largestDistance(points, scannerPoints()), 2e-8);  // the model's bound, there and back
  EXPECT_EQ(contentOf(folder / "b.kx"), unselected);
}

TEST_F(JobTest, TheResultOfAnAdjustmentCountsInsteadOfTheTrajectorysMounting) {
  constexpr point leverArm{1.0, -2.0, 0.5};
  constexpr point misalignment{0.25, 0.5, -0.75};
  writeAdjustment(leverArm, misalignment);
  run();
  EXPECT_THAT(told, IsEmpty());
  EXPECT_LT(largestDistance(positionsIn(folder / "new/out/b_SA.kx", Strandel::worldChartName),
                            expectedWorld(101.0, leverArm, misalignment)),
            sameModel);
  EXPECT_LT(largestDistance(positionsIn(folder / "new/out/a_SA.kx", Strandel::worldChartName),
                            expectedWorld(110.0, leverArm, misalignment)),
            sameModel);
}

TEST_F(JobTest, AStripThatTheAdjustmentDidNotKnowGetsItsGlobalCorrectionsAndIsNamed) {
  constexpr point leverArm{1.0, -2.0, 0.5};
  constexpr point misalignment{0.25, 0.5, -0.75};
  writeAdjustment(leverArm, misalignment);
  job.strips.insert(job.strips.begin(), writeStrip("c.kx", 104.0));
  EXPECT_THAT(run().unknown, ElementsAre("c.kx"));
  EXPECT_THAT(told, IsEmpty());
  EXPECT_LT(largestDistance(positionsIn(folder / "new/out/c_SA.kx", Strandel::worldChartName),
                            expectedWorld(104.0, leverArm, misalignment)),
            sameModel);

  job.overwrite = true;
  job.selected = {1};
  EXPECT_THAT(run().unknown, IsEmpty());
  job.strips.erase(job.strips.begin() + 2);  // one that the adjustment did know
  EXPECT_THROW(run(), Error);
}

TEST_F(JobTest, AStripWithAMessageDoesNotStopTheOthers) {
  writeStrip("b.kx", 101.0, 1999);
  writeContent(folder / "c.kx", "no container");
  job.strips = {folder / "b.kx", folder / "c.kx", folder / "a.kx"};
  const auto result = run();
  EXPECT_EQ(result.strips, 3u);
  EXPECT_EQ(result.faults, 2u);
  EXPECT_THAT(told,
              ElementsAre(AllOf(HasSubstr((folder / "b.kx").string() + ": "), HasSubstr("1999")),
                          HasSubstr((folder / "c.kx").string() + ": ")));
  EXPECT_TRUE(fs::exists(folder / "new/out/a_SA.kx"));
}

TEST_F(JobTest, WhatCannotGoWellIsRefusedByNameBeforeAnyWork) {
  writeStrip("a_SA.kx", 101.0);
  fs::create_directory(folder / "other");
  writeStrip("other/a.kx", 101.0);
  writeContent(folder / "flight.sbet", std::string(136, '\0'));
  const GeoreferencingJob good = job;
  struct Case {
    std::function<void()> spoil;
    const char* told;
  };
  for (const auto& [spoil, message] : std::vector<Case>{
           {[&] { job.strips.emplace_back("none.kx"); }, "none.kx: no such file"},
           {[&] { job.strips.push_back(folder.path()); }, ": is not a file"},
           {[&] { job.trajectories = {folder / "flight.sbet"}; }, "flight.sbet: is an SBET file"},
           {[&] { job.strips.push_back(folder / "other/a.kx"); }, "other/a.kx: two strips of one"},
           {[&] {
              job.selected = {0, 2};
            },
            "--select 2: there are 2 strips, counted from 0"},
           {[&] { job.selected = {-1}; }, "--select -1"},
           {[&] { job.sections = folder / "a.kx"; }, "give all three or none"},
           {[&] { job.outputFolder = folder / "a.kx"; }, "a.kx: cannot be made a folder"},
           {[&] {  // would replace an input, which --overwrite does not mean
              job.overwrite = true;
              job.strips.push_back(folder / "a_SA.kx");
              job.outputFolder = folder / "other/..";
            },
            "would replace the input"},
           {[&] { job.outputFolder = folder.path(); },
            "a_SA.kx: exists; --overwrite replaces it"}}) {
    job = good;
    spoil();
    EXPECT_THAT(refusal(), HasSubstr(message));
    EXPECT_FALSE(fs::exists(folder / "new"));
  }
  job.overwrite = true;  // of the last case
  EXPECT_EQ(refusal(), "not refused");
}
