// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/observability/Reliability.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/engine/PivotedFactor.h"

namespace Velorn {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double unknownValue = std::numeric_limits<double>::quiet_NaN();

/// Shares of redundancy that are no more than rounding.
constexpr double noRedundancy = 1e-8;

/// Distance of the means of w with and without a disturbance that is found with a probability of
/// 80 % at a level of 0.1 %: 3.29 + 0.84.
constexpr double detectable = 4.13;

Eigen::VectorXd gradientOrZero(const Cofactors& cofactors, const Eigen::VectorXd& gradient) {
  if (gradient.size() == 0) return Eigen::VectorXd::Zero(cofactors.unknowns());
  if (gradient.size() != cofactors.unknowns()) {
    throw std::invalid_argument(fmt::format("reliability: a gradient of {} entries for {} unknowns",
                                            gradient.size(), cofactors.unknowns()));
  }
  return gradient;
}

void check(const ObservationSums& group) {
  const auto size = static_cast<Eigen::Index>(group.unknowns.size());
  if (group.normal.rows() != size || group.normal.cols() != size || group.gradient.size() != size) {
    throw std::invalid_argument(
        fmt::format("predictionWithout: sums of {} x {} and {} for {} unknowns",
                    group.normal.rows(), group.normal.cols(), group.gradient.size(), size));
  }
}

/// A sum of the group's unknowns as a column in their order.
Eigen::VectorXd columnOf(const LinearSum& sum, const std::vector<Eigen::Index>& unknowns) {
  Eigen::VectorXd column = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(unknowns.size()));
  for (const auto& [unknown, factor] : sum) {
    const auto place = std::find(unknowns.begin(), unknowns.end(), unknown);
    if (place == unknowns.end()) {
      throw std::invalid_argument(fmt::format(
          "predictionWithout: a disturbance of unknown {}, which the group has not", unknown));
    }
    column[place - unknowns.begin()] = factor;
  }
  return column;
}

/// Q E, the columns of the group's unknowns.
Eigen::MatrixXd columnsOf(const Cofactors& cofactors, const std::vector<Eigen::Index>& unknowns) {
  Eigen::MatrixXd unit =
      Eigen::MatrixXd::Zero(cofactors.unknowns(), static_cast<Eigen::Index>(unknowns.size()));
  for (Eigen::Index k = 0; k < unit.cols(); ++k)
    unit(unknowns[static_cast<std::size_t>(k)], k) = 1.0;
  return cofactors.times(unit);
}

}  // namespace

double Disturbance::sigma() const {
  return isTestable() ? 1.0 / std::sqrt(redundancy) : infinite;
}

double Disturbance::test() const {
  return value / sigma();
}

double Disturbance::minimalDetectable() const {
  return detectable * sigma();
}

Disturbance disturbanceOf(const Cofactors& cofactors, const DisturbanceColumn& column,
                          const Eigen::VectorXd& gradient) {
  Disturbance disturbance;
  disturbance.influence = -cofactors.times(column.products);
  const double redundancy = column.square + valueOf(column.products, disturbance.influence);
  const bool isTestable = redundancy > noRedundancy * column.square;
  disturbance.redundancy = isTestable ? redundancy : 0.0;
  const double product =
      column.product + disturbance.influence.dot(gradientOrZero(cofactors, gradient));
  disturbance.value = isTestable ? product / redundancy : unknownValue;
  return disturbance;
}

Prediction predictionWithout(const Cofactors& cofactors, const ObservationSums& group,
                             const Eigen::VectorXd& gradient) {
  check(group);
  const Eigen::VectorXd b = columnOf(group.disturbance.products, group.unknowns);
  const Eigen::MatrixXd columns = columnsOf(cofactors, group.unknowns);
  // (N − R'R)⁻¹ = Q + Q R' M⁻¹ R Q with M = 1 − R Q R', R'R the group's normal matrix.
  const Eigen::MatrixXd factor = pivotedFactor(group.normal);
  const Eigen::MatrixXd factored = columns * factor.transpose();
  const Eigen::MatrixXd left = Eigen::MatrixXd::Identity(factor.rows(), factor.rows()) -
                               factor * factored(group.unknowns, Eigen::all);
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> m(left);
  Prediction prediction;
  prediction.isDetermined = m.eigenvalues().size() == 0 || m.eigenvalues()[0] > noRedundancy;
  if (!prediction.isDetermined || !(group.disturbance.square > 0.0)) {
    prediction.isDetermined = false;
    prediction.misfit = unknownValue;
    prediction.sigma = infinite;
    prediction.change = Eigen::VectorXd::Constant(cofactors.unknowns(), unknownValue);
    return prediction;
  }
  const auto inverseM = [&](const Eigen::VectorXd& right) -> Eigen::VectorXd {
    return m.eigenvectors() * (m.eigenvectors().transpose() * right).cwiseQuotient(m.eigenvalues());
  };
  // The gradient of all others, which they would not leave.
  const Eigen::VectorXd step =
      columns * group.gradient -
      cofactors.times(Eigen::MatrixXd(gradientOrZero(cofactors, gradient)));
  prediction.change = step + factored * inverseM(factor * step(group.unknowns));
  const double square = group.disturbance.square;
  prediction.misfit =
      (group.disturbance.product + b.dot(prediction.change(group.unknowns))) / square;
  const Eigen::VectorXd ofB = columns(group.unknowns, Eigen::all) * b;
  const double variance = b.dot(ofB) + (factor * ofB).dot(inverseM(factor * ofB));
  prediction.sigma = std::sqrt(1.0 / square + variance / (square * square));
  return prediction;
}

}  // namespace Velorn
