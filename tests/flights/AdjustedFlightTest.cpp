// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Simulated flights with their own correspondences, adjusted as `velorn adjust` does it, and judged
// by where the points of the strips lie: single corrections are only partly separable.
#include <cmath>

#include <gmock/gmock.h>

#include "host/adjustment/Job.h"
#include "host/georeferencing/Job.h"
#include "tests/host/simulation/SimulatedFlight.h"

using Geomra::PhysicalSpace::point;

namespace fs = std::filesystem;

namespace {

struct Silent : Kestrum::LoaderProgress {
  void report(const std::string& /*text*/, std::size_t /*current*/,
              std::size_t /*total*/) override {}
};

/// Root mean squares over all points of a flight [m].
struct WorldError {
  double horizontal = 0, vertical = 0;
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
    WorldError sum;
    std::size_t count = 0;
    for (std::size_t i = 0; i < job.strips.size(); ++i) {
      const auto name = job.strips[i].stem().string() + "_planes.kx";
      const auto found = OneGridFile(outputOf(georeferencing, i)).world<point>("Positions");
      const auto truth = OneGridFile(folder / "truth" / name).world<point>("Positions");
      for (std::size_t k = 0; k < found.size(); ++k) {
        const auto d = found[k] - truth[k];
        sum.horizontal += d.x * d.x + d.y * d.y;
        sum.vertical += d.z * d.z;
      }
      count += found.size();
    }
    const auto n = static_cast<double>(count);
    return {std::sqrt(sum.horizontal / n), std::sqrt(sum.vertical / n)};
  }

  TemporaryFolder folder;
  Simulation::Options flight;
  AdjustmentJob job;
};

}  // namespace

TEST_F(AdjustedFlight, WithoutNoiseLiesWhereItTrulyIs) {
  flight.rangeNoise = flight.angleNoise = 0;
  flight.slowErrors = false;
  simulate();
  job.configuration.NumberOfIterations = 100;
  const auto outcome = adjusted();
  EXPECT_EQ(outcome.result.end.termination, "CONVERGENCE");
  const auto error = worldError();
  std::printf("%d steps, cost %g, RMS %g m, horizontal %g m, vertical %g m\n",
              outcome.result.end.successfulSteps, outcome.result.end.finalCost,
              outcome.result.after.pairs.moments.rms, error.horizontal, error.vertical);
  EXPECT_LT(error.horizontal, 1e-4);
  EXPECT_LT(error.vertical, 1e-4);
}

TEST_F(AdjustedFlight, WithNoiseFitsToTheNoiseAndLiesWithinCentimetresOfTheTruth) {
  simulate();
  const auto outcome = adjusted();
  EXPECT_EQ(outcome.result.end.termination, "CONVERGENCE");
  const auto& result = outcome.result;
  const auto error = worldError();
  std::printf("RMS %g m (ground truth %g m), horizontal %g m, vertical %g m\n",
              result.after.pairs.moments.rms, result.after.groundTruth.moments.rms,
              error.horizontal, error.vertical);
  EXPECT_GT(result.before.pairs.moments.rms, 0.1);
  EXPECT_LT(result.after.pairs.moments.rms, 0.03);  // 2 cm of range noise on either side
}
