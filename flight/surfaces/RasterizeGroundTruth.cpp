// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "flight/strips/EnoughMemory.h"
#include "flight/surfaces/MatchPoints.h"
#include "flight/surfaces/RasterFile.h"
#include "flight/surfaces/Rasterize.h"
#include "flight/surfaces/Representatives.h"

namespace Velorn::Flights {
namespace {

constexpr std::size_t groundTruthClass = 0;

/// Unit and upward; zero when the vector has no direction.
vector upward(const vector& normal) {
  const double length = std::hypot(normal.x, normal.y, normal.z);
  if (!(length > 0.0) || !std::isfinite(length)) return {};
  return (normal.z < 0.0 ? -1.0 : 1.0) / length * normal;
}

/// Numbers of the points that can be matched; makes their normals unit ones.
std::vector<std::uint32_t> usable(const Velorn::DataBlock& block, RasterCounts& counts) {
  std::vector<std::uint32_t> members;
  for (std::size_t i = 0; i < block.world->size(); ++i) {
    vector& normal = (*block.normals)[i];
    normal = upward(normal);
    if (!isOnEarth((*block.world)[i])) {
      ++counts.notFinite;
    } else if (normal == vector{}) {
      ++counts.notPlanar;
    } else {
      members.push_back(static_cast<std::uint32_t>(i));
    }
  }
  return members;
}

template <typename T>
void add(Strandel::Chart& chart, const char* name, const std::vector<T>& all,
         std::span<const std::uint32_t> chosen) {
  std::vector<T> values;
  for (const std::uint32_t i : chosen) values.push_back(all[i]);
  orFail(chart.makeField(name, Strandel::valueTypeOf<T>())
             ->template setValues<T>({0}, std::move(values)));
}

RasterCounts rasterize(const GridFile& file, const std::filesystem::path& raster,
                       const Velorn::InputParameter& configuration) {
  const Velorn::DataBlock block = blockOf(file);
  RasterCounts counts;
  const auto members = usable(block, counts);
  const auto chosen =
      representatives(*block.world, members, configuration.CellSize[groundTruthClass]);
  counts.points = block.world->size();
  counts.surface[groundTruthClass] = members.size();
  counts.representatives[groundTruthClass] = chosen.size();
  Strandel::Bundle bundle;
  const auto world =
      bundle.makeSlice(0.0)->makeGrid(file.grid().name())->makeChart(Strandel::worldChartName);
  add(*world, "Positions", *block.world, chosen);
  add(*world, "NormalVector", *block.normals, chosen);
  add(*world, "Classification", *block.classes, chosen);
  saveBundle(bundle, raster, *storageOf(configuration));
  return counts;
}

}  // namespace

RasterCounts rasterizeGroundTruth(const std::filesystem::path& groundTruth,
                                  const std::filesystem::path& raster,
                                  const Velorn::InputParameter& configuration) {
  check(configuration);
  refuseSameFile(groundTruth, raster);
  return withMemoryFor(groundTruth.string(), [&] {
    return rasterize(GridFile(groundTruth, configuration), raster, configuration);
  });
}

}  // namespace Velorn::Flights
