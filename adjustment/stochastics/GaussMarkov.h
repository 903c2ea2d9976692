// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A priori knowledge of a component of the trajectory's correction: a stationary Gauss-Markov
// process of standard deviation σ and correlation time Tc, covariance σ² exp(−|Δt| / Tc).
//
//     std::vector<StripCorrection> strips;            // of one component, of the whole flight
//     for (const auto& strip : parameters.getStripSections())
//       strips.push_back({piecesOf(strip, TrajectoryComponent::Height), 0.05});
//     const auto rows = gaussMarkovRows(strips, {.correlationTime = 60.0, .largestStep = 0.001});
//
// The squares of the process's rows sum up to the squared norm of the correction in the
// reproducing-kernel space of the covariance, which for a strip from 0 to T is
//
//     1/(2σ²) [ Tc ∫ c'² dt + 1/Tc ∫ c² dt + c(0)² + c(T)² ]
//
// (Parzen, Annals of Mathematical Statistics 32, 1961): however many records the trajectory has,
// one error counts once.
#pragma once

#include <vector>

#include "adjustment/stochastics/CorrectionPiece.h"

namespace Velorn {

/// One component of the correction over one strip.
struct StripCorrection {
  std::vector<CorrectionPiece> pieces;  ///< each begins where the one before ends
  double sigma = 0.0;                   ///< a priori standard deviation [m] or [rad], above 0

  double start() const { return pieces.front().start; }
  double end() const { return pieces.back().end(); }
  LinearSum atStart() const { return pieces.front().valueAt(0.0); }
  LinearSum atEnd() const { return pieces.back().valueAt(pieces.back().length); }
};

struct GaussMarkovSettings {
  double correlationTime = 0.0;  ///< Tc [s], above 0
  /// Standard deviation of a step between sections of a strip [m] or [rad], above 0, and small
  /// against σ. A slope may change by as much over the shorter section.
  double largestStep = 0.0;
};

/// ∫ c^(d)² dt = a'M a over dt from 0 to `length` of the polynomial c = Σ a_m dt^m:
/// M_ij = i!/(i−d)! j!/(j−d)! length^(i+j−2d+1) / (i+j−2d+1) for i, j ≥ d, otherwise 0.
/// @param derivative  d, at least 0
/// @return            powers × powers
Eigen::MatrixXd derivativeIntegral(int derivative, int powers, double length);

/// Rows of a few unknowns each.
struct GaussMarkovRows {
  std::vector<PriorRows> process;  ///< of size 1/σ
  std::vector<PriorRows> joints;   ///< between sections, of size 1/largestStep
  /// Unknowns less rows of joints: the expectation of the sum of the process's squares. (Its rows
  /// are more, but not independent: they are factors of a norm.)
  std::size_t degreesOfFreedom = 0;
};

/// The rows of all strips of a flight.
///
/// Sections of a strip join: their values always, their slopes where one of both is of degree 2 or
/// 3 (between straight lines they may bend). Two constants after each other have a step whatever
/// happens; they count as the process's values in the middles of their sections, and only the outer
/// halves of the first and the last one as constant.
/// From a strip to the next in time the process goes on, with correlation exp(−gap / Tc). Strips
/// that overlap in time are taken for independent of each other.
/// @throws std::invalid_argument, naming it, for a value out of bounds, a strip without pieces, and
///         pieces that do not follow each other
GaussMarkovRows gaussMarkovRows(std::vector<StripCorrection> strips,
                                const GaussMarkovSettings& settings);

/// Correction at any time as a sum of unknowns.
struct CorrectionAt {
  LinearSum sum;
  /// What the strips do not tell of the process at that time, as a share of σ²: 0 within them, 1
  /// long after and before.
  double freeShare = 0.0;
};

/// Within a strip its polynomial; outside, the conditional mean of the process between the end of
/// the strip before and the start of the one after, as far as there are: no steps, and nothing
/// beyond some correlation times.
/// @param strips  at least one, in order of their starts; where two overlap, the earlier counts
/// @param time    [GPS seconds]
CorrectionAt correctionAt(const std::vector<StripCorrection>& strips, double correlationTime,
                          double time);

}  // namespace Velorn
