// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Candidates of a matching as a file for viewers and tables.
#pragma once

#include <filesystem>
#include <memory>
#include <span>

#include <velorn/flight/CorrespondenceRow.h>

namespace Velorn::Flights {

/// A file on its way. All that fails throws an Error that names it.
class CorrespondenceTable {
 public:
  CorrespondenceTable() = default;
  virtual ~CorrespondenceTable() = default;
  CorrespondenceTable(const CorrespondenceTable&) = delete;
  CorrespondenceTable& operator=(const CorrespondenceTable&) = delete;

  virtual void add(std::span<const CorrespondenceRow> rows) = 0;
  /// Until then the target is as it was.
  virtual void finish() = 0;
};

/// LAS: a point per row where the candidate is, its class as classification, the rest in extra
/// bytes. CSV: a line per row, empty where a value is not known, numbers by the shortest text that
/// gives the same bits.
/// @param target  a name that ends in .las or .csv
/// @param epsg    of the places
/// @throws Error that names the target, for another ending
std::unique_ptr<CorrespondenceTable> correspondenceTable(const std::filesystem::path& target,
                                                         unsigned epsg);

}  // namespace Velorn::Flights
