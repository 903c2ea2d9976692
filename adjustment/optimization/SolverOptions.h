// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the solver is to go about an adjustment.
#pragma once

#include <ceres/solver.h>

#include <velorn/InputParameter.h>

namespace Velorn {

/// For a problem with one residual block for each correspondence; the threads are one less than
/// OpenMP's maximum.
ceres::Solver::Options solverOptions(const InputParameter& configuration);

/// Lets the solver go on to the minimum, which a problem with a priori knowledge has in all
/// directions; inner iterations would cost more than they save there.
void endAtMinimum(ceres::Solver::Options& options);

}  // namespace Velorn
