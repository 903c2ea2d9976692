// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How well corresponding points fit: distances along the normals of a run's correspondences, of the
// points as they were measured and as the blocks hold them, which may have been moved onto planes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "flight/comparison/TrueWorld.h"
#include "flight/comparison/WorldErrors.h"
#include "flight/records/StripIds.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/SolverParameters.h>

namespace Velorn::Flights::Comparison {

/// The points of one strip, one entry per point.
struct StripPoints {
  std::vector<double> times;  ///< [s of week]
  Points scanner;             ///< [m]
  Points delivered, adjusted, real;
};

/// The correspondences of a run. They are read first; then the strips come one after the other.
class PairFit {
 public:
  /// @param folder  of the blocks; may be missing
  /// @param names   strips by the ids in the names of the blocks
  /// @throws Error for a block that cannot be read or names a strip that the truth does not have
  PairFit(const Truth& truth, const std::filesystem::path& folder, const StripNames& names);

  /// Measures the correspondences of one strip.
  /// @param parameters  the adjusted model, its strips in the order of the truth's; may be null
  void addStrip(std::size_t strip, const StripPoints& points, const Velorn::Trajectory& trajectory,
                const Velorn::SolverParameters* parameters);

  FitFigures ofPairs() const { return figures(false); }
  FitFigures ofGroundTruth() const { return figures(true); }

 private:
  enum Column { rawBefore, rawAfter, rawTrue, blockBefore, blockAfter, blockTrue, columns };

  /// A correspondence; its distances grow as its two points become known.
  struct Record {
    Geomra::PhysicalSpace::vector normal;
    Geomra::PhysicalSpace::point origin;     // distances along the normal count from here
    std::array<double, columns> distance{};  // [m]
    double variance = 0.0;                   // of the noise [m²]
    unsigned int missing = 0;                // points that are not known yet
    bool isGroundTruth = false;
  };

  /// One of its points, of one strip.
  struct Measured {
    std::size_t record = 0;
    double sign = 1.0;
    double time = 0.0;
    Geomra::PhysicalSpace::point scanner;  // as the block has it
    double cosine = 0.0;                   // between beam and normal
  };

  void addBlock(const Velorn::CorrespondenceBlock& block, std::uint32_t i,
                std::optional<std::uint32_t> j);
  void addPoint(std::size_t strip, const Velorn::SphericalBeing& being, double sign);
  void addFixed(const Velorn::SphericalBeing& being);
  void measureRaw(const Measured& measured, std::size_t point, const StripPoints& points);
  void measureBlock(std::size_t strip, const Velorn::Trajectory& trajectory,
                    const Velorn::SolverParameters* parameters);
  void add(const Measured& measured, Column column, const Geomra::PhysicalSpace::point& world);
  FitFigures figures(bool groundTruth) const;

  const Truth& truth_;
  std::vector<Record> records_;
  std::vector<std::vector<Measured>> measured_;  // by strip
};

}  // namespace Velorn::Flights::Comparison
