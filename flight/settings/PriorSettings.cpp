// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>

#include "platform/geomra/Degree.h"
#include <velorn/InstrumentClass.h>
#include <velorn/flight/Error.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {
namespace {

const Velorn::InstrumentClass& classNamed(const std::string& name) {
  const auto found = std::ranges::find(instrumentClasses, name, &InstrumentClass::name);
  if (found != instrumentClasses.end()) return *found;
  throw Error("instrument: " + name + ": unknown", Error::BadSettings);
}

/// What is given, and of the class where that is zero.
std::array<double, 3> orOfClass(const std::vector<double>& given,
                                const std::array<double, 3>& ofClass, double unit) {
  std::array<double, 3> sigmas{};
  for (std::size_t i = 0; i < sigmas.size(); ++i) {
    sigmas[i] = (given.at(i) > 0.0 ? given[i] : ofClass[i]) * unit;
  }
  return sigmas;
}

}  // namespace

Velorn::APrioriKnowledge knowledgeOf(const PriorSettings& prior) {
  using Geomra::degree;
  constexpr double ppm = 1e-6;
  const auto& instrument = classNamed(prior.instrument);
  const auto thrice = [](double value) { return std::array{value, value, value}; };
  Velorn::APrioriKnowledge known;
  known.position = orOfClass(prior.position, instrument.position, 1.0);
  known.attitude = orOfClass(prior.attitude, instrument.attitude, degree);
  known.positionTime = prior.positionTime;
  known.attitudeTime = prior.attitudeTime;
  known.offsets = {prior.rangeOffset, prior.angleOffset * degree, prior.angleOffset * degree};
  known.scales = {prior.rangeScale * ppm, prior.angleScale * ppm, prior.angleScale * ppm};
  known.misalignment = thrice(prior.misalignment * degree);
  known.leverArm = thrice(prior.leverArm);
  known.control = prior.control;
  return known;
}

}  // namespace Velorn::Flights
