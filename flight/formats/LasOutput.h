// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A LAS file of our own: version 1.4, points of format 6, with extra bytes.
//
//     LasOutput out("matched.las", 32632, {{"before", "[m] distance", LasNumber::float32}});
//     out.add({place, time, 14, 3}, {{0.02}});
//     out.finish();
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "flight/formats/LasGrid.h"
#include "flight/formats/OutputFile.h"
#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

/// Types of extra bytes, by their codes.
enum class LasNumber : std::uint8_t { uint8 = 1, uint16 = 3, int32 = 6, float32 = 9, float64 = 10 };

/// An attribute that the format of the points does not have.
struct LasExtra {
  std::string name, description;  ///< of at most 32 bytes; a unit in brackets comes first
  LasNumber type;
};

struct LasOutputPoint {
  Geomra::PhysicalSpace::point place;  ///< [m]
  double time;                         ///< satellite seconds less 1e9
  std::uint8_t classification;
  std::uint16_t source;  ///< number of the strip
};

/// Coordinates are multiples of 0.1 mm, counted from a place near the first point, and reach 200 km
/// from there. Nothing stands under the name of the target before finish().
class LasOutput {
 public:
  /// @param epsg  of the projected system
  /// @throws Error that names the target: for a code that is none, or one that cannot be written
  LasOutput(const std::filesystem::path& target, unsigned epsg, std::vector<LasExtra> extras);

  /// @param values  one for each of the extra bytes; whole numbers become the nearest one that the
  ///                type has
  /// @throws Error that names the target: a coordinate that is not finite, or too far off
  void add(const LasOutputPoint& point, std::span<const double> values);

  /// @throws Error of NoSpace
  void finish();

 private:
  std::string header() const;
  std::int32_t onGrid(double coordinate, std::size_t axis);
  void writeBlock();

  OutputFile file_;
  std::vector<LasExtra> extras_;
  std::string records_, block_;  // before the points, and points that are not written yet
  std::array<std::optional<LasGrid>, 3> grids_;
  std::array<std::int32_t, 3> lowest_{}, highest_{};
  std::uint64_t count_ = 0;
};

}  // namespace Velorn::Flights
