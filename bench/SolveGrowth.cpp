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
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <omp.h>

#include "bench/OwnProcess.h"
#include "bench/Settings.h"
#include "bench/WholeSolve.h"
#include "tests/adjustment/optimization/OverlappingFlight.h"

namespace {

double largestDifference(const SolveResult& a, const SolveResult& b) {
  double largest = 0;
  for (std::size_t i = 0; i < a.unknowns.size(); ++i) {
    largest = std::max(largest, std::abs(a.unknowns[i] - b.unknowns.at(i)));
  }
  return largest;
}

/// One line of the table.
void measure(const OverlappingFlight& flight, std::size_t correspondences, int threads,
             std::optional<SolveResult>& baseline) {
  const auto file = flight.folder / "result";
  const Usage usage = usageOf([&] { wholeSolve(flight, threads).write(file); });
  const SolveResult result = SolveResult::read(file);
  if (!baseline) baseline = result;
  fmt::print("| {} | {} | {} | {:.3g} s | {:.3g} s | {:.1f} | {:.1f} MB | {:.1e} | {:.1e} |\n",
             correspondences, threads == 0 ? "reference" : fmt::format("engine, {}", threads),
             result.figures.steps, result.figures.processorSeconds, result.figures.elapsedSeconds,
             baseline->figures.processorSeconds / result.figures.processorSeconds,
             static_cast<double>(usage.peak) / 1e6,
             std::abs(result.figures.cost - baseline->figures.cost) / baseline->figures.cost,
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
    std::optional<SolveResult> baseline;
    for (int threads = size <= mostOfReference ? 0 : 1; threads <= mostThreads; ++threads) {
      measure(flight, size, threads, baseline);
    }
  }
}
