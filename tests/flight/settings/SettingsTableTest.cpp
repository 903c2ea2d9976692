// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <set>

#include <gmock/gmock.h>

#include "tests/support/Refusal.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/SettingsTable.h>

using namespace Velorn::Flights;

namespace {

using testing::HasSubstr;

std::string refusal(const FlightSettings& settings) {
  return refusalOf([&] { checkValues(settings); }, Error::BadSettings);
}

TEST(SettingsTable, HasDefaultsWithinTheirBoundsAndEveryNameOnce) {
  EXPECT_NO_THROW(checkValues({}));
  std::set<std::string> names;
  for (const auto& setting : settingsTable()) {
    EXPECT_TRUE(names.insert(setting.name).second) << setting.name;
    EXPECT_EQ(findSetting(setting.name), &setting);
    EXPECT_NE(std::string(setting.sentence), "");
  }
  EXPECT_EQ(findSetting("serch-radius"), nullptr);
}

TEST(SettingsTable, RefusesValuesByTheNameOfTheirSetting) {
  FlightSettings settings;
  settings.raster.neighbours = 5;
  EXPECT_EQ(refusal(settings), "neighbours: 5 is not a number from 6 to 200");
  settings = {};
  settings.raster.maxRoughness = std::nan("");
  EXPECT_EQ(refusal(settings), "max-roughness: nan is not a number from 1e-06 to 1000");
  settings = {};
  settings.model.configuration.CellSizeWeights = {1, 1, 1, 1};
  EXPECT_THAT(refusal(settings), HasSubstr("weights: has 4 entries"));
  settings.model.configuration.CellSizeWeights = {1, 1, 1, 1,
                                                  -std::numeric_limits<double>::infinity()};
  EXPECT_THAT(refusal(settings), HasSubstr("weights: -inf is not a number"));
  settings = {};
  settings.model.held = {"scales", "offset"};
  EXPECT_THAT(refusal(settings), HasSubstr("hold: offset: not one of offsets, scales"));
}

TEST(SettingsTable, TellsValuesAsFlagsTakeThem) {
  FlightSettings settings;
  settings.model.locked = {0, 2};
  settings.steps = {"+rasterize", "+correspondences"};
  settings.model.interval = 0.1;
  EXPECT_EQ(valueText(*findSetting("lock"), settings), "0,2");
  EXPECT_EQ(valueText(*findSetting("steps"), settings), "+rasterize +correspondences");
  EXPECT_EQ(valueText(*findSetting("interval"), settings), "0.1");
  EXPECT_EQ(valueText(*findSetting("weights"), settings), "3,1,1,1,1");
}

}  // namespace
