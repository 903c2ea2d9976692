// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/PriorFindings.h"

#include <array>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights {
namespace {

using Three = GlobalCorrections::Three;

/// A block of three global corrections.
struct GlobalBlock {
  Three GlobalCorrections::*values;
  std::array<const char*, 3> names;
  std::array<const char*, 3> units;
  Three Velorn::APrioriKnowledge::*sigmas;
  Three Velorn::APrioriKnowledge::*delivered;  ///< null: zero
  Three inUnits;                               ///< factors of what is known
  const char* cause;
};

constexpr double degrees = Geomra::degreesPerRadian;

std::array<GlobalBlock, 4> blocks() {
  using G = GlobalCorrections;
  using K = Velorn::APrioriKnowledge;
  return {{{&G::offsets,
            {"offset of the range", "offset of the forward angle", "offset of the scan angle"},
            {"m", "deg", "deg"},
            &K::offsets,
            nullptr,
            {1.0, degrees, degrees},
            "a wrong scanner calibration, a lever arm or heights of another reference"},
           {&G::scales,
            {"scale of the range", "scale of the forward angle", "scale of the scan angle"},
            {"", "", ""},
            &K::scales,
            nullptr,
            {1.0, 1.0, 1.0},
            "a wrong scanner calibration, heights or scale of the coordinate system"},
           {&G::misalignment,
            {"roll of the mounting", "pitch of the mounting", "yaw of the mounting"},
            {"deg", "deg", "deg"},
            &K::misalignment,
            &K::deliveredMisalignment,
            {degrees, degrees, degrees},
            "a wrong sign, an axis for another, or another order of the rotations"},
           {&G::leverArm,
            {"lever arm forward", "lever arm to the right", "lever arm down"},
            {"m", "m", "m"},
            &K::leverArm,
            &K::deliveredLeverArm,
            {1.0, 1.0, 1.0},
            "a wrong sign, an axis for another, or a lever arm to another point"}}};
}

}  // namespace

std::vector<std::string> surprises(const AdjustmentReport& adjustment,
                                   const Velorn::APrioriKnowledge& knowledge) {
  constexpr double surprising = 3.0;
  std::vector<std::string> warnings;
  for (const auto& block : blocks()) {
    const Three& values = adjustment.globals.*block.values;
    for (std::size_t i = 0; i < values.size(); ++i) {
      const double sigma = (knowledge.*block.sigmas)[i] * block.inUnits[i];
      const double delivered =
          block.delivered ? (knowledge.*block.delivered)[i] * block.inUnits[i] : 0.0;
      if (!(std::abs(values[i] - delivered) > surprising * sigma)) continue;
      warnings.push_back(fmt::format(
          "The {} comes out as {:.6g} {} where {:.6g} was expected, {:.1f} times its standard "
          "deviation of {:.3g} away: {}, or one that is known less well than that.",
          block.names[i], values[i], block.units[i], delivered,
          std::abs(values[i] - delivered) / sigma, sigma, block.cause));
    }
  }
  constexpr double worse = 2.0;
  for (const auto& group : adjustment.deviations) {
    const bool isTrajectory = group.name == "position plan" || group.name == "height" ||
                              group.name == "roll and pitch" || group.name == "yaw";
    if (!isTrajectory || !(group.sigma > worse)) continue;
    warnings.push_back(fmt::format(
        "The trajectory's {} is {:.1f} times as bad as expected: another class of instrument, a "
        "base station that is wrong, or times that are shifted.",
        group.name == "position plan" ? "plan position" : group.name, group.sigma));
  }
  return warnings;
}

std::string knownBefore(const AdjustmentReport& adjustment) {
  if (!adjustment.globalPriorShares) return {};
  constexpr double most = 0.5;
  std::vector<std::string> names;
  for (const auto& block : blocks()) {
    const Three& shares = *adjustment.globalPriorShares.*block.values;
    for (std::size_t i = 0; i < shares.size(); ++i) {
      if (shares[i] > most) names.emplace_back(block.names[i]);
    }
  }
  if (names.empty()) return {};
  return fmt::format("known before rather than told by this flight: {}", fmt::join(names, ", "));
}

}  // namespace Velorn::Flights
