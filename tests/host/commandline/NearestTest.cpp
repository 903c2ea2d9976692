// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "host/commandline/Nearest.h"

namespace CommandLine {

TEST(EditDistance, CountsEachWayOfMistypingOnceAndIsTheSameBothWays) {
  const struct {
    const char *first, *second;
    std::size_t distance;
  } cases[] = {{"", "", 0},           {"", "run", 3},      {"match", "mtch", 1},
               {"info", "infoo", 1},  {"info", "imfo", 1}, {"adjust", "adjsut", 1},
               {"ab", "ba", 1},       {"ca", "abc", 3},    {"kitten", "sitting", 3},
               {"exprot", "exort", 2}};
  for (const auto& [first, second, distance] : cases) {
    EXPECT_EQ(editDistance(first, second), distance) << first << ' ' << second;
    EXPECT_EQ(editDistance(second, first), distance) << second << ' ' << first;
  }
}

TEST(NearestOf, IsTheNearestOfThoseThatAreNearOrTheOneThatWasBegun) {
  const std::vector<std::string> names{"import", "export", "run", "rasterize", "max-angle"};
  const struct {
    const char *typed, *nearest;
  } cases[] = {{"exprot", "export"},
               {"expport", "export"},
               {"EXPORT", "export"},
               {"inport", "import"},
               {"max_angle", "max-angle"},
               {"rnu", "run"},
               {"rast", "rasterize"},
               {"r", ""},
               {"", ""},
               {"info", ""},
               {"runway", ""}};
  for (const auto& [typed, nearest] : cases) EXPECT_EQ(nearestOf(names, typed), nearest) << typed;
}

}  // namespace CommandLine
