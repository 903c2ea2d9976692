// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// LAS files for tests, put together byte by byte without any code of the readers.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// One point; what a format does not have is left out.
struct LasSamplePoint {
  std::array<std::int32_t, 3> numbers{};  ///< coordinates before scale and offset
  std::uint16_t intensity = 0;
  unsigned returnNumber = 1, numberOfReturns = 1;
  unsigned classification = 0;
  bool isWithheld = false;
  std::uint16_t sourceId = 0;
  double time = 0.0;
};

struct LasSampleVlr {
  std::string userId;
  std::uint16_t recordId = 0;
  std::string content;
};

struct LasSample {
  unsigned minorVersion = 2;
  unsigned format = 3;
  std::uint16_t globalEncoding = 0;
  std::size_t extraBytes = 0;  ///< of each point
  std::array<double, 3> scale{0.01, 0.01, 0.01};
  std::array<double, 3> offset{500000.0, 5300000.0, 0.0};
  std::vector<LasSampleVlr> vlrs, evlrs;
  std::string gap;  ///< bytes between the records and the points
  std::vector<LasSamplePoint> points;
};

/// Every byte of a point that is none of the values above has a value of its own, so that it shows
/// when one is lost.
std::string lasBytes(const LasSample& sample);

/// Points of a sample of any version and format; no two are alike, and all values are in use.
LasSample lasSample(unsigned minorVersion, unsigned format, std::size_t points = 5);

/// Adjusted standard times, and places about E 500000 N 5341000 of EPSG:32632, of strip 7; the
/// times are left to the caller.
LasSample lasOverZone32(std::size_t points);

/// A key directory of GeoTIFF with these keys, of four numbers each.
LasSampleVlr geoKeys(const std::vector<std::array<std::uint16_t, 4>>& keys);

/// Puts a number into bytes, its lowest byte first.
template <typename T>
void putAt(std::string& bytes, std::size_t place, T number) {
  const auto raw = std::bit_cast<std::array<char, sizeof(T)>>(number);  // here the lowest is first
  std::copy(raw.begin(), raw.end(), &bytes.at(place + sizeof(T) - 1) - (sizeof(T) - 1));
}
