// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What memory the georeferencing of a whole strip takes: makes a strip, georeferences it in a
// process of its own and prints the process's peak against the bytes of the arrays.
//
//     VELORN_BENCH_STRIP_POINTS=100000000 build/release/bench/strip-memory
//
// VELORN_BENCH_FOLDER names the folder of the files (default: the system's temporary folder; 160
// bytes per point, removed at the end).
#include <cmath>
#include <cstdio>
#include <utility>

#include <fmt/format.h>

#include "bench/OwnProcess.h"
#include "bench/Settings.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/Georeferencing.h>

using namespace Strandel;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

namespace {

constexpr double pulseRate = 1e6;  // [1/s]
constexpr std::int64_t week = 2318;
constexpr std::size_t scannerBytes = 24, timeBytes = 8, worldBytes = 24, directionBytes = 24;
const MyStorage storage(0, 0, 1, 1);

template <typename T, typename ValueAt>
void fill(Chart& chart, const char* name, std::size_t count, const ValueAt& valueAt) {
  std::vector<T> values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = valueAt(static_cast<double>(i));
  orThrow(chart.makeField(name, valueTypeOf<T>())->template setValues<T>({0}, std::move(values)));
}

void makeStrip(const std::filesystem::path& path, std::size_t points) {
  Bundle bundle;
  const auto grid = bundle.makeSlice(0)->makeGrid("strip");
  grid->attributes().set("WeekNumber", week);
  const auto scanner = grid->makeChart(scannerChartName), world = grid->makeChart(worldChartName);
  fill<point>(*scanner, "Positions", points, [](double i) {
    return point{1000, 0, std::fmod(i, 1000.0) - 500};
  });
  fill<double>(*scanner, "GPSTime", points, [](double i) { return i / pulseRate; });
  fill<point>(*world, "Positions", points, [](double i) { return point{i, 2 * i, 3}; });
  fill<vector>(*world, "NormalVector", points, [](double) { return vector{0, 0, 1}; });
  fill<std::uint16_t>(*world, "Amplitude", points, [](double) { return std::uint16_t{7}; });
  orThrow(storage.save(bundle, path, "wd"));
}

/// Some records more than the strip takes, at 200 Hz.
void makeTrajectory(const std::filesystem::path& path, std::size_t points) {
  const std::size_t records = 10 + points / static_cast<std::size_t>(pulseRate / 200);
  Bundle bundle;
  const auto chart = bundle.makeSlice(0)->makeGrid("path")->makeChart(worldChartName);
  auto& attributes = chart->attributes();
  attributes.set("EPSG_SPATIAL", std::int64_t{32632});
  attributes.set("EPSG_HEIGHT", std::int64_t{4979});
  attributes.set("WeekNumber", week);
  attributes.set("LeverArm", point{0.1, 0.2, 0.3});
  attributes.set("Misalignment", point{0.5, -0.25, 90.0});
  fill<point>(*chart, "Positions", records, [](double i) {
    return point{5e5 + 0.3 * i, 5.3e6 + 0.1 * i, 1300};
  });
  fill<double>(*chart, "GPSTime", records, [](double i) { return (i - 5) / 200; });
  for (const char* angle : {"Roll", "Pitch", "Yaw"}) {
    fill<double>(*chart, angle, records, [](double i) { return std::sin(i / 300); });
  }
  orThrow(storage.save(bundle, path, "wd"));
}

/// Two files that go with the program.
struct Files {
  std::filesystem::path strip = benchmarkFile("strip.kx");
  std::filesystem::path trajectory = benchmarkFile("trajectory.kx");
  Files() = default;
  ~Files() {
    std::error_code ignored;
    std::filesystem::remove(strip, ignored);
    std::filesystem::remove(trajectory, ignored);
  }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;
};

void measure(const Files& files, std::size_t points, bool inverse) {
  const Usage usage = usageOf([&] {
    orThrow(Velorn::scanner2world({files.strip}, {files.trajectory}, "", inverse, 0, "", "", {},
                                  false, nullptr));
  });
  const auto peak = static_cast<double>(usage.peak);
  const std::size_t bytes =
      points * (scannerBytes + timeBytes + worldBytes + (inverse ? 0 : directionBytes));
  fmt::print("| {} | {} | {:.1f} MB | {:.1f} MB | {:.1f} MB | {:.1f} s |\n",
             inverse ? "inverse" : "forward", points, static_cast<double>(bytes) / 1e6, peak / 1e6,
             (peak - static_cast<double>(bytes)) / 1e6, usage.elapsed);
  std::fflush(stdout);
}

}  // namespace

int main() {
  try {
    const std::size_t points = std::stoul(setting("VELORN_BENCH_STRIP_POINTS", "10000000"));
    const Files files;
    usageOf([&] {
      makeStrip(files.strip, points);
      makeTrajectory(files.trajectory, points);
    });
    fmt::print("| direction | points | arrays | peak | beyond the arrays | time |\n");
    fmt::print("|---|---|---|---|---|---|\n");
    std::fflush(stdout);
    for (const bool inverse : {false, true}) measure(files, points, inverse);
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
  }
}
