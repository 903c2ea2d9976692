// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/AccuracyFile.h"

#include <cmath>
#include <numbers>

#include "flight/formats/DoubleRecords.h"
#include "flight/strips/GpsWeek.h"

namespace Velorn::Flights {
namespace {

constexpr double minuteOfArc = std::numbers::pi / (180.0 * 60.0);

// Without satellites a position may be lost by hundreds of metres; nothing is known without error.
constexpr double leastError = 1e-9, mostMetres = 1000.0, halfTurn = 180.0 * 60.0;
constexpr std::array accuracyLimits{
    ValueLimits{0, "time", 0.0, 2 * weekSeconds, "s"},
    ValueLimits{1, "north error", leastError, mostMetres, "m"},
    ValueLimits{2, "east error", leastError, mostMetres, "m"},
    ValueLimits{3, "down error", leastError, mostMetres, "m"},
    ValueLimits{4, "north velocity error", 0.0, mostMetres, "m/s"},
    ValueLimits{5, "east velocity error", 0.0, mostMetres, "m/s"},
    ValueLimits{6, "down velocity error", 0.0, mostMetres, "m/s"},
    ValueLimits{7, "roll error", leastError, halfTurn, "minutes of arc"},
    ValueLimits{8, "pitch error", leastError, halfTurn, "minutes of arc"},
    ValueLimits{9, "heading error", leastError, halfTurn, "minutes of arc"}};

constexpr DoubleRecordFormat accuracyFormat{"accuracy", 10, accuracyLimits};

AccuracyRecord accuracyRecordOf(std::span<const double> values) {
  return {values[0],
          {{values[2], values[1], values[3]},
           {values[7] * minuteOfArc, values[8] * minuteOfArc, values[9] * minuteOfArc}}};
}

}  // namespace

std::vector<AccuracyRecord> readAccuracy(const std::filesystem::path& file) {
  std::vector<AccuracyRecord> records;
  records.reserve(countDoubleRecords(file, accuracyFormat));
  readDoubleRecords(
      file, accuracyFormat,
      [&](std::span<const double> values) { records.push_back(accuracyRecordOf(values)); },
      TimeOrder::Any);
  return records;
}

std::optional<TrajectoryAccuracy> accuracyOver(std::span<const AccuracyRecord> records,
                                               double first, double last) {
  TrajectoryAccuracy mean;
  double count = 0.0;
  for (const auto& [time, accuracy] : records) {
    if (!(time >= first && time <= last)) continue;
    count += 1.0;
    for (std::size_t i = 0; i < 3; ++i) {
      mean.position[i] += accuracy.position[i] * accuracy.position[i];
      mean.attitude[i] += accuracy.attitude[i] * accuracy.attitude[i];
    }
  }
  if (count == 0.0) return std::nullopt;
  for (auto* three : {&mean.position, &mean.attitude}) {
    for (double& value : *three) value = std::sqrt(value / count);
  }
  return mean;
}

}  // namespace Velorn::Flights
