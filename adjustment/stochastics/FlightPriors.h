// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// All that is known of a flight a priori as rows of an adjustment.
#pragma once

#include <cstddef>
#include <vector>

#include "adjustment/stochastics/LinearSum.h"
#include <velorn/APrioriKnowledge.h>
#include <velorn/Section.h>

namespace Velorn {

/// Of one component of the trajectory, or one block of the global corrections.
struct FlightPrior {
  PriorGroup group = PriorGroup::Offsets;
  std::vector<PriorRows> rows;       ///< of size 1/σ
  std::vector<PriorRows> joints;     ///< between sections of a strip, whatever σ is
  std::size_t degreesOfFreedom = 0;  ///< expectation of the sum of the rows' squares
};

/// The rows of mounting and trajectory; none for what nothing is known of.
/// @param strips  with the times at which they begin and end
/// @throws std::invalid_argument, naming it, for a value that is out of bounds
std::vector<FlightPrior> flightPriors(const APrioriKnowledge& knowledge,
                                      const std::vector<StripSections>& strips);

/// The same rows for other standard deviations.
/// @param factors  by group: each σ becomes σ times its group's factor
std::vector<FlightPrior> rescaled(std::vector<FlightPrior> priors, const PriorFactors& factors);

}  // namespace Velorn
