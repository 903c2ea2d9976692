// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/SolverMemory.h"

#include <algorithm>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "flight/strips/BlockName.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

constexpr std::size_t defaultPerStrip = 30'000;
constexpr std::uintmax_t bytesOfBlock = 10'288, bytesOfRecord = 210;  // of files, as measured

double gigabytes(std::uint64_t number, std::size_t bytesOfEach = 1) {
  return static_cast<double>(number) * static_cast<double>(bytesOfEach) / 1e9;
}

void require(const std::string& which, std::size_t correspondences, std::size_t bytesOfEach,
             const std::string& remedy, std::optional<std::uint64_t> available) {
  if (!available || correspondences <= *available / bytesOfEach) return;
  throw Error(fmt::format("{}: the solver takes some {:.2f} GB for {} correspondences, and {:.2f} "
                          "GB are free; {}max-correspondences {} fits",
                          which, gigabytes(correspondences, bytesOfEach), correspondences,
                          gigabytes(*available), remedy, *available / bytesOfEach),
              Error::BadSettings);
}

}  // namespace

std::size_t maxCorrespondencesOf(const MatchSettings& settings, std::size_t strips) {
  return settings.maxCorrespondences > 0 ? settings.maxCorrespondences : defaultPerStrip * strips;
}

void requireSolverMemory(const MatchSettings& settings, std::size_t strips,
                         Velorn::Evaluation evaluation, std::optional<std::uint64_t> available) {
  const std::size_t all = maxCorrespondencesOf(settings, strips);
  const std::string which = settings.maxCorrespondences > 0
                                ? fmt::format("max-correspondences {}", all)
                                : fmt::format(
                                      "max-correspondences 0, which is {} for each of {} "
                                      "strips",
                                      defaultPerStrip, strips);
  require(which, all, bytesOfSolver(evaluation), "", available);
}

void requireSolverMemory(const std::filesystem::path& blocks, Velorn::Evaluation evaluation,
                         std::optional<std::uint64_t> available) {
  std::uintmax_t records = 0;
  std::error_code fault;
  std::filesystem::directory_iterator entries(blocks, fault);
  for (; !fault && entries != std::filesystem::directory_iterator(); entries.increment(fault)) {
    std::error_code gone;
    const std::uintmax_t bytes = entries->file_size(gone);
    if (gone || !blockNameIn(entries->path().filename().string())) continue;
    records += (std::max(bytes, bytesOfBlock) - bytesOfBlock) / bytesOfRecord;
  }
  require(blocks.string(), records, bytesOfSolver(evaluation), "match again: ", available);
}

}  // namespace Velorn::Flights
