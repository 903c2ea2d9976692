// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A flight is simulated, and its strips are georeferenced as `velorn georeference` does it.
#include <gmock/gmock.h>

#include "flight/chain/StripsGeoreferencing.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/support/NoProgress.h"

using namespace Velorn::Flights;

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;

namespace {

double farthestApart(const std::vector<point>& a, const std::vector<point>& b) {
  double squared = a.size() == b.size() ? 0.0 : 1e9;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    squared = std::max(squared, dot(a[i] - b[i], a[i] - b[i]));
  }
  return std::sqrt(squared);
}

}  // namespace

TEST(GeoreferencedFlight, HasTheSimulatorsWorldPointsAndGoesBackToItsMeasurements) {
  const TemporaryFolder folder;
  make(folder.path(), smallFlight());
  GeoreferencingJob job;
  job.strips = stripsIn(folder.path());
  job.trajectories = {folder / "trajectory.kx"};
  job.outputFolder = folder / "out";
  NoProgress progress;
  std::string messages;
  const auto run = [&] {
    checkJob(job);
    runJob(job, progress, [&](const std::string& text) { messages += text; });
  };
  run();
  std::vector<std::filesystem::path> outputs;
  for (std::size_t i = 0; i < job.strips.size(); ++i) {
    outputs.push_back(outputOf(job, i));
    const OneGridFile given(job.strips[i]), made(outputs[i]);
    EXPECT_LT(farthestApart(given.world<point>("Positions"), made.world<point>("Positions")), 1e-6);
  }
  job.strips = outputs;
  job.outputFolder = folder / "back";
  job.inverse = true;
  run();
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const OneGridFile given(outputs[i]), made(outputOf(job, i));
    EXPECT_LT(farthestApart(given.column<point>(Strandel::scannerChartName, "Positions"),
                            made.column<point>(Strandel::scannerChartName, "Positions")),
              1e-6);
  }
  EXPECT_EQ(messages, "");
}
