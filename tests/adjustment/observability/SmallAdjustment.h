// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Eigen/Dense>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "adjustment/observability/NormalSum.h"

/// An adjustment of some sections of three unknowns each and two global ones, with a priori rows
/// for all, small enough for dense matrices. The unknown after them occurs nowhere.
///
/// Chunks have observations of two neighbouring sections, of weight 1. Residuals are r = A x − y.
struct SmallAdjustment {
  static constexpr Eigen::Index perChunk = 5;

  Eigen::Index sections, unknowns;
  Eigen::MatrixXd a;           ///< rows of chunk c from perChunk c on
  Eigen::VectorXd priorSigma;  ///< zero for the last

  SmallAdjustment(Eigen::Index sectionCount, Eigen::Index chunks, unsigned seed)
      : sections(sectionCount), unknowns(3 * sectionCount + 3) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    a.setZero(perChunk * chunks, unknowns);
    priorSigma.setZero(unknowns);
    for (Eigen::Index i = 0; i + 1 < unknowns; ++i) priorSigma[i] = 0.5 * std::pow(40.0, -(i % 3));
    for (Eigen::Index row = 0; row < a.rows(); ++row) {
      for (const Eigen::Index unknown : unknownsOf(row / perChunk)) {
        a(row, unknown) = normal(random) * std::pow(40.0, unknown % 3);  // metres and radians
      }
    }
  }

  std::vector<Eigen::Index> unknownsOf(Eigen::Index chunk) const {
    std::vector<Eigen::Index> all;
    const Eigen::Index first = chunk % (sections - 1);
    for (Eigen::Index i = 3 * first; i < 3 * first + 6; ++i) all.push_back(i);
    all.push_back(3 * sections);
    all.push_back(3 * sections + 1);
    return all;
  }

  Eigen::Index chunks() const { return a.rows() / perChunk; }
  auto rowsOf(Eigen::Index chunk) const { return a.middleRows(perChunk * chunk, perChunk); }

  Eigen::MatrixXd priorDense() const {
    Eigen::VectorXd weights = priorSigma.unaryExpr(
        [](double sigma) { return sigma > 0.0 ? 1.0 / (sigma * sigma) : 0.0; });
    return weights.asDiagonal();
  }
  Eigen::MatrixXd normalDense() const { return a.transpose() * a + priorDense(); }

  /// Of what is an unknown; the rest zero.
  Eigen::MatrixXd inverseDense(const Eigen::MatrixXd& normal) const {
    Eigen::MatrixXd inverse = Eigen::MatrixXd::Zero(unknowns, unknowns);
    const Eigen::Index n = unknowns - 1;
    inverse.topLeftCorner(n, n) = normal.topLeftCorner(n, n).inverse();
    return inverse;
  }

  /// Of the observations alone, added chunk by chunk.
  Velorn::NormalMatrix observed() const {
    Velorn::NormalSum sum(unknowns);
    for (Eigen::Index chunk = 0; chunk < chunks(); ++chunk) {
      const auto places = unknownsOf(chunk);
      const Eigen::MatrixXd rows = rowsOf(chunk)(Eigen::all, places);
      sum.add(places, rows.transpose() * rows);
    }
    return sum.matrix();
  }

  Velorn::NormalMatrix prior() const { return priorDense().sparseView(); }
  Velorn::NormalMatrix normal() const { return observed() + prior(); }

  /// Errors of unknowns that are as large as is known before.
  Eigen::VectorXd drawnUnknowns(std::mt19937& random) const {
    return drawn(unknowns, random).cwiseProduct(priorSigma);
  }
  static Eigen::VectorXd drawn(Eigen::Index size, std::mt19937& random) {
    std::normal_distribution<double> normal;
    return Eigen::VectorXd::NullaryExpr(size, [&] { return normal(random); });
  }

  /// A sum of some unknowns.
  static Velorn::LinearSum sum() { return {{0, 1.0}, {4, -40.0}, {7, 20.0}}; }
  Eigen::VectorXd dense(const Velorn::LinearSum& sum) const {
    Eigen::VectorXd column = Eigen::VectorXd::Zero(unknowns);
    for (const auto& [unknown, factor] : sum) column[unknown] = factor;
    return column;
  }
};

/// Limits of the mean of squares of so many normal values of variance 1, at 0.1 %: Wilson and
/// Hilferty's cube root.
inline std::pair<double, double> chiSquareLimits(double count) {
  const auto at = [&](double normal) {
    return std::pow(1.0 - 2.0 / (9.0 * count) + normal * std::sqrt(2.0 / (9.0 * count)), 3);
  };
  return {at(-3.29), at(3.29)};
}
