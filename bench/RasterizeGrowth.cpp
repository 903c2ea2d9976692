// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What rasterizing a whole strip takes: makes strips of growing size, rasterizes each in a process
// of its own, and prints times and peak of memory per point.
//
//     build/release/bench/rasterize-growth 2 8 32        (million points; default 2 8)
//
// VELORN_BENCH_FOLDER names the folder of the strips (default: the system's temporary folder; 210
// bytes per point while one is replaced, removed at the end).
#include <cstdio>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "bench/OwnProcess.h"
#include "bench/Settings.h"
#include "bench/Swath.h"
#include "flight/surfaces/Rasterize.h"
#include "host/KeptMemory.h"
#include "tests/support/NoProgress.h"
#include <velorn/flight/Containers.h>

using namespace Velorn::Flights;

namespace {

/// A folder that goes with the program.
struct Folder {
  std::filesystem::path path = benchmarkFile("rasterize");
  Folder() { std::filesystem::create_directories(path); }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
};

void makeStrip(const std::filesystem::path& file, std::size_t points) {
  StripColumns columns;
  columns.week = 2318;
  columns.world = swath(points);
  columns.scanner.assign(points, {400, 0, 30});
  columns.directions.assign(points, {10, 20, 400});
  for (std::size_t i = 0; i < points; ++i) columns.times.push_back(1e-6 * static_cast<double>(i));
  columns.returnNumber.assign(points, 1);
  columns.numberOfReturns.assign(points, 1);
  columns.classification.assign(points, 1);
  columns.amplitude.assign(points, 20.0);
  columns.pointSourceId.assign(points, 7);
  saveStrip(file, std::move(columns));
}

void rasterize(const std::filesystem::path& folder, const std::string& selection) {
  keepFreedMemory();
  NoProgress progress;
  Velorn::InputParameter configuration;
  configuration.SelectionStr = selection;
  orThrow(configuration.check());
  rasterizeStrip({folder / "strip.kx", folder / "planar.kx", folder / "raster.kx"}, configuration,
                 {}, progress);
}

void measure(const Folder& folder, double millions, const std::string& selection) {
  const auto points = static_cast<std::size_t>(millions * 1e6);
  usageOf([&] { makeStrip(folder.path / "strip.kx", points); });
  const Usage usage = usageOf([&] { rasterize(folder.path, selection); });
  const double perPoint = 1e6 / static_cast<double>(points);
  fmt::print("| {} million | {:.2f} us | {:.2f} us | {:.2f} us | {:.0f} bytes | {} |\n", millions,
             usage.own * perPoint, usage.system * perPoint, usage.elapsed * perPoint,
             static_cast<double>(usage.peak) / static_cast<double>(points), selection);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::vector<std::string> sizes(argv + 1, argv + argc);
    if (sizes.empty()) sizes = {"2", "8"};
    const Folder folder;
    fmt::print(
        "| points | in the program, per point | in the kernel | elapsed | peak per point | "
        "selection |\n");
    fmt::print("|---|---|---|---|---|---|\n");
    std::fflush(stdout);
    for (const auto& size : sizes) measure(folder, std::stod(size), "");
    measure(folder, std::stod(sizes.front()), "Amplitude > 5 and not Classification == 7");
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
  }
}
