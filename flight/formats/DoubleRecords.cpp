// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/DoubleRecords.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "flight/formats/LittleEndian.h"
#include "flight/strips/GpsWeek.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

constexpr std::size_t recordsAtOnce = 4096;

std::size_t bytesOf(const DoubleRecordFormat& format) {
  return format.values * sizeof(double);
}

std::vector<double> valuesAt(const char* bytes, std::size_t count) {
  std::vector<double> values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = numberAt<double>(bytes + sizeof(double) * i);
  return values;
}

std::vector<double> byteSwapped(std::span<const double> values) {
  std::vector<double> swapped(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    char bytes[sizeof(double)];
    putNumber<double>(bytes, values[i]);
    std::reverse(bytes, bytes + sizeof bytes);
    swapped[i] = numberAt<double>(bytes);
  }
  return swapped;
}

/// The limits that the record breaks first; none when it can be one. NaN breaks every limit.
const ValueLimits* brokenLimits(std::span<const double> values, const DoubleRecordFormat& format) {
  for (const auto& limits : format.limits) {
    const double value = values[limits.place];
    if (!(value >= limits.lowest && value <= limits.highest)) return &limits;
  }
  return nullptr;
}

std::string faultOfValue(std::span<const double> values, const ValueLimits& limits,
                         const DoubleRecordFormat& format) {
  if (!brokenLimits(byteSwapped(values), format)) {
    return fmt::format(
        "the {} makes no sense, but does with its bytes in reverse: the file is "
        "big-endian, an {} file has to be little-endian",
        limits.name, format.name);
  }
  const double value = values[limits.place];
  if (!std::isfinite(value)) return fmt::format("the {} is {}", limits.name, value);
  return fmt::format("the {} is {} {}, not between {:.6g} and {:.6g}", limits.name, value,
                     limits.unit, limits.lowest, limits.highest);
}

/// @param before  time of the record before [s]
std::string faultOfTimes(double before, double time, TimeOrder order) {
  const bool newWeek = before > 0.9 * weekSeconds && time < 0.1 * weekSeconds;
  if (time > before || (order == TimeOrder::Any && !newWeek)) return {};
  return fmt::format("its time {} s is not after {} s, the time of the record before{}", time,
                     before, newWeek ? "; where a GPS week ends the file has to be split" : "");
}

/// @param before  time of the record before [s]
std::string faultOf(std::span<const double> values, double before, const DoubleRecordFormat& format,
                    TimeOrder order) {
  if (const ValueLimits* const broken = brokenLimits(values, format)) {
    return faultOfValue(values, *broken, format);
  }
  return faultOfTimes(before, values[0], order);
}

}  // namespace

std::size_t countDoubleRecords(const std::filesystem::path& file,
                               const DoubleRecordFormat& format) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) throw Error(file.string() + ": no such file");
  if (!std::filesystem::is_regular_file(status)) {
    throw Error(file.string() + ": is not a file with records");
  }
  const auto bytes = std::filesystem::file_size(file, error);
  if (error) throw Error(file.string() + ": " + error.message());
  if (bytes == 0) throw Error(file.string() + ": is empty");
  const std::size_t ofRecord = bytesOf(format);
  if (bytes % ofRecord != 0) {
    throw Error(fmt::format(
        "{}: its {} bytes are not whole records of {} bytes each: {} records "
        "and {} bytes; it is cut off or no {} file",
        file.string(), bytes, ofRecord, bytes / ofRecord, bytes % ofRecord, format.name));
  }
  return bytes / ofRecord;
}

std::size_t readDoubleRecords(const std::filesystem::path& file, const DoubleRecordFormat& format,
                              const std::function<void(std::span<const double>)>& take,
                              TimeOrder order) {
  const std::size_t count = countDoubleRecords(file, format), ofRecord = bytesOf(format);
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw Error(file.string() + ": cannot be opened for reading");
  const auto refuse = [&](std::size_t record, const std::string& fault) {
    throw Error(fmt::format("{}: record {} of {}: {}", file.string(), record + 1, count, fault));
  };
  std::vector<char> block(std::min(count, recordsAtOnce) * ofRecord);
  double before = -1.0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t inBlock = i % recordsAtOnce;
    if (inBlock == 0) {
      const std::size_t bytes = std::min(recordsAtOnce, count - i) * ofRecord;
      if (!stream.read(block.data(), static_cast<std::streamsize>(bytes))) {
        refuse(i, "cannot be read");
      }
    }
    const auto values = valuesAt(block.data() + inBlock * ofRecord, format.values);
    if (const std::string fault = faultOf(values, before, format, order); !fault.empty()) {
      refuse(i, fault);
    }
    take(values);
    before = values[0];
  }
  return count;
}

}  // namespace Velorn::Flights
