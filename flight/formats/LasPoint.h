// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One point record of a LAS file, of any format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "flight/formats/LasHeader.h"

namespace Velorn::Flights {

/// What of a record importing needs.
struct LasPoint {
  Geomra::PhysicalSpace::point place;  ///< in the file's coordinate system, always finite
  double time =
      std::numeric_limits<double>::quiet_NaN();  ///< as stored [s]; NaN where there is none
  std::uint16_t intensity = 0;
  std::uint8_t returnNumber = 0;     ///< from 1; 0 where the writer did not know
  std::uint8_t numberOfReturns = 0;  ///< the same
  std::uint8_t classification = 0;
  std::uint16_t sourceId = 0;  ///< number of the flight strip
  bool isWithheld = false;     ///< the writer does not want it used
};

/// @param record  header.recordLength bytes
LasPoint lasPointIn(const char* record, const LasHeader& header);

/// Return number of a record, as LasPoint has it.
std::uint8_t returnNumberIn(const char* record, unsigned format);

}  // namespace Velorn::Flights
