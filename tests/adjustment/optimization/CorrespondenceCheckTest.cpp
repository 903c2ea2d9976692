// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "adjustment/optimization/CheckTexts.h"
#include "adjustment/optimization/SectionReport.h"
#include "tests/adjustment/optimization/Correspondences.h"

using testing::Contains, testing::ElementsAre, testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

constexpr double nan64 = std::numeric_limits<double>::quiet_NaN();
constexpr const char* tooLittleGroundTruth = "tion::check: can create directory  ";

}  // namespace

TEST_F(Correspondences, AreCountedPerSectionAndClassAndReported) {
  writePairs("c0_1.kx", 120);
  writePairs("c1_0.kx", 3, 14);
  writeControl("c0_3_GroundTruth.kx", 100);
  EXPECT_EQ(check(), "");
  EXPECT_THAT(counts, ElementsAre(223, 123, 0));
  EXPECT_EQ(status("03_Warning_LowCorrespondencesPersection.txt"),
            "StripID 0 section 0  num of corres: 223\n"
            "StripID 1 section 1  num of corres: 123\n"
            "LowCorr         StripID 2 section 2  num of corres: 0\n");
  EXPECT_THAT(status("03_HistCorrespondences.txt"), HasSubstr("FLAT         3"));
  EXPECT_THAT(console, Contains(" CeresOptimization::check: Number of correspondences: 223"));
  EXPECT_THAT(console, Contains(HasSubstr("some section have low number of correspondeces")));
  EXPECT_THAT(optimization.result().correspondencesPerClass, ElementsAre(100, 120, 0, 0, 3));
  EXPECT_FALSE(optimization.result().end.hasRun());
}

TEST_F(Correspondences, LeaveAWarningAndAScriptAsLongAsSectionsAreHeldConstant) {
  writePairs("c0_1.kx", 100);
  writeControl("c1_3_GroundTruth.kx", 100);
  configuration.LockedStrips = {1};
  EXPECT_EQ(check(), "");
  EXPECT_THAT(status("03_Warning_LowCorrespondencesPersection.txt"),
              HasSubstr("Locked          StripID 1 section 1  num of corres: 200\n"));
  EXPECT_FALSE(hasStatus("03_CorrespondencesPerSection.txt"));
  EXPECT_THAT(status("not_adjusted_strips.sh"), HasSubstr(" \"" + strips[1].string() + "\" \""));
  // What a shell makes of it.
  const std::string script = "KXmergecartesian() { printf '%s\\n' \"$@\" >arguments; }; cd " +
                             folder.path().string() + "; . ./01_status/not_adjusted_strips.sh";
  EXPECT_EQ(std::system(script.c_str()), 0);
  EXPECT_EQ(contentOf(folder / "arguments"),
            "-f=Positions,PointSourceID,Amplitude,Classification\n-q\n-r=merged\n" +
                strips[1].string() + "\n" + strips[2].string() + "\n-o=NotAdjustedStrips.kx\n");

  configuration.LockedStrips.clear();
  writePairs("c1_2.kx", 100);
  EXPECT_EQ(check(), "");
  EXPECT_TRUE(hasStatus("03_CorrespondencesPerSection.txt"));
  EXPECT_FALSE(hasStatus("03_Warning_LowCorrespondencesPersection.txt"));
  EXPECT_FALSE(hasStatus("not_adjusted_strips.sh"));
}

TEST_F(Correspondences, NeedHundredWithTheGroundTruthUnlessSetOtherwise) {
  writePairs("c0_1.kx", 200);
  EXPECT_EQ(check(), tooLittleGroundTruth);
  writeControl("c0_3_GroundTruth.kx", 99);
  EXPECT_EQ(check(), tooLittleGroundTruth);
  EXPECT_TRUE(hasStatus("03_HistCorrespondences.txt"));
  EXPECT_EQ(optimization.run(), tooLittleGroundTruth);
  EXPECT_TRUE(optimization.failed());
  optimization.settings.fewestGroundTruth = 0;
  EXPECT_EQ(check(), "");
}

TEST_F(Correspondences, AreFoundByTheWholeNameOfRegularFilesAndLinksToThem) {
  writeControl("c0_3_GroundTruth.kx", 100);
  writePairs("c0_1.kx.bak", 1);
  writePairs("xc0_1.kx", 1);
  writePairs("c0_1_groundtruth.kx", 1);
  writePairs("elsewhere", 7);
  const auto in = folder / "03_correspondences";
  fs::create_symlink(in / "elsewhere", in / "c1_2.kx");
  fs::create_directory(in / "c0_2.kx");
  writeContent(in / "notes.txt", "c0_1.kx");
  EXPECT_EQ(check(), "");
  EXPECT_THAT(counts, ElementsAre(100, 7, 7));
}

TEST_F(Correspondences, CountAsGroundTruthByTheBlocksOwnFlag) {
  write("c0_1.kx", 100, true, being(10), being(10));
  write("c1_2_GroundTruth.kx", 5, false, being(), being());
  EXPECT_EQ(check(), "");
  EXPECT_THAT(counts, ElementsAre(100, 5, 5));
}

struct Fault {
  const char* file;
  bool groundTruth;
  std::function<void(Velorn::SphericalBeing&, Velorn::SphericalBeing&)> change;
  const char* says;
};

