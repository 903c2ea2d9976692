// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A strip of 10 million points through the container against the same bytes through plain write and
// read, on the same disk in the same run. VELORN_BENCH_FOLDER names the folder (default: the
// system's temporary folder), VELORN_BENCH_POINTS another number of points.
#include <filesystem>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "bench/Settings.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

using namespace Strandel;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

namespace {

const MyStorage storage(0, 0, 0, 1);

std::size_t points() {
  return std::stoul(setting("VELORN_BENCH_POINTS", "10000000"));
}

/// Values that differ from each other, cheaply.
template <typename T>
void fill(Chart& chart, const std::string& name) {
  std::vector<T> values(points());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double value = 1e-3 * static_cast<double>(i * 2654435761U % 1000003U);
    if constexpr (sizeof(T) == 3 * sizeof(double)) {
      values[i] = {5e5 + value, 5.3e6 - value, value};
    } else if constexpr (std::is_floating_point_v<T>) {
      values[i] = value;
    } else {
      values[i] = static_cast<T>(i * 2654435761U >> 7U);
    }
  }
  chart.makeField(name, valueTypeOf<T>())->template setValues<T>({0}, std::move(values));
}

Bundle makeStrip() {
  Bundle bundle;
  const auto grid = bundle.makeSlice(0)->makeGrid("strip");
  grid->attributes().set("WeekNumber", std::int64_t{2318});
  const auto world = grid->makeChart(worldChartName);
  fill<point>(*world, "Positions");
  fill<vector>(*world, "NormalVector");
  fill<double>(*world, "GPSTime");
  for (const char* name :
       {"ReturnNumber", "NumberOfReturns", "Classification", "RigorousClassification"}) {
    fill<std::uint8_t>(*world, name);
  }
  fill<std::uint16_t>(*world, "Amplitude");
  fill<std::uint16_t>(*world, "PointSourceID");
  const auto scanner = grid->makeChart(scannerChartName);
  fill<point>(*scanner, "Positions");
  fill<vector>(*scanner, "Waveforms.DirectionDelta");
  scanner->shareField(world->field("GPSTime"));
  return bundle;
}

/// Calls `use(field, values)` with every array of a bundle; a shared field once.
template <typename Use>
void forEachColumn(const Bundle& bundle, const Use& use) {
  const auto with = [&]<typename T>(const Field& field) {
    const auto read = field.values<T>({0});
    orThrow(read.error);
    use(field, static_cast<const void*>(read.values->data()), read.values->size() * sizeof(T));
  };
  for (const auto& [chartName, chart] : bundle.slice(0)->uniqueGrid()->charts()) {
    for (const auto& [name, field] : chart->fields()) {
      if (chartName == scannerChartName && name == "GPSTime") continue;
      switch (field->valueType()) {
        case ValueType::Point:
          with.template operator()<point>(*field);
          break;
        case ValueType::Vector:
          with.template operator()<vector>(*field);
          break;
        case ValueType::Double:
          with.template operator()<double>(*field);
          break;
        case ValueType::UInt16:
          with.template operator()<std::uint16_t>(*field);
          break;
        default:
          with.template operator()<std::uint8_t>(*field);
          break;
      }
    }
  }
}

void writeFully(int file, const void* data, std::size_t size) {
  const auto* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const auto written = write(file, bytes, size);
    if (written <= 0) throw std::runtime_error("write failed");
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
}

/// As the container does it: a new file, flushed, that takes the place of the old one.
void writeRaw(const Bundle& strip, const std::filesystem::path& path) {
  const auto temporary = path.string() + ".part";
  const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
  forEachColumn(strip, [&](const Field&, const void* data, std::size_t size) {
    writeFully(file, data, size);
  });
  fsync(file);
  close(file);
  std::filesystem::rename(temporary, path);
}

/// Reads the same arrays, each into a new array of its own, as the container does.
std::size_t readRaw(const std::filesystem::path& path, const std::vector<std::size_t>& sizes) {
  const int file = open(path.c_str(), O_RDONLY);
  std::size_t total = 0;
  for (const std::size_t size : sizes) {
    std::vector<char> bytes(size);
    std::size_t done = 0;
    while (done < size) {
      const auto got = read(file, bytes.data() + done, size - done);
      if (got <= 0) throw std::runtime_error("read failed");
      done += static_cast<std::size_t>(got);
    }
    benchmark::DoNotOptimize(bytes.data());
    total += done;
  }
  close(file);
  return total;
}

