// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Who made a LAS file, and when, in the bytes of its header.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string_view>

#include "flight/formats/LasHeader.h"
#include "flight/formats/LittleEndian.h"

namespace Velorn::Flights {

/// A field of text, filled up with zeros; what is longer is cut.
inline void putText(char* bytes, std::size_t width, std::string_view text) {
  const std::size_t length = std::min(text.size(), width);
  std::fill_n(std::copy_n(text.data(), length, bytes), width - length, '\0');
}

/// This program, and today (UTC).
inline void putOrigin(char* head, std::string_view systemId) {
  using std::chrono::floor, std::chrono::days, std::chrono::year_month_day;
  const auto today = floor<days>(std::chrono::system_clock::now());
  const auto year = year_month_day(today).year();
  const auto before = std::chrono::sys_days(year / 1 / 1) - days(1);
  putText(head + LasPlaces::systemId, LasPlaces::textWidth, systemId);
  putText(head + LasPlaces::generatingSoftware, LasPlaces::textWidth, "Velorn " VELORN_VERSION);
  putNumber<std::uint16_t>(head + LasPlaces::creationDay,
                           static_cast<std::uint16_t>((today - before).count()));
  putNumber<std::uint16_t>(head + LasPlaces::creationYear,
                           static_cast<std::uint16_t>(static_cast<int>(year)));
}

}  // namespace Velorn::Flights
