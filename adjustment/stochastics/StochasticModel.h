// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The standard deviations that an adjustment weighs with, from what is expected to what the
// residuals tell.
#pragma once

#include <vector>

#include "adjustment/stochastics/DesignEffect.h"
#include "adjustment/stochastics/FlightPriors.h"

namespace Velorn {

/// Sums of one group at the solution.
struct GroupSums {
  std::size_t count = 0;      ///< observations, or degrees of freedom
  double sumOfSquares = 0.0;  ///< v'Pv
  double trace = 0.0;         ///< of Q N
};

class StochasticModel {
 public:
  /// @param classes  number of classes of correspondences, the ground truth's first
  StochasticModel(const APrioriKnowledge& knowledge, std::size_t classes);

  /// What the distances of correspondences are multiplied with, so that Huber's function with the
  /// threshold one acts from three standard deviations on.
  const std::vector<double>& weights() const { return weights_; }
  /// What the costs are multiplied with after that: they are those of independent observations of
  /// standard deviation one.
  const std::vector<double>& costFactors() const { return costFactors_; }
  const PriorFactors& priorFactors() const { return factors_; }
  const GroupDeviations& deviations() const { return deviations_; }

  /// @param effect  of a class's residuals
  void setDesignEffect(std::size_t ofClass, const DesignEffect& effect);
  /// Takes over what the residuals tell.
  /// @param classes  by class; those without correspondences have none in their sums
  void estimate(const std::vector<GroupSums>& classes,
                const std::array<GroupSums, priorGroups>& priors);

 private:
  void update();

  std::vector<double> sigmas_, effects_, weights_, costFactors_;  // by class
  PriorFactors factors_;
  GroupDeviations deviations_;
};

}  // namespace Velorn
