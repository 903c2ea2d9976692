// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/StripShift.h"

#include <algorithm>
#include <cmath>

#include "platform/orvek/Figures.h"

namespace Velorn::Flights {
namespace {

using Geomra::PhysicalSpace::point;

constexpr std::int64_t around = 4;        // cells to each side that relief is measured above
constexpr std::size_t fewestAround = 27;  // of 81, so that a strip's border has no relief
constexpr std::size_t ofStrip = 16'000;   // cells of a strip that are remembered
constexpr std::size_t compared = 1000;    // cells of I
constexpr std::size_t fewestInCommon = 60;
constexpr double clearly = 0.85;  // of the difference without a shift

/// So many of the values, evenly, and no fewer than half of that where there are as many.
template <typename Value>
std::vector<Value> some(const std::vector<Value>& all, std::size_t most) {
  const std::size_t step = all.size() / most + 1;
  std::vector<Value> chosen;
  for (std::size_t k = 0; k < all.size(); k += step) chosen.push_back(all[k]);
  return chosen;
}

bool isNear(const HeightGrid& grid, const Cell& cell, std::int64_t cells) {
  for (const std::int64_t column : {-cells, std::int64_t{0}, cells}) {
    for (const std::int64_t row : {-cells, std::int64_t{0}, cells}) {
      if (grid.cells().find({cell.column + column, cell.row + row})) return true;
    }
  }
  return false;
}

/// Relief that differs by more counts alike: a wall that stands elsewhere is as wrong as a shed.
double capOf(const std::vector<ReliefCell>& samples) {
  std::vector<double> amounts;
  amounts.reserve(samples.size());
  for (const ReliefCell& one : samples) amounts.push_back(std::abs(one.relief));
  constexpr double most = 0.8;
  return std::max(0.05, OrvekStatistic::quantileInPlace(amounts, most));
}

class Comparison {
 public:
  Comparison(std::vector<ReliefCell> samples, const HeightGrid& j)
      : samples_(std::move(samples)), j_(j), cap_(capOf(samples_)) {}

  struct Score {
    double difference = 0.0;  // mean, capped [m]
    std::size_t cells = 0;
  };

  Score at(std::int64_t columns, std::int64_t rows) const {
    Score score;
    for (const ReliefCell& one : samples_) {
      const auto* const other = otherOf(one, columns, rows);
      if (!other || !other->hasRelief) continue;
      ++score.cells;
      score.difference += std::min(cap_, std::abs(static_cast<double>(other->relief) - one.relief));
    }
    if (score.cells > 0) score.difference /= static_cast<double>(score.cells);
    return score;
  }

  double heightAt(std::int64_t columns, std::int64_t rows) const {
    std::vector<double> differences;
    for (const ReliefCell& one : samples_) {
      const auto* const other = otherOf(one, columns, rows);
      if (other) differences.push_back(other->mean() - one.height);
    }
    return OrvekStatistic::quantileInPlace(differences, 0.5);
  }

 private:
  const HeightGrid::Height* otherOf(const ReliefCell& one, std::int64_t columns,
                                    std::int64_t rows) const {
    return j_.cells().find({one.cell.column + columns, one.cell.row + rows});
  }

  std::vector<ReliefCell> samples_;
  const HeightGrid& j_;
  double cap_;
};

}  // namespace

HeightGrid::HeightGrid(std::span<const point> points, double side) : side_(side) {
  for (const point& place : points) {
    if (!isOnEarth(place)) continue;
    Height& height = cells_[cellOf(place, side)];
    height.sum += place.z;
    ++height.points;
  }
  findRelief(CellTable<Height>(cells_));
}

void HeightGrid::findRelief(const CellTable<Height>& heights) {
  for (const auto& [cell, height] : heights.entries()) {
    double sum = 0.0;
    std::size_t cells = 0;
    for (std::int64_t column = -around; column <= around; ++column) {
      for (std::int64_t row = -around; row <= around; ++row) {
        const auto* const other = heights.find({cell.column + column, cell.row + row});
        if (!other) continue;
        sum += other->mean();
        ++cells;
      }
    }
    if (cells < fewestAround) continue;
    Height& own = cells_[cell];
    own.relief = static_cast<float>(height.mean() - sum / static_cast<double>(cells));
    own.hasRelief = true;
  }
}

double StripShift::length() const {
  return std::sqrt(east * east + north * north + up * up);
}

std::vector<ReliefCell> reliefOf(const HeightGrid& grid) {
  std::vector<ReliefCell> all;
  for (const auto& [cell, height] : grid.cells().entries()) {
    if (height.hasRelief) all.push_back({cell, height.mean(), static_cast<double>(height.relief)});
  }
  return some(all, ofStrip);
}

std::optional<StripShift> shiftBetween(std::span<const ReliefCell> i, const HeightGrid& j,
                                       double reach) {
  const auto most = static_cast<std::int64_t>(std::ceil(reach / j.side()));
  std::vector<ReliefCell> samples;
  std::ranges::copy_if(i, std::back_inserter(samples),
                       [&](const ReliefCell& one) { return isNear(j, one.cell, most / 2); });
  const Comparison comparison(some(samples, compared), j);
  const auto none = comparison.at(0, 0);
  if (none.cells < fewestInCommon) return {};
  auto best = none;
  std::int64_t east = 0, north = 0;
  for (std::int64_t columns = -most; columns <= most; ++columns) {
    for (std::int64_t rows = -most; rows <= most; ++rows) {
      const auto score = comparison.at(columns, rows);
      if (score.cells < fewestInCommon || 2 * score.cells < none.cells) continue;
      if (!(score.difference < best.difference)) continue;
      best = score;
      east = columns;
      north = rows;
    }
  }
  if (best.difference > clearly * none.difference) east = north = 0;
  return StripShift{static_cast<double>(east) * j.side(), static_cast<double>(north) * j.side(),
                    comparison.heightAt(east, north), best.cells};
}

}  // namespace Velorn::Flights
