// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What can be wrong without being an unknown: a control patch, a locked strip, an accuracy class, a
// shift in time between laser and trajectory. (Baarda, A testing procedure for use in geodetic
// networks, 1968.)
//
//     const Disturbance patch = disturbanceOf(cofactors, column);
//     if (std::abs(patch.test()) > 3.29) ...   // 0.1 %: it is wrong by patch.value
//     patch.minimalDetectable();               // or else by no more than this
//     valueOf(height, patch.influence) * patch.minimalDetectable();   // which moves the block so
#pragma once

#include <vector>

#include "adjustment/observability/Cofactors.h"

namespace Velorn {

/// Sums at the solution with a column z = ∂r/∂d of residuals r by a disturbance d that they
/// contain. For a control patch whose height is wrong: the weighted z of the normals of its
/// correspondences, zero elsewhere. For laser times that are late: the derivative by the time of
/// measurement.
struct DisturbanceColumn {
  LinearSum products;    ///< b = A'Pz
  double square = 0.0;   ///< z'Pz
  double product = 0.0;  ///< z'Pr
};

struct Disturbance {
  double redundancy = 0.0;    ///< ρ = z'Pz − b'Qb; zero where the unknowns take all of d
  double value = 0.0;         ///< of d, z'Pr/ρ; NaN for ρ = 0. What corrects it is its opposite.
  Eigen::VectorXd influence;  ///< −Qb: by how much d = 1 moves the unknowns, unless it is found

  bool isTestable() const { return redundancy > 0.0; }
  double sigma() const;  ///< of the value: 1/sqrt(ρ); infinite for ρ = 0
  double test() const;   ///< w = value/σ, standard normal where there is no disturbance

  /// 4.13/sqrt(ρ): what a test at 0.1 % finds with a probability of 80 %.
  double minimalDetectable() const;
};

/// What the adjustment would have found with d as a further unknown.
/// @param gradient  A'Pr of all rows where the solver stopped; empty: zero
/// @throws std::invalid_argument for another size
Disturbance disturbanceOf(const Cofactors& cofactors, const DisturbanceColumn& column,
                          const Eigen::VectorXd& gradient = {});

/// A group of observations and a disturbance of nothing but them.
struct ObservationSums {
  std::vector<Eigen::Index> unknowns;  ///< those that the group knows, each once
  Eigen::MatrixXd normal;              ///< A'PA of the group
  Eigen::VectorXd gradient;            ///< A'Pr of the group at the solution
  DisturbanceColumn disturbance;
};

/// The group as all others predict it.
struct Prediction {
  bool isDetermined = false;  ///< false: without the group something would be free
  double misfit = 0.0;        ///< d that the group's residuals show then, in the mean; NaN if free
  double sigma = 0.0;         ///< of the misfit without a disturbance; infinite if free
  Eigen::VectorXd change;     ///< of the unknowns, when the group is left out
};

/// Leaves one group out without another adjustment.
/// @param gradient  as of disturbanceOf
/// @throws std::invalid_argument for sizes that differ, and for a disturbance of other unknowns
Prediction predictionWithout(const Cofactors& cofactors, const ObservationSums& group,
                             const Eigen::VectorXd& gradient = {});

}  // namespace Velorn
