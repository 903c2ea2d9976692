// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What rasterizing found of all strips, for as many matchings as there are: in memory as far as
// that was granted, in files for the rest and for the next run.
//
//     SurfaceStore surfaces(files, groundTruth, configuration, bytes);
//     const MatchPoints near = surfaces.planar(3, [&](const point& place) { return isNear(place);
//     });
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

#include "flight/surfaces/MatchPoints.h"

namespace Velorn::Flights {

/// Of one strip. A round from coarse to fine has one file for planar points and raster.
struct SurfaceFiles {
  std::filesystem::path strip;   ///< its points as delivered
  std::filesystem::path planar;  ///< all points with a plane
  std::filesystem::path raster;  ///< one of them per cell and class
};

class SurfaceStore {
 public:
  /// @param strips       by file id
  /// @param groundTruth  its raster
  /// @param memory       bytes that points may take; what does not fit is read each time
  SurfaceStore(std::vector<SurfaceFiles> strips, std::filesystem::path groundTruth,
               Velorn::InputParameter configuration, std::size_t memory);

  std::size_t size() const { return strips_.size(); }
  const SurfaceFiles& files(std::size_t strip) const { return strips_.at(strip).files; }
  const std::filesystem::path& groundTruth() const { return groundTruth_; }

  /// @throws Error of MissingFile that names the first file that is not there
  void requireFiles() const;

  /// Holds nothing of a strip any more: its files are about to be written anew.
  void forget(std::size_t strip);
  /// Nor of any other: nobody is going to ask soon, and the files may be other ones then.
  void forgetAll();

  /// The points that `wanted` takes, as delivered.
  /// @throws Error that names the file
  /// @{
  MatchPoints planar(std::size_t strip, const Wanted& wanted);
  MatchPoints raster(std::size_t strip, const Wanted& wanted);
  /// @}
  KnownPoints knownPoints() const;

 private:
  using Kept = std::optional<MatchPoints>;
  struct Strip {
    SurfaceFiles files;
    Kept planar, raster;
  };

  bool take(MatchPoints& points, Kept& kept);
  template <typename Read>
  MatchPoints chosen(Kept& kept, const Wanted& wanted, const Read& read);

  std::vector<Strip> strips_;
  std::filesystem::path groundTruth_;
  Velorn::InputParameter configuration_;
  std::size_t room_;
};

}  // namespace Velorn::Flights
