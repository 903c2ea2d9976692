// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The records of a LAS file that tell its coordinate system, apart from the rest of the file:
// looking one up takes a thousand times as long as reading. An input begins with the number of
// GeoTIFF keys in it; with none it is a WKT.
#include <algorithm>
#include <cstdint>
#include <string>

#include "flight/formats/LasCrs.h"

using namespace Velorn::Flights;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  if (bytes[0] == 0) {
    crsOfWkt(text);
  } else {
    const std::size_t keys = std::min(std::size_t{8} * (bytes[0] + std::size_t{1}), text.size());
    crsOfGeoKeys(std::span(text).first(keys), text.substr(keys));
  }
  return 0;
}