TEST_F(Correspondences, AreRefusedWithFileIndexAndValueWhenTheSolverCouldNotTakeThem) {
  const auto nothing = [](auto&, auto&) {};
  const std::vector<Fault> faults{
      {"c3_1.kx", false, nothing, "strip 3 is not one of the 3 strips"},
      {"c1_3.kx", false, nothing, "strip 3 is not one of the 3 strips"},
      {"c4294967295_1.kx", true, nothing, "strip 4294967295 is not"},
      {"c2_2.kx", false, nothing, "1000, in section 2, as the first one"},
      {"c0_1.kx", false, [](auto& i, auto&) { i.gpsTime = -1; }, "0: first point with GPS time -1"},
      {"c0_1.kx", false, [](auto& i, auto&) { i.gpsTime = nan64; },
       "first point with GPS time nan"},
      {"c0_1.kx", false, [](auto& i, auto&) { i.classification = 9; },
       "class 9, not one of 10 to 14"},
      {"c0_1.kx", false, [](auto& i, auto&) { i.classification = 15; }, "class 15, not"},
      {"c0_1.kx", false, [](auto& i, auto&) { i.worldPosition.y = nan64; }, "world position (6"},
      {"c0_1.kx", false, [](auto& i, auto&) { i.normal.z = nan64; }, "normal (0, 0, nan)"},
      {"c0_1.kx", false, [](auto& i, auto&) { i.scannerPosition = {}; },
       "first point with scanner"},
      {"c0_1.kx", false, [](auto&, auto& j) { j.scannerPosition = {}; },
       "second point with scanner"},
      {"c0_1.kx", false, [](auto&, auto& j) { j.gpsTime = nan64; }, "second point with GPS time"},
      {"c0_3.kx", true, [](auto&, auto& j) { j.worldPosition.z = nan64; },
       "second point with world"}};
  for (const auto& fault : faults) {
    auto first = being(), second = being();
    fault.change(first, second);
    write(fault.file, 1, fault.groundTruth, first, second);
    const auto text = check();
    EXPECT_THAT(text, testing::StartsWith("CeresOptimization::check: ")) << fault.says;
    EXPECT_THAT(text, HasSubstr(fault.file));
    EXPECT_THAT(text, HasSubstr(fault.says));
    EXPECT_THAT(optimization.run(), HasSubstr(fault.says));
    fs::remove(folder / "03_correspondences" / fault.file);
  }
  EXPECT_FALSE(hasStatus("03_HistCorrespondences.txt"));
}

TEST_F(Correspondences, WithTheGroundTruthNeedNoMeasurementOnItsSide) {
  auto control = being(10);
  control.scannerPosition = {};
  control.gpsTime = nan64;
  control.classification = 0;
  write("c0_3_GroundTruth.kx", 100, true, being(10), control);
  EXPECT_EQ(check(), "");
}

TEST_F(Correspondences, WithASecondPointInNoSectionAreCountedOnceAndNotSolved) {
  auto early = being();
  early.gpsTime = -5;
  write("c0_1.kx", 100, false, being(), early);
  optimization.settings.fewestGroundTruth = 0;
  EXPECT_EQ(check(), "");
  EXPECT_THAT(counts, ElementsAre(100, 0, 0));
  EXPECT_THAT(optimization.run(),
              HasSubstr("c0_1.kx: correspondence 0: a point lies in no section"));
}

TEST_F(Correspondences, ThatCannotBeReadEndTheCheck) {
  const auto in = folder / "03_correspondences";
  writeContent(in / "c0_1.kx", "");
  EXPECT_EQ(check(), "CorrespondenceBlock::load: cannot load file " + (in / "c0_1.kx").string());
  EXPECT_FALSE(hasStatus("03_HistCorrespondences.txt"));
  fs::rename(in / "c0_1.kx", in / "c99999999999999999999999_1.kx");
  EXPECT_THROW(check(), std::out_of_range);
  fs::rename(in / "c99999999999999999999999_1.kx", in / "c4294967296_1.kx");
  EXPECT_THROW(check(), std::out_of_range);
  fs::remove_all(in);
  EXPECT_THROW(check(), fs::filesystem_error);
}

TEST_F(Correspondences, GetAStatusFolderOrAWordAboutIt) {
  writeControl("c0_3_GroundTruth.kx", 100);
  fs::remove_all(folder / "01_status");
  EXPECT_EQ(check(), "");
  EXPECT_TRUE(hasStatus("03_HistCorrespondences.txt"));
  fs::remove_all(folder / "01_status");
  writeContent(folder / "01_status", "");
  EXPECT_EQ(check(), "string CeresOptimization::check: can create directory  " +
                         (folder / "01_status").string());
}

TEST_F(Correspondences, OfAnEmptyBlockAreNone) {
  writeControl("c0_3_GroundTruth.kx", 100);
  writePairs("c0_1.kx", 0);
  EXPECT_EQ(check(), "");
  EXPECT_THAT(counts, ElementsAre(100, 0, 0));
}

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

// The texts of the check, as they are written into the status folder.

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
  const auto count = [&](const std::vector<unsigned int>& correspondences,
                         const std::set<int>& locked) {
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
