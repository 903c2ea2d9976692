// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include <gtest/gtest.h>

#include "flight/comparison/WorldErrors.h"

using namespace Velorn::Flights;

using Velorn::TerrainType, Comparison::WorldErrors;

TEST(WorldErrors, AreSummedUpBySurfaceAndByStripWithAndWithoutTheMeanShift) {
  WorldErrors errors(2);
  errors.add(0, TerrainType::ROOF, {3.5, 4.5, -2.0});
  errors.add(0, TerrainType::FLAT, {0.5, 0.5, 1.0});
  errors.add(1, TerrainType::FLAT, {0.5, -3.5, 4.0});
  errors.add(1, TerrainType::FLAT, {-2.5, 0.5, -1.0});
  errors.add(1, TerrainType::FLAT, {std::nan(""), 0.0, 0.0});
  EXPECT_EQ(errors.notFinite(), 1u);
  EXPECT_EQ(errors.shift().x, 0.5);
  EXPECT_EQ(errors.shift().y, 0.5);
  EXPECT_EQ(errors.shift().z, 0.5);

  const auto roof = errors.ofKind(TerrainType::ROOF);
  EXPECT_EQ(roof.points, 1u);
  EXPECT_NEAR(roof.rms.horizontal, std::hypot(3.5, 4.5), 1e-14);
  EXPECT_NEAR(roof.rmsWithoutShift.horizontal, 5.0, 1e-14);  // 3 and 4
  EXPECT_NEAR(roof.rmsWithoutShift.vertical, 2.5, 1e-14);

  const auto second = errors.ofStrip(1);
  EXPECT_EQ(second.points, 2u);
  EXPECT_NEAR(second.rms.vertical, std::sqrt(17.0 / 2), 1e-14);
  EXPECT_NEAR(second.rmsWithoutShift.horizontal, std::sqrt((16.0 + 9.0) / 2), 1e-14);

  const auto all = errors.all();
  EXPECT_EQ(all.points, 4u);
  EXPECT_EQ(all.median.vertical, 2.0);  // of 1, 1, 2, 4
  EXPECT_EQ(errors.ofKind(TerrainType::SLOPE).points, 0u);
  EXPECT_TRUE(std::isnan(errors.ofKind(TerrainType::SLOPE).rms.vertical));
}
