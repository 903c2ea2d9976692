// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/SelectedPoints.h"

#include <fmt/format.h>

#include "flight/surfaces/TerrainClasses.h"

namespace Velorn::Flights {
namespace {

bool isScalar(const Strandel::Field& field) {
  return infoOf(field.valueType()).components == 1;
}

/// Calls use(a value of the field's type) for a field of scalars.
template <typename Use>
void withTypeOf(const Strandel::Field& field, const Use& use) {
  using Strandel::ValueType;
  switch (field.valueType()) {
    case ValueType::Double:
      return use(double{});
    case ValueType::UInt8:
      return use(std::uint8_t{});
    case ValueType::UInt16:
      return use(std::uint16_t{});
    case ValueType::UInt32:
      return use(std::uint32_t{});
    case ValueType::UInt64:
      return use(std::uint64_t{});
    case ValueType::Int8:
      return use(std::int8_t{});
    case ValueType::Int16:
      return use(std::int16_t{});
    case ValueType::Int32:
      return use(std::int32_t{});
    case ValueType::Int64:
      return use(std::int64_t{});
    case ValueType::Point:
    case ValueType::Vector:
      return;
  }
}

/// A block of the values of a scalar field, as numbers.
std::vector<double> numbersOf(const GridFile& strip, const std::string& name, const Piece& piece,
                              std::size_t first, std::size_t count) {
  std::vector<double> numbers;
  withTypeOf(*strip.worldField(name), [&]<typename T>(T) {
    const auto values = strip.world<T>(name).read(piece, first, count);
    numbers.assign(values->begin(), values->end());
  });
  return numbers;
}

}  // namespace

void checkNames(const Selection& selection, const GridFile& strip) {
  for (const std::string& name : selection.names()) {
    const auto field = strip.worldField(name);
    if (field && isScalar(*field)) {
      withTypeOf(*field, [&]<typename T>(T) { strip.world<T>(name); });
      continue;
    }
    std::string known;
    for (const auto& [other, its] : strip.grid().cartesian()->fields()) {
      if (isScalar(*its)) known.append(known.empty() ? "" : ", ").append(other);
    }
    strip.refuse(
        "", fmt::format("SelectionStr asks for {}; the fields of numbers are {}", name, known));
  }
}

std::size_t deselect(Selection& selection, const GridFile& strip,
                     std::vector<std::uint8_t>& codes) {
  if (selection.isEmpty()) return 0;
  std::size_t deselected = 0;
  std::vector<double> values(selection.names().size());
  std::vector<std::vector<double>> columns(values.size());
  forEachBlock(strip.pieces(), [&](const Piece& piece, std::size_t first, std::size_t count) {
    for (std::size_t k = 0; k < columns.size(); ++k) {
      columns[k] = numbersOf(strip, selection.names()[k], piece, first, count);
    }
    for (std::size_t i = 0; i < count; ++i) {
      std::uint8_t& code = codes[piece.first + first + i];
      if (!isSurface(code)) continue;
      for (std::size_t k = 0; k < columns.size(); ++k) values[k] = columns[k][i];
      if (selection.selects(values)) continue;
      code = noTerrain;
      ++deselected;
    }
  });
  return deselected;
}

}  // namespace Velorn::Flights
