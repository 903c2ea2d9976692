// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads one fragment of a trajectory's chart in pieces and checks it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/strandel/Bundle.h"

namespace Velorn {

/// The fields "Positions", "GPSTime", "Roll", "Pitch" and "Yaw" of one fragment. The first fault is
/// kept; from then on all reading gives an empty pointer.
class TrajectoryFragment {
 public:
  template <typename T>
  using Column = std::shared_ptr<const std::vector<T>>;

  /// Some records of the fragment.
  struct Rows {
    std::size_t first;
    std::size_t count;
  };

  /// Looks whether all fields are there, of the right type and of one length; reads no values.
  /// @param file  named in the messages
  TrajectoryFragment(const Strandel::Chart& chart, Strandel::FragmentId id,
                     const std::filesystem::path& file);

  std::size_t size() const { return size_; }  ///< records; 0 after a fault of the constructor

  /// Reads records, which must lie within the fragment. A value that is not finite is a fault.
  /// @{
  Column<Geomra::PhysicalSpace::point> positions(Rows rows);  ///< projected, with height [m]
  Column<double> times(Rows rows);                            ///< [s of week]
  Column<double> roll(Rows rows);                             ///< [degree]
  Column<double> pitch(Rows rows);                            ///< [degree]
  Column<double> yaw(Rows rows);                              ///< [degree]
  /// @}

  /// Empty, or one message. Of fields that cannot be read or differ in length the console is told
  /// which.
  const std::string& fault() const { return fault_; }

 private:
  template <typename T>
  void checkField(const char* name);
  template <typename T>
  Column<T> read(const char* name, Rows rows);
  void setNoData(const std::string& detail);

  const Strandel::Chart& chart_;
  Strandel::FragmentId id_;
  const std::filesystem::path& file_;
  std::size_t size_ = 0;
  std::string fault_;
};

}  // namespace Velorn
