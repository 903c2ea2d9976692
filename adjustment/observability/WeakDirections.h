// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Directions in the space of unknowns of which a flight tells less than was known before.
#pragma once

#include <cstddef>
#include <vector>

#include "adjustment/observability/NormalSum.h"

namespace Velorn {

/// v with S N S v = λ v, N without a priori rows and S the a priori standard deviations. With λ = 1
/// the observations tell as much of the direction as the a priori knowledge does, below it less.
struct WeakDirection {
  double eigenvalue = 0.0;    ///< λ
  Eigen::VectorXd direction;  ///< v, of length 1: unknowns in units of their standard deviations
  /// v times the roots of the diagonal of SNS, of length 1: what each unknown alone would do to the
  /// residuals. Unknowns that make up for each other are of one size in it, however loosely the one
  /// and tightly the other is known before. Zero where no observation knows the direction.
  Eigen::VectorXd effect;
};

/// The weakest directions whose eigenvalue is below 1, ascending, by inverse iteration of a
/// subspace with Rayleigh and Ritz's eigenvalues. Those below 1e-4 are one subspace of which the
/// flight tells nothing; it is given by the directions that have the fewest large entries (Kaiser's
/// varimax criterion, Psychometrika 23, 1958), each with its v'SNSv.
/// @param observed     N of all observations without a priori rows
/// @param priorSigmas  S; zero for what is held or no unknown: it is in no direction. Of the
/// inverse
///                     of the normal matrix of the a priori rows, the roots of the diagonal.
/// @param most         at most so many
/// @throws std::invalid_argument for sizes that differ and standard deviations that are negative or
///         not finite
std::vector<WeakDirection> weakDirections(const NormalMatrix& observed,
                                          const Eigen::VectorXd& priorSigmas, std::size_t most);

/// The part that unknowns of one kind have in a direction: a coefficient of all sections, or a
/// global unknown.
struct Participation {
  /// Below 24 the place in the unknowns of a section, from 24 on that among the global ones.
  std::size_t kind = 0;
  double share = 0.0;  ///< Σ v² over its unknowns; all kinds sum up to 1
  double mean = 0.0;   ///< of v over its unknowns that take part: its sign against other kinds
};

/// The kinds that make up most of a direction, the largest share first.
/// @param direction   a direction or its effect: sections of 24 unknowns each, then the global ones
/// @param leastShare  smaller ones are left out
std::vector<Participation> participations(const Eigen::VectorXd& direction,
                                          double leastShare = 0.02);

}  // namespace Velorn
