// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "adjustment/optimization/ParameterBlocks.h"
#include "adjustment/optimization/ProblemSolve.h"
#include "tests/adjustment/optimization/OverlappingFlight.h"
#include "tests/support/ConsoleLines.h"

namespace {

constexpr double degree = std::numbers::pi / 180.0;

/// Loose enough for the errors of the flight.
Velorn::APrioriKnowledge loose() {
  const auto thrice = [](double value) { return std::array{value, value, value}; };
  Velorn::APrioriKnowledge known;
  known.position = thrice(0.1);
  known.attitude = thrice(0.05 * degree);
  known.offsets = {0.2, 0.02 * degree, 0.02 * degree};
  known.scales = thrice(1e-4);
  known.misalignment = thrice(0.5 * degree);
  known.leverArm = thrice(0.02);
  known.pairs = known.control = 0.1;
  return known;
}

struct Known {
  std::vector<double> unknowns;
  Velorn::AdjustmentResult result;
};

Known solve(const OverlappingFlight& flight, const Velorn::APrioriKnowledge& knowledge,
            Velorn::Evaluation evaluation = Velorn::Evaluation::Condensed) {
  auto parameters = flight.parameters();
  auto strips = parameters.getStripSections();
  for (auto& strip : strips) {
    strip.minTime = OverlappingFlight::startOf(strip.stripIndex);
    strip.maxTime = strip.minTime + OverlappingFlight::seconds;
  }
  const std::size_t classes = flight.configuration.CellSizeWeights.size();
  Velorn::Knowledge rows{flightPriors(knowledge, strips), {knowledge, classes}};
  Velorn::AdjustmentSettings settings;
  settings.evaluation = evaluation;
  const std::ptrdiff_t globals = 24 * std::ptrdiff_t{parameters.numberOfSectionsForAllStrips()};
  settings.sums = {{{globals, 1.0}}};  // the range's offset
  const std::vector<unsigned> few(parameters.numberOfSectionsForAllStrips(), 1);
  const Velorn::ProblemInputs inputs{
      parameters, flight.trajectory, flight.configuration, settings, few, &rows};
  Velorn::ProblemSolve solve(inputs);
  EXPECT_EQ(solve.weighingAnew(rows), "");
  EXPECT_TRUE(solve.end().isConvergence()) << solve.end().message;
  Known known;
  solve.addPrecision(known.result);
  known.result.deviations = rows.model.deviations();
  const auto all = unknownsOf(parameters);
  known.unknowns.assign(all.begin(), all.end());
  return known;
}

/// The last section of the first strip sees next to nothing.
FlightPlan planOfKnown() {
  return {.sections = {{0, 0, "LINEAR"}, {0, 19, "LINEAR"}, {1, 0, "LINEAR"}, {2, 0, "LINEAR"}}};
}

}  // namespace

TEST(Knowledge, GivesTheSameResultHoweverResidualsAreEvaluated) {
  const OverlappingFlight flight(planOfKnown());
  const Known engine = solve(flight, loose()),
              reference = solve(flight, loose(), Velorn::Evaluation::Reference);
  for (std::size_t i = 0; i < engine.unknowns.size(); ++i) {
    EXPECT_NEAR(engine.unknowns[i], reference.unknowns[i], 1e-5) << i;
  }
  const auto &a = engine.result.deviations, &b = reference.result.deviations;
  EXPECT_EQ(a.rounds, b.rounds);
  for (std::size_t k = 0; k < a.classes.size(); ++k) {
    EXPECT_NEAR(a.classes[k].sigma, b.classes[k].sigma, 1e-5 * b.classes[k].sigma) << k;
  }
}

TEST(Knowledge, TellsTheNoiseOfEveryClassWhateverWasExpected) {
  // Ranges scatter by 6 cm, which most normals show nearly in full.
  const OverlappingFlight flight(planOfKnown());
  auto wrong = loose();
  wrong.pairs = 0.01;
  wrong.control = 0.5;
  for (const auto& known : {loose(), wrong}) {
    const auto found = solve(flight, known).result.deviations;
    EXPECT_TRUE(found.isSettled);
    EXPECT_NEAR(found.classes[0].sigma, 0.055, 0.006);
    for (std::size_t k = 1; k < found.classes.size(); ++k) {
      EXPECT_TRUE(found.classes[k].isEstimated);
      EXPECT_NEAR(found.classes[k].sigma, 0.055 * std::sqrt(2.0), 0.012) << k;
    }
  }
}

TEST(Knowledge, DecidesWhereItIsStrongAndIsTold) {
  const OverlappingFlight flight(planOfKnown());
  const Known free = solve(flight, loose());
  auto strict = loose();
  strict.leverArm = {1e-6, 1e-6, 1e-6};
  strict.deliveredLeverArm = {0.5, -0.25, 0.125};
  const Known held = solve(flight, strict);
  const std::size_t last = held.unknowns.size() - 3;
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(held.unknowns[last + i], strict.deliveredLeverArm[i], 1e-4);
    EXPECT_NEAR(held.result.globals[9 + i].priorShare, 1.0, 1e-3);
  }
  // The ranges are 15 cm too long, by which they are corrected.
  EXPECT_NEAR(free.unknowns[free.unknowns.size() - 12], -0.15, 4.0 * free.result.sums[0]);
  EXPECT_LT(free.result.globals[0].priorShare, 0.5);
  EXPECT_NEAR(free.result.sums[0], free.result.globals[0].sigma, 1e-9);
  const double misalignment = free.result.globals[8].sigma;
  EXPECT_GT(misalignment, 1e-7);
  EXPECT_LT(misalignment, 0.1 * degree);
  // The section that sees nothing goes on where the one before ends.
  for (std::size_t j = 0; j < 3; ++j) {
    const double* const c = free.unknowns.data() + 4 * j;
    EXPECT_NEAR(c[24], c[0] + 19.0 * c[1], 2e-3) << j;
  }
}
