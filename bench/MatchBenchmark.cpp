// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The search of partners in a strip of 10 points per square metre, for a tenth as many candidates,
// against nanoflann's bare queries for the nearest point, on one thread, in one tree of all points.
//
//     VELORN_BENCH_POINTS    points of the strip, 2000000 unless set; growth goes to 8 times as
//     many
#include <cmath>
#include <memory>
#include <nanoflann.hpp>
#include <string>

#include <benchmark/benchmark.h>
#include <omp.h>

#include "bench/MatchedStrips.h"
#include "bench/Settings.h"
#include "flight/matching/PairSearch.h"
#include "host/KeptMemory.h"

namespace {

using namespace Velorn::Flights;

[[maybe_unused]] const bool isAsInTheProgram = (keepFreedMemory(), true);

constexpr std::size_t nth = 10;  // of the other strip's points is a candidate

std::size_t pointCount() {
  return std::stoul(setting("VELORN_BENCH_POINTS", "2000000"));
}

struct Strips {
  MatchPoints points, candidates;
  explicit Strips(std::size_t count) : points(waves(count, 1)), candidates(waves(count, 2, nth)) {}
};

/// The last one made; one at a time is held.
const Strips& strips(std::size_t count) {
  static std::unique_ptr<Strips> last;
  if (!last || last->points.size() != count) {
    last.reset();
    last = std::make_unique<Strips>(count);
  }
  return *last;
}

SearchRules rules() {
  return {3.0, std::cos(0.0873), true, 16, 5.0};
}

struct Coordinates {
  const std::vector<point>& places;
  std::size_t kdtree_get_point_count() const { return places.size(); }
  double kdtree_get_pt(std::size_t k, std::size_t axis) const { return (&places[k].x)[axis]; }
  template <typename Box>
  bool kdtree_get_bbox(Box&) const {
    return false;
  }
};
using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Coordinates>,
                                                 Coordinates, 3, std::uint32_t>;

void treeOfAll(benchmark::State& state) {
  const Strips& all = strips(pointCount());
  for (auto _ : state) {
    const Coordinates coordinates{all.points.delivered};
    Tree tree(3, coordinates, {10});
    tree.buildIndex();
    benchmark::DoNotOptimize(&tree);
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(all.points.size()));
}

void tiles(benchmark::State& state) {
  const Strips& all = strips(pointCount());
  omp_set_num_threads(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const PartnerSearch search(all.points, rules());
    benchmark::DoNotOptimize(&search);
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(all.points.size()));
}

void bareQueries(benchmark::State& state) {
  const Strips& all = strips(pointCount());
  const Coordinates coordinates{all.points.delivered};
  Tree tree(3, coordinates, {10});
  tree.buildIndex();
  for (auto _ : state) {
    for (const point& from : all.candidates.delivered) {
      std::uint32_t number = 0;
      double square = 0.0;
      tree.knnSearch(&from.x, 1, &number, &square);
      benchmark::DoNotOptimize(number);
    }
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(all.candidates.size()));
}

void partners(benchmark::State& state) {
  const Strips& all = strips(pointCount());
  omp_set_num_threads(static_cast<int>(state.range(0)));
  const PartnerSearch search(all.points, rules());
  for (auto _ : state) {
    CandidateTally tally;
    const auto found = searchPartners(all.candidates, search, tally, [](std::size_t) {});
    if (found.size() * 2 < all.candidates.size()) state.SkipWithError("too few are found");
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(all.candidates.size()));
}

/// Trees and search for a multiple of the points.
void growth(benchmark::State& state) {
  const Strips& all = strips(pointCount() * static_cast<std::size_t>(state.range(0)));
  omp_set_num_threads(2);
  for (auto _ : state) {
    CandidateTally tally;
    const PartnerSearch search(all.points, rules());
    const auto found = searchPartners(all.candidates, search, tally, [](std::size_t) {});
    benchmark::DoNotOptimize(found.data());
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(all.points.size()));
}

// Of each group the first is the baseline.
#define VELORN_MATCH_BENCHMARK(function, name) \
  BENCHMARK(function)->Name(name)->UseRealTime()->Unit(benchmark::kMillisecond)
VELORN_MATCH_BENCHMARK(treeOfAll, "MatchTrees/nanoflann");
VELORN_MATCH_BENCHMARK(tiles, "MatchTrees/tiles1")->Arg(1);
VELORN_MATCH_BENCHMARK(tiles, "MatchTrees/tiles2")->Arg(2);
VELORN_MATCH_BENCHMARK(bareQueries, "MatchSearch/nanoflann");
VELORN_MATCH_BENCHMARK(partners, "MatchSearch/partners1")->Arg(1);
VELORN_MATCH_BENCHMARK(partners, "MatchSearch/partners2")->Arg(2);
VELORN_MATCH_BENCHMARK(growth, "MatchGrowth/once")->Arg(1);
VELORN_MATCH_BENCHMARK(growth, "MatchGrowth/twice")->Arg(2);
VELORN_MATCH_BENCHMARK(growth, "MatchGrowth/fourTimes")->Arg(4);
VELORN_MATCH_BENCHMARK(growth, "MatchGrowth/eightTimes")->Arg(8);

}  // namespace
