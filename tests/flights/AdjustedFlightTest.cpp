// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Simulated flights with their own correspondences, adjusted as `velorn adjust` does it, and judged
// by where the points of the strips lie: single corrections are only partly separable.
#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <omp.h>

#include "host/adjustment/Job.h"
#include "host/georeferencing/Job.h"
#include "platform/plome/StringList.h"
#include "tests/host/simulation/SimulatedFlight.h"
#include <velorn/Georeferencing.h>

using Geomra::PhysicalSpace::point;

namespace fs = std::filesystem;

namespace {

struct Silent : Kestrum::LoaderProgress {
  void report(const std::string& /*text*/, std::size_t /*current*/,
              std::size_t /*total*/) override {}
};

/// Sums of squares over points of a flight, or their root means [m].
struct WorldError {
  double horizontal = 0, vertical = 0;
  std::size_t count = 0;

  void add(const std::vector<point>& found, const std::vector<point>& truth) {
    ASSERT_EQ(found.size(), truth.size());
    for (std::size_t k = 0; k < found.size(); ++k) {
      const auto d = found[k] - truth[k];
      horizontal += d.x * d.x + d.y * d.y;
      vertical += d.z * d.z;
    }
    count += found.size();
  }
  WorldError rms() const {
    const auto n = static_cast<double>(count);
    return {std::sqrt(horizontal / n), std::sqrt(vertical / n), count};
  }
};

std::vector<point> truePlaces(const fs::path& folder, const fs::path& strip) {
  return OneGridFile(folder / "truth" / (strip.stem().string() + "_planes.kx"))
      .world<point>("Positions");
}

/// The library's own objects of one adjustment.
struct Library {
  explicit Library(const AdjustmentJob& job) : configuration(job.configuration) {
    const auto strips = std::make_shared<Plome::StringList>();
    for (const auto& strip : job.strips) strips->add(strip.string());
    orFail(files.add(strips, job.groundTruth.string(), job.trajectories[0].string()));
    trajectory = Velorn::Trajectory(files.getTrajectories());
    orFail(trajectory.importTrajectory());
    fs::create_directories(configuration.RootPath / "00_parameter");
    parameters = {files.getStripFiles(), configuration};
    orFail(parameters.setSections(configuration.TypeModel, {}, trajectory.getLeverarm(),
                                  trajectory.getMisalignment(), "_test.txt", {}, {}));
  }

  std::string run() {
    const int before = omp_get_max_threads();
    omp_set_num_threads(std::max(2, before));
    auto fault = optimization.run();
    omp_set_num_threads(before);
    return fault;
  }

  /// Of all measurements under the unknowns as they are now.
  WorldError worldError(const fs::path& folder) const {
    WorldError error;
    const auto strips = files.getStripFiles();
    for (unsigned i = 0; i < strips.size(); ++i) {
      const OneGridFile strip(strips[i]);
      const auto scanner = strip.column<point>(Strandel::scannerChartName, "Positions");
      const auto times = strip.column<double>(Strandel::scannerChartName, "GPSTime");
      std::vector<point> world(scanner.size());
      std::vector<Geomra::PhysicalSpace::vector> directions(scanner.size());
      orFail(Velorn::scanner2world(parameters, trajectory, scanner, times,
                                   trajectory.timeRanges().begin()->first, i, world, directions,
                                   0.0, false));
      error.add(world, truePlaces(folder, strips[i]));
    }
    return error.rms();
  }

  Velorn::InputParameter configuration;
  Velorn::FileContainer files;
  Velorn::Trajectory trajectory{{}};
  Velorn::SolverParameters parameters;
  Velorn::CeresOptimization optimization{parameters, trajectory, configuration, files};
};

class AdjustedFlight : public testing::Test {
 protected:
  AdjustedFlight() {
    flight.points = 80'000;
    flight.strips = 3;
    flight.length = 800;
    flight.correspondences = 8'000;
  }

  void simulate() {
    make(folder.path(), flight);
    job.strips = stripsIn(folder.path());
    job.trajectories = {folder / "trajectory.kx"};
    job.groundTruth = folder / "ground_truth.kx";
    job.correspondences = folder / "03_correspondences";
    job.configuration.RootPath = folder.path();
  }

