// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Files without a header that are records of little-endian doubles, the first of them a time.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <span>

namespace Velorn::Flights {

/// What a value of a record can be.
struct ValueLimits {
  std::size_t place;  ///< in the record
  const char* name;
  double lowest;
  double highest;
  const char* unit;
};

struct DoubleRecordFormat {
  const char* name;    ///< as in "it is no … file"
  std::size_t values;  ///< of a record
  std::span<const ValueLimits> limits;
};

/// What becomes of records whose times do not ascend.
enum class TimeOrder {
  Ascending,  ///< the first one is refused
  Any         ///< all are handed on; inTimeOrder (PoseOrder.h) puts them in order
};

/// Number of records by the size of the file.
/// @throws Error that names the file: no regular file, empty, not whole records
std::size_t countDoubleRecords(const std::filesystem::path& file, const DoubleRecordFormat& format);

/// Hands the records to `take` one after the other, in the order of the file. Some thousand of them
/// are in memory at a time.
/// @return their number, at least 1
/// @throws Error as countDoubleRecords, and with the first bad record, counted from 1: a value that
///         is not finite or not between its limits (files of the other byte order are named as
///         such); times that do not ascend. Equal times are refused, too: nobody knows which of the
///         two records holds. In any order only times that begin anew where a GPS week ends are.
std::size_t readDoubleRecords(const std::filesystem::path& file, const DoubleRecordFormat& format,
                              const std::function<void(std::span<const double>)>& take,
                              TimeOrder order);

}  // namespace Velorn::Flights
