// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/InputParameter.h>

using testing::ElementsAre, testing::HasSubstr, testing::IsEmpty, testing::MatchesRegex,
    testing::StartsWith, testing::ThrowsMessage;
using Velorn::InputParameter;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::string faultOfAmplitude(const std::string& selection, double amplitude) {
  InputParameter parameter;
  parameter.SelectionStr = selection;
  parameter.Amplitude[3] = amplitude;
  return parameter.check();
}

}  // namespace

TEST(InputParameter, DefaultsPassAndGiveTheCellSizes) {
  InputParameter parameter;
  EXPECT_EQ(parameter.check(), "");
  EXPECT_EQ(parameter.getGroundTruthSize(), 0.1);
  EXPECT_EQ(parameter.getRoof(), 0.5);
  EXPECT_EQ(parameter.getSlope(), 1.0);
  EXPECT_EQ(parameter.getBedPoints(), 5.0);
  EXPECT_EQ(parameter.getFlat(), 15.0);
  EXPECT_EQ(parameter.getNumberOfClasses(), 5u);
  EXPECT_EQ(parameter.getPrameterPath(), "00_parameter");
  EXPECT_EQ(parameter.getStatusPath(), "01_status");
  EXPECT_EQ(parameter.getRasterPath(), "02_raster");
  EXPECT_EQ(parameter.getCorrespondencePath(), "03_correspondences");
  EXPECT_EQ(parameter.getStatisticPath(), "04_statistic");
  EXPECT_THAT(parameter.FileSuffix, MatchesRegex("_[0-9]+(_[0-9]+)+\\.txt"));
  EXPECT_TRUE(parameter.InterpolationFlag);

  parameter.MinCellSize = 2;
  EXPECT_EQ(parameter.check(), "");
  EXPECT_THAT(parameter.CellSize, ElementsAre(2, 10, 20, 100, 300));
}

TEST(InputParameter, LimitsAmplitudesInOnePlaceOnly) {
  const std::string fault =
      "InputParameter::check: SelectionStr for Amplitude AND for the flag Amplitude set! Use only "
      "one parameter.";
  EXPECT_EQ(faultOfAmplitude("Amplitude>20", -100), "");
  EXPECT_EQ(faultOfAmplitude("Amplitude>20", -200), "");
  EXPECT_EQ(faultOfAmplitude("Amplitude>20", -99.5), fault);
  EXPECT_EQ(faultOfAmplitude("(x<3)and(Amplitude)", notANumber), fault);
  EXPECT_EQ(faultOfAmplitude("\xe4"
                             "Amplitude",
                             0),
            fault);  // a letter in some encodings only
  for (const auto* other : {"MaxAmplitude>20", "Amplitude_2>20", "Amplitudes", "amplitude>20"}) {
    EXPECT_EQ(faultOfAmplitude(other, -99.5), "") << other;
  }
}

TEST(InputParameter, RefusesCellsThatAreTooSmallOrNoNumber) {
  for (const double size : {0.01, 0.00999, -1.0, notANumber}) {
    InputParameter parameter;
    parameter.MinCellSize = size;
    EXPECT_EQ(parameter.check(), size == 0.01 ? "" : "InputParameter::check: MinCellSize too low");
  }
}

TEST(InputParameter, NamesTheFirstRuleBroken) {
  InputParameter parameter;  // broken in every way, mended one by one
  parameter.RootPath.clear();
  parameter.CellSizeWeights.pop_back();
  parameter.CellSizeScaler.pop_back();
  parameter.MinCellSize = 0;
  parameter.SelectionStr = "Amplitude";
  parameter.Amplitude[0] = 7;
  EXPECT_THAT(parameter.check(), HasSubstr("Use only one parameter."));
  parameter.SelectionStr.clear();
  EXPECT_THAT(parameter.check(), HasSubstr("MinCellSize"));
  parameter.MinCellSize = 1;
  EXPECT_EQ(parameter.check(),
            "InputParameter::check: Size of CellSizeScaler is not 5 (4). Check enum "
            "GROUND=0,ROOF,SLOPE,BED,FLAT");
  parameter.CellSizeScaler.push_back(7);
  EXPECT_EQ(parameter.check(),
            "InputParameter::check: Size of CellSizeScaler and CellSizeWeights are different");
  EXPECT_THAT(parameter.CellSize, IsEmpty());
  parameter.CellSizeWeights.push_back(1);
  EXPECT_EQ(parameter.check(),
            "InputParameter::check: rooth path is empty. At least '.' is needed");
  EXPECT_THAT(parameter.CellSize, ElementsAre(1, 5, 10, 50, 7));
  parameter.RootPath = ".";
  EXPECT_EQ(parameter.check(), "");
}

TEST(InputParameter, CellSizesBeforeTheCheckAreRefusedByName) {
  const InputParameter parameter;
  EXPECT_THAT([&] { parameter.getGroundTruthSize(); },
              ThrowsMessage<std::out_of_range>(StartsWith("InputParameter::getGroundTruthSize: ")));
  EXPECT_THROW(parameter.getFlat(), std::out_of_range);
}

