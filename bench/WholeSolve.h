// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whole solves of simulated flights, for programs that measure them in processes of their own.
#pragma once

#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

#include <ceres/solver.h>

#include "adjustment/optimization/CondensedProblem.h"
#include "adjustment/optimization/InnerOrdering.h"
#include "adjustment/optimization/SolverOptions.h"

/// Of one solve, as it is handed over between processes.
struct SolveResult {
  struct Figures {
    double processorSeconds = 0, elapsedSeconds = 0, cost = 0, steps = 0;
    double preparation = 0, jacobian = 0, linear = 0, inner = 0;  ///< of the elapsed seconds
    bool converged = false;
  } figures;
  std::vector<double> unknowns;

  void write(const std::filesystem::path& path) const {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(&figures), sizeof(figures));
    file.write(reinterpret_cast<const char*>(unknowns.data()),
               static_cast<std::streamsize>(unknowns.size() * sizeof(double)));
  }
  static SolveResult read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    SolveResult result;
    file.read(reinterpret_cast<char*>(&result.figures), sizeof(figures));
    result.unknowns.resize((std::filesystem::file_size(path) - sizeof(figures)) / sizeof(double));
    file.read(reinterpret_cast<char*>(result.unknowns.data()),
              static_cast<std::streamsize>(result.unknowns.size() * sizeof(double)));
    if (!file) throw std::runtime_error("the result of a solve is incomplete");
    return result;
  }
};

/// Solves with all options of a run; no section is held for having few correspondences.
/// @param flight   with parameters(), trajectory and configuration, as OverlappingFlight
/// @param threads  of the engine; 0: by the reference
template <typename Flight>
SolveResult wholeSolve(const Flight& flight, int threads) {
  auto parameters = flight.parameters();
  const std::vector<unsigned> enough(parameters.numberOfSectionsForAllStrips(), 1000);
  const Velorn::AdjustmentSettings settings;
  const Velorn::ProblemInputs inputs{parameters, flight.trajectory, flight.configuration, settings,
                                     enough};
  ceres::Problem problem;
  std::size_t groundTruth = 0;
  const auto fault = threads == 0 ? fill(problem, inputs, groundTruth)
                                  : fillCondensed(problem, inputs, threads, groundTruth);
  if (!fault.empty()) throw std::runtime_error(fault);
  auto options = Velorn::solverOptions(flight.configuration);
  options.num_threads = 1;
  ceres::Solver::Summary summary;
  const std::clock_t begin = std::clock();
  options.inner_iteration_ordering = Velorn::innerOrderingOf(problem);
  ceres::Solve(options, &problem, &summary);
  SolveResult result{
      {static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, summary.total_time_in_seconds,
       summary.final_cost, static_cast<double>(summary.num_successful_steps),
       summary.preprocessor_time_in_seconds, summary.jacobian_evaluation_time_in_seconds,
       summary.linear_solver_time_in_seconds, summary.inner_iteration_time_in_seconds,
       summary.termination_type == ceres::CONVERGENCE},
      {}};
  for (unsigned section = 0; section < enough.size(); ++section) {
    for (unsigned k = 0; k < 12; ++k) {
      result.unknowns.push_back(parameters.getTrajectoryPositionCorrection(section, k));
      result.unknowns.push_back(parameters.getTrajectoryAngleCorrection(section, k));
    }
  }
  return result;
}
