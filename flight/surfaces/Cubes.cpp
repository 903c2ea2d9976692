// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/Cubes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <tuple>

#include "flight/strips/Median.h"
#include "flight/surfaces/PointTiles.h"

namespace Velorn::Flights {
namespace {

struct InCube {
  Cell cell;
  std::int64_t layer;
  double square;  // of the distance from the cube's centre [m²]
  std::uint32_t number;

  auto cube() const { return std::tie(cell.column, cell.row, layer); }
};

double fromMiddle(double coordinate, std::int64_t index, double side) {
  return coordinate - (static_cast<double>(index) + 0.5) * side;
}

InCube inCube(const point& place, std::uint32_t number, double side) {
  InCube in{cellOf(place, side), static_cast<std::int64_t>(std::floor(place.z / side)), 0, number};
  const double x = fromMiddle(place.x, in.cell.column, side),
               y = fromMiddle(place.y, in.cell.row, side), z = fromMiddle(place.z, in.layer, side);
  in.square = x * x + y * y + z * z;
  return in;
}

}  // namespace

std::vector<std::uint32_t> onePerCube(std::span<const point> points,
                                      std::span<const std::uint32_t> members, double side) {
  std::vector<InCube> all;
  all.reserve(members.size());
  for (const std::uint32_t i : members) all.push_back(inCube(points[i], i, side));
  std::sort(all.begin(), all.end(), [](const InCube& a, const InCube& b) {
    return std::tuple_cat(a.cube(), std::tie(a.square, a.number)) <
           std::tuple_cat(b.cube(), std::tie(b.square, b.number));
  });
  const auto end = std::unique(all.begin(), all.end(), [](const InCube& a, const InCube& b) {
    return a.cube() == b.cube();
  });
  std::vector<std::uint32_t> chosen;
  for (auto one = all.begin(); one != end; ++one) chosen.push_back(one->number);
  std::sort(chosen.begin(), chosen.end());
  return chosen;
}

double spacingOf(std::span<const point> points, const std::vector<std::uint32_t>& members,
                 double radius) {
  constexpr std::size_t samples = 2000, neighbours = 16;
  const PointTiles tiles(points, members);
  const std::size_t step = std::max<std::size_t>(1, members.size() / samples);
  std::vector<float> spacings;
  for (std::size_t k = 0; k < members.size(); k += step) {
    std::vector<Neighbour> room(neighbours);
    Neighbours found(room, radius);
    tiles.search(points[members[k]], found);
    const bool isAll = found.found().size() == neighbours;
    const double square = isAll ? found.found().back().square : radius * radius;
    spacings.push_back(static_cast<float>(std::sqrt(square * std::numbers::pi / neighbours)));
  }
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  if (spacings.empty()) return none;
  const double spacing = upperMedianOf(std::move(spacings));
  return spacing < 0.999 * radius * std::sqrt(std::numbers::pi / neighbours) ? spacing : none;
}

}  // namespace Velorn::Flights
