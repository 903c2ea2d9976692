// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include <gtest/gtest.h>

#include "flight/surfaces/TerrainClasses.h"
#include "platform/geomra/Degree.h"

namespace {

using namespace Velorn::Flights;

using Geomra::degree;
constexpr std::uint8_t roof = 11, slope = 12, bed = 13, flat = 14;

vector tilted(double degrees) {
  return {-std::sin(degrees * degree), 0.0, std::cos(degrees * degree)};  // rises to the east
}

std::uint8_t codeOfLas(int lasClass, double degrees) {
  return terrainClass(kindOf(static_cast<std::uint8_t>(lasClass)), {0, 0, 0}, tilted(degrees), {},
                      std::cos(3.0 * degree));
}

TEST(TerrainClasses, FollowTheFilesClassesAndTheSlope) {
  EXPECT_EQ(codeOfLas(6, 0), roof);
  EXPECT_EQ(codeOfLas(40, 20), bed);
  for (const int ground : {2, 8, 11, 0, 1, 12}) {
    EXPECT_EQ(codeOfLas(ground, 2.9), flat) << ground;
    EXPECT_EQ(codeOfLas(ground, 3.1), slope) << ground;
  }
  for (const int none : {3, 4, 5, 7, 9, 13, 14, 15, 16, 18, 41, 45}) {
    EXPECT_EQ(codeOfLas(none, 0), noTerrain) << none;
  }
}

/// Ground that rises to the east, every metre.
LowestGround hill(double degrees) {
  LowestGround ground;
  for (int x = -60; x <= 60; ++x) {
    for (int y = -60; y <= 60; ++y) {
      ground.add({1.0 * x, 1.0 * y, x * std::tan(degrees * degree)});
    }
  }
  return ground;
}

TEST(TerrainClasses, TakeWhatIsHighAboveTheGroundForRoofs) {
  const LowestGround flatGround = hill(0.0);
  EXPECT_TRUE(flatGround.isFarBelow({7, 7, 3.0}, tilted(0.0)));
  EXPECT_FALSE(flatGround.isFarBelow({7, 7, 2.0}, tilted(0.0)));
  EXPECT_TRUE(flatGround.isFarBelow({7, 7, 6.0}, tilted(35.0)));
  EXPECT_FALSE(LowestGround().isFarBelow({7, 7, 6.0}, tilted(0.0)));
}

TEST(TerrainClasses, LeaveAHillsideWhatItIs) {
  const LowestGround ground = hill(30.0);
  EXPECT_FALSE(ground.isFarBelow({7, 7, 7 * std::tan(30.0 * degree)}, tilted(30.0)));
  EXPECT_TRUE(ground.isFarBelow({7, 7, 5 + 7 * std::tan(30.0 * degree)}, tilted(0.0)));
}

}  // namespace
