// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One second of a real flight, in files of another maker's software.
#include <algorithm>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Containers.h>
#include <velorn/flight/Import.h>

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point;

TEST(LineFlight, HasTheScanLinesOfItsScanner) {
  const TemporaryFolder folder;
  ImportSettings options;
  options.strips = {VELORN_TEST_DATA "/line/points.las"};
  options.trajectory.files = {VELORN_TEST_DATA "/line/sbet.out"};
  options.week = 1600;  // neither file tells it
  options.output = folder / "out";
  const auto report = importFlight(options, {});
  EXPECT_EQ(report.epsg, 32611U);
  ASSERT_EQ(report.strips.size(), 1U);
  const auto strip = loadStrip(report.strips[0].file);
  const auto& places = strip.scanner;
  const auto& times = strip.times;
  ASSERT_EQ(places.size(), 1325U);

  constexpr double degrees = 180.0 / std::numbers::pi;
  std::size_t lines = 1;
  double last = 90.0, lastRate = 0.0;
  for (std::size_t k = 0; k < places.size(); ++k) {
    const point& p = places[k];  // down, forward, right
    const double angle = degrees * std::atan2(p.z, p.x);
    EXPECT_LT(std::abs(angle), 29.5);
    // The scan plane is turned by 14 degrees against the body, and nothing leaves it.
    const double range = std::hypot(p.x, p.y, p.z);
    EXPECT_LT(degrees * std::abs(p.y + std::tan(13.97 / degrees) * p.z) / range, 0.1);
    const double step = k == 0 ? 0.0 : times[k] - times[k - 1];
    if (step > 0.0 && angle < last) {  // along a line, at the mirror's rate
      const double rate = (angle - last) / step;
      if (lastRate != 0.0) {
        EXPECT_NEAR(rate, lastRate, 0.02 * std::abs(lastRate));
      }
      lastRate = rate;
    } else if (angle > last + 10.0) {
      ++lines;
      lastRate = 0.0;
    }
    last = angle;
  }
  EXPECT_EQ(lines, 29U);
}

}  // namespace
