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

}  // namespace Velorn