std::size_t readContainer(const std::filesystem::path& path) {
  Bundle bundle;
  orThrow(storage.load(path, bundle));
  std::size_t total = 0;
  forEachColumn(bundle, [&](const Field&, const void* data, std::size_t size) {
    benchmark::DoNotOptimize(data);
    total += size;
  });
  return total;
}

void dropFromCache(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY);
  fsync(file);
  posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
  close(file);
}

/// The strip in memory and on disk, both ways; the files go with the process.
struct Strip {
  Bundle bundle = makeStrip();
  std::filesystem::path raw = benchmarkFile("raw"), container = benchmarkFile("strip.kx");
  std::vector<std::size_t> sizes;
  std::size_t bytes = 0;

  Strip() {
    forEachColumn(bundle, [&](const Field&, const void*, std::size_t size) {
      sizes.push_back(size);
      bytes += size;
    });
    writeRaw(bundle, raw);
    orThrow(storage.save(bundle, container, "wd"));
  }
  ~Strip() {
    std::filesystem::remove(raw);
    std::filesystem::remove(container);
  }
  Strip(const Strip&) = delete;
  Strip& operator=(const Strip&) = delete;
};

Strip& strip() {
  static Strip instance;
  return instance;
}

template <typename Action>
void measure(benchmark::State& state, const Action& action) {
  Strip& all = strip();
  for (auto _ : state) action(all);
  state.SetBytesProcessed(
      static_cast<std::int64_t>(static_cast<std::size_t>(state.iterations()) * all.bytes));
}

template <typename Action>
void measureCold(benchmark::State& state, const std::filesystem::path Strip::*path,
                 const Action& action) {
  Strip& all = strip();
  for (auto _ : state) {
    state.PauseTiming();
    dropFromCache(all.*path);
    state.ResumeTiming();
    action(all);
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(static_cast<std::size_t>(state.iterations()) * all.bytes));
}

void writeRawFile(benchmark::State& state) {
  measure(state, [](Strip& all) { writeRaw(all.bundle, all.raw); });
}
void writeContainerFile(benchmark::State& state) {
  measure(state, [](Strip& all) { orThrow(storage.save(all.bundle, all.container, "wd")); });
}
void readRawWarm(benchmark::State& state) {
  measure(state, [](Strip& all) { readRaw(all.raw, all.sizes); });
}
void readContainerWarm(benchmark::State& state) {
  measure(state, [](Strip& all) { readContainer(all.container); });
}
void readRawCold(benchmark::State& state) {
  measureCold(state, &Strip::raw, [](Strip& all) { readRaw(all.raw, all.sizes); });
}
void readContainerCold(benchmark::State& state) {
  measureCold(state, &Strip::container, [](Strip& all) { readContainer(all.container); });
}
void openForGpsRange(benchmark::State& state) {
  Strip& all = strip();
  while (state.KeepRunning()) {
    Bundle bundle;
    orThrow(storage.load(all.container, bundle));
    const auto times = bundle.slice(0)->uniqueGrid()->chart(scannerChartName)->field("GPSTime");
    benchmark::DoNotOptimize(times->range().range->highest());
  }
}

// Of each group the first is the baseline.
#define VELORN_STRIP_BENCHMARK(function, name) \
  BENCHMARK(function)->Name(name)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond)
VELORN_STRIP_BENCHMARK(writeRawFile, "Write/raw");
VELORN_STRIP_BENCHMARK(writeContainerFile, "Write/container");
VELORN_STRIP_BENCHMARK(readRawWarm, "ReadWarmCache/raw");
VELORN_STRIP_BENCHMARK(readContainerWarm, "ReadWarmCache/container");
VELORN_STRIP_BENCHMARK(readRawCold, "ReadColdCache/raw");
VELORN_STRIP_BENCHMARK(readContainerCold, "ReadColdCache/container");
VELORN_STRIP_BENCHMARK(readContainerWarm, "GpsRange/readWhole");
VELORN_STRIP_BENCHMARK(openForGpsRange, "GpsRange/open");

}  // namespace
