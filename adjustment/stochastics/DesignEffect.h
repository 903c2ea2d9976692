// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How many independent observations neighbouring correspondences are worth: they share points,
// surfaces and the trajectory's error of the moment.
#pragma once

#include <cstddef>

namespace Velorn {

/// Sums over chunks: correspondences of a pair of sections and a class that were measured within a
/// second.
struct ChunkScatter {
  std::size_t count = 0;      ///< n, residuals v
  double squares = 0.0;       ///< Σ v'Pv
  double gradients = 0.0;     ///< Σ g'Mg with g = A'Pv of a chunk, M any diagonal matrix
  double expectations = 0.0;  ///< Σ trace(M A'PA) of the same chunks
};

struct DesignEffect {
  double factor = 1.0;          ///< by which variances exceed those of n independent residuals
  double effectiveCount = 0.0;  ///< n / factor
};

/// Independent residuals of variance one let the gradients of chunks scatter by E[gg'] = A'PA; what
/// neighbours have in common lets them scatter more, by the design effect (Kish, Survey Sampling,
/// 1965). Gradients and not residuals are compared, for a strip that is shifted lifts a roof on one
/// side and lowers it on the other.
/// @return at least 1; 1 where there is nothing to compare
/// @throws std::invalid_argument, naming it, for a sum that is negative or not finite
DesignEffect designEffectOf(const ChunkScatter& scatter);

}  // namespace Velorn
