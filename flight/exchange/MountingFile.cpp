// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/MountingFile.h"

#include <array>
#include <nlohmann/json.hpp>
#include <numbers>

#include <fmt/format.h>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights {
namespace {

using Geomra::degreesPerRadian;

using Velorn::SolverParameters;

struct Quantity {
  const char* group;  ///< key of the JSON document
  const char* key;
  const char* unit;
  double value;
};

/// Twelve.
std::array<Quantity, 12> quantitiesOf(const SolverParameters& p) {
  return {{{"lever_arm", "forward", "m", p.getLeverArm(0)},
           {"lever_arm", "right", "m", p.getLeverArm(1)},
           {"lever_arm", "down", "m", p.getLeverArm(2)},
           {"misalignment", "roll", "deg", degreesPerRadian * p.getMisalignment(0)},
           {"misalignment", "pitch", "deg", degreesPerRadian * p.getMisalignment(1)},
           {"misalignment", "yaw", "deg", degreesPerRadian * p.getMisalignment(2)},
           {"offset", "range", "m", p.getRangeAngleOffset(0)},
           {"offset", "angle_1", "deg", degreesPerRadian * p.getRangeAngleOffset(1)},
           {"offset", "angle_2", "deg", degreesPerRadian * p.getRangeAngleOffset(2)},
           {"scale", "range", "1", p.getRangeAngleScale(0)},
           {"scale", "angle_1", "1", p.getRangeAngleScale(1)},
           {"scale", "angle_2", "1", p.getRangeAngleScale(2)}}};
}

}  // namespace

std::string mountingText(const SolverParameters& parameters) {
  std::string text =
      "# Adjusted mounting and scanner. Lever arm: from the trajectory's reference to the "
      "scanner.\n"
      "# Scales are deviations from one.\n";
  for (const auto& [group, key, unit, value] : quantitiesOf(parameters)) {
    text += fmt::format("{:<22}{} {}\n", fmt::format("{}_{}", group, key), value, unit);
  }
  return text;
}

std::string mountingJson(const SolverParameters& parameters) {
  nlohmann::ordered_json document{{"format", "velorn mounting"}, {"version", 1}};
  for (const auto& [group, key, unit, value] : quantitiesOf(parameters)) {
    const std::string ending = unit == std::string("1") ? "" : fmt::format("_{}", unit);
    document[group][key + ending] = value;
  }
  return document.dump(1) + "\n";
}

}  // namespace Velorn::Flights
