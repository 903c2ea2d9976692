// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether correspondences that were held out fit as well as those of the adjustment let expect.
#pragma once

namespace Velorn {

/// Sums over whole chunks that were not in the adjustment, with weights P = 1/s² of single
/// residuals, without a design effect.
struct CheckSums {
  double count = 0.0;           ///< n, above 0
  double effectiveCount = 0.0;  ///< n over the design effect, above 0
  double sumOfSquares = 0.0;    ///< v'Pv at the solution
  double trace = 0.0;           ///< of Q A'PA: what the errors of the unknowns add to them
};

/// Root mean squares in units of s.
struct CheckFigures {
  double rms = 0.0;
  double predicted = 1.0;  ///< sqrt(1 + trace/n)
  double sigma = 0.0;      ///< by which the rms scatters about the prediction where all is right

  /// Standard deviations that the rms lies above the prediction: above 3 the model follows its own
  /// correspondences more than the trajectory (over-fit), or the weights are too high.
  double excess() const { return (rms - predicted) / sigma; }
};

/// @throws std::invalid_argument, naming it, for a value out of bounds
CheckFigures checkFiguresOf(const CheckSums& sums);

}  // namespace Velorn
