// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/settings/KnowledgeSettings.h"

namespace Velorn::Flights {
namespace {

using Place = SettingPlace (*)(FlightSettings&);

constexpr const char* knownBefore = "Known before";

struct Bounds {
  double low, high;
};

/// A standard deviation or a time of one number.
Setting number(const char* name, const char* sentence, const char* unit, Bounds bounds,
               Place place) {
  return {.name = name,
          .group = knownBefore,
          .sentence = sentence,
          .unit = unit,
          .low = bounds.low,
          .high = bounds.high,
          .steps = {Step::Adjust},
          .place = place};
}

/// Standard deviations of three components.
Setting three(const char* name, const char* sentence, const char* unit, double high,
              const char* placeholder, Place place) {
  return {.name = name,
          .group = knownBefore,
          .sentence = sentence,
          .unit = unit,
          .high = high,
          .entries = 3,
          .placeholder = placeholder,
          .steps = {Step::Adjust},
          .place = place};
}

}  // namespace

std::vector<Setting> knowledgeSettings() {
  return {
      {.name = "priors",
       .group = knownBefore,
       .sentence = "what is known of trajectory and mounting takes part, and everything weighs by "
                   "standard deviations that are estimated, in place of the weights",
       .steps = {Step::Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.model.prior.isUsed; }},
      {.name = "instrument",
       .group = knownBefore,
       .sentence = "class of the trajectory where nothing else tells how good it is: survey 3, 3, "
                   "5 cm and 0.004, 0.004, 0.008 degrees; drone 4, 4, 8 cm and 0.02, 0.02, 0.1 "
                   "degrees; unknown 10, 10, 15 cm and 0.05, 0.05, 0.15 degrees",
       .words = {"survey", "drone", "unknown"},
       .steps = {Step::Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.model.prior.instrument; }},
      three("position-sigma",
            "standard deviation of the trajectory's position east, north and up; 0: of the class",
            "metres", 1000, "E,N,H",
            [](FlightSettings& all) -> SettingPlace { return &all.model.prior.position; }),
      three("attitude-sigma", "standard deviation of roll, pitch and yaw; 0: of the class",
            "degrees", 90, "R,P,Y",
            [](FlightSettings& all) -> SettingPlace { return &all.model.prior.attitude; }),
      number("position-time", "time after which errors of the position are other ones", "seconds",
             {1e-3, 1e6},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.positionTime; }),
      number("attitude-time", "time after which errors of the attitude are other ones", "seconds",
             {1e-3, 1e6},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.attitudeTime; }),
      number("control-sigma", "standard deviation of the ground truth", "metres", {1e-4, 1000},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.control; }),
      number("misalignment-sigma", "standard deviation of the misalignment as delivered", "degrees",
             {1e-6, 180},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.misalignment; }),
      number("lever-arm-sigma", "standard deviation of the lever arm as delivered", "metres",
             {1e-6, 100},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.leverArm; }),
      number("range-offset-sigma", "standard deviation of the range's offset", "metres",
             {1e-6, 100},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.rangeOffset; }),
      number("angle-offset-sigma", "standard deviation of the offsets of both angles", "degrees",
             {1e-7, 90},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.angleOffset; }),
      number("range-scale-sigma", "standard deviation of the range's scale", "ppm", {1e-3, 1e6},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.rangeScale; }),
      number("angle-scale-sigma", "standard deviation of the scales of both angles", "ppm",
             {1e-3, 1e6},
             [](FlightSettings& all) -> SettingPlace { return &all.model.prior.angleScale; })};
}

}  // namespace Velorn::Flights
