// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Simulated flights with their own correspondences, adjusted as `velorn adjust` does it, and judged
// by where the points of the strips lie: single corrections are only partly separable.
#include <gmock/gmock.h>

#include "flight/chain/StripsGeoreferencing.h"
#include "tests/flight/simulation/TrueWorld.h"
#include "tests/flights/AdjustedFlight.h"
#include "tests/support/NoProgress.h"

using namespace Velorn::Flights;

namespace fs = std::filesystem;

namespace {

#ifdef VELORN_SANITIZED
// The solver on numbers with derivatives is slow without optimisation.
constexpr int fullRun = 8;
constexpr std::uint64_t correspondences = 2'000;
#else
constexpr int fullRun = 100;
constexpr std::uint64_t correspondences = 8'000;
#endif

class AdjustedFlight : public testing::Test {
 protected:
  AdjustedFlight() {
    flight.points = 80'000;
    flight.strips = 3;
    flight.length = 800;
    flight.correspondences = correspondences;
  }

  void simulate() {
    make(folder.path(), flight);
    job = jobOf(folder.path());
  }

  AdjustmentOutcome adjusted() {
    checkJob(job);
    return adjust(job, std::make_shared<NoProgress>());
  }

  /// Of the strips georeferenced with the files of the adjustment, against where the same noisy
  /// measurements lie under the truth.
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
    NoProgress progress;
    checkJob(georeferencing);
    runJob(georeferencing, progress, [](const std::string& text) { ADD_FAILURE() << text; });
    WorldError error;
    for (std::size_t i = 0; i < job.strips.size(); ++i) {
      error.add(
          OneGridFile(outputOf(georeferencing, i)).world<Geomra::PhysicalSpace::point>("Positions"),
          trueWorld(folder.path(), i));
    }
    return error.rms();
  }

  TemporaryFolder folder;
  Velorn::Flights::SimulationSettings flight;
  AdjustmentJob job;
};

}  // namespace

// With exact data the cost falls until rounding alone is left, and the solver may run out of steps
// there: no parameter file is written then, but the unknowns are where they should be.
TEST_F(AdjustedFlight, WithoutNoiseLiesWhereItTrulyIs) {
  flight.rangeNoise = flight.angleNoise = 0;
  flight.slowErrors = false;
  simulate();
  job.configuration.NumberOfIterations = fullRun;
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
  flight.slowErrors = false;
  simulate();
  const auto outcome = adjusted();
  EXPECT_EQ(outcome.result.end.termination, "CONVERGENCE");
  const auto& result = outcome.result;
  const auto error = worldError();
  EXPECT_GT(result.before.pairs.moments.rms, 0.1);
  EXPECT_LT(result.after.pairs.moments.rms, 0.03);  // 2 cm of range noise on either side
  EXPECT_LT(error.horizontal, 0.05);
  EXPECT_LT(error.vertical, 0.01);
  const auto& folders = job.configuration;
  EXPECT_TRUE(fs::exists(folder / "01_status" / "03_SolverStatus.txt"));
  EXPECT_TRUE(fs::exists(folder / "04_statistic" / "Offset_q90_z.pdf"));
  EXPECT_TRUE(fs::exists(folder / "00_parameter" / ("Configuration" + folders.FileSuffix)));
}
