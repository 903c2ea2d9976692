// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/observability/Cofactors.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include <fmt/format.h>

namespace Velorn {
namespace {

constexpr double weakWeight = 1e-10;

Eigen::VectorXd inverseRootOfDiagonal(const NormalMatrix& normal) {
  return Eigen::VectorXd(normal.diagonal()).unaryExpr([](double value) {
    return value > 0.0 ? 1.0 / std::sqrt(value) : 0.0;
  });
}

/// The scaled matrix with the weak observations; a one for what is no unknown.
NormalMatrix weaklyHeld(const NormalMatrix& normal, const Eigen::VectorXd& scale) {
  NormalMatrix held = scale.asDiagonal() * normal * scale.asDiagonal();
  NormalMatrix diagonal(normal.rows(), normal.cols());
  diagonal.setIdentity();
  for (Eigen::Index i = 0; i < scale.size(); ++i) {
    if (scale[i] > 0.0) diagonal.coeffRef(i, i) = weakWeight;
  }
  held += diagonal;
  return held;
}

}  // namespace

Cofactors::Cofactors(const NormalMatrix& normal) {
  if (normal.rows() != normal.cols()) {
    throw std::invalid_argument(
        fmt::format("Cofactors: a normal matrix of {} x {}", normal.rows(), normal.cols()));
  }
  scale_ = inverseRootOfDiagonal(normal);
  if (normal.rows() == 0) return;
  const NormalMatrix held = weaklyHeld(normal, scale_);
  if (!std::isfinite(held.sum())) {
    throw std::invalid_argument("Cofactors: the normal matrix has a value that is not finite");
  }
  factor_.compute(held);
  if (factor_.info() != Eigen::Success || !(factor_.vectorD().minCoeff() > 0.0)) {
    throw std::invalid_argument("Cofactors: the normal matrix is not positive semidefinite");
  }
}

Eigen::MatrixXd Cofactors::times(const Eigen::MatrixXd& right) const {
  if (unknowns() == 0) return right;
  const Eigen::MatrixXd solved = factor_.solve(scale_.asDiagonal() * right);
  return scale_.asDiagonal() * solved;
}

Eigen::VectorXd Cofactors::times(const LinearSum& sum) const {
  if (unknowns() == 0) return {};
  const Eigen::VectorXd solved = factor_.solve(scaled(sum));
  return scale_.cwiseProduct(solved);
}

double Cofactors::standardDeviation(const LinearSum& sum) const {
  const Eigen::VectorXd right = scaled(sum);
  if (right.isZero(0.0)) return 0.0;
  const Eigen::VectorXd solved = factor_.solve(right);
  const double variance = right.dot(solved);
  const double weakShare = weakWeight * solved.squaredNorm() / variance;
  return weakShare > 0.5 ? std::numeric_limits<double>::infinity() : std::sqrt(variance);
}

Eigen::MatrixXd Cofactors::covariance(const std::vector<LinearSum>& sums) const {
  const auto count = static_cast<Eigen::Index>(sums.size());
  Eigen::MatrixXd right(unknowns(), count);
  for (Eigen::Index k = 0; k < count; ++k) right.col(k) = scaled(sums[static_cast<std::size_t>(k)]);
  if (unknowns() == 0) return Eigen::MatrixXd::Zero(count, count);
  const Eigen::MatrixXd solved = factor_.solve(right);
  return right.transpose() * solved;
}

Eigen::VectorXd Cofactors::scaled(const LinearSum& sum) const {
  Eigen::VectorXd right = Eigen::VectorXd::Zero(unknowns());
  for (const auto& [unknown, factor] : sum) {
    if (unknown < 0 || unknown >= unknowns()) {
      throw std::invalid_argument(
          fmt::format("Cofactors: a sum with unknown {} of {}", unknown, unknowns()));
    }
    right[unknown] = factor * scale_[unknown];
  }
  return right;
}

Eigen::MatrixXd correlationsOf(const Eigen::MatrixXd& covariance) {
  const Eigen::VectorXd inverse = covariance.diagonal().unaryExpr(
      [](double variance) { return variance > 0.0 ? 1.0 / std::sqrt(variance) : 0.0; });
  return inverse.asDiagonal() * covariance * inverse.asDiagonal();
}

std::vector<double> standardDeviationsWith(const NormalMatrix& normal,
                                           const NormalMatrix& candidate,
                                           const std::vector<LinearSum>& sums) {
  if (candidate.rows() < normal.rows()) {
    throw std::invalid_argument(
        fmt::format("standardDeviationsWith: a candidate of {} unknowns for an adjustment of {}",
                    candidate.rows(), normal.rows()));
  }
  NormalMatrix padded = normal;
  padded.conservativeResize(candidate.rows(), candidate.cols());
  const Cofactors cofactors(NormalMatrix(padded + candidate));
  std::vector<double> deviations;
  deviations.reserve(sums.size());
  for (const auto& sum : sums) deviations.push_back(cofactors.standardDeviation(sum));
  return deviations;
}

}  // namespace Velorn
