// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a user may choose about an adjustment, on simulated flights: models of the sections, locked
// strips, unknowns held fixed, no ground truth. Judged by where the points lie and by how well the
// pairs fit, for single unknowns are only partly separable.
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <ostream>
#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "adjustment/georef/TrajectoryCorrection.h"
#include "flight/simulation/Options.h"
#include "tests/flights/AdjustedFlight.h"

using namespace Velorn::Flights;

namespace fs = std::filesystem;

namespace {

/// The 24 unknowns of a section.
std::vector<double> unknownsOf(const Velorn::SolverParameters& parameters, unsigned int section) {
  std::vector<double> values;
  for (unsigned int k = 0; k < 12; ++k) {
    values.push_back(parameters.getTrajectoryPositionCorrection(section, k));
  }
  for (unsigned int k = 0; k < 12; ++k) {
    values.push_back(parameters.getTrajectoryAngleCorrection(section, k));
  }
  return values;
}

bool isPlusZero(double value) {
  return value == 0.0 && !std::signbit(value);
}

bool isUntouched(const Velorn::SolverParameters& parameters, unsigned int section) {
  return std::ranges::all_of(unknownsOf(parameters, section), isPlusZero);
}

/// The first letters of the sections' types, strip by strip: "LSL BB".
std::string typesOf(const Velorn::SolverParameters& parameters) {
  std::string types;
  for (const auto& strip : parameters.getStripSections()) {
    if (!types.empty()) types += ' ';
    for (const auto& [start, section] : strip.sections) {
      types += Velorn::SecTypeToString(section.type)[0];
    }
  }
  return types;
}

/// Coefficients that the type has moved, all the others are +0.0.
void expectOnlyUsedCoefficients(const Velorn::SolverParameters& parameters) {
  for (const auto& strip : parameters.getStripSections()) {
    for (const auto& [start, section] : strip.sections) {
      const auto used = Velorn::usedPowers(section.type);
      const auto values = unknownsOf(parameters, section.sectionID);
      for (int k = 0; k < 24; ++k) {
        const bool isUsed = k % 4 < (k < 12 ? used.position : used.angles);
        EXPECT_NE(isPlusZero(values[static_cast<std::size_t>(k)]), isUsed)
            << "section " << section.sectionID << ", unknown " << k;
      }
    }
  }
}

/// Adjusts the one flight of all these tests, each run in an output folder of its own.
class VariantsOfAnAdjustment : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    flightFolder = std::make_unique<TemporaryFolder>();
    SimulationSettings flight;
    flight.points = 30'000;
    flight.strips = 2;
    flight.length = 800;
    flight.correspondences = 3'000;
    make(flightFolder->path(), flight);
  }
  static void TearDownTestSuite() { flightFolder.reset(); }

  /// Pairs differ by the noise of two ranges along the beam, so by less where it hits at a slant;
  /// that of the angles adds little.
  static void expectNoiseAlone(const Velorn::PhaseFigures& figures) {
    const double noise = std::numbers::sqrt2 * SimulationSettings().rangeNoise;
    EXPECT_GT(figures.pairs.moments.rms, 0.7 * noise);
    EXPECT_LT(figures.pairs.moments.rms, noise);
  }

  VariantsOfAnAdjustment() : input(inputOf(flightFolder->path())) {
    input.configuration.RootPath = out.path();
    input.configuration.CorrespondencePath = input.correspondences;
  }

  /// The correspondences but those of the files that `isLeftOut` tells.
  void leaveOut(const std::function<bool(const std::string&)>& isLeftOut) {
    const auto fewer = out / "fewer";
    fs::create_directories(fewer);
    for (const auto& entry : fs::directory_iterator(input.correspondences)) {
      if (!isLeftOut(entry.path().filename().string())) fs::copy(entry.path(), fewer);
    }
    input.configuration.CorrespondencePath = fewer;
  }

  static fs::path flight() { return flightFolder->path(); }

  static std::unique_ptr<TemporaryFolder> flightFolder;
  TemporaryFolder out;
  AdjustmentInput input;
};

std::unique_ptr<TemporaryFolder> VariantsOfAnAdjustment::flightFolder;

struct Variant {
  const char *name, *model;
  std::vector<double> intervals;  ///< of the models, or none: a strip is one section
  std::string types;              ///< of the sections
  double horizontal = 0.06;       ///< error of the points, RMS at most [m]
  bool splits = false;
  std::map<int, double> toLinear = {}, toSpline = {};
};

void PrintTo(const Variant& variant, std::ostream* out) {
  *out << variant.name;
}

class ModelOfSections : public VariantsOfAnAdjustment,
                        public testing::WithParamInterface<Variant> {};