  AdjustmentOutcome adjusted() {
    checkJob(job);
    return adjust(job, std::make_shared<Silent>());
  }

  /// Of the strips georeferenced with the files of the adjustment, against the true places.
  WorldError worldError() const {
    const auto& suffix = job.configuration.FileSuffix;
    GeoreferencingJob georeferencing;
    georeferencing.strips = job.strips;
    georeferencing.trajectories = job.trajectories;
    georeferencing.outputFolder = folder / "adjusted";
    georeferencing.overwrite = true;
    georeferencing.sections = folder / "00_parameter" / ("Sections" + suffix);
    georeferencing.parameters = folder / "00_parameter" / ("Parameter" + suffix);
    georeferencing.stripIds = folder / "00_parameter" / ("StripID" + suffix);
    Silent progress;
    checkJob(georeferencing);
    runJob(georeferencing, progress, [](const std::string& text) { ADD_FAILURE() << text; });
    WorldError error;
    for (std::size_t i = 0; i < job.strips.size(); ++i) {
      error.add(OneGridFile(outputOf(georeferencing, i)).world<point>("Positions"),
                truePlaces(folder.path(), job.strips[i]));
    }
    return error.rms();
  }

  TemporaryFolder folder;
  Simulation::Options flight;
  AdjustmentJob job;
};

}  // namespace

// With exact data the cost falls until rounding alone is left, and the solver may run out of steps
// there: no parameter file is written then, but the unknowns are where they should be.
TEST_F(AdjustedFlight, WithoutNoiseLiesWhereItTrulyIs) {
  flight.rangeNoise = flight.angleNoise = 0;
  flight.slowErrors = false;
  simulate();
  job.configuration.NumberOfIterations = 100;
  Library library(job);
  library.run();
  const auto& end = library.optimization.result().end;
  EXPECT_THAT(end.termination, testing::AnyOf("CONVERGENCE", "NO_CONVERGENCE"));
  EXPECT_LT(end.finalCost, 1e-8);
  const auto error = library.worldError(folder.path());
  EXPECT_LT(error.horizontal, 1e-4);
  EXPECT_LT(error.vertical, 1e-4);
}

TEST_F(AdjustedFlight, IsWrittenWithNothingButAnErrorFileWhenTheSolverRunsOutOfSteps) {
  simulate();
  job.configuration.NumberOfIterations = 1;
  Library library(job);
  EXPECT_EQ(library.run(), "NO_CONVERGENCE");
  EXPECT_TRUE(library.optimization.failed());
  EXPECT_TRUE(fs::exists(folder / "01_status" / "03_SolverStatus_Error.txt"));
  EXPECT_FALSE(fs::exists(folder / "01_status" / "03_SolverStatus.txt"));
  EXPECT_FALSE(fs::exists(folder / "04_statistic"));
  for (const auto& entry : fs::directory_iterator(folder / "00_parameter")) {
    EXPECT_THAT(entry.path().filename().string(), testing::StartsWith("Sections"));
  }
}

TEST_F(AdjustedFlight, WithNoiseFitsToTheNoiseAndLiesWithinCentimetresOfTheTruth) {
  simulate();
  const auto outcome = adjusted();
  EXPECT_EQ(outcome.result.end.termination, "CONVERGENCE");
  const auto& result = outcome.result;
  const auto error = worldError();
  EXPECT_GT(result.before.pairs.moments.rms, 0.1);
  EXPECT_LT(result.after.pairs.moments.rms, 0.03);  // 2 cm of range noise on either side
  EXPECT_LT(error.horizontal, 0.03);
  EXPECT_LT(error.vertical, 0.03);
  const auto& folders = job.configuration;
  EXPECT_TRUE(fs::exists(folder / "01_status" / "03_SolverStatus.txt"));
  EXPECT_TRUE(fs::exists(folder / "04_statistic" / "Offset_q90_z.pdf"));
  EXPECT_TRUE(fs::exists(folder / "00_parameter" / ("Configuration" + folders.FileSuffix)));
}
