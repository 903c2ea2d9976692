// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whole solves of simulated flights of growing size, by the reference and by the engine, each in a
// process of its own: processor time of the solver, peak of memory, and how far the results are
// from each other.
//
//     solve-growth [correspondences]...      10000 and 40000 unless given
//
//     VELORN_BENCH_REFERENCE  most correspondences that the reference solves too, 100000 unless set
//     VELORN_BENCH_THREADS    most threads of the engine, 2 unless set
#include <chrono>
#include <ctime>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <ceres/solver.h>
#include <fmt/format.h>
#include <omp.h>

#include "adjustment/optimization/CondensedProblem.h"
#include "adjustment/optimization/InnerOrdering.h"
#include "adjustment/optimization/SolverOptions.h"
#include "bench/OwnProcess.h"
#include "bench/Settings.h"
#include "tests/adjustment/optimization/OverlappingFlight.h"

namespace {

/// Of one solve, as it is handed over between processes.
struct Result {
  double processorSeconds = 0, elapsedSeconds = 0, cost = 0, steps = 0;
  std::vector<double> unknowns;

  void write(const std::filesystem::path& path) const {
    std::ofstream file(path, std::ios::binary);
    std::vector<double> all{processorSeconds, elapsedSeconds, cost, steps};
    all.insert(all.end(), unknowns.begin(), unknowns.end());
    file.write(reinterpret_cast<const char*>(all.data()),
               static_cast<std::streamsize>(all.size() * sizeof(double)));
  }
  static Result read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<double> all(std::filesystem::file_size(path) / sizeof(double));
    file.read(reinterpret_cast<char*>(all.data()),
              static_cast<std::streamsize>(all.size() * sizeof(double)));
    return {all.at(0), all.at(1), all.at(2), all.at(3), {all.begin() + 4, all.end()}};
  }
};

/// @param threads  of the engine; 0: by the reference
Result solve(const OverlappingFlight& flight, int threads) {
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
  options.inner_iteration_ordering = Velorn::innerOrderingOf(problem);
  ceres::Solver::Summary summary;
  const std::clock_t begin = std::clock();
  ceres::Solve(options, &problem, &summary);
  Result result{static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC,
                summary.total_time_in_seconds,
                summary.final_cost,
                static_cast<double>(summary.num_successful_steps),
                {}};
  for (unsigned section = 0; section < enough.size(); ++section) {
    for (unsigned k = 0; k < 12; ++k) {
      result.unknowns.push_back(parameters.getTrajectoryPositionCorrection(section, k));
      result.unknowns.push_back(parameters.getTrajectoryAngleCorrection(section, k));
    }
  }
  return result;
}

double largestDifference(const Result& a, const Result& b) {
  double largest = 0;
  for (std::size_t i = 0; i < a.unknowns.size(); ++i) {
    largest = std::max(largest, std::abs(a.unknowns[i] - b.unknowns.at(i)));
  }
  return largest;
}

/// One line of the table.
void measure(const OverlappingFlight& flight, std::size_t correspondences, int threads,
             std::optional<Result>& baseline) {
  const auto file = flight.folder / "result";
  const Usage usage = usageOf([&] { solve(flight, threads).write(file); });
  const Result result = Result::read(file);
  if (!baseline) baseline = result;
  fmt::print("| {} | {} | {} | {:.3g} s | {:.3g} s | {:.1f} | {:.1f} MB | {:.1e} | {:.1e} |\n",
             correspondences, threads == 0 ? "reference" : fmt::format("engine, {}", threads),
             result.steps, result.processorSeconds, result.elapsedSeconds,
             baseline->processorSeconds / result.processorSeconds,
             static_cast<double>(usage.peak) / 1e6,
             std::abs(result.cost - baseline->cost) / baseline->cost,
             largestDifference(result, *baseline));
  std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
  omp_set_num_threads(1);  // threads do not live on in the processes of the solves
  std::vector<std::size_t> sizes;
  for (int i = 1; i < count; ++i) sizes.push_back(std::stoul(arguments[i]));
  if (sizes.empty()) sizes = {10000, 40000};
  const std::size_t mostOfReference = std::stoul(setting("VELORN_BENCH_REFERENCE", "100000"));
  const int mostThreads = std::stoi(setting("VELORN_BENCH_THREADS", "2"));
  fmt::print(
      "| correspondences | by | steps | processor time | elapsed | times the first's speed | peak "
      "| "
      "cost differs, of it | unknowns differ by |\n|---|---|---|---|---|---|---|---|---|\n");
  for (const std::size_t size : sizes) {
    FlightPlan plan;
    plan.groundTruth = size / 30;
    plan.pairs = size / 3 - plan.groundTruth;
    const OverlappingFlight flight(plan);
    std::optional<Result> baseline;
    for (int threads = size <= mostOfReference ? 0 : 1; threads <= mostThreads; ++threads) {
      measure(flight, size, threads, baseline);
    }
  }
}