TEST(InputParameter, SpeaksOfEverySetting) {
  InputParameter parameter;
  parameter.CellSizeScaler = {1, 2.5, 1e300, 1e-7, 3};
  parameter.CellSizeWeights = {1, 0.1, 0.30000000000000004, 0, -0.5};
  parameter.Amplitude[4] = notANumber;
  parameter.SelectionStr = "Class=2";
  parameter.Trajectories = "t1.kx,t2.kx";
  parameter.GroundTruth = "gt.kx";
  parameter.StripFiles = std::make_shared<Plome::StringList>();
  parameter.StripFiles->add("a.kx");
  parameter.StripFiles->add("b.kx");
  parameter.RootPath = "out folder/run";
  parameter.DefaultInterval = {86400, 12.5, 123456789.25};
  parameter.GridName = "Grid";
  parameter.SplitBackStrips = true;
  parameter.LockedStrips = {12, -1, 3};
  parameter.OverwriteToLinear = {{7, 30}, {2, 0.5}};
  parameter.OverwriteToSpline = {{4, 2000000}};
  ASSERT_EQ(parameter.check(), "");
  EXPECT_EQ(parameter.speak(),
            "################\n"
            "Input Flags:\n"
            "CellSize (ground-truth,roof,slope,bed and flat): 0.1,0.25,1e+299,1e-08,"
            "0.30000000000000004 \n"
            "Weights  (ground-truth,roof,slope,bed and flat): 1,0.1,0.30000000000000004,0,-0.5 \n"
            "Amplitude  (ground-truth,roof,slope,bed and flat): -100,-100,-100,-100,nan \n"
            "MinCellSize : 0.1 \n"
            "selection string: Class=2 \n"
            "Trajectorie(s): t1.kx,t2.kx \n"
            "Ground-Truth: gt.kx \n"
            "Number of flight strips: 2 \n"
            "Number of iterations: 30 \n"
            "rooth folder: out folder/run \n"
            "type/model: LINEAR \n"
            "Default interval: (bias,linear,spline)86400,12.5,123456789.25 \n"
            "Grid name: Grid \n"
            "Search radius: 3 \n"
            "Threshold max angle [\xc2\xb0] : 5 \n"
            "SplitBackStrips?: Yes \n"
            "Options: +rasterize +correspondences +optimization +adjustment \n"
            "Locked strip(s): -1 3 12 \n"
            "Overwrite strip id: 2 to linear; interval: 0.5 \n"
            "Overwrite strip id: 7 to linear; interval: 30 \n"
            "Overwrite strip id: 4 to spline; interval: 2000000 \n"
            "################");
}

TEST(InputParameter, SpeaksAlsoWithListsThatAreEmptyOrTooShort) {
  InputParameter parameter;  // not checked: no cell sizes
  parameter.Amplitude.resize(2);
  parameter.DefaultInterval.clear();
  const std::string text = parameter.speak();
  EXPECT_THAT(text, HasSubstr("\nCellSize (ground-truth,roof,slope,bed and flat):  \n"));
  EXPECT_THAT(text, HasSubstr("bed and flat): -100,-100 \n"));
  EXPECT_THAT(text, HasSubstr("\nDefault interval: (bias,linear,spline) \n"));
  EXPECT_THAT(text, HasSubstr("\nNumber of flight strips:  0!  \n"));
  EXPECT_THAT(text, HasSubstr("\nSplitBackStrips?: No \nOptions: +rasterize +correspondences "
                              "+optimization +adjustment \n################"));
  parameter.StripFiles = std::make_shared<Plome::StringList>();
  EXPECT_THAT(parameter.speak(), HasSubstr("\nNumber of flight strips: 0 \n"));
}

TEST(InputParameter, CopiesAreSoundWithoutTheirOriginal) {
  auto original = std::make_unique<InputParameter>();
  InputParameter copy = *original;
  EXPECT_EQ(copy.Storage, original->Storage);
  original.reset();
  ASSERT_NE(copy.Storage, nullptr);
  EXPECT_EQ(copy.StorageInterface, copy.Storage);
  copy.Storage.reset();
  EXPECT_EQ(copy.StorageInterface.use_count(), 1);  // kept alive, never dangling
  EXPECT_EQ(copy.check(), "");
}

TEST(InputParameterWrite, ReplacesOrAppendsExactlyAndEchoesOnRequest) {
  const TemporaryFolder folder;
  const InputParameter parameter;
  ConsoleLines console;
  const auto file = folder / "out.txt";
  parameter.write(file, "a longer first text", false, false);
  parameter.write(file, std::string("one\r\n\0two", 9), true, false);
  parameter.write(file, "+", false, true);
  EXPECT_EQ(contentOf(file), std::string("one\r\n\0two+", 10));
  EXPECT_THAT(console, ElementsAre(std::string("one\r\n\0two", 9)));
  parameter.write(folder / "new.txt", "appended to nothing", false, true);
  EXPECT_EQ(contentOf(folder / "new.txt"), "appended to nothing");
}

TEST(InputParameterWrite, SaysWhatItCouldNotOpenOrWrite) {
  const TemporaryFolder folder;
  const InputParameter parameter;
  ConsoleLines console;
  const auto path = folder / "no/such.txt";
  EXPECT_THAT([&] { parameter.write(path, "x", true, false); },
              ThrowsMessage<std::ios_base::failure>(
                  StartsWith("InputParameter::write: Failed to open the file:" + path.string())));
  EXPECT_THAT(console, IsEmpty());
  parameter.write("/dev/full", "x", false, false);
  EXPECT_THAT(console, ElementsAre("InputParameter::write: Failed to write the file:/dev/full"));
}
