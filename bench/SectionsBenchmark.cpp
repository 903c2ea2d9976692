// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the division of a strip of 2 million points into sections takes against reading the strip.
// VELORN_BENCH_FOLDER names the folder of the strip (default: the system's temporary folder),
// VELORN_BENCH_STRIP_POINTS another number of points.
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/Settings.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/SolverParameters.h>

using namespace Strandel;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

namespace {

const MyStorage storage(0, 0, 1, 1);

template <typename T>
void fill(Chart& chart, const std::string& name, const T& value, std::size_t count) {
  const auto field = chart.makeField(name, valueTypeOf<T>());
  orThrow(field->template setValues<T>({0}, std::vector<T>(count, value)));
}

Bundle makeStrip(std::size_t points) {
  Bundle bundle;
  const auto grid = bundle.makeSlice(0)->makeGrid("strip");
  const auto world = grid->makeChart(worldChartName), scanner = grid->makeChart(scannerChartName);
  fill<point>(*world, "Positions", {5e5, 5.3e6, 300}, points);
  fill<vector>(*world, "NormalVector", {0, 0, 1}, points);
  fill<std::uint8_t>(*world, "Classification", 2, points);
  fill<std::uint16_t>(*world, "Amplitude", 1000, points);
  fill<point>(*scanner, "Positions", {800, 1, 2}, points);
  fill<vector>(*scanner, "Waveforms.DirectionDelta", {1, 2, 3}, points);
  std::vector<double> times(points);
  for (std::size_t i = 0; i < points; ++i) times[i] = 345600 + 5e-6 * static_cast<double>(i);
  orThrow(world->makeField("GPSTime", ValueType::Double)->setValues<double>({0}, std::move(times)));
  scanner->shareField(world->field("GPSTime"));
  return bundle;
}

FieldPtr gpsTimes(const Bundle& bundle) {
  return bundle.slice(0)->uniqueGrid()->chart(scannerChartName)->field("GPSTime");
}

/// The strip with and without the stored range of its times; the files go with the process.
struct Files {
  std::filesystem::path folder = benchmarkFile("sections");
  std::filesystem::path strip = folder / "strip.kx", withoutRange = folder / "without.kx";

  Files() {
    std::filesystem::create_directories(folder);
    auto made = makeStrip(std::stoul(setting("VELORN_BENCH_STRIP_POINTS", "2000000")));
    orThrow(storage.save(made, strip, "wd"));
    Bundle loaded;
    orThrow(storage.load(strip, loaded));
    gpsTimes(loaded)->setStoredRange(std::nullopt);
    orThrow(storage.save(loaded, withoutRange, "wd"));
    Bundle check;
    orThrow(storage.load(withoutRange, check));
    if (gpsTimes(check)->storedRange()) throw std::runtime_error("the range is still stored");
  }
  ~Files() { std::filesystem::remove_all(folder); }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;
};

const Files& files() {
  static const Files instance;
  return instance;
}

template <typename T>
void readField(const Chart& chart, const std::string& name) {
  const auto read = chart.field(name)->values<T>({0});
  orThrow(read.error);
  benchmark::DoNotOptimize(read.values->data());
}

void readStripWhole(benchmark::State& state) {
  const auto& path = files().strip;
  while (state.KeepRunning()) {
    Bundle bundle;
    orThrow(storage.load(path, bundle));
    const auto grid = bundle.slice(0)->uniqueGrid();
    const auto world = grid->chart(worldChartName), scanner = grid->chart(scannerChartName);
    readField<point>(*world, "Positions");
    readField<vector>(*world, "NormalVector");
    readField<std::uint8_t>(*world, "Classification");
    readField<std::uint16_t>(*world, "Amplitude");
    readField<double>(*scanner, "GPSTime");
    readField<point>(*scanner, "Positions");
    readField<vector>(*scanner, "Waveforms.DirectionDelta");
  }
}

void divide(benchmark::State& state, const std::filesystem::path& path) {
  Velorn::InputParameter configuration;
  configuration.DefaultInterval = {1, 1, 1};
  while (state.KeepRunning()) {
    Velorn::SolverParameters parameters({path}, configuration);
    orThrow(parameters.setSections("LINEAR", {}, {}, {}, "", {}, {}));
    if (parameters.numberOfSectionsForAllStrips() < 10) throw std::runtime_error("few sections");
  }
}
void setSections(benchmark::State& state) {
  divide(state, files().strip);
}
void setSectionsWithoutStoredRange(benchmark::State& state) {
  divide(state, files().withoutRange);
}

// Of each group the first is the baseline.
BENCHMARK(readStripWhole)->Name("SetSections/readStripWhole")->Unit(benchmark::kMillisecond);
BENCHMARK(setSections)->Name("SetSections/setSections")->Unit(benchmark::kMillisecond);
BENCHMARK(setSectionsWithoutStoredRange)
    ->Name("SetSections/setSectionsWithoutStoredRange")
    ->Unit(benchmark::kMillisecond);

}  // namespace
