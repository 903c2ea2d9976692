// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the planes through all neighbourhoods of a strip take, against nanoflann's bare query for
// the nearest neighbours of the same points (one tree of all, its building included). Groups are
// numbers of points: 2 and 8 million, or those that VELORN_BENCH_RASTER_POINTS names ("2 8 32 64").
//
// Rounds: the planes that a round from coarse to fine fits anew, thinning included, against those
// of all points; scale 4 is the first of four coarse rounds, scale 1 is that of those after them.
#include <array>
#include <nanoflann.hpp>
#include <numeric>
#include <sstream>
#include <vector>

#include <benchmark/benchmark.h>
#include <omp.h>

#include "bench/Settings.h"
#include "bench/Swath.h"
#include "flight/surfaces/Cubes.h"
#include "flight/surfaces/Surface.h"

namespace {

using namespace Velorn::Flights;

constexpr unsigned neighbours = 16;

struct PointsForTree {
  const std::vector<point>& points;
  std::size_t kdtree_get_point_count() const { return points.size(); }
  double kdtree_get_pt(std::size_t i, std::size_t axis) const {
    return axis == 0 ? points[i].x : axis == 1 ? points[i].y : points[i].z;
  }
  template <typename Box>
  bool kdtree_get_bbox(Box& /*box*/) const {
    return false;
  }
};

void countPoints(benchmark::State& state, std::size_t count) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

/// The baseline, on one thread.
void bareQuery(benchmark::State& state, std::size_t count) {
  using Metric = nanoflann::L2_Simple_Adaptor<double, PointsForTree>;
  const auto points = swath(count);
  const PointsForTree cloud{points};
  for (auto _ : state) {
    nanoflann::KDTreeSingleIndexAdaptor<Metric, PointsForTree, 3, std::size_t> tree(3, cloud, {10});
    std::array<std::size_t, neighbours> numbers;
    std::array<double, neighbours> squares;
    for (const point& place : points) {
      benchmark::DoNotOptimize(
          tree.knnSearch(&place.x, neighbours, numbers.data(), squares.data()));
    }
  }
  countPoints(state, count);
}

void planes(benchmark::State& state, std::size_t count, int threads) {
  const auto points = swath(count);
  const std::vector<Cloud> clouds(count, Cloud::last);
  omp_set_num_threads(threads);
  for (auto _ : state) {
    const Surface surface = surfaceOf(points, clouds, {neighbours, 5.0}, [](std::size_t) {});
    benchmark::DoNotOptimize(surface.normals.data());
  }
  countPoints(state, count);
}

void coarseRound(benchmark::State& state, std::size_t count, double scale) {
  const auto points = swath(count);
  std::vector<std::uint32_t> members(count);
  std::iota(members.begin(), members.end(), 0U);
  omp_set_num_threads(2);
  for (auto _ : state) {
    const double side = 0.5 * scale * spacingOf(points, members, 5.0);
    std::vector<point> kept;
    for (const auto k : onePerCube(points, members, side)) kept.push_back(points[k]);
    const std::vector<Cloud> clouds(kept.size(), Cloud::last);
    const Surface surface =
        surfaceOf(kept, clouds, {4 * neighbours, 5.0 * scale}, [](std::size_t) {});
    benchmark::DoNotOptimize(surface.normals.data());
  }
  countPoints(state, count);
}

const bool added = [] {
  const auto with = [](auto* benchmark) {
    benchmark->Unit(benchmark::kSecond)->UseRealTime()->MeasureProcessCPUTime();
  };
  constexpr std::size_t ofRounds = 2'000'000;
  with(benchmark::RegisterBenchmark("Rounds/allPoints", planes, ofRounds, 2));
  for (const int scale : {1, 2, 4}) {
    with(benchmark::RegisterBenchmark(("Rounds/scale" + std::to_string(scale)).c_str(), coarseRound,
                                      ofRounds, scale));
  }
  std::istringstream millions(setting("VELORN_BENCH_RASTER_POINTS", "2 8"));
  for (std::size_t million = 0; millions >> million;) {
    const std::string group = "Surface" + std::to_string(million) + "Million/";
    const std::size_t count = million * 1'000'000;
    with(benchmark::RegisterBenchmark((group + "nanoflann").c_str(), bareQuery, count));
    for (const int threads : {1, 2}) {
      with(benchmark::RegisterBenchmark((group + "planes" + std::to_string(threads)).c_str(),
                                        planes, count, threads));
    }
  }
  return true;
}();

}  // namespace
