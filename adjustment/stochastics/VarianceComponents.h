// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Standard deviations of groups of observations from the residuals of an adjustment of them all.
// After each of some three adjustments the standard deviation of every group is multiplied with
//
//     varianceFactorOf({v'Pv, m, trace(Q N)}).standardDeviation()
//
// and the weights P = 1/(s² design effect) and N follow.
#pragma once

namespace Velorn {

/// One group: pairs of a class, control, the a priori rows of a component.
struct ObservationGroup {
  double sumOfSquares = 0.0;  ///< v'Pv of its residuals v at the solution
  /// m: observations over their design effect. Of the rows of a Gauss-Markov process its degrees of
  /// freedom.
  double effectiveCount = 0.0;
  double trace = 0.0;  ///< of Q N: what the group gives to the unknowns, 0 to m
};

struct VarianceFactor {
  double redundancy = 0.0;   ///< m − trace(Q N): what the other groups leave to be compared
  double variance = 1.0;     ///< s² becomes s² times this
  bool isEstimated = false;  ///< false: the group is too small, it keeps its a priori value

  double standardDeviation() const;  ///< s becomes s times this
};

/// Below it a factor would be chance: at 10 its own standard deviation is 45 % of the variance.
inline constexpr double leastRedundancy = 10.0;

/// v'Pv / (m − trace(Q N)) (Förstner, Zeitschrift für Vermessungswesen 104, 1979), in one round no
/// more than a hundred and no less than a hundredth.
/// @throws std::invalid_argument, naming it, for a value that is negative or not finite
VarianceFactor varianceFactorOf(const ObservationGroup& group);

}  // namespace Velorn
