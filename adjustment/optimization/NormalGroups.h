// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The normal equations of an adjustment at its solution, group by group of observations.
#pragma once

#include <array>
#include <vector>

#include "adjustment/observability/Cofactors.h"
#include "adjustment/optimization/AdjustmentProblem.h"
#include "adjustment/optimization/CondensedCostFunction.h"

namespace Velorn {

/// One group: its normal matrix over all unknowns, and its part of v'Pv. What is held has no
/// entries.
struct NormalGroup {
  NormalMatrix normals;
  GroupSums sums;  ///< without the trace
};

struct NormalGroups {
  std::vector<NormalGroup> classes;  ///< of correspondences
  std::array<NormalGroup, priorGroups> priors;
  NormalMatrix joints;  ///< between sections

  NormalMatrix prior() const;  ///< all that was known before
  NormalMatrix sum() const;    ///< everything
};

/// At the present values of the unknowns.
/// @param inputs  with knowledge, by which the run weighs
NormalGroups normalGroups(const ProblemInputs& inputs, const CondensedRun& run);

/// By class, at the present values of the unknowns.
std::vector<DesignEffect> designEffects(const ProblemInputs& inputs, const CondensedRun& run,
                                        const NormalGroups& groups);

/// Estimates the standard deviations from the residuals at the present values of the unknowns, and
/// lets the run weigh by them.
void estimateDeviations(const ProblemInputs& inputs, CondensedRun& run, Knowledge& knowledge);

/// How well the global unknowns and the sums of the settings are determined.
void addPrecision(const ProblemInputs& inputs, const CondensedRun& run, AdjustmentResult& result);

}  // namespace Velorn
