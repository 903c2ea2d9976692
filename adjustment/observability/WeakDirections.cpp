// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/observability/WeakDirections.h"

#include <Eigen/Eigenvalues>
#include <Eigen/Jacobi>
#include <Eigen/QR>
#include <Eigen/SparseCholesky>
#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/model/Layout.h"

namespace Velorn {
namespace {

constexpr double shift = 1e-4;         // makes a singular matrix regular, far below 1
constexpr double asGoodAsKnown = 1e6;  // eigenvalue of what is held
constexpr double leastEffect = 1e-3;   // in standard deviations of all residuals together
constexpr Eigen::Index spare = 8;      // columns beyond those asked for, which let these converge
constexpr int mostIterations = 100;

NormalMatrix scaledNormal(const NormalMatrix& observed, const Eigen::VectorXd& sigmas) {
  NormalMatrix scaled = sigmas.asDiagonal() * observed * sigmas.asDiagonal();
  NormalMatrix held(observed.rows(), observed.cols());
  held.setIdentity();
  for (Eigen::Index i = 0; i < sigmas.size(); ++i) {
    held.coeffRef(i, i) = sigmas[i] > 0.0 ? 0.0 : asGoodAsKnown;
  }
  scaled += held;
  return scaled;
}

Eigen::MatrixXd orthonormal(const Eigen::MatrixXd& columns) {
  return Eigen::HouseholderQR<Eigen::MatrixXd>(columns).householderQ() *
         Eigen::MatrixXd::Identity(columns.rows(), columns.cols());
}

Eigen::MatrixXd randomColumns(Eigen::Index rows, Eigen::Index columns) {
  std::mt19937 random(1);
  std::normal_distribution<double> normal;
  return Eigen::MatrixXd::NullaryExpr(rows, columns, [&] { return normal(random); });
}

/// Angle by which two columns are turned so that the squares of their entries differ most.
double varimaxAngle(const Eigen::VectorXd& x, const Eigen::VectorXd& y) {
  const Eigen::ArrayXd u = x.array().square() - y.array().square(), v = 2.0 * x.array() * y.array();
  const auto n = static_cast<double>(x.size());
  const double numerator = 2.0 * ((u * v).sum() - u.sum() * v.sum() / n);
  const double denominator =
      (u.square() - v.square()).sum() - (u.sum() * u.sum() - v.sum() * v.sum()) / n;
  return 0.25 * std::atan2(numerator, denominator);
}

/// Turns orthonormal columns within the space that they span.
void simplify(Eigen::Ref<Eigen::MatrixXd> columns) {
  constexpr int mostSweeps = 30;
  double largest = 1.0;
  for (int sweep = 0; sweep < mostSweeps && largest > 1e-6; ++sweep) {
    largest = 0.0;
    for (Eigen::Index p = 0; p < columns.cols(); ++p) {
      for (Eigen::Index q = p + 1; q < columns.cols(); ++q) {
        const double angle = varimaxAngle(columns.col(p), columns.col(q));
        columns.applyOnTheRight(p, q,
                                Eigen::JacobiRotation<double>(std::cos(angle), -std::sin(angle)));
        largest = std::max(largest, std::abs(angle));
      }
    }
  }
}

void check(const NormalMatrix& observed, const Eigen::VectorXd& sigmas) {
  if (observed.rows() != observed.cols() || observed.rows() != sigmas.size()) {
    throw std::invalid_argument(
        fmt::format("weakDirections: {} standard deviations for a normal matrix of {} x {}",
                    sigmas.size(), observed.rows(), observed.cols()));
  }
  for (Eigen::Index i = 0; i < sigmas.size(); ++i) {
    if (!(sigmas[i] >= 0.0 && std::isfinite(sigmas[i]))) {
      throw std::invalid_argument(
          fmt::format("weakDirections: the standard deviation of unknown {} is {}", i, sigmas[i]));
    }
  }
}

}  // namespace

std::vector<WeakDirection> weakDirections(const NormalMatrix& observed,
                                          const Eigen::VectorXd& priorSigmas, std::size_t most) {
  check(observed, priorSigmas);
  const Eigen::Index n = observed.rows();
  if (n == 0 || most == 0) return {};
  const auto asked = std::min(n, static_cast<Eigen::Index>(most));
  const NormalMatrix scaled = scaledNormal(observed, priorSigmas);
  Eigen::SimplicialLDLT<NormalMatrix> shifted;
  shifted.setShift(shift);
  shifted.compute(scaled);
  if (shifted.info() != Eigen::Success || !(shifted.vectorD().minCoeff() > 0.0)) {
    throw std::invalid_argument("weakDirections: the normal matrix is not positive semidefinite");
  }
  Eigen::MatrixXd basis = orthonormal(randomColumns(n, std::min(n, 2 * asked + spare)));
  Eigen::VectorXd eigenvalues = Eigen::VectorXd::Constant(asked, asGoodAsKnown);
  for (int iteration = 0; iteration < mostIterations; ++iteration) {
    basis = orthonormal(shifted.solve(basis));
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> ritz(basis.transpose() * (scaled * basis));
    basis *= ritz.eigenvectors();
    const Eigen::VectorXd found = ritz.eigenvalues().head(asked);
    const bool isSteady = ((found - eigenvalues).array().abs() < 1e-9 + 1e-6 * found.array()).all();
    eigenvalues = found;
    if (isSteady) break;
  }
  Eigen::Index untold = 0;
  while (untold < asked && eigenvalues[untold] < shift) ++untold;
  simplify(basis.leftCols(untold));
  const Eigen::VectorXd sizes = priorSigmas.cwiseProduct(observed.diagonal().cwiseSqrt());
  std::vector<WeakDirection> directions;
  for (Eigen::Index k = 0; k < asked && eigenvalues[k] < 1.0; ++k) {
    const double eigenvalue = basis.col(k).dot(scaled * basis.col(k));
    const Eigen::VectorXd effect = sizes.cwiseProduct(basis.col(k));
    const double size = effect.norm();
    directions.push_back({std::max(0.0, eigenvalue), basis.col(k),
                          effect * (size > leastEffect ? 1.0 / size : 0.0)});
  }
  return directions;
}

std::vector<Participation> participations(const Eigen::VectorXd& direction, double leastShare) {
  const auto locals =
      std::max<Eigen::Index>(0, direction.size() - static_cast<Eigen::Index>(globalParameters));
  std::array<Participation, localParameters + globalParameters> all{};
  std::array<double, localParameters + globalParameters> counts{};
  for (Eigen::Index i = 0; i < direction.size(); ++i) {
    const auto kind = i < locals ? static_cast<std::size_t>(i) % localParameters
                                 : localParameters + static_cast<std::size_t>(i - locals);
    all[kind].kind = kind;
    all[kind].share += direction[i] * direction[i];
    all[kind].mean += direction[i];
    if (std::abs(direction[i]) > 1e-12) counts[kind] += 1.0;
  }
  std::vector<Participation> large;
  for (auto& part : all) {
    if (!(part.share >= leastShare)) continue;
    part.mean /= counts[part.kind];
    large.push_back(part);
  }
  std::sort(large.begin(), large.end(),
            [](const auto& a, const auto& b) { return a.share > b.share; });
  return large;
}

}  // namespace Velorn
