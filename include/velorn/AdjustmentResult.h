// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What an adjustment did, for hosts: nobody has to read it out of a text file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <velorn/APrioriKnowledge.h>
#include <velorn/PhaseFigures.h>

namespace Velorn {

/// How the solver ended. The default holds until it has.
struct SolverEnd {
  /// "CONVERGENCE", "NO_CONVERGENCE", "FAILURE", "USER_FAILURE" (cancelled), ...; empty: not run
  std::string termination;
  std::string message;                        ///< the solver's own words
  double initialCost = 0.0, finalCost = 0.0;  ///< half the sum of squares, after the loss function
  int successfulSteps = 0, unsuccessfulSteps = 0;
  double seconds = 0.0;
  int residuals = 0, parameters = 0;  ///< as the solver counts them; -1 when it did not begin
  int estimated = 0;  ///< of the parameters: neither held constant nor without a place in the model

  bool hasRun() const { return !termination.empty(); }
  bool isConvergence() const { return termination == "CONVERGENCE"; }
  bool isCancelled() const { return termination == "USER_FAILURE"; }
};

/// A section, and why its unknowns were held constant, if they were.
struct SectionState {
  std::uint32_t strip = 0, section = 0;
  unsigned int correspondences = 0;
  bool isLow = false;     ///< too few correspondences
  bool isLocked = false;  ///< its strip is locked
  int coefficients = 0;   ///< of its 24 unknowns those that its model has

  bool isConstant() const { return isLow || isLocked; }
};

/// How well an unknown is determined.
struct Precision {
  double sigma = 0.0;       ///< standard deviation, in the unit of the unknown
  double priorShare = 0.0;  ///< of what was known before in it, 0 to 1
};

/// All of it. The default is "not run".
struct AdjustmentResult {
  std::vector<unsigned int> correspondencesPerClass;  ///< of the check, by TerrainType
  std::uint64_t withoutNormal = 0;  ///< of those the ones with a zero normal: their residual is 0
  std::vector<SectionState> sections;  ///< of the check, by strip and time
  SolverEnd end;
  GroupDeviations deviations;  ///< what the adjustment weighed with
  /// The twelve global unknowns in their order, and standard deviations of the sums that the
  /// settings ask for. Empty unless something was known before.
  /// @{
  std::vector<Precision> globals;
  std::vector<double> sums;
  /// @}
  PhaseFigures before, after;  ///< of all correspondences; empty unless the statistics were made
};

}  // namespace Velorn
