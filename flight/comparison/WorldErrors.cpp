// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/comparison/WorldErrors.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "flight/strips/Median.h"

namespace Velorn::Flights::Comparison {
namespace {

using Geomra::PhysicalSpace::vector;
using Velorn::TerrainType;

/// Root mean square of errors from which a shift is taken, by their moments; rounding must not make
/// the square negative.
double rmsOf(double squares, double sumAlongShift, double shiftSquare, double number) {
  return std::sqrt(std::max(0.0, (squares - 2.0 * sumAlongShift) / number + shiftSquare));
}

}  // namespace

void WorldErrors::add(std::size_t strip, TerrainType kind, const vector& error) {
  if (!std::isfinite(error.x + error.y + error.z)) {
    ++notFinite_;
    return;
  }
  Cell& cell = cells_[strip].at(static_cast<std::size_t>(kind));
  cell.sum = cell.sum + error;
  cell.horizontalSquares += error.x * error.x + error.y * error.y;
  cell.verticalSquares += error.z * error.z;
  cell.horizontal.push_back(static_cast<float>(std::hypot(error.x, error.y)));
  cell.vertical.push_back(static_cast<float>(std::abs(error.z)));
}

WorldErrors::Cells WorldErrors::everything() const {
  Cells cells;
  for (const auto& strip : cells_) {
    for (const Cell& cell : strip) cells.push_back(&cell);
  }
  return cells;
}

vector WorldErrors::shift() const {
  vector sum{0, 0, 0};
  std::size_t number = 0;
  for (const Cell* cell : everything()) {
    sum = sum + cell->sum;
    number += cell->horizontal.size();
  }
  return number == 0 ? unknownFigure * vector{1, 1, 1} : (1.0 / static_cast<double>(number)) * sum;
}

ErrorFigures WorldErrors::figuresOf(const Cells& cells) const {
  vector sum{0, 0, 0};
  TwoParts squares{0.0, 0.0};
  std::vector<float> horizontal, vertical;
  for (const Cell* cell : cells) {
    sum = sum + cell->sum;
    squares.horizontal += cell->horizontalSquares;
    squares.vertical += cell->verticalSquares;
    horizontal.insert(horizontal.end(), cell->horizontal.begin(), cell->horizontal.end());
    vertical.insert(vertical.end(), cell->vertical.begin(), cell->vertical.end());
  }
  ErrorFigures figures{horizontal.size(), {}, {}, {}};
  if (figures.points == 0) return figures;
  const auto n = static_cast<double>(figures.points);
  const vector c = shift();
  figures.rms = {std::sqrt(squares.horizontal / n), std::sqrt(squares.vertical / n)};
  figures.median = {upperMedianOf(std::move(horizontal)), upperMedianOf(std::move(vertical))};
  figures.rmsWithoutShift = {
      rmsOf(squares.horizontal, c.x * sum.x + c.y * sum.y, c.x * c.x + c.y * c.y, n),
      rmsOf(squares.vertical, c.z * sum.z, c.z * c.z, n)};
  return figures;
}

ErrorFigures WorldErrors::all() const {
  return figuresOf(everything());
}

ErrorFigures WorldErrors::ofKind(TerrainType kind) const {
  Cells cells;
  for (const auto& strip : cells_) cells.push_back(&strip.at(static_cast<std::size_t>(kind)));
  return figuresOf(cells);
}

ErrorFigures WorldErrors::ofStrip(std::size_t strip) const {
  Cells cells;
  for (const Cell& cell : cells_.at(strip)) cells.push_back(&cell);
  return figuresOf(cells);
}

}  // namespace Velorn::Flights::Comparison
