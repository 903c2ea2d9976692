// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/ReadableSums.h"

#include <algorithm>
#include <cmath>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights {
namespace {

constexpr std::ptrdiff_t ofSection = 24, ofPosition = 12, ofComponent = 4;
enum Global : std::ptrdiff_t { offsets = 0, scales = 3, misalignment = 6, leverArm = 9 };

/// Of the coefficients of a correction, what makes up its mean over all sections, each taken at its
/// middle.
/// @param first  place of the component's first coefficient in a section
void addMeanCorrection(const Velorn::SolverParameters& parameters,
                       const std::vector<StripFacts>& facts, std::ptrdiff_t first,
                       ReadableSum& sum) {
  const double share = 1.0 / parameters.numberOfSectionsForAllStrips();
  const auto& strips = parameters.getStripSections();
  for (std::size_t i = 0; i < strips.size(); ++i) {
    const auto& sections = strips[i].sections;
    for (auto section = sections.begin(); section != sections.end(); ++section) {
      const auto next = std::next(section);
      const double end = next == sections.end() ? facts.at(i).last : next->first;
      const double middle = std::max(0.0, 0.5 * (end - section->first));
      const std::ptrdiff_t place = ofSection * section->second.sectionID + first;
      for (int m = 0; m < ofComponent; ++m) sum.factors[place + m] = share * std::pow(middle, m);
    }
  }
}

double unknownAt(const Velorn::SolverParameters& parameters, std::ptrdiff_t place) {
  const auto sections = std::ptrdiff_t{parameters.numberOfSectionsForAllStrips()};
  const std::ptrdiff_t global = place - ofSection * sections;
  if (global < 0) {
    const auto section = static_cast<unsigned int>(place / ofSection);
    const auto entry = static_cast<unsigned int>(place % ofSection);
    return entry < ofPosition
               ? parameters.getTrajectoryPositionCorrection(section, entry)
               : parameters.getTrajectoryAngleCorrection(section, entry - ofPosition);
  }
  const auto component = static_cast<unsigned int>(global % 3);
  switch (global - global % 3) {
    case offsets:
      return parameters.getRangeAngleOffset(component);
    case scales:
      return parameters.getRangeAngleScale(component);
    case misalignment:
      return parameters.getMisalignment(component);
    default:
      return parameters.getLeverArm(component);
  }
}

}  // namespace

std::vector<ReadableSum> readableSums(const Velorn::SolverParameters& parameters,
                                      const std::vector<StripFacts>& strips, double range) {
  constexpr std::ptrdiff_t down = 2, ranges = 0, forwardAngle = 1, scanAngle = 2;
  const std::ptrdiff_t globals = ofSection * parameters.numberOfSectionsForAllStrips();
  const auto angle = [&](const char* name, std::ptrdiff_t axis) {
    ReadableSum sum{name, "deg", {{globals + misalignment + axis, 1.0}}};
    addMeanCorrection(parameters, strips, ofPosition + ofComponent * axis, sum);
    return sum;
  };
  ReadableSum roll = angle("roll", 0), pitch = angle("pitch", 1), yaw = angle("yaw", 2);
  roll.factors[globals + offsets + scanAngle] = 1.0;
  pitch.factors[globals + offsets + forwardAngle] = 1.0;
  for (auto* const sum : {&roll, &pitch, &yaw}) {
    for (auto& [place, factor] : sum->factors) factor *= Geomra::degreesPerRadian;
  }
  ReadableSum height{"height",
                     "m",
                     {{globals + leverArm + down, -1.0},
                      {globals + offsets + ranges, -1.0},
                      {globals + scales + ranges, -range}}};
  addMeanCorrection(parameters, strips, ofComponent * down, height);
  return {roll, pitch, yaw, height};
}

double valueOf(const ReadableSum& sum, const Velorn::SolverParameters& parameters) {
  double value = 0.0;
  for (const auto& [place, factor] : sum.factors) value += factor * unknownAt(parameters, place);
  return value;
}

}  // namespace Velorn::Flights
