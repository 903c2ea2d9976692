// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/MatchPoints.h"

#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "flight/strips/ParallelLoop.h"
#include "platform/morvane/Console.h"

namespace Velorn::Flights {
namespace {

using std::filesystem::path;

std::uint32_t weekOf(const GridFile& file) {
  return file.size() == 0 ? 0 : file.week();
}

/// A column that rasters have and strips have not.
std::vector<double> columnOfRaster(const GridFile& file, const char* name) {
  if (file.size() == 0) return {};
  return *file.world<double>(name, "this is no raster of a strip").whole();
}

/// The entries of a column that are kept; an empty column stays so.
template <typename T>
void keepOf(std::vector<T>& column, const std::vector<std::uint32_t>& numbers) {
  if (column.empty()) return;
  for (std::size_t k = 0; k < numbers.size(); ++k) column[k] = column[numbers[k]];
  column.resize(numbers.size());
  column.shrink_to_fit();
}

enum class Use : std::uint8_t { no, yes, notFinite };

Use useOf(const Velorn::DataBlock& block, std::size_t k, const Wanted& wanted) {
  const std::uint8_t code = (*block.rigorousClasses)[k];
  if (!isSurface(code)) return Use::no;
  const vector& beam = (*block.directionDeltas)[k];
  const bool isSound = isOnEarth((*block.world)[k]) && isOnEarth((*block.scanner)[k]) &&
                       std::isfinite(lengthOf(beam)) && std::isfinite((*block.times)[k]);
  if (!isSound) return Use::notFinite;
  return wanted((*block.world)[k]) ? Use::yes : Use::no;
}

void tellLeftOut(const path& file, std::size_t count, const char* why) {
  if (count == 0) return;
  Morvane::Console::writeLine(
      fmt::format("match: {}: {} points are left out: {}", file.string(), count, why));
}

/// Numbers of the points that are wanted.
std::vector<std::uint32_t> chosen(const path& file, const Velorn::DataBlock& block,
                                  const Wanted& wanted) {
  std::vector<Use> uses(block.world->size());
  forEachInParallel(0, uses.size(), 4096,
                    [&](std::size_t k) { uses[k] = useOf(block, k, wanted); });
  std::vector<std::uint32_t> numbers;
  std::size_t notFinite = 0;
  for (std::size_t k = 0; k < uses.size(); ++k) {
    if (uses[k] == Use::yes) numbers.push_back(static_cast<std::uint32_t>(k));
    notFinite += uses[k] == Use::notFinite ? 1 : 0;
  }
  tellLeftOut(file, notFinite, "a coordinate, beam or time is not finite or beyond 1e9");
  return numbers;
}

/// Columns that the matching has no use for go first.
MatchPoints pointsOf(const GridFile& file, Velorn::DataBlock block,
                     const std::vector<std::uint32_t>& numbers) {
  for (auto* column : {&block.returnNumbers, &block.numbersOfReturns, &block.classes}) {
    column->reset();
  }
  block.amplitudes.reset();
  MatchPoints points;
  points.delivered = std::move(*block.world);
  points.scanner = std::move(*block.scanner);
  points.times = std::move(*block.times);
  points.normals = std::move(*block.normals);
  points.beams = std::move(*block.directionDeltas);
  points.codes = std::move(*block.rigorousClasses);
  points.week = weekOf(file);
  points.keep(numbers);
  return points;
}

}  // namespace

void MatchPoints::keep(const std::vector<std::uint32_t>& numbers) {
  for (auto* column : {&delivered, &searched, &scanner}) keepOf(*column, numbers);
  for (auto* column : {&normals, &beams}) keepOf(*column, numbers);
  for (auto* column : {&times, &roughness, &heights}) keepOf(*column, numbers);
  keepOf(codes, numbers);
}

Velorn::DataBlock blockOf(const GridFile& file, bool worldOnly) {
  Velorn::DataBlock block;
  for (const Piece& piece : file.pieces()) {
    const auto fragment = std::make_shared<Strandel::FragmentId>(piece.fragment);
    const auto fault = block.appendData(file.grid(), fragment, worldOnly, !worldOnly);
    if (fault.empty()) continue;
    file.refuse("", fault + (worldOnly ? "" : "; a strip must be rasterized before it is matched"));
  }
  block.classes->resize(block.world->size());
  return block;
}

MatchPoints readStrip(const path& file, const Velorn::InputParameter& configuration,
                      const Wanted& wanted) {
  const GridFile container(file, configuration, Bare::noPoints);
  Velorn::DataBlock block = blockOf(container, false);
  const auto numbers = chosen(file, block, wanted);
  return pointsOf(container, std::move(block), numbers);
}

MatchPoints readRaster(const path& file, const Velorn::InputParameter& configuration,
                       const Wanted& wanted) {
  const GridFile container(file, configuration, Bare::noPoints);
  Velorn::DataBlock block = blockOf(container, false);
  const auto numbers = chosen(file, block, wanted);
  MatchPoints points = pointsOf(container, std::move(block), numbers);
  points.roughness = columnOfRaster(container, "Roughness");
  points.heights = columnOfRaster(container, "PlaneDistance");
  keepOf(points.roughness, numbers);
  keepOf(points.heights, numbers);
  return points;
}

std::uint32_t readWeek(const path& file, const Velorn::InputParameter& configuration) {
  return weekOf(GridFile(file, configuration, Bare::noPoints));
}

KnownPoints readGroundTruth(const path& file, const Velorn::InputParameter& configuration) {
  const auto block = blockOf(GridFile(file, configuration, Bare::noPoints), true);
  KnownPoints known;
  for (std::size_t k = 0; k < block.world->size(); ++k) {
    const vector& normal = (*block.normals)[k];
    const double length = lengthOf(normal);
    if (!isOnEarth((*block.world)[k]) || !std::isfinite(length) || !(length > 0.0)) continue;
    known.places.push_back((*block.world)[k]);
    known.normals.push_back((1.0 / length) * normal);
    known.codes.push_back((*block.classes)[k]);
  }
  tellLeftOut(file, block.world->size() - known.places.size(),
              "a coordinate is not finite or beyond 1e9, or there is no normal");
  return known;
}

}  // namespace Velorn::Flights
