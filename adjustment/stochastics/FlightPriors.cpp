// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/FlightPriors.h"

#include <cmath>

#include "adjustment/stochastics/GaussMarkov.h"
#include "adjustment/stochastics/GlobalPriors.h"

namespace Velorn {
namespace {

struct Process {
  TrajectoryComponent component;
  PriorGroup group;
  double sigma, time, step;
};

std::array<Process, 6> processesOf(const APrioriKnowledge& known) {
  using C = TrajectoryComponent;
  using G = PriorGroup;
  const auto position = [&](C component, G group, std::size_t i) {
    return Process{component, group, known.position[i], known.positionTime, known.positionStep};
  };
  const auto attitude = [&](C component, G group, std::size_t i) {
    return Process{component, group, known.attitude[i], known.attitudeTime, known.attitudeStep};
  };
  return {position(C::Easting, G::PlanPosition, 0), position(C::Northing, G::PlanPosition, 1),
          position(C::Height, G::Height, 2),        attitude(C::Roll, G::RollAndPitch, 0),
          attitude(C::Pitch, G::RollAndPitch, 1),   attitude(C::Yaw, G::Yaw, 2)};
}

FlightPrior priorOf(const Process& process, const std::vector<StripSections>& strips) {
  std::vector<StripCorrection> corrections;
  corrections.reserve(strips.size());
  for (const auto& strip : strips) {
    corrections.push_back({piecesOf(strip, process.component), process.sigma});
  }
  auto made = gaussMarkovRows(std::move(corrections), {process.time, process.step});
  return {process.group, std::move(made.process), std::move(made.joints), made.degreesOfFreedom};
}

std::vector<FlightPrior> globalPriors(const APrioriKnowledge& known, std::size_t sections) {
  constexpr std::array<double, 3> none{};
  std::vector<FlightPrior> priors;
  const auto add = [&](PriorGroup group, GlobalBlock block, const auto& sigmas,
                       const auto& delivered) {
    auto rows = globalPriorRows(sigmas, delivered, firstUnknownOf(block, sections));
    if (rows.unknowns.empty()) return;
    const std::size_t number = rows.unknowns.size();
    priors.push_back({group, {std::move(rows)}, {}, number});
  };
  add(PriorGroup::Offsets, GlobalBlock::Offsets, known.offsets, none);
  add(PriorGroup::Scales, GlobalBlock::Scales, known.scales, none);
  add(PriorGroup::Misalignment, GlobalBlock::Misalignment, known.misalignment,
      known.deliveredMisalignment);
  add(PriorGroup::LeverArm, GlobalBlock::LeverArm, known.leverArm, known.deliveredLeverArm);
  return priors;
}

}  // namespace

std::vector<FlightPrior> flightPriors(const APrioriKnowledge& knowledge,
                                      const std::vector<StripSections>& strips) {
  std::size_t sections = 0;
  for (const auto& strip : strips) sections += strip.sections.size();
  auto priors = globalPriors(knowledge, sections);
  for (const Process& process : processesOf(knowledge)) {
    if (!std::isinf(process.sigma)) priors.push_back(priorOf(process, strips));
  }
  return priors;
}

std::vector<FlightPrior> rescaled(std::vector<FlightPrior> priors, const PriorFactors& factors) {
  for (auto& prior : priors) {
    const double factor = factors[static_cast<std::size_t>(prior.group)];
    for (auto& rows : prior.rows) {
      rows.rows /= factor;
      rows.expected /= factor;
    }
  }
  return priors;
}

}  // namespace Velorn
