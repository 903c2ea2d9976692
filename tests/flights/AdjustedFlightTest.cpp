// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Simulated flights with their own correspondences, adjusted as `velorn adjust` does it, and judged
// by where the points of the strips lie: single corrections are only partly separable.
#include <gmock/gmock.h>

#include "flight/records/FinishedRun.h"
#include "flight/strips/AdjustedName.h"
#include "tests/flight/simulation/TrueWorld.h"
#include "tests/flights/AdjustedFlight.h"
#include "tests/support/Refusal.h"
#include <velorn/flight/Containers.h>
#include <velorn/flight/Georeference.h>

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
    input = inputOf(folder.path());
  }

  /// Of the strips georeferenced with the files of the adjustment, against where the same noisy
  /// measurements lie under the truth.
  WorldError worldError(const ModelFiles& model) const {
    GeoreferencingInput georeferencing;
    georeferencing.strips = input.strips;
    georeferencing.trajectories = input.trajectories;
    georeferencing.outputFolder = folder / "adjusted";
    georeferencing.model = model;
    georeference(georeferencing, {});
    WorldError error;
    for (std::size_t i = 0; i < input.strips.size(); ++i) {
      error.add(loadStrip(folder / "adjusted" / adjustedNameOf(input.strips[i])).world,
                trueWorld(folder.path(), i));
    }
    return error.rms();
  }

  TemporaryFolder folder;
  SimulationSettings flight;
  AdjustmentInput input;
};

}  // namespace

// With exact data the cost falls until rounding alone is left, and the solver may run out of steps
// there: no parameter file is written then, but the unknowns are where they should be.
TEST_F(AdjustedFlight, WithoutNoiseLiesWhereItTrulyIs) {
  flight.rangeNoise = flight.angleNoise = 0;
  flight.slowErrors = false;
  simulate();
  input.configuration.NumberOfIterations = fullRun;
  Library library(input);
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
  input.configuration.NumberOfIterations = 1;
  Library library(input);
  EXPECT_EQ(library.run(), "NO_CONVERGENCE");
  EXPECT_TRUE(library.optimization.failed());
  EXPECT_TRUE(fs::exists(folder / "01_status" / "03_SolverStatus_Error.txt"));
  EXPECT_FALSE(fs::exists(folder / "01_status" / "03_SolverStatus.txt"));
  EXPECT_FALSE(fs::exists(folder / "04_statistic"));
  for (const auto& entry : fs::directory_iterator(folder / "00_parameter")) {
    EXPECT_THAT(entry.path().filename().string(), testing::StartsWith("Sections"));
  }

  EXPECT_EQ(adjust(input, {}).solver.termination, "NO_CONVERGENCE");
  EXPECT_THAT(refusalOf([&] { FinishedRun{folder.path()}; }),
              testing::HasSubstr("failed: the solver ended with NO_CONVERGENCE"));
}

TEST_F(AdjustedFlight, WithNoiseFitsToTheNoiseAndLiesWithinCentimetresOfTheTruth) {
  flight.slowErrors = false;
  simulate();
  const auto report = adjust(input, {});
  EXPECT_EQ(report.solver.termination, "CONVERGENCE");
  EXPECT_TRUE(report.heldSections.empty());
  EXPECT_GT(report.before.pairs.rms, 0.1);
  EXPECT_LT(report.after.pairs.rms, 0.03);  // 2 cm of range noise on either side
  EXPECT_GE(report.after.groundTruth.count, 100U);
  EXPECT_NEAR(report.globals.misalignment[0], 0.26, 0.1);  // the true roll [degree]
  EXPECT_EQ(FinishedRun(folder.path()).model(), report.files);
  const auto error = worldError(report.files);
  EXPECT_LT(error.horizontal, 0.05);
  EXPECT_LT(error.vertical, 0.01);
  EXPECT_TRUE(fs::exists(folder / "01_status" / "03_SolverStatus.txt"));
  EXPECT_TRUE(fs::exists(folder / "04_statistic" / "Offset_q90_z.pdf"));
  EXPECT_TRUE(
      fs::exists(folder / "00_parameter" / ("Configuration" + input.configuration.FileSuffix)));
}
