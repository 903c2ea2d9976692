// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How many independent observations neighbouring correspondences are worth: they share points,
// surfaces and the trajectory's error of the moment.
#pragma once

#include <cstddef>
#include <span>

namespace Velorn {

/// Sums over the residuals of one chunk: correspondences of a pair of sections and a class that
/// were measured within a second.
struct ChunkResiduals {
  std::size_t count = 0;      ///< n
  double sum = 0.0;           ///< Σ r
  double sumOfSquares = 0.0;  ///< Σ r²
};

struct DesignEffect {
  double intraclassCorrelation = 0.0;  ///< ρ, of two residuals of a chunk, 0 to 1
  double factor = 1.0;          ///< by which the variance of a mean exceeds s²/n, at least 1
  double effectiveCount = 0.0;  ///< n / factor
};

/// 1 + (n̄ − 1) ρ (Kish, Survey Sampling, 1965), n̄ = Σ n² / Σ n the size of the chunk in which a
/// residual lies on average, ρ by the analysis of variance between and within chunks. Residuals of
/// a single chunk are taken for one observation: nobody can tell.
/// @param chunks  in one unit; empty ones do not matter
/// @throws std::invalid_argument for sums that are not finite
DesignEffect designEffectOf(std::span<const ChunkResiduals> chunks);

}  // namespace Velorn
