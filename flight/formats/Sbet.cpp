// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/Sbet.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <numbers>
#include <span>
#include <string>

#include "flight/strips/GpsWeek.h"
#include "platform/tessaly/TransverseMercator.h"

namespace Velorn::Flights {
namespace {

using std::numbers::pi;

SbetRecord recordOf(std::span<const double> values) {
  return {values[0], values[1], values[2], values[3], values[7], values[8], values[9] - values[10]};
}

// Times may go on over the end of the week in which a file begins; headings come as -180 to 180 and
// as 0 to 360 degrees.
constexpr std::array limitsOfValues{ValueLimits{0, "time", 0.0, 2 * weekSeconds, "s"},
                                    ValueLimits{1, "latitude", -pi / 2, pi / 2, "rad"},
                                    ValueLimits{2, "longitude", -pi, pi, "rad"},
                                    ValueLimits{3, "height", -1e5, 1e5, "m"},
                                    ValueLimits{7, "roll", -2 * pi, 2 * pi, "rad"},
                                    ValueLimits{8, "pitch", -2 * pi, 2 * pi, "rad"},
                                    ValueLimits{9, "platform heading", -4 * pi, 4 * pi, "rad"},
                                    ValueLimits{10, "wander angle", -4 * pi, 4 * pi, "rad"}};

constexpr DoubleRecordFormat sbetFormat{"SBET", 17, limitsOfValues};

}  // namespace

bool looksLikeSbet(const std::filesystem::path& file) {
  std::string ending = file.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return ending == ".sbet" || ending == ".out";
}

std::size_t readSbet(const std::filesystem::path& file,
                     const std::function<void(const SbetRecord&)>& take, TimeOrder order) {
  return readDoubleRecords(
      file, sbetFormat, [&](std::span<const double> values) { take(recordOf(values)); }, order);
}

std::vector<SbetRecord> readSbet(const std::filesystem::path& file, TimeOrder order) {
  std::vector<SbetRecord> records;
  records.reserve(countDoubleRecords(file, sbetFormat));
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
