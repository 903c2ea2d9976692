// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// In which order the inner iterations of the solver go through the unknowns.
#pragma once

#include <memory>

#include <ceres/ordered_groups.h>
#include <ceres/problem.h>

namespace Velorn {

/// Sets of estimated blocks of which no two share a residual, the blocks with the most neighbours
/// first. Left to itself the solver chooses among blocks of as many neighbours by where they lie in
/// memory, and the result is another one after any other work of the process; here the block that
/// came first into the problem is taken.
/// @return null for less than two estimated blocks, which have no inner iterations
std::shared_ptr<ceres::ParameterBlockOrdering> innerOrderingOf(const ceres::Problem& problem);

}  // namespace Velorn
