// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The attributes of a grid's points that the adjustment needs, as arrays.
//
//     Velorn::DataBlock block;
//     for (const auto id : grid.cartesian()->field("Positions")->fragments()) {
//       const auto fragment = std::make_shared<Strandel::FragmentId>(id);
//       const std::string fault = block.appendData(grid, fragment, false, false);
//       if (!fault.empty()) return fault;
//     }
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include "platform/strandel/Bundle.h"
#include <velorn/InputParameter.h>
#include <velorn/Visibility.h>

namespace Velorn {

/// One value per point in every array that was read; the others are empty. No pointer is empty. The
/// arrays are the block's own, whatever the grid holds; a copy of the block shares them.
class VELORN_EXPORT DataBlock {
 public:
  template <typename T>
  using Column = std::shared_ptr<std::vector<T>>;

  DataBlock();

  /// Replaces all arrays with the values of one fragment. A field of another type than that of its
  /// array counts as missing.
  /// @param worldOnly  reads positions, normals and, if there is one, the classification; nothing
  ///                   more
  /// @param rigorous   reads the rigorous classification too
  /// @return empty, or "DataBlock::getData: " and the first value that is missing, cannot be read,
  ///         or differs in number from the positions; the arrays read before it stay
  std::string getData(const Strandel::Grid& grid,
                      const std::shared_ptr<Strandel::FragmentId>& fragment, const bool& worldOnly,
                      const bool& rigorous);

  /// Appends the values of one fragment to the arrays held, with the same messages; after any the
  /// block is as before. Refused, too: a fragment read with other flags than those before it. With
  /// worldOnly the points of a fragment without classification get class 0 as soon as another
  /// fragment has one. When memory is too short (std::bad_alloc) nothing is appended.
  std::string appendData(const Strandel::Grid& grid,
                         const std::shared_ptr<Strandel::FragmentId>& fragment,
                         const bool& worldOnly, const bool& rigorous);

  Column<Geomra::PhysicalSpace::point> world;             ///< projected, with height [m]
  Column<Geomra::PhysicalSpace::vector> normals;          ///< of the surface
  Column<double> times;                                   ///< [s of week]
  Column<Geomra::PhysicalSpace::point> scanner;           ///< (down, forward, right) [m]
  Column<std::uint8_t> returnNumbers, numbersOfReturns;   ///< of the pulse
  Column<std::uint8_t> classes;                           ///< as the strip's file has them
  Column<Geomra::PhysicalSpace::vector> directionDeltas;  ///< of the beam, from point to sensor
  Column<double> amplitudes;                              ///< as the strip's file has them
  Column<std::uint8_t> rigorousClasses;                   ///< 10 plus the TerrainType
};

/// The world positions in a container: in its one grid, or in the one that `GridName` of the
/// configuration names when there are several; all fragments in ascending number. Of several time
/// slices the first counts. Opened through the configuration's `Storage`.
/// @return never an empty pointer; no points, after a message on the console, when there are none
VELORN_EXPORT std::shared_ptr<const std::vector<Geomra::PhysicalSpace::point>> loadPositions(
    const std::filesystem::path& path, const InputParameter& parameter);

}  // namespace Velorn
