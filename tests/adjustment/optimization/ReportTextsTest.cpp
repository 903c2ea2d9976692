// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The texts of the check, as they are written into the status folder.
#include <gmock/gmock.h>

#include "adjustment/optimization/CheckTexts.h"
#include "adjustment/optimization/SectionReport.h"

namespace {

/// Strips with these numbers of sections.
std::vector<Velorn::StripSections> strips(const std::vector<int>& sections) {
  std::vector<Velorn::StripSections> all;
  for (const int count : sections) {
    auto& strip = all.emplace_back();
    for (int i = 0; i < count; ++i) strip.sections[i].invalid = false;
  }
  return all;
}

}  // namespace

TEST(SectionReport, MarksSectionsWithFewerThanHundredCorrespondencesAndLockedStrips) {
  const auto states = Velorn::sectionStates(strips({2, 1, 3, 1}), {100, 99, 100, 0, 4000, 99, 5000},
                                            {1, 2, 77, -1});
  EXPECT_EQ(Velorn::sectionListing(states),
            "StripID 0 section 0  num of corres: 100\n"
            "LowCorr         StripID 0 section 1  num of corres: 99\n"
            "Locked          StripID 1 section 2  num of corres: 100\n"
            "Locked&LowCorr  StripID 2 section 3  num of corres: 0\n"
            "Locked          StripID 2 section 4  num of corres: 4000\n"
            "Locked&LowCorr  StripID 2 section 5  num of corres: 99\n"
            "StripID 3 section 6  num of corres: 5000\n");
  EXPECT_THAT(Velorn::stripsHeldConstant(states), testing::ElementsAre(0, 1, 2));
  EXPECT_THAT(Velorn::stripsHeldConstant(Velorn::sectionStates(strips({1}), {100}, {})),
              testing::IsEmpty());
}

TEST(SectionReport, CountsWhatIsEstimatedByModelAndWithoutWhatIsHeld) {
  auto flight = strips({1, 1, 1, 1});
  using Velorn::Sec_Type;
  Sec_Type type[] = {Sec_Type::BIAS, Sec_Type::LINEAR, Sec_Type::SPLINE, Sec_Type::HYBRID};
  for (std::size_t i = 0; i < 4; ++i) flight[i].sections.at(0).type = type[i];
  const auto count = [&](std::vector<unsigned int> correspondences, const std::set<int>& locked) {
    return Velorn::estimatedUnknowns(Velorn::sectionStates(flight, correspondences, locked), {});
  };
  EXPECT_EQ(count({100, 100, 100, 100}, {}), 12 + 6 + 12 + 24 + 9);
  EXPECT_EQ(count({100, 100, 99, 100}, {0}), 12 + 12 + 9);
  Velorn::AdjustmentSettings misalignmentAlone;
  misalignmentAlone.estimateOffsets = misalignmentAlone.estimateScales =
      misalignmentAlone.estimateLeverArm = false;
  EXPECT_EQ(Velorn::estimatedUnknowns({}, misalignmentAlone), 3);
}

TEST(TerrainHistogram, ShowsEveryClassWithItsShareAndWeight) {
  const std::string rule(60, '-');
  EXPECT_EQ(Velorn::terrainHistogram({100, 200, 0, 0, 700}, {1, 2.5, 1, 1}),
            "        Terrain Type    Number  Percentage    Weight\n" + rule +
                "\n"
                "        GROUND_TRUTH       100          10         1\n"
                "                ROOF       200          20       2.5\n"
                "               SLOPE         0           0         1\n"
                "          BED_POINTS         0           0         1\n"
                "                FLAT       700          70         -\n" +
                rule + "\n              Total:                1000       100.0\n");
  EXPECT_THAT(Velorn::terrainHistogram({0}, {1}), testing::HasSubstr("nan"));
}

TEST(TerrainHistogram, CallsMoreThanFortyMillionCorrespondencesTooMany) {
  EXPECT_FALSE(Velorn::areTooMany(40'000'000));
  EXPECT_TRUE(Velorn::areTooMany(40'000'001));
}
