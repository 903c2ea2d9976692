// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The public header block that a LAS file of version 1.0 to 1.4 begins with.
//
// All versions share the first 227 bytes; 1.3 adds the start of the waveforms and 1.4 the extended
// records and 64-bit counts. Behind the header stand the variable length records (VLR), then the
// point records, all of one length, then the extended records (EVLR).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

/// Where the numbers of the header stand, for those who change them.
namespace LasPlaces {
constexpr std::size_t systemId = 26, generatingSoftware = 58, textWidth = 32;
constexpr std::size_t creationDay = 90, creationYear = 92;
constexpr std::size_t legacyCount = 107, legacyCountByReturn = 111;
constexpr std::size_t scale = 131, offset = 155;
constexpr std::size_t bounds = 179;  ///< maximum and minimum of x, then of y, then of z
constexpr std::size_t waveformStart = 227;
constexpr std::size_t evlrStart = 235, count = 247, countByReturn = 255;
}  // namespace LasPlaces

constexpr std::size_t legacyReturns = 5;  ///< returns that the 32-bit counts know

constexpr std::size_t longestLasHeader = 375;  ///< bytes of a header that mean something

/// Bytes before the content of a variable length record, and of an extended one.
constexpr std::size_t recordHead = 54, extendedRecordHead = 60;

struct LasHeader {
  unsigned minorVersion = 0;     ///< of 1.0 to 1.4
  std::uint16_t fileSource = 0;  ///< number of the flight strip, 0 where it is not told
  bool hasStandardTime = false;  ///< times are satellite seconds less 1e9, else seconds of week
  bool hasWkt = false;           ///< the WKT record tells the coordinate system, else the keys
  std::string systemId, generatingSoftware;
  unsigned creationDay = 0;   ///< of the year, from 1
  unsigned creationYear = 0;  ///< 0 where it is not told
  std::size_t headerSize = 0;
  std::uint64_t pointsStart = 0;  ///< first byte of the first point record
  std::uint32_t vlrCount = 0;
  unsigned format = 0;        ///< of the point records, 0 to 10
  bool isCompressed = false;  ///< LAZ by the format's upper bits: there are no plain point records
  std::size_t recordLength = 0;                   ///< of a point, at least what its format needs
  std::uint64_t count = 0;                        ///< of points; the file is large enough for them
  std::array<std::uint64_t, 15> countByReturn{};  ///< as the file tells, from return 1
  std::array<double, 3> scale{}, offset{};        ///< [m]: coordinate = scale * integer + offset
  Geomra::PhysicalSpace::point lowest, highest;   ///< bounds as the file tells them, unchecked [m]
  std::uint64_t waveformStart = 0;                ///< 0 for none
  std::uint64_t evlrStart = 0;                    ///< means nothing when there are none
  std::uint32_t evlrCount = 0;

  std::uint64_t pointsEnd() const { return pointsStart + count * recordLength; }
};

/// Bytes that a point record of a format has at least; the rest of a longer record is extra bytes.
/// @param format  0 to 10
std::size_t leastRecordLength(unsigned format);

/// True for formats whose records hold a GPS time.
bool hasGpsTime(unsigned format);

/// @param bytes     the first of the file: longestLasHeader, or all where it has fewer
/// @param fileSize  [bytes]; nothing that the header claims goes beyond it afterwards
/// @return          the header, or what is wrong with it, without the name of the file. Of a
///                  compressed file nothing behind the format is read.
std::variant<LasHeader, std::string> lasHeaderIn(std::span<const char> bytes,
                                                 std::uint64_t fileSize);

}  // namespace Velorn::Flights
