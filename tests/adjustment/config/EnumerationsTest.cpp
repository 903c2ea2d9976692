// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <regex>

#include <gtest/gtest.h>

#include <velorn/SectionType.h>
#include <velorn/TerrainType.h>
#include <velorn/TextHelpers.h>

using namespace Velorn;

TEST(SectionType, ReadsBackWhatItWritesAndKnowsNoOtherModel) {
  EXPECT_EQ(SecTypeToString(Sec_Type::HYBRID), "HYBRID");
  for (std::uint32_t value = 0; value < 5; ++value) {
    const auto type = static_cast<Sec_Type>(value);
    EXPECT_EQ(stringToSecType(SecTypeToString(type)), type) << value;
  }
  for (const std::uint32_t value : {4u, 17u, std::numeric_limits<std::uint32_t>::max()}) {
    EXPECT_EQ(SecTypeToString(static_cast<Sec_Type>(value)), "Unknown") << value;
  }
  for (const auto* text : {"", "linear", " LINEAR", "LINEAR ", "LINEA", "LINEARS", "Unknown"}) {
    EXPECT_EQ(stringToSecType(text), Sec_Type::UNKNOWN) << text;
  }
}

TEST(TerrainType, HasANameForEachClassAndOneForTheRest) {
  const char* const names[] = {"GROUND_TRUTH", "ROOF",    "SLOPE",  "BED_POINTS",
                               "FLAT",         "UNKNOWN", "UNKNOWN"};
  for (std::uint32_t value = 0; value < 7; ++value) {
    EXPECT_EQ(terrainTypeToString(static_cast<TerrainType>(value)), names[value]);
  }
}

TEST(ElapsedTime, IsGivenInSecondsAndHours) {
  EXPECT_EQ(formatElapsedTime("optimization", 7200),
            "Time needed for optimization: 7200.000000 s or 2.00 h");
  EXPECT_EQ(formatElapsedTime("{} %s", 5400), "Time needed for {} %s: 5400.000000 s or 1.50 h");
  EXPECT_EQ(formatElapsedTime("", 0), "Time needed for : 0.000000 s or 0.00 h");
}

TEST(CurrentDateAndTime, StandsInAFileNameWithTheSeparatorAskedFor) {
  EXPECT_TRUE(std::regex_match(current_date_and_time('-'), std::regex("\\d{4}(-\\d\\d){5}")));
  EXPECT_EQ(current_date_and_time('/').find('/'), std::string::npos);
}
