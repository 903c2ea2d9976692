// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A block of 10 million correspondences, written and read, against the same arrays through a plain
// container, in the same run. VELORN_BENCH_FOLDER names the folder of the files (default: the
// system's temporary folder), VELORN_BENCH_CORRESPONDENCES another number.
#include <filesystem>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/Settings.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/CorrespondenceBlock.h>

using namespace Strandel;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

namespace {

constexpr std::size_t bytesPerCorrespondence = 2 * (4 * sizeof(point) + sizeof(double) + 1);

std::shared_ptr<MyStorage> storage() {
  static const auto instance = std::make_shared<MyStorage>(0, 0, 0, 1);
  return instance;
}

std::size_t correspondences() {
  return std::stoul(setting("VELORN_BENCH_CORRESPONDENCES", "10000000"));
}

Velorn::SphericalBeing beingOf(std::size_t i) {
  const double value = 1e-3 * static_cast<double>(i * 2654435761U % 1000003U);
  return {{5e5 + value, 5.3e6 - value, value},
          {value, 2 * value, -value},
          value,
          {value, -value, 1},
          {1, value, -value},
          std::uint8_t(10 + i % 5)};
}

Velorn::CorrespondenceBlock makeBlock(const std::filesystem::path& path) {
  Velorn::CorrespondenceBlock block(path, false, 2318, 2318, storage());
  for (std::size_t i = 0; i < correspondences(); ++i) block.add(beingOf(i), beingOf(i + 1));
  return block;
}

template <Value T>
void share(Chart& chart, const char* name, const std::shared_ptr<std::vector<T>>& values) {
  orThrow(chart.makeField(name, valueTypeOf<T>())->template setValues<T>({0}, values));
}

/// The arrays of one side, shared, in a grid of their own.
void shareSide(Slice& slice, const char* name, const Velorn::SphericalBeingData& side) {
  const auto chart = slice.makeGrid(name)->makeChart(worldChartName);
  share(*chart, "Positions", side.world);
  share(*chart, "ScannerCoordiantes", side.scanner);
  share(*chart, "GPSTime", side.times);
  share(*chart, "NormalVector", side.normals);
  share(*chart, "DirectionDelta", side.directionDeltas);
  share(*chart, "Classification", side.classes);
}

/// The block and a plain bundle of the same arrays, in memory and on disk; the files go with the
/// process.
struct Files {
  Velorn::CorrespondenceBlock block = makeBlock(benchmarkFile("c0_1.kx"));
  std::filesystem::path plain = benchmarkFile("plain.kx");

  Files() {
    savePlain();
    orThrow(block.save());
  }
  ~Files() {
    std::filesystem::remove(plain);
    std::filesystem::remove(block.path());
  }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;

  void savePlain() const {
    Bundle bundle;
    const auto slice = bundle.makeSlice(0);
    shareSide(*slice, "Grid_I", block.sideI());
    shareSide(*slice, "Grid_J", block.sideJ());
    orThrow(storage()->save(bundle, plain, "wd"));
  }
};

Files& files() {
  static Files instance;
  return instance;
}

template <Value T>
std::shared_ptr<const void> valuesOf(const Field& field) {
  const auto read = field.values<T>({0});
  orThrow(read.error);
  return read.values;
}

std::shared_ptr<const void> anyValuesOf(const Field& field) {
  switch (field.valueType()) {
    case ValueType::Point:
      return valuesOf<point>(field);
    case ValueType::Vector:
      return valuesOf<vector>(field);
    case ValueType::Double:
      return valuesOf<double>(field);
    default:
      return valuesOf<std::uint8_t>(field);
  }
}

/// Reads all arrays and holds them together, as a block does.
void readPlain(const std::filesystem::path& path) {
  Bundle bundle;
  orThrow(storage()->load(path, bundle));
  std::vector<std::shared_ptr<const void>> arrays;
  for (const auto& grid : bundle.grids()) {
    for (const auto& [name, field] : grid->cartesian()->fields()) {
      arrays.push_back(anyValuesOf(*field));
    }
  }
  benchmark::DoNotOptimize(arrays.data());
}

void readBlock(const std::filesystem::path& path) {
  const Velorn::CorrespondenceBlock block(path, storage());
  orThrow(block.errorText());
  benchmark::DoNotOptimize(block.size());
}

template <typename Action>
void measure(benchmark::State& state, const Action& action) {
  Files& all = files();
  for (auto _ : state) action(all);
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(correspondences() * bytesPerCorrespondence));
}

void writeContainer(benchmark::State& state) {
  measure(state, [](Files& all) { all.savePlain(); });
}
void writeBlock(benchmark::State& state) {
  measure(state, [](Files& all) { orThrow(all.block.save()); });
}
void readContainer(benchmark::State& state) {
  measure(state, [](Files& all) { readPlain(all.plain); });
}
void readBlockBack(benchmark::State& state) {
  measure(state, [](Files& all) { readBlock(all.block.path()); });
}

// Of each group the first is the baseline.
#define VELORN_BLOCK_BENCHMARK(function, name) \
  BENCHMARK(function)->Name(name)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond)
VELORN_BLOCK_BENCHMARK(writeContainer, "WriteCorrespondences/container");
VELORN_BLOCK_BENCHMARK(writeBlock, "WriteCorrespondences/block");
VELORN_BLOCK_BENCHMARK(readContainer, "ReadCorrespondences/container");
VELORN_BLOCK_BENCHMARK(readBlockBack, "ReadCorrespondences/block");

}  // namespace
