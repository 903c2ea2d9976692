// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A flight is simulated, and its strips are georeferenced as `velorn georeference` does it.
#include <gmock/gmock.h>

#include "flight/strips/AdjustedName.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include <velorn/flight/Containers.h>
#include <velorn/flight/Georeference.h>

using namespace Velorn::Flights;

using Geomra::PhysicalSpace::point;

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
  GeoreferencingInput input;
  input.strips = stripsIn(folder.path());
  input.trajectories = {folder / "trajectory.kx"};
  input.outputFolder = folder / "out";
  std::string messages;
  Watch watch;
  watch.message = [&](const std::string& text) { messages += text; };
  georeference(input, watch);
  std::vector<std::filesystem::path> outputs;
  for (const auto& strip : input.strips) {
    outputs.push_back(input.outputFolder / adjustedNameOf(strip));
    EXPECT_LT(farthestApart(loadStrip(strip).world, loadStrip(outputs.back()).world), 1e-6);
  }
  input.strips = outputs;
  input.outputFolder = folder / "back";
  input.inverse = true;
  georeference(input, watch);
  for (const auto& output : outputs) {
    const auto made = loadStrip(input.outputFolder / adjustedNameOf(output));
    EXPECT_LT(farthestApart(loadStrip(output).scanner, made.scanner), 1e-6);
  }
  EXPECT_EQ(messages, "");
}
