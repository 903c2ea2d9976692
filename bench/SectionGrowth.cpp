// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whole solves by the engine of blocks of many sections, 20 LINEAR ones to a strip, each in a
// process of its own: what time and memory grow with.
//
//     section-growth [strips]...      125 250 500 unless given
//
//     VELORN_BENCH_PAIRS  correspondences of two neighbouring strips, 2000 unless set
#include <string>
#include <vector>

#include <fmt/format.h>
#include <omp.h>

#include "bench/ManySections.h"
#include "bench/OwnProcess.h"
#include "bench/Settings.h"
#include "bench/WholeSolve.h"

int main(int count, char** arguments) {
  omp_set_num_threads(1);  // threads do not live on in the processes of the solves
  std::vector<unsigned> sizes;
  for (int i = 1; i < count; ++i) sizes.push_back(static_cast<unsigned>(std::stoul(arguments[i])));
  if (sizes.empty()) sizes = {125, 250, 500};
  const std::size_t ofPair = std::stoul(setting("VELORN_BENCH_PAIRS", "2000"));
  fmt::print(
      "| strips | sections | correspondences | steps | processor time | of it preparation | "
      "Jacobian | linear solver | inner iterations | peak | cost |\n"
      "|---|---|---|---|---|---|---|---|---|---|---|\n");
  for (const unsigned strips : sizes) {
    const ManySections flight(strips, ofPair);
    const auto file = flight.folder / "result";
    const Usage usage = usageOf([&] { wholeSolve(flight, 1).write(file); });
    const auto figures = SolveResult::read(file).figures;
    fmt::print(
        "| {} | {} | {} | {}{} | {:.3g} s | {:.3g} s | {:.3g} s | {:.3g} s | {:.3g} s | {:.0f} MB "
        "| {:.6g} |\n",
        strips, flight.sections(), flight.correspondences(), figures.steps,
        figures.converged ? "" : ", not converged", figures.processorSeconds, figures.preparation,
        figures.jacobian, figures.linear, figures.inner, static_cast<double>(usage.peak) / 1e6,
        figures.cost);
    std::fflush(stdout);
  }
}
