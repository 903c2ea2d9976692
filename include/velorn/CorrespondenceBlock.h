// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// All correspondences between two strips, or between a strip and the ground truth, in one file.
//
//     Velorn::CorrespondenceBlock block(folder / "c0_1.kx", false, week, week, storage);
//     block.add(pointOfStrip0, pointOfStrip1);
//     const std::string fault = block.save();
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/SphericalBeing.h>
#include <velorn/Visibility.h>

namespace Velorn {

/// One side of a block: one entry per correspondence in every column.
class VELORN_EXPORT SphericalBeingData {
 public:
  template <typename T>
  using Column = std::shared_ptr<std::vector<T>>;

  /// Empty columns.
  SphericalBeingData();
  SphericalBeingData(Strandel::GridPtr grid, bool groundTruth, std::uint32_t weekNumber);

  void add(const SphericalBeing& being);
  std::size_t size() const { return world->size(); }  ///< by the world positions

  /// Entries that every column has: size(), but of a side that could not be loaded to its end.
  std::size_t completeEntries() const;

  /// @param index  below completeEntries()
  SphericalBeing operator[](std::size_t index) const;

  /// A table for logs: a head, a rule, and one line per complete entry with three decimals.
  std::string toText() const;

  bool groundTruth = false;  ///< only of side J of a block with the ground truth
  Strandel::GridPtr grid;    ///< of this side in the block's bundle; since a save its fields share
                             ///< the columns
  Strandel::ChartPtr chart;  ///< its Cartesian representation
  Column<double> times;      ///< [s of week]
  Column<Geomra::PhysicalSpace::point> world, scanner;
  Column<Geomra::PhysicalSpace::vector> normals, directionDeltas;
  Column<std::uint8_t> classes;
  std::uint32_t weekNumber = 0;  ///< GPS week of the times
};

/// Entry k of side I corresponds to entry k of side J. A copy shares the columns.
class VELORN_EXPORT CorrespondenceBlock {
 public:
  /// Without file and bundle; size() is 0 and save writes nothing.
  CorrespondenceBlock() = default;

  /// A new block; nothing is written before save.
  /// @param groundTruth  side J is the ground truth
  CorrespondenceBlock(std::filesystem::path path, bool groundTruth,
                      const std::uint32_t& weekNumberI, const std::uint32_t& weekNumberJ,
                      std::shared_ptr<Strandel::MyStorage> storage);

  /// Reads a block, several fragments of a grid one after the other; the file stays open as long as
  /// the block lives. Throws nothing for a bad file: errorText() then says what is wrong, and the
  /// sides are as far as they were built. Sides that differ in length are no fault here; columns of
  /// one side that do are.
  CorrespondenceBlock(std::filesystem::path path, std::shared_ptr<Strandel::MyStorage> storage);

  void add(const SphericalBeing& i, const SphericalBeing& j);

  /// The two points of a correspondence.
  /// @throws std::out_of_range, naming file and index, for one that a side does not have
  std::pair<SphericalBeing, SphericalBeing> get(const std::uint32_t& index) const;

  std::uint32_t size() const;  ///< by the world positions of side I

  /// Writes the block to its path, replacing a file there; an empty block writes nothing.
  /// @return empty, or what the storage says; a block with an errorText() is refused, lest half a
  ///         file replaces the whole
  std::string save();

  const std::string& errorText() const { return error_; }  ///< of loading; empty: usable
  bool isGroundTruth() const { return groundTruth_; }
  const std::filesystem::path& path() const { return path_; }
  const SphericalBeingData& sideI() const { return sideI_; }
  const SphericalBeingData& sideJ() const { return sideJ_; }

 private:
  void loadSideJ(const Strandel::GridPtr& strip, const Strandel::GridPtr& groundTruth);

  std::filesystem::path path_;
  bool groundTruth_ = false;
  std::shared_ptr<Strandel::MyStorage> storage_;
  Strandel::BundlePtr bundle_;
  SphericalBeingData sideI_, sideJ_;
  std::string error_;
};

}  // namespace Velorn