/// The more a model may bend, the less ground truth of this size holds the block's scale. The last
/// three have sections of all types.
const Variant variants[] = {
    {"Bias", "BIAS", {}, "B B B B"},
    {"ShortBias", "BIAS", {8, 8, 8}, "BB BB BB BB"},
    {"Linear", "LINEAR", {}, "L L L L"},
    {"ShortLinear", "LINEAR", {8, 8, 8}, "LL LL LL LL"},
    {"WholeSplineIsLinear", "SPLINE", {}, "L L L L"},
    {"ShortSpline", "SPLINE", {6, 6, 6}, "LSL LSL LL LL", 0.1},
    {"Hybrid", "HYBRID", {}, "H H H H"},
    {"ShortHybrid", "HYBRID", {6, 8, 6}, "HH HH HH HH"},
    {"SplitBackStrips", "BIAS", {86400, 86400, 6}, "B LSL B LL", 0.06, true},
    {"OverwrittenStrips",
     "BIAS",
     {},
     "L LSL B LL",
     0.1,
     false,
     {{0, 86400.0}, {3, 8.0}},
     {{1, 6.0}}},
};

INSTANTIATE_TEST_SUITE_P(Each, ModelOfSections, testing::ValuesIn(variants),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace

TEST_P(ModelOfSections, FitsToTheNoiseAndMovesOnlyTheCoefficientsThatItHas) {
  const Variant& variant = GetParam();
  auto& configuration = input.configuration;
  configuration.TypeModel = variant.model;
  if (!variant.intervals.empty()) configuration.DefaultInterval = variant.intervals;
  configuration.SplitBackStrips = variant.splits;
  configuration.OverwriteToLinear = variant.toLinear;
  configuration.OverwriteToSpline = variant.toSpline;
  if (!variant.toSpline.empty()) configuration.NumberOfIterations = 100;
  Library library(input);
  EXPECT_EQ(typesOf(library.parameters), variant.types);
  EXPECT_EQ(library.run(), "");
  const auto& result = library.optimization.result();
  EXPECT_EQ(result.end.termination, "CONVERGENCE");
  EXPECT_GT(result.before.pairs.moments.rms, 0.1);
  expectNoiseAlone(result.after);
  expectOnlyUsedCoefficients(library.parameters);
  const auto error = library.worldError(flight());
  EXPECT_LT(error.horizontal, variant.horizontal);
  EXPECT_LT(error.vertical, 0.03);  // 2 cm are the noise of the points themselves
}

TEST_F(VariantsOfAnAdjustment, LockedStripsStayWhereTheyStartAndTheOthersMove) {
  input.configuration.LockedStrips = {1, 3};
  input.configuration.DefaultInterval = {8, 8, 8};
  Library library(input);
  EXPECT_EQ(library.run(), "");
  const auto& result = library.optimization.result();
  EXPECT_EQ(result.end.termination, "CONVERGENCE");
  ASSERT_EQ(result.sections.size(), 8u);
  for (const auto& state : result.sections) {
    EXPECT_EQ(state.isLocked, state.strip == 1 || state.strip == 3) << state.section;
    EXPECT_FALSE(state.isLow) << state.section;
    EXPECT_EQ(isUntouched(library.parameters, state.section), state.isLocked) << state.section;
  }
  expectNoiseAlone(result.after);
  const auto error = library.worldError(flight());
  EXPECT_LT(error.horizontal, 0.06);
  EXPECT_LT(error.vertical, 0.03);
}

TEST_F(VariantsOfAnAdjustment, WeakSectionsStayWhereTheyStartAndAreTold) {
  input.configuration.TypeModel = "BIAS";
  input.configuration.DefaultInterval = {1, 1, 1};
  input.configuration.NumberOfIterations = 100;
  Library library(input);
  EXPECT_EQ(library.run(), "");
  const auto& result = library.optimization.result();
  EXPECT_EQ(result.end.termination, "CONVERGENCE");
  std::set<bool> kinds;
  for (const auto& state : result.sections) {
    EXPECT_EQ(state.isLow, state.correspondences < 100) << state.section;
    EXPECT_EQ(isUntouched(library.parameters, state.section), state.isLow) << state.section;
    kinds.insert(state.isLow);
  }
  EXPECT_EQ(kinds.size(), 2u) << "there are weak sections and others";
  EXPECT_TRUE(fs::exists(out / "01_status" / "03_Warning_LowCorrespondencesPersection.txt"));
}

TEST_F(VariantsOfAnAdjustment, AStripWithoutCorrespondencesKeepsItsTrajectoryAndTheOthersFit) {
  leaveOut([](const std::string& name) {
    return std::regex_match(name, std::regex("c(3_.*|[0-9]+_3)(_GroundTruth)?\\.kx"));
  });
  Library library(input);
  EXPECT_EQ(library.run(), "");
  const auto& result = library.optimization.result();
  EXPECT_EQ(result.end.termination, "CONVERGENCE");
  ASSERT_EQ(result.sections.size(), 4u);
  for (const auto& state : result.sections) {
    EXPECT_EQ(state.correspondences == 0, state.strip == 3);
    EXPECT_EQ(state.isLow, state.strip == 3);
    EXPECT_EQ(isUntouched(library.parameters, state.section), state.strip == 3);
  }
  expectNoiseAlone(result.after);
}

TEST_F(VariantsOfAnAdjustment, UnknownsNotEstimatedStayWhereTheyStart) {
  using Parameters = Velorn::SolverParameters;
  using Settings = Velorn::AdjustmentSettings;
  struct Block {
    const char* name;
    bool Settings::*isEstimated;
    double (Parameters::*value)(unsigned int) const;
  };
  const Block blocks[] = {
      {"offsets", &Settings::estimateOffsets, &Parameters::getRangeAngleOffset},
      {"scales", &Settings::estimateScales, &Parameters::getRangeAngleScale},
      {"misalignment", &Settings::estimateMisalignment, &Parameters::getMisalignment},
      {"lever arm", &Settings::estimateLeverArm, &Parameters::getLeverArm}};
  const auto valuesOf = [](const Block& block, const Parameters& parameters) {
    std::vector<double> values;
    for (unsigned int k = 0; k < 3; ++k) values.push_back((parameters.*block.value)(k));
    return values;
  };
  for (const auto& held : blocks) {
    SCOPED_TRACE(held.name);
    Library library(input);
    const auto start = library.parameters;
    library.optimization.settings.*held.isEstimated = false;
    EXPECT_EQ(library.run(), "");
    const auto& result = library.optimization.result();
    EXPECT_EQ(result.end.termination, "CONVERGENCE");
    for (const auto& block : blocks) {
      const bool isHeld = valuesOf(block, library.parameters) == valuesOf(block, start);
      EXPECT_EQ(isHeld, &block == &held) << block.name;
    }
    expectNoiseAlone(result.after);
    const auto error = library.worldError(flight());
    EXPECT_LT(error.horizontal, 0.06);
    EXPECT_LT(error.vertical, 0.03);
  }
}

TEST_F(VariantsOfAnAdjustment, WithoutGroundTruthThePairsFitButOnlyWhenThatIsAskedFor) {
  leaveOut([](const std::string& name) { return name.find("_GroundTruth") != std::string::npos; });
  Library library(input);
  EXPECT_NE(library.run(), "");
  EXPECT_FALSE(library.optimization.result().end.hasRun());
  for (unsigned int section = 0; section < 4; ++section) {
    EXPECT_TRUE(isUntouched(library.parameters, section));
  }

  library.optimization.settings.fewestGroundTruth = 0;
  EXPECT_EQ(library.run(), "");
  const auto& result = library.optimization.result();
  EXPECT_EQ(result.end.termination, "CONVERGENCE");
  EXPECT_EQ(result.correspondencesPerClass.at(0), 0u);
  EXPECT_EQ(result.after.groundTruth.moments.count, 0u);
  expectNoiseAlone(result.after);
}

namespace {

/// A flight without noise with one kind of errors.
class OneKindOfErrors : public testing::TestWithParam<std::string_view> {
 protected:
  OneKindOfErrors() {
    SimulationSettings flight;
    flight.points = 20'000;
    flight.strips = 2;
    flight.length = 800;
    flight.rangeNoise = flight.angleNoise = 0;
    flight.slowErrors = false;
    flight.onlyErrors = GetParam();
    flight.correspondences = 1'500;
    make(folder.path(), flight);
  }

  AdjustmentInput input() const {
    auto input = inputOf(folder.path());
    input.configuration.NumberOfIterations = 10;
    return input;
  }

  /// Runs; the solver may end for want of steps where rounding alone is left.
  void expectFound(Library& library) const {
    const auto start = library.worldError(folder.path());
    EXPECT_GT(std::hypot(start.horizontal, start.vertical), 0.01);
    library.run();
    const auto error = library.worldError(folder.path());
    EXPECT_LT(error.horizontal, 1e-4);
    EXPECT_LT(error.vertical, 1e-4);
  }

  TemporaryFolder folder;
};

std::string nameOf(const testing::TestParamInfo<std::string_view>& info) {
  std::string name(info.param);
  std::erase(name, '-');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Each, OneKindOfErrors, testing::ValuesIn(Simulation::errorKinds), nameOf);

}  // namespace

TEST_P(OneKindOfErrors, IsFoundAgainAmongAllUnknownsAndByThoseOfItsSideAlone) {
  Library all(input());
  expectFound(all);

  const bool isOfTrajectory = GetParam() == "position" || GetParam() == "attitude";
  auto locked = input();
  if (!isOfTrajectory) locked.configuration.LockedStrips = {0, 1, 2, 3};
  Library library(locked);
  if (isOfTrajectory) {
    auto& settings = library.optimization.settings;
    settings.estimateOffsets = settings.estimateScales = false;
    settings.estimateMisalignment = settings.estimateLeverArm = false;
  }
  expectFound(library);
  for (unsigned int section = 0; section < 4; ++section) {
    EXPECT_EQ(isUntouched(library.parameters, section), !isOfTrajectory) << section;
  }
}
