// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasPoint.h"

#include "flight/formats/LittleEndian.h"

namespace Velorn::Flights {
namespace {

constexpr bool isLegacy(unsigned format) {
  return format < 6;
}

/// Formats 0 to 5: three bits for each return number, the flags above the class.
void takeLegacyFields(const char* record, unsigned format, LasPoint& point) {
  const unsigned flags = numberAt<std::uint8_t>(record + 15);
  point.numberOfReturns = numberAt<std::uint8_t>(record + 14) >> 3U & 7U;
  point.classification = flags & 0x1FU;
  point.isWithheld = (flags & 0x80U) != 0;
  point.sourceId = numberAt<std::uint16_t>(record + 18);
  if (hasGpsTime(format)) point.time = numberAt<double>(record + 20);
}

/// Formats 6 to 10: four bits for each return number, a byte of flags, a byte for the class.
void takeFields(const char* record, LasPoint& point) {
  point.numberOfReturns = numberAt<std::uint8_t>(record + 14) >> 4U;
  point.isWithheld = (numberAt<std::uint8_t>(record + 15) & 4U) != 0;
  point.classification = numberAt<std::uint8_t>(record + 16);
  point.sourceId = numberAt<std::uint16_t>(record + 20);
  point.time = numberAt<double>(record + 22);
}

}  // namespace

std::uint8_t returnNumberIn(const char* record, unsigned format) {
  return numberAt<std::uint8_t>(record + 14) & (isLegacy(format) ? 7U : 15U);
}

LasPoint lasPointIn(const char* record, const LasHeader& header) {
  const auto coordinate = [&](std::size_t axis) {
    return header.scale[axis] * numberAt<std::int32_t>(record + 4 * axis) + header.offset[axis];
  };
  LasPoint point;
  point.place = {coordinate(0), coordinate(1), coordinate(2)};
  point.intensity = numberAt<std::uint16_t>(record + 12);
  point.returnNumber = returnNumberIn(record, header.format);
  if (isLegacy(header.format)) {
    takeLegacyFields(record, header.format, point);
  } else {
    takeFields(record, point);
  }
  return point;
}

}  // namespace Velorn::Flights
