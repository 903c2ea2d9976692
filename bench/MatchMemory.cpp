// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What memory and time the matching of two strips takes, files and all, in a process of its own.
//
//     VELORN_BENCH_POINTS=16000000 build/release/bench/match-memory
//
// VELORN_BENCH_FOLDER names the folder of the files (default: the system's temporary folder; 260
// bytes per point, removed at the end).
#include <cstdio>
#include <filesystem>

#include <fmt/format.h>

#include "bench/MatchedStrips.h"
#include "bench/OwnProcess.h"
#include "bench/Settings.h"
#include "flight/matching/Match.h"
#include "host/KeptMemory.h"
#include "tests/flight/matching/MatchFiles.h"
#include "tests/support/NoProgress.h"

using namespace Velorn::Flights;

namespace {

/// A folder with two strips and their rasters, which goes with the program.
struct Flight {
  std::filesystem::path folder = benchmarkFile("match");

  explicit Flight(std::size_t points) {
    for (const char* made : {"strip", "planar", "raster"}) {
      std::filesystem::create_directories(folder / made);
    }
    usageOf([&] {
      for (unsigned k = 1; k <= 2; ++k) {
        const MatchPoints strip = waves(points, k);
        saveMeasured(fileOf("strip", k), strip);
        savePlanes(fileOf("planar", k), strip);
        saveMatchPoints(fileOf("raster", k), waves(points, k, 10));
      }
      Strandel::Bundle nothing;
      nothing.makeSlice(0.0)->makeGrid("ground_truth");
      orThrow(GridEditor::storage().save(nothing, folder / "known.kx", "wd"));
    });
  }
  ~Flight() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  Flight(const Flight&) = delete;
  Flight& operator=(const Flight&) = delete;

  std::filesystem::path fileOf(const char* made, unsigned strip) const {
    return folder / made / fmt::format("strip_{}.kx", strip);
  }

  SurfaceFiles filesOf(unsigned strip) const {
    return {fileOf("strip", strip), fileOf("planar", strip), fileOf("raster", strip)};
  }

  void match() const {
    Velorn::InputParameter configuration;
    configuration.RootPath = folder;
    orThrow(configuration.check());
    NoProgress progress;
    SurfaceStore surfaces({filesOf(1), filesOf(2)}, folder / "known.kx", configuration, 0);
    const auto report = Velorn::Flights::match(configuration, surfaces, {}, nullptr, progress);
    if (report.correspondences == 0) throw std::runtime_error("nothing was found");
  }
};

}  // namespace

int main() {
  try {
    const std::size_t points = std::stoul(setting("VELORN_BENCH_POINTS", "2000000"));
    const Flight flight(points);
    const Usage usage = usageOf([&] {
      keepFreedMemory();
      flight.match();
    });
    const auto peak = static_cast<double>(usage.peak);
    fmt::print("| points of a strip | candidates | peak | per point of a strip | time |\n");
    fmt::print("|---|---|---|---|---|\n| {} | {} | {:.0f} MB | {:.0f} bytes | {:.1f} s |\n", points,
               points / 10, peak / 1e6, peak / static_cast<double>(points), usage.elapsed);
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
  }
}
