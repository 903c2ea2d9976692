// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/Sbet.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "flight/strips/GpsWeek.h"
#include "platform/tessaly/TransverseMercator.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

using std::numbers::pi;

constexpr std::size_t valuesPerRecord = 17;
constexpr std::size_t recordBytes = valuesPerRecord * sizeof(double);
constexpr std::size_t recordsAtOnce = 4096;

using RawRecord = std::array<std::uint64_t, valuesPerRecord>;

/// Byte by byte, so that it is right on a machine of either byte order.
std::uint64_t littleEndian(const char* bytes) {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < 8; ++i) {
    value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  }
  return value;
}

RawRecord rawRecord(const char* bytes) {
  RawRecord raw{};
  for (std::size_t i = 0; i < valuesPerRecord; ++i) raw[i] = littleEndian(bytes + 8 * i);
  return raw;
}

std::uint64_t byteSwapped(std::uint64_t value) {
  std::uint64_t swapped = 0;
  for (unsigned i = 0; i < 8; ++i) swapped |= (value >> (8 * i) & 0xFFU) << (56 - 8 * i);
  return swapped;
}

double valueOf(const RawRecord& raw, std::size_t place) {
  return std::bit_cast<double>(raw[place]);
}

SbetRecord recordOf(const RawRecord& raw) {
  const auto value = [&](std::size_t place) { return valueOf(raw, place); };
  return {value(0), value(1), value(2), value(3), value(7), value(8), value(9) - value(10)};
}

/// What a value of a record can be.
struct Limits {
  std::size_t place;
  const char* name;
  double lowest;
  double highest;
  const char* unit;
};

// Times may go on over the end of the week in which a file begins; headings come as -180 to 180 and
// as 0 to 360 degrees.
constexpr std::array limitsOfValues{Limits{0, "time", 0.0, 2 * weekSeconds, "s"},
                                    Limits{1, "latitude", -pi / 2, pi / 2, "rad"},
                                    Limits{2, "longitude", -pi, pi, "rad"},
                                    Limits{3, "height", -1e5, 1e5, "m"},
                                    Limits{7, "roll", -2 * pi, 2 * pi, "rad"},
                                    Limits{8, "pitch", -2 * pi, 2 * pi, "rad"},
                                    Limits{9, "platform heading", -4 * pi, 4 * pi, "rad"},
                                    Limits{10, "wander angle", -4 * pi, 4 * pi, "rad"}};

/// The limits that the record breaks first; none when it can be a pose. NaN breaks every limit.
const Limits* brokenLimits(const RawRecord& raw) {
  for (const auto& limits : limitsOfValues) {
    const double value = valueOf(raw, limits.place);
    if (!(value >= limits.lowest && value <= limits.highest)) return &limits;
  }
  return nullptr;
}

std::string faultOfValue(const RawRecord& raw, const Limits& limits) {
  RawRecord swapped = raw;
  for (auto& value : swapped) value = byteSwapped(value);
  if (!brokenLimits(swapped)) {
    return fmt::format(
        "the {} makes no sense, but does with its bytes in reverse: the file is "
        "big-endian, an SBET file has to be little-endian",
        limits.name);
  }
  const double value = valueOf(raw, limits.place);
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
std::string faultOf(const RawRecord& raw, double before, TimeOrder order) {
  if (const Limits* const broken = brokenLimits(raw)) return faultOfValue(raw, *broken);
  return faultOfTimes(before, valueOf(raw, 0), order);
}

/// Number of records by the size of the file.
std::size_t countRecords(const std::filesystem::path& file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) throw Error(file.string() + ": no such file");
  if (!std::filesystem::is_regular_file(status)) {
    throw Error(file.string() + ": is not a file with records");
  }
  const auto bytes = std::filesystem::file_size(file, error);
  if (error) throw Error(file.string() + ": " + error.message());
  if (bytes == 0) throw Error(file.string() + ": is empty");
  if (bytes % recordBytes != 0) {
    throw Error(
        fmt::format("{}: its {} bytes are not whole records of {} bytes each: {} records "
                    "and {} bytes; it is cut off or no SBET file",
                    file.string(), bytes, recordBytes, bytes / recordBytes, bytes % recordBytes));
  }
  return bytes / recordBytes;
}

}  // namespace

bool looksLikeSbet(const std::filesystem::path& file) {
  std::string ending = file.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return ending == ".sbet" || ending == ".out";
}

std::size_t readSbet(const std::filesystem::path& file,
                     const std::function<void(const SbetRecord&)>& take, TimeOrder order) {
  const std::size_t count = countRecords(file);
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw Error(file.string() + ": cannot be opened for reading");
  const auto refuse = [&](std::size_t record, const std::string& fault) {
    throw Error(fmt::format("{}: record {} of {}: {}", file.string(), record + 1, count, fault));
  };
  std::vector<char> block(std::min(count, recordsAtOnce) * recordBytes);
  double before = -1.0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t inBlock = i % recordsAtOnce;
    if (inBlock == 0) {
      const std::size_t bytes = std::min(recordsAtOnce, count - i) * recordBytes;
      if (!stream.read(block.data(), static_cast<std::streamsize>(bytes))) {
        refuse(i, "cannot be read");
      }
    }
    const RawRecord raw = rawRecord(block.data() + inBlock * recordBytes);
    if (const std::string fault = faultOf(raw, before, order); !fault.empty()) refuse(i, fault);
    const SbetRecord record = recordOf(raw);
    take(record);
    before = record.time;
  }
  return count;
}

std::vector<SbetRecord> readSbet(const std::filesystem::path& file, TimeOrder order) {
  std::vector<SbetRecord> records;
  records.reserve(countRecords(file));
  readSbet(
      file, [&](const SbetRecord& record) { records.push_back(record); }, order);
  return records;
}

TrajectoryColumns trajectoryColumns(const std::vector<SbetRecord>& records, unsigned epsg) {
  const auto zone = Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(epsg);
  TrajectoryColumns columns;
  columns.epsgSpatial = epsg;
  columns.epsgHeight = ellipsoidalHeightCode(epsg);
  for (auto* column : {&columns.times, &columns.roll, &columns.pitch, &columns.yaw}) {
    column->reserve(records.size());
  }
  columns.positions.reserve(records.size());
  double yaw = records.empty() ? 0.0 : records.front().heading;
  for (const auto& record : records) {
    yaw = record.heading + 2 * pi * std::round((yaw - record.heading) / (2 * pi));
    columns.times.push_back(record.time);
    columns.positions.push_back(Tessaly::transverseMercatorProjection(
        {record.longitude, record.latitude, record.height}, zone, false));
    columns.roll.push_back(record.roll * 180.0 / pi);
    columns.pitch.push_back(record.pitch * 180.0 / pi);
    columns.yaw.push_back(yaw * 180.0 / pi);
  }
  return columns;
}

}  // namespace Velorn::Flights
