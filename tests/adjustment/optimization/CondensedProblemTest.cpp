// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <ceres/solver.h>
#include <gmock/gmock.h>

#include "adjustment/optimization/CondensedProblem.h"
#include "adjustment/optimization/InnerOrdering.h"
#include "adjustment/optimization/SolverOptions.h"
#include "tests/adjustment/optimization/OverlappingFlight.h"
#include "tests/support/ConsoleLines.h"

namespace {

struct Solved {
  std::vector<double> unknowns;
  ceres::Solver::Summary summary;
};

/// What may differ from the usual run.
struct Variant {
  bool hasInnerIterations = true;
  std::set<int> lockedStrips{};
  Velorn::AdjustmentSettings settings{};
  unsigned weakSections = 0;  // of the last ones
};

std::vector<double> unknownsOf(const Velorn::SolverParameters& parameters) {
  std::vector<double> all;
  for (unsigned section = 0; section < parameters.numberOfSectionsForAllStrips(); ++section) {
    for (unsigned k = 0; k < 12; ++k) {
      all.push_back(parameters.getTrajectoryPositionCorrection(section, k));
    }
    for (unsigned k = 0; k < 12; ++k) {
      all.push_back(parameters.getTrajectoryAngleCorrection(section, k));
    }
  }
  for (unsigned k = 0; k < 3; ++k) all.push_back(parameters.getRangeAngleOffset(k));
  for (unsigned k = 0; k < 3; ++k) all.push_back(parameters.getRangeAngleScale(k));
  for (unsigned k = 0; k < 3; ++k) all.push_back(parameters.getMisalignment(k));
  for (unsigned k = 0; k < 3; ++k) all.push_back(parameters.getLeverArm(k));
  return all;
}

constexpr int reference = 0;  // in place of a number of threads

/// @param threads  of the engine
Solved solve(const OverlappingFlight& flight, const Variant& variant, int threads) {
  auto parameters = flight.parameters();
  auto configuration = flight.configuration;
  configuration.LockedStrips = variant.lockedStrips;
  std::vector<unsigned> counts(parameters.numberOfSectionsForAllStrips(), 1000);
  std::fill(counts.end() - variant.weakSections, counts.end(), 50);
  ceres::Problem problem;
  std::size_t groundTruth = 0;
  const Velorn::ProblemInputs inputs{parameters, flight.trajectory, configuration, variant.settings,
                                     counts};
  EXPECT_EQ(threads == reference ? fill(problem, inputs, groundTruth)
                                 : fillCondensed(problem, inputs, threads, groundTruth),
            "");
  EXPECT_GT(groundTruth, 0U);
  auto options = Velorn::solverOptions(configuration);
  options.num_threads = 1;
  options.use_inner_iterations = variant.hasInnerIterations;
  options.inner_iteration_ordering = Velorn::innerOrderingOf(problem);
  Solved solved;
  ceres::Solve(options, &problem, &solved.summary);
  if (threads != reference) Velorn::putTrueCounts(problem, threads, solved.summary);
  solved.unknowns = unknownsOf(parameters);
  return solved;
}

/// What two ways to one result may differ in. Every world coordinate is rounded to some 4e-9 m,
/// and a residual of 6 cm with it: the cost of n of them is known to some 7e-8 / sqrt(n) of it.
/// Unknowns that are weakly determined differ by a multiple of that.
struct Tolerance {
  double cost = 2e-8;     // in shares, of 600 residuals
  double unknown = 1e-7;  // [m], [rad] and their rates
};

void expectSamePath(const OverlappingFlight& flight, const Variant& variant,
                    const Tolerance& tolerance = {}) {
  const Solved expected = solve(flight, variant, reference), found = solve(flight, variant, 1);
  const auto &a = expected.summary, &b = found.summary;
  EXPECT_EQ(b.termination_type, a.termination_type) << a.message << "\n" << b.message;
  EXPECT_GT(a.num_successful_steps, 1);
  EXPECT_LT(a.final_cost, 0.9 * a.initial_cost);
  EXPECT_EQ(b.num_successful_steps, a.num_successful_steps);
  EXPECT_EQ(b.num_unsuccessful_steps, a.num_unsuccessful_steps);
  EXPECT_EQ(b.num_inner_iteration_steps, a.num_inner_iteration_steps);
  EXPECT_EQ(b.num_residuals, a.num_residuals);
  EXPECT_EQ(b.num_residual_blocks, a.num_residual_blocks);
  EXPECT_EQ(b.num_residuals_reduced, a.num_residuals_reduced);
  EXPECT_EQ(b.num_residual_blocks_reduced, a.num_residual_blocks_reduced);
  EXPECT_EQ(b.num_parameters_reduced, a.num_parameters_reduced);
  EXPECT_EQ(b.inner_iteration_ordering_used, a.inner_iteration_ordering_used);
  ASSERT_EQ(b.iterations.size(), a.iterations.size());
  for (std::size_t i = 0; i < a.iterations.size(); ++i) {
    EXPECT_NEAR(b.iterations[i].cost, a.iterations[i].cost, tolerance.cost * a.iterations[i].cost)
        << i;
  }
  for (std::size_t i = 0; i < expected.unknowns.size(); ++i) {
    EXPECT_NEAR(found.unknowns[i], expected.unknowns[i], tolerance.unknown) << "unknown " << i;
    EXPECT_EQ(found.unknowns[i] == 0.0, expected.unknowns[i] == 0.0) << "unknown " << i;
  }
}

FlightPlan planOf(const char* type) {
  return {.pairs = 150,
          .groundTruth = 50,
          .sections = {{0, 0, type}, {0, 10, type}, {1, 0, type}, {2, 0, type}}};
}

}  // namespace

