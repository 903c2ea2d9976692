// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/correspondence/SideFile.h"

#include <fmt/format.h>

#include "adjustment/correspondence/FieldColumns.h"
#include "adjustment/correspondence/SideColumns.h"

namespace Velorn {
namespace {

template <typename T>
using Column = SphericalBeingData::Column<T>;

constexpr const char* weekAttribute = "weeknumber";

std::string sideRefused(const std::string& fault) {
  return "SphericalBeingData::SphericalBeingData: " + fault;
}

template <Strandel::Value T>
std::string readColumn(const Strandel::ChartPtr& chart, const char* name, Column<T>& column) {
  const auto field = fieldOf(chart, name, Strandel::valueTypeOf<T>());
  if (!field) return sideRefused(std::string("No field for") + name);
  if (fragmentsWithChunk(*field).empty()) return sideRefused(std::string("No Chunk for ") + name);
  auto read = allValues<T>(*field);
  if (!read.values) return sideRefused(read.error);
  column = std::move(read.values);
  return {};
}

/// A reader of one column after the other, up to the first fault.
auto readerOf(const Strandel::ChartPtr& chart, std::string& fault) {
  return [&](const char* name, auto& column) {
    if (fault.empty()) fault = readColumn(chart, name, column);
  };
}

std::string readWeek(SphericalBeingData& side) {
  const auto week = side.grid->attributes().unsigned32(weekAttribute);
  if (!week) return sideRefused("No weeknumber");
  side.weekNumber = *week;
  return {};
}

/// Which column does not fit the positions. Equal sums over other fragments would pair values of
/// different points.
std::string unequalColumn(const SphericalBeingData& side) {
  const auto& positions = *side.chart->field("Positions");
  std::string fault;
  forEachColumn(side, [&](const char* name, const auto& column) {
    const auto& field = *side.chart->field(name);
    const auto fragments = fragmentsWithChunk(field);
    const auto expected = fragmentsWithChunk(positions);
    if (!fault.empty() || (column->size() == side.size() && fragments == expected)) return;
    fault = fmt::format("{} holds {} values in {} fragments, Positions {} in {}", name,
                        column->size(), fragments.size(), side.size(), expected.size());
    if (column->size() == side.size()) fault += ", of other numbers or lengths";
  });
  return fault;
}

/// The field of that name with at most the one fragment that a side is stored in. What else a
/// foreign file says of the field stays.
Strandel::FieldPtr wholeField(Strandel::Chart& chart, const char* name, Strandel::ValueType type) {
  auto before = chart.makeField(name, type);
  const auto fragments = before->fragments();
  if (fragments.empty() || fragments == std::vector{Strandel::FragmentId{0}}) return before;
  chart.removeField(name);
  auto field = chart.makeField(name, type);
  field->attributes() = before->attributes();
  field->setStored(before->stored());
  return field;
}

}  // namespace

std::string loadSide(const Strandel::GridPtr& grid, const std::filesystem::path& file,
                     SphericalBeingData& side) {
  if (!grid) return sideRefused("No grid");
  side.grid = grid;
  side.chart = grid->cartesian();
  if (!side.chart) return sideRefused("No rep");
  std::string fault;
  forEachSurfaceColumn(side, readerOf(side.chart, fault));
  if (fault.empty()) fault = readWeek(side);
  forEachMeasuredColumn(side, readerOf(side.chart, fault));
  if (!fault.empty()) return fault;
  const auto unequal = unequalColumn(side);
  if (unequal.empty()) return {};
  return fmt::format("CorrespondenceBlock::load: {}: {}: {}", file.string(), grid->name(), unequal);
}

std::string storeSide(const SphericalBeingData& side) {
  side.grid->attributes().set(weekAttribute, std::int64_t{side.weekNumber});
  std::string fault;
  forEachColumn(side, [&]<typename T>(const char* name, const Column<T>& column) {
    if (!fault.empty()) return;
    const auto field = wholeField(*side.chart, name, Strandel::valueTypeOf<T>());
    fault = field->template setValues<T>({0}, column);
  });
  return fault;
}

}  // namespace Velorn
