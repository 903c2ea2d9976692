// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/adjustment/model/ParameterTexts.h"
#include "tests/adjustment/model/Strips.h"

using testing::ElementsAre, testing::HasSubstr, testing::IsEmpty, testing::ThrowsMessage;
using Velorn::SolverParameters;

namespace {

/// A strip of two sections whose unknowns are 1, 2, ... 60.
class Parameters : public Flight {
 protected:
  Parameters() {
    addStrip("a.kx", {1000.0, 1200.0});
    configuration.DefaultInterval[1] = 100.0;
    parameters = model();
    EXPECT_EQ(divide(parameters, "LINEAR"), "");
    std::vector<double> values(60);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i + 1);
    restore(values);
  }

  void restore(const std::vector<double>& values) {
    writeContent(folder / "ids", "id: 0 file: a.kx type: strip\n");
    writeContent(folder / "unknowns", parameterText(values));
    ASSERT_EQ(parameters.restore(folder / "00_parameter/Sections.txt", folder / "unknowns",
                                 folder / "ids"),
              "");
  }

  std::string parameterFile() const { return contentOf(folder / "00_parameter/Parameter.txt"); }

  SolverParameters parameters;
};

}  // namespace

TEST_F(Parameters, LieSectionBySectionBeforeTheGlobalOnes) {
  EXPECT_EQ(parameters.getNumberOfParameters(), 60u);
  EXPECT_EQ(parameters.getTrajectoryPositionCorrection(0, 0), 1.0);
  EXPECT_EQ(parameters.getTrajectoryPositionCorrection(1, 11), 36.0);
  EXPECT_EQ(parameters.getTrajectoryAngleCorrection(0, 11), 24.0);
  EXPECT_EQ(parameters.getTrajectoryAngleCorrection(1, 0), 37.0);
  EXPECT_EQ(parameters.getRangeAngleOffset(0), 49.0);
  EXPECT_EQ(parameters.getRangeAngleScale(0), 52.0);
  EXPECT_EQ(parameters.getMisalignment(0), 55.0);
  EXPECT_EQ(parameters.getLeverArm(2), 60.0);
}

TEST_F(Parameters, AreSetOneGroupAtATime) {
  parameters.setMisalignment(180, 90, 0);
  EXPECT_EQ(parameters.getMisalignment(0), std::numbers::pi);
  EXPECT_EQ(parameters.getMisalignment(1), std::numbers::pi / 2);
  EXPECT_EQ(parameters.getMisalignment(2), 0.0);
  parameters.setLeverArm(-1.5, 1e-300, 7);
  unsigned second = 1;
  parameters.setLocalParmetersToZero(second);
  parameters.writeParameterFile(".txt");
  std::vector<double> expected(60);
  for (std::size_t i = 0; i < 24; ++i) expected[i] = static_cast<double>(i + 1);
  for (std::size_t i = 48; i < 54; ++i) expected[i] = static_cast<double>(i + 1);
  expected[54] = 3.141592653589793;
  expected[55] = 1.570796326794897;  // rounded to 15 decimals
  expected[57] = -1.5;
  expected[59] = 7;
  EXPECT_EQ(valuesOf(parameterFile()), expected);
}

TEST_F(Parameters, BeyondTheVectorThrow) {
  const unsigned none = Velorn::Section().sectionID;
  EXPECT_THROW(parameters.getTrajectoryPositionCorrection(2, 12), std::out_of_range);
  EXPECT_THROW(parameters.getTrajectoryAngleCorrection(2, 0), std::out_of_range);
  EXPECT_THROW(parameters.getTrajectoryPositionCorrection(none, 0), std::out_of_range);
  EXPECT_THROW(parameters.getLeverArm(3), std::out_of_range);
  EXPECT_THROW(parameters.getRangeAngleOffset(none), std::out_of_range);
  for (unsigned section : {2u, none}) {  // a third section would reach over the global ones
    EXPECT_THAT([&] { parameters.setLocalParmetersToZero(section); },
                ThrowsMessage<std::out_of_range>(HasSubstr("::setLocalParmetersToZero: ")));
  }
  EXPECT_EQ(parameters.getRangeAngleOffset(0), 49.0);
}

TEST(ParametersOfNoSection, AreZeroOrThrow) {
  SolverParameters empty;
  EXPECT_EQ(empty.getNumberOfParameters(), 0u);
  EXPECT_EQ(empty.getLeverArm(0), 0.0);
  EXPECT_EQ(empty.getMisalignment(5), 0.0);
  EXPECT_THROW(empty.getRangeAngleOffset(0), std::out_of_range);
  EXPECT_THROW(empty.getRangeAngleOffset(12), std::out_of_range);
  EXPECT_THROW(empty.getRangeAngleScale(0), std::out_of_range);
  EXPECT_THROW(empty.getTrajectoryPositionCorrection(0, 0), std::out_of_range);
  EXPECT_THAT([&] { empty.setLeverArm(1, 2, 3); },
              ThrowsMessage<std::out_of_range>(HasSubstr("SolverParameters::setLeverArm: ")));
  EXPECT_THAT([&] { empty.setLeverarmAndMisalignment({}, {}); },
              ThrowsMessage<std::out_of_range>(HasSubstr("SolverParameters::setLeverArm: ")));
  EXPECT_THAT([&] { empty.setMisalignment(1, 2, 3); },
              ThrowsMessage<std::out_of_range>(HasSubstr("SolverParameters::setMisalignment: ")));
}

TEST_F(Parameters, AreWrittenWithFifteenDecimalsALinePerSection) {
  const auto unknowns = randomUnknowns(2);
  restore(unknowns);
  parameters.writeParameterFile(".txt");
  const std::string file = parameterFile();
  EXPECT_EQ(file, parameterText(unknowns));
  EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), 5);
  EXPECT_TRUE(
      file.starts_with("#Number of local parameters: 48\n"
                       "#Number of global parameters: 12 (see last line)\n\n"));
  EXPECT_TRUE(file.ends_with(" "));
  const auto values = valuesOf(file);
  ASSERT_EQ(values.size(), unknowns.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_NEAR(values[i], unknowns[i], 6e-16 + 1.2e-16 * std::abs(unknowns[i]))
        << i;  // half a decimal
  }
}

TEST_F(Parameters, AreWrittenToNoFileWithoutANameOrAFolder) {
  parameters.writeParameterFile("");
  parameters.writeSectionFile("");
  parameters.writeParameterFile("/no/folder");
  parameters.writeSectionFile("/no/folder");
  EXPECT_THAT(console, IsEmpty());
  writeContent(folder / "00_parameter/Parameter.txt", "kept");
  model().writeParameterFile(".txt");
  EXPECT_EQ(parameterFile(), "kept");
  EXPECT_THAT(console, ElementsAre(HasSubstr("no parameters for the file:")));
}