TEST(CondensedProblem, LeadsAlongThePathOfTheReferenceForEveryTypeOfSection) {
  for (const char* type : {"BIAS", "LINEAR", "HYBRID", "SPLINE"}) {
    const OverlappingFlight flight(planOf(type));
    const bool isSpline = std::string(type) == "SPLINE";
    for (const bool hasInnerIterations : {true, false}) {
      SCOPED_TRACE(type + std::string(hasInnerIterations ? " with" : " without"));
      // Cubics of a few hundred residuals are determined some ten times worse than lines, and inner
      // iterations end where one of them changes the cost by less than 1e-6 of it.
      expectSamePath(flight, {hasInnerIterations, {}, {}, 0},
                     {isSpline ? 3e-6 : 2e-8, isSpline ? 3e-6 : 1e-7});
    }
  }
}

TEST(CondensedProblem, GivesItsUnknownsWhereTheyAreWellDetermined) {
  auto plan = planOf("BIAS");
  plan.pairs = 1500;
  plan.groundTruth = 300;
  expectSamePath(OverlappingFlight(plan), {false, {2}, {}, 0}, {1e-8, 1e-8});
}

TEST(CondensedProblem, LetsHubersFunctionActAsTheReferenceDoes) {
  auto plan = planOf("HYBRID");
  plan.outliers = 0.1;
  expectSamePath(OverlappingFlight(plan), {});
}

TEST(CondensedProblem, HoldsWhatTheReferenceHolds) {
  const OverlappingFlight flight(planOf("BIAS"));
  Variant variant{false, {2}, {}, 0};
  expectSamePath(flight, variant);
  variant.settings.estimateScales = variant.settings.estimateLeverArm = false;
  expectSamePath(flight, variant);
  // All strips and all of the mounting but the offsets; then blocks of residuals without unknowns.
  variant.lockedStrips = {0, 1};
  variant.weakSections = 1;
  variant.settings.estimateMisalignment = false;
  expectSamePath(flight, variant);
  variant.settings.estimateOffsets = false;
  variant.lockedStrips = {1, 2};
  variant.weakSections = 0;
  expectSamePath(flight, variant);
}

