// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/MatchPoints.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include <fmt/format.h>

#include "flight/strips/ParallelLoop.h"
#include "platform/morvane/Console.h"

namespace Velorn::Flights {
namespace {

using std::filesystem::path;

/// A column of the world chart, or of the scanner's.
template <typename T>
std::vector<T> columnOf(const GridFile& file, const char* name, bool isWorld = true) {
  const std::string advice = "this is no file of planar points: rasterize the strip";
  const auto field = isWorld ? file.world<T>(name, advice) : file.scanner<T>(name, advice);
  std::vector<T> column;
  column.reserve(file.size());
  field.forEachBlock(
      [&](std::size_t, auto values) { column.insert(column.end(), values.begin(), values.end()); });
  return column;
}

/// The entries of a column that are kept; an empty column stays so.
template <typename T>
void keepOf(std::vector<T>& column, const std::vector<std::uint32_t>& numbers) {
  if (column.empty()) return;
  for (std::size_t k = 0; k < numbers.size(); ++k) column[k] = column[numbers[k]];
  column.resize(numbers.size());
  column.shrink_to_fit();
}

template <typename T>
std::vector<T> chosenOf(const std::vector<T>& column, const std::vector<std::uint32_t>& numbers) {
  std::vector<T> chosen;
  if (column.empty()) return chosen;
  chosen.reserve(numbers.size());
  for (const std::uint32_t number : numbers) chosen.push_back(column[number]);
  return chosen;
}

bool isSound(const MatchPoints& points, std::size_t k) {
  return isOnEarth(points.delivered[k]) && isOnEarth(points.scanner[k]) &&
         std::isfinite(lengthOf(points.beams[k])) && std::isfinite(points.times[k]);
}

void tellLeftOut(const path& file, std::size_t count, const char* why) {
  if (count == 0) return;
  Morvane::Console::writeLine(
      fmt::format("match: {}: {} points are left out: {}", file.string(), count, why));
}

}  // namespace

void MatchPoints::keep(const std::vector<std::uint32_t>& numbers) {
  for (auto* column : {&delivered, &searched, &scanner}) keepOf(*column, numbers);
  for (auto* column : {&normals, &beams}) keepOf(*column, numbers);
  for (auto* column : {&times, &roughness, &heights}) keepOf(*column, numbers);
  keepOf(codes, numbers);
}

MatchPoints MatchPoints::at(const std::vector<std::uint32_t>& numbers) const {
  const auto of = [&](const auto& column) { return chosenOf(column, numbers); };
  return {of(delivered), of(searched), of(scanner),   of(times),   of(normals),
          of(beams),     of(codes),    of(roughness), of(heights), week};
}

std::size_t MatchPoints::bytes() const {
  const auto of = [](const auto&... columns) {
    return ((columns.size() * sizeof(columns[0])) + ... + 0);
  };
  return of(delivered, searched, scanner, times, normals, beams, codes, roughness, heights);
}

Velorn::DataBlock blockOf(const GridFile& file) {
  Velorn::DataBlock block;
  for (const Piece& piece : file.pieces()) {
    const auto fragment = std::make_shared<Strandel::FragmentId>(piece.fragment);
    const auto fault = block.appendData(file.grid(), fragment, true, false);
    if (!fault.empty()) file.refuse("", fault);
  }
  block.classes->resize(block.world->size());
  return block;
}

std::vector<std::uint32_t> numbersOf(const MatchPoints& points, const Wanted& wanted) {
  std::vector<std::uint8_t> uses(points.size());
  forEachInParallel(0, uses.size(), 4096,
                    [&](std::size_t k) { uses[k] = wanted(points.delivered[k]) ? 1 : 0; });
  std::vector<std::uint32_t> numbers;
  for (std::size_t k = 0; k < uses.size(); ++k) {
    if (uses[k] != 0) numbers.push_back(static_cast<std::uint32_t>(k));
  }
  return numbers;
}

void keepSound(const path& file, MatchPoints& points) {
  std::vector<std::uint32_t> numbers;
  std::size_t unsound = 0;
  for (std::size_t k = 0; k < points.size(); ++k) {
    if (!isSurface(points.codes[k])) continue;
    if (isSound(points, k)) {
      numbers.push_back(static_cast<std::uint32_t>(k));
    } else {
      ++unsound;
    }
  }
  tellLeftOut(file, unsound, "a coordinate, beam or time is not finite or beyond 1e9");
  if (numbers.size() < points.size()) points.keep(numbers);
}

void addMeasured(const GridFile& strip, std::span<const std::uint32_t> numbers,
                 MatchPoints& points) {
  points.delivered = strip.world<point>("Positions").at(numbers);
  points.scanner = strip.scanner<point>("Positions").at(numbers);
  points.times = strip.world<double>("GPSTime").at(numbers);
  points.beams = strip.scanner<vector>("Waveforms.DirectionDelta").at(numbers);
  points.week = strip.week();
}

MatchPoints readPlanarPoints(const path& planar, const path& strip,
                             const Velorn::InputParameter& configuration) {
  const GridFile found(planar, configuration, Bare::noPoints, countedByNumbers);
  if (found.size() == 0) return {};
  const auto numbers = columnOf<std::uint32_t>(found, numbersName);
  const GridFile measured(strip, configuration);
  const bool areAscending =
      std::adjacent_find(numbers.begin(), numbers.end(), std::greater_equal<>()) == numbers.end();
  if (!areAscending || numbers.back() >= measured.size()) {
    found.refuse(numbersName,
                 fmt::format("these are not numbers of the {} points of {}: rasterize again",
                             measured.size(), strip.string()));
  }
  MatchPoints points;
  addMeasured(measured, numbers, points);
  points.normals = columnOf<vector>(found, "NormalVector");
  points.codes = columnOf<std::uint8_t>(found, "RigorousClassification");
  keepSound(strip, points);
  return points;
}

MatchPoints readMatchPoints(const path& file, const Velorn::InputParameter& configuration) {
  const GridFile container(file, configuration, Bare::noPoints);
  if (container.size() == 0) return {};
  MatchPoints points;
  points.delivered = columnOf<point>(container, "Positions");
  points.scanner = columnOf<point>(container, "Positions", false);
  points.times = columnOf<double>(container, "GPSTime");
  points.normals = columnOf<vector>(container, "NormalVector");
  points.beams = columnOf<vector>(container, "Waveforms.DirectionDelta", false);
  points.codes = columnOf<std::uint8_t>(container, "RigorousClassification");
  points.roughness = columnOf<double>(container, "Roughness");
  points.heights = columnOf<double>(container, "PlaneDistance");
  points.week = container.week();
  keepSound(file, points);
  return points;
}

KnownPoints readGroundTruth(const path& file, const Velorn::InputParameter& configuration) {
  const auto block = blockOf(GridFile(file, configuration, Bare::noPoints));
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
