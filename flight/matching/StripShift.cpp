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
constexpr std::size_t sampled = 1000;     // cells of I that are compared
constexpr std::size_t fewestInCommon = 60;
constexpr double clearly = 0.85;  // of the difference without a shift

struct Sample {
  Cell cell;
  double height, relief;
};

/// Cells of I that have relief, evenly from all of them that J's cells surround.
std::vector<Sample> samplesOf(const HeightGrid& i) {
  std::vector<Sample> all;
  for (const auto& [cell, height] : i.cells().entries()) {
    if (height.hasRelief) all.push_back({cell, height.mean(), static_cast<double>(height.relief)});
  }
  return all;
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
double capOf(const std::vector<Sample>& samples) {
  std::vector<double> amounts;
  amounts.reserve(samples.size());
  for (const Sample& one : samples) amounts.push_back(std::abs(one.relief));
  constexpr double most = 0.8;
  return std::max(0.05, OrvekStatistic::quantileInPlace(amounts, most));
}

class Comparison {
 public:
  Comparison(std::vector<Sample> samples, const HeightGrid& j)
      : samples_(std::move(samples)), j_(j), cap_(capOf(samples_)) {}

  struct Score {
    double difference = 0.0;  // mean, capped [m]
    std::size_t cells = 0;
  };

  Score at(std::int64_t columns, std::int64_t rows) const {
    Score score;
    for (const Sample& one : samples_) {
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
    for (const Sample& one : samples_) {
      const auto* const other = otherOf(one, columns, rows);
      if (other) differences.push_back(other->mean() - one.height);
    }
    return OrvekStatistic::quantileInPlace(differences, 0.5);
  }

 private:
  const HeightGrid::Height* otherOf(const Sample& one, std::int64_t columns,
                                    std::int64_t rows) const {
    return j_.cells().find({one.cell.column + columns, one.cell.row + rows});
  }

  std::vector<Sample> samples_;
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

std::optional<StripShift> shiftBetween(const HeightGrid& i, const HeightGrid& j, double reach) {
  const auto most = static_cast<std::int64_t>(std::ceil(reach / i.side()));
  std::vector<Sample> samples = samplesOf(i);
  std::erase_if(samples, [&](const Sample& one) { return !isNear(j, one.cell, most / 2); });
  const std::size_t step = samples.size() / sampled + 1;
  std::vector<Sample> some;
  for (std::size_t k = 0; k < samples.size(); k += step) some.push_back(samples[k]);
  const Comparison comparison(std::move(some), j);
  const auto none = comparison.at(0, 0);
  auto best = none;
  std::int64_t east = 0, north = 0;
  for (std::int64_t columns = -most; columns <= most; ++columns) {
    for (std::int64_t rows = -most; rows <= most; ++rows) {
      const auto score = comparison.at(columns, rows);
      if (score.cells < fewestInCommon || 2 * score.cells < none.cells) continue;
      if (best.cells >= fewestInCommon && !(score.difference < best.difference)) continue;
      best = score;
      east = columns;
      north = rows;
    }
  }
  if (best.cells < fewestInCommon) return {};
  if (none.cells >= fewestInCommon && best.difference > clearly * none.difference) {
    east = north = 0;
  }
  return StripShift{static_cast<double>(east) * i.side(), static_cast<double>(north) * i.side(),
                    comparison.heightAt(east, north), best.cells};
}

}  // namespace Velorn::Flights
