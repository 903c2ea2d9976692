// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Ten hours of trajectory at 200 Hz: finding the two records about a time, against a std::map from
// times to records, and the import, against reading the same five columns and nothing else. The
// counter bytesPerRecord is the memory of the index.
//
//     VELORN_BENCH_RECORDS   records of the trajectory, 7200000 unless set
//     VELORN_BENCH_FOLDER    where the file lies, the temporary folder unless set
#include <filesystem>
#include <map>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "adjustment/trajectory/TimeIndex.h"
#include "bench/Settings.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/Trajectory.h>

namespace {

using Geomra::PhysicalSpace::point;
using Velorn::TimeIndex;

std::size_t records() {
  static const std::size_t number = std::stoul(setting("VELORN_BENCH_RECORDS", "7200000"));
  return number;
}

double timeOf(std::size_t record) {
  return 259200 + 0.005 * static_cast<double>(record);
}

std::vector<double> times() {
  std::vector<double> all(records());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = timeOf(i);
  return all;
}

double heapBytes() {
  const auto heap = mallinfo2();
  return static_cast<double>(heap.uordblks + heap.hblkhd);
}

/// Numbers of the records about a time.
struct Pair {
  std::uint64_t before, after;
};

struct StdMap {
  std::map<double, std::uint64_t> map;
  double bytes = heapBytes();

  StdMap() {
    for (std::size_t i = 0; i < records(); ++i) map.emplace_hint(map.end(), timeOf(i), i);
    bytes = heapBytes() - bytes;
  }
  Pair about(double t) const {
    const auto after = map.lower_bound(t);
    return {std::prev(after)->second, after->second};
  }
};

struct Flat {
  TimeIndex index;
  double bytes = 0;

  Flat() {
    index.append(times(), 0);
    index.build();
    bytes = static_cast<double>(index.bytes());
  }
  Pair about(double t) const {
    const std::size_t after = index.lowerBound(t);
    return {index[after - 1].record, index[after].record};
  }
};

template <typename Index>
const Index& only() {
  static const Index index;
  return index;
}

/// Within the trajectory, never before the second record.
std::vector<double> questions(bool inOrder) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> time(timeOf(1), timeOf(records() - 1));
  std::vector<double> asked(1 << 20);
  for (std::size_t i = 0; i < asked.size(); ++i) {
    asked[i] = inOrder ? timeOf(1) + 3.7e-6 * static_cast<double>(i) : time(random);
  }
  return asked;
}

template <typename Index, bool inOrder>
void lookUp(benchmark::State& state) {
  const auto& index = only<Index>();
  const auto asked = questions(inOrder);
  for (auto _ : state) {
    for (const double t : asked) benchmark::DoNotOptimize(index.about(t));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(asked.size()));
  state.counters["bytesPerRecord"] = index.bytes / static_cast<double>(records());
}

/// A file with the trajectory; it goes with the process.
struct File {
  std::filesystem::path path = benchmarkFile("trajectory.kx");

  File() {
    Strandel::Bundle bundle;
    const auto chart = bundle.makeSlice(0)->makeGrid("path")->makeChart(Strandel::worldChartName);
    auto& attributes = chart->attributes();
    attributes.set("EPSG_SPATIAL", std::int64_t{32632});
    attributes.set("EPSG_HEIGHT", std::int64_t{4979});
    attributes.set("WeekNumber", std::int64_t{2318});
    attributes.set("LeverArm", point{0.1, 0.2, 0.3});
    attributes.set("Misalignment", point{0, 0, 0});
    std::vector<point> positions(records());
    for (std::size_t i = 0; i < positions.size(); ++i) positions[i] = {timeOf(i), 5.3e6, 1200};
    chart->makeField("Positions", Strandel::ValueType::Point)
        ->setValues<point>({0}, std::move(positions));
    for (const char* name : {"GPSTime", "Roll", "Pitch", "Yaw"}) {
      chart->makeField(name, Strandel::ValueType::Double)->setValues<double>({0}, times());
    }
    orThrow(Strandel::MyStorage(0, 0, 1, 1).save(bundle, path, "wd"));
  }
  ~File() { std::filesystem::remove(path); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
};

const std::filesystem::path& file() {
  static const File instance;
  return instance.path;
}

void countBytes(benchmark::State& state) {
  const auto bytes = static_cast<std::int64_t>(records() * (sizeof(point) + 4 * sizeof(double)));
  state.SetBytesProcessed(state.iterations() * bytes);
}

template <typename T>
auto columnOf(const Strandel::Chart& chart, const char* name) {
  const auto read = chart.field(name)->values<T>({0});
  orThrow(read.error);
  return read.values;
}

/// All five are held to the end, as the import does.
void readColumns(benchmark::State& state) {
  file();
  while (state.KeepRunning()) {
    Strandel::Bundle bundle;
    orThrow(Strandel::MyStorage(0, 0, 1, 1).load(file(), bundle));
    const auto chart = bundle.slice(0)->uniqueGrid()->cartesian();
    const auto positions = columnOf<point>(*chart, "Positions");
    const auto stamps = columnOf<double>(*chart, "GPSTime");
    const auto roll = columnOf<double>(*chart, "Roll");
    const auto pitch = columnOf<double>(*chart, "Pitch");
    const auto yaw = columnOf<double>(*chart, "Yaw");
    benchmark::ClobberMemory();
  }
  countBytes(state);
}

void import(benchmark::State& state) {
  file();
  while (state.KeepRunning()) {
    Velorn::Trajectory trajectory({file()});
    orThrow(trajectory.importTrajectory());
    benchmark::DoNotOptimize(trajectory.numberOfRecords());
  }
  countBytes(state);
}

// Of each group the first is the baseline.
BENCHMARK(lookUp<StdMap, false>)->Name("TrajectoryLookUpRandom/stdMap")->UseRealTime();
BENCHMARK(lookUp<Flat, false>)->Name("TrajectoryLookUpRandom/flat")->UseRealTime();
BENCHMARK(lookUp<StdMap, true>)->Name("TrajectoryLookUpInOrder/stdMap")->UseRealTime();
BENCHMARK(lookUp<Flat, true>)->Name("TrajectoryLookUpInOrder/flat")->UseRealTime();
BENCHMARK(readColumns)->Name("TrajectoryImport/readColumns")->Iterations(1)->UseRealTime();
BENCHMARK(import)->Name("TrajectoryImport/import")->Iterations(1)->UseRealTime();

}  // namespace
