// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads one fragment of a trajectory's chart and checks it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/strandel/Bundle.h"

namespace Velorn {

/// The columns of one fragment: all of one length, all values finite.
struct TrajectoryFragment {
  template <typename T>
  using Column = std::shared_ptr<const std::vector<T>>;

  Column<Geomra::PhysicalSpace::point> positions;  ///< projected, with height [m]
  Column<double> times;                            ///< [s of week]
  Column<double> roll, pitch, yaw;                 ///< [degree]
};

/// Reads the fields "Positions", "GPSTime", "Roll", "Pitch" and "Yaw".
/// @param file      named in the messages
/// @param fragment  filled when all is well, else as before
/// @return empty, or what is wrong. Of columns that cannot be read or differ in length the console
///         is told which.
std::string readTrajectoryFragment(const Strandel::Chart& chart, Strandel::FragmentId id,
                                   const std::filesystem::path& file, TrajectoryFragment& fragment);

}  // namespace Velorn