TEST(CondensedProblem, GivesTheSameBitsForAnyNumberOfThreads) {
  auto plan = planOf("LINEAR");
  plan.pairs = 5000;  // more than one piece, though of one class
  plan.classes = 1;
  const OverlappingFlight flight(plan);
  const Variant variant{false, {}, {}, 0};
  const Solved one = solve(flight, variant, 1);
  EXPECT_TRUE(one.summary.IsSolutionUsable());
  for (const int threads : {2, 3}) {
    const Solved more = solve(flight, variant, threads);
    EXPECT_EQ(more.summary.num_threads_used, threads);
    EXPECT_EQ(more.summary.final_cost, one.summary.final_cost) << threads;
    EXPECT_EQ(more.unknowns, one.unknowns) << threads;
  }
}

TEST(CondensedProblem, GivesDerivativesByAnyBlocksWhateverWasAskedBefore) {
  const OverlappingFlight flight(planOf("LINEAR"));
  auto parameters = flight.parameters();
  const std::vector<unsigned> enough(parameters.numberOfSectionsForAllStrips(), 1000);
  const Velorn::AdjustmentSettings settings;
  const Velorn::ProblemInputs inputs{parameters, flight.trajectory, flight.configuration, settings,
                                     enough};
  ceres::Problem used, fresh;
  std::size_t groundTruth = 0;
  ASSERT_EQ(fillCondensed(used, inputs, 1, groundTruth), "");
  // Nothing, one block, all, the same one again, at unknowns that change in between.
  const std::vector<std::string> calls{"none", "one", "all", "one", "none", "one"};
  for (std::size_t call = 0; call < calls.size(); ++call) {
    fresh = ceres::Problem();
    ASSERT_EQ(fillCondensed(fresh, inputs, 1, groundTruth), "");
    std::vector<double*> blocks;
    fresh.GetParameterBlocks(&blocks);
    if (call % 2 == 0) blocks[0][0] += 0.01;
    ceres::Problem::EvaluateOptions options;
    if (calls[call] == "one") options.parameter_blocks = {blocks[4]};
    std::vector<double> gradients[2];
    double costs[2];
    int i = 0;
    for (auto* problem : {&used, &fresh}) {
      problem->Evaluate(options, &costs[i], nullptr,
                        calls[call] == "none" ? nullptr : &gradients[i], nullptr);
      ++i;
    }
    EXPECT_NEAR(costs[0], costs[1], 1e-13 * costs[1]) << call;
    ASSERT_EQ(gradients[0].size(), gradients[1].size());
    for (std::size_t k = 0; k < gradients[0].size(); ++k) {
      EXPECT_NEAR(gradients[0][k], gradients[1][k], 1e-12 * std::abs(gradients[1][k]) + 1e-9)
          << call << " " << k;
    }
  }
}

TEST(CondensedProblem, CannotBeEvaluatedWhereTheTrajectoryOrAWeightIsMissing) {
  auto plan = planOf("BIAS");
  plan.pairs = plan.groundTruth = 10;
  OverlappingFlight flight(plan);
  const ConsoleLines console;
  flight.configuration.CellSizeWeights.resize(3);
  EXPECT_EQ(solve(flight, {}, 1).summary.termination_type, ceres::FAILURE);
  EXPECT_THAT(console.back(), testing::HasSubstr("no weight for the class 14"));
  flight.configuration.CellSizeWeights.resize(5, 1.0);
  flight.trajectory = Velorn::Trajectory({flight.startingAt(1)});
  EXPECT_EQ(flight.trajectory.importTrajectory(), "");
  EXPECT_EQ(solve(flight, {}, 1).summary.termination_type, ceres::FAILURE);
  EXPECT_THAT(console.back(), testing::HasSubstr("no pose of the trajectory at the GPS time 10"));
}
