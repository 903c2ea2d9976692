// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/correspondence/FieldColumns.h"
#include "adjustment/correspondence/LoadedBundle.h"
#include "platform/morvane/Console.h"
#include <velorn/DataBlock.h>

namespace Velorn {
namespace {

using Geomra::PhysicalSpace::point;
using Positions = std::shared_ptr<const std::vector<point>>;

Positions nothing(const std::filesystem::path& path, const std::string& why) {
  Morvane::Console::writeLine("loadPositions: file " + path.string() + why);
  return std::make_shared<const std::vector<point>>();
}

}  // namespace

std::shared_ptr<const std::vector<point>> loadPositions(const std::filesystem::path& path,
                                                        const InputParameter& parameter) {
  const auto bundle = loadedBundle(path, parameter.Storage.get());
  if (!bundle) return nothing(path, " is null");
  const auto slices = bundle->slices();
  const auto grids = slices.empty() ? 0 : slices.front()->numberOfGrids();
  if (grids == 0) return nothing(path, " has NumberOfGrids = 0");
  const auto grid =
      grids == 1 ? slices.front()->uniqueGrid() : slices.front()->grid(parameter.GridName);
  const auto chart = grid ? grid->cartesian() : nullptr;
  const auto field = fieldOf(chart, "Positions", Strandel::ValueType::Point);
  if (!field || fragmentsWithChunk(*field).empty()) return nothing(path, " has no positions");
  auto positions = allValues<point>(*field);
  if (positions.values) return positions.values;
  Morvane::Console::writeLine(positions.error);
  return nothing(path, " has no positions");
}

}  // namespace Velorn
