// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which coordinate system the records of a LAS file tell, as EPSG code.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace Velorn::Flights {

struct LasCrs {
  std::optional<unsigned> epsg;  ///< of the projected system; of a compound one the horizontal part
  std::string text;              ///< what the record says, for messages; empty when it says nothing
};

/// A record "OGC WKT". Without a code in it, a system that is the same as one of EPSG's has its
/// code; geographic systems have none.
/// @param wkt  any bytes; what stands behind the first zero byte does not count
LasCrs crsOfWkt(const std::string& wkt);

/// A projected system as WKT of its first version, as LAS files tell it.
/// @throws std::invalid_argument for a code that is none of a projected system
std::string wktOf(unsigned epsg);

/// The key directory of GeoTIFF: the projected system's code, or that of the UTM system whose zone
/// the keys tell and whose name the citation is, as some writers have it.
/// @param directory  record 34735, any bytes
/// @param texts      record 34737, any bytes
LasCrs crsOfGeoKeys(std::span<const char> directory, const std::string& texts);

}  // namespace Velorn::Flights
