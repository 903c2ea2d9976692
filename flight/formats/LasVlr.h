// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The variable length records of a LAS file, before and behind its points.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "flight/formats/LasHeader.h"

namespace Velorn::Flights {

/// One record, without its content.
struct LasVlr {
  std::string userId;
  unsigned recordId = 0;
  std::uint64_t position = 0;  ///< of the content in the file
  std::uint64_t length = 0;    ///< of the content [bytes]; it lies inside the file
};

/// Lists the records in the order of the file, those behind the points last.
/// @param fileSize  [bytes]
/// @throws std::runtime_error that tells the record, but not the file, when one is longer than its
///         place
std::vector<LasVlr> lasVlrs(std::istream& file, const LasHeader& header, std::uint64_t fileSize);

}  // namespace Velorn::Flights
