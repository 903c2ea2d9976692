// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/observability/SelectedInverse.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

namespace Velorn {
namespace {

/// Rows of the entries of a column below the diagonal, ascending.
std::span<const int> rowsOf(const NormalMatrix& lower, Eigen::Index column) {
  const int begin = lower.outerIndexPtr()[column], end = lower.outerIndexPtr()[column + 1];
  return {lower.innerIndexPtr() + begin, lower.innerIndexPtr() + end};
}

std::span<double> valuesOf(NormalMatrix& lower, Eigen::Index column) {
  const int begin = lower.outerIndexPtr()[column], end = lower.outerIndexPtr()[column + 1];
  return {lower.valuePtr() + begin, lower.valuePtr() + end};
}

/// Turns L of L D L' into the entries of its inverse Z, and D into Z's diagonal. From the last
/// column j to the first, with the rows i and k of its entries,
///     Z_ij = −Σ_k Z_ik L_kj,   Z_jj = 1/D_j − Σ_k Z_kj L_kj,
/// where all Z_ik stand in columns that are done, and have a place because L filled in there.
void invert(NormalMatrix& lower, Eigen::VectorXd& diagonal) {
  const Eigen::Index n = diagonal.size();
  std::vector<int> placeOfRow(static_cast<std::size_t>(n), -1);
  for (Eigen::Index j = n - 1; j >= 0; --j) {
    const auto rows = rowsOf(lower, j);
    const auto values = valuesOf(lower, j);
    const std::vector<double> l(values.begin(), values.end());
    for (std::size_t a = 0; a < rows.size(); ++a) {
      placeOfRow[static_cast<std::size_t>(rows[a])] = static_cast<int>(a);
      values[a] = -diagonal[rows[a]] * l[a];
    }
    for (std::size_t b = 0; b < rows.size(); ++b) {
      const auto below = rowsOf(lower, rows[b]);
      const auto inverse = valuesOf(lower, rows[b]);
      for (std::size_t e = 0; e < below.size(); ++e) {
        const int a = placeOfRow[static_cast<std::size_t>(below[e])];
        if (a < 0) continue;
        values[static_cast<std::size_t>(a)] -= inverse[e] * l[b];
        values[b] -= inverse[e] * l[static_cast<std::size_t>(a)];
      }
    }
    diagonal[j] = 1.0 / diagonal[j];
    for (std::size_t a = 0; a < rows.size(); ++a) {
      diagonal[j] -= values[a] * l[a];
      placeOfRow[static_cast<std::size_t>(rows[a])] = -1;
    }
  }
}

}  // namespace

SelectedInverse::SelectedInverse(const Cofactors& cofactors) : scale_(cofactors.scale_) {
  if (scale_.size() == 0) return;
  place_ = cofactors.factor_.permutationP().indices();
  variances_ = cofactors.factor_.vectorD();
  entries_ = cofactors.factor_.matrixL().nestedExpression();
  entries_.makeCompressed();
  invert(entries_, variances_);
}

double SelectedInverse::at(Eigen::Index i, Eigen::Index j) const {
  const double scale = scale_[i] * scale_[j];
  if (scale == 0.0) return 0.0;
  const auto [column, row] = std::minmax(place_[i], place_[j]);
  if (row == column) return scale * variances_[row];
  const auto rows = rowsOf(entries_, column);
  const auto found = std::lower_bound(rows.begin(), rows.end(), row);
  if (found == rows.end() || *found != row) {
    throw std::invalid_argument(
        fmt::format("SelectedInverse: no observation has unknowns {} and {}", i, j));
  }
  return scale * entries_.valuePtr()[&*found - entries_.innerIndexPtr()];
}

Eigen::VectorXd SelectedInverse::diagonal() const {
  Eigen::VectorXd variances(scale_.size());
  for (Eigen::Index i = 0; i < scale_.size(); ++i) variances[i] = at(i, i);
  return variances;
}

Eigen::VectorXd SelectedInverse::sharesOf(const NormalMatrix& group) const {
  if (group.rows() != scale_.size() || group.cols() != scale_.size()) {
    throw std::invalid_argument(
        fmt::format("SelectedInverse: a group of {} unknowns for {}", group.rows(), scale_.size()));
  }
  Eigen::VectorXd shares = Eigen::VectorXd::Zero(scale_.size());
  for (Eigen::Index j = 0; j < group.cols(); ++j) {
    for (NormalMatrix::InnerIterator entry(group, j); entry; ++entry) {
      shares[j] += at(entry.row(), j) * entry.value();
    }
  }
  return shares;
}

}  // namespace Velorn
