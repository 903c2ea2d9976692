// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/LinearSum.h"

namespace Velorn {

LinearSum sumOf(LinearSum a, const LinearSum& b, double factor) {
  for (const auto& [unknown, value] : b) a[unknown] += factor * value;
  return a;
}

double valueOf(const LinearSum& sum, const Eigen::VectorXd& unknowns) {
  double value = 0.0;
  for (const auto& [unknown, factor] : sum) value += factor * unknowns[unknown];
  return value;
}

Eigen::VectorXd PriorRows::residuals(const Eigen::VectorXd& x) const {
  return rows * x(unknowns) - expected;
}

PriorRows rowsOf(const std::vector<LinearSum>& sums) {
  LinearSum columns;
  for (const auto& sum : sums) columns.insert(sum.begin(), sum.end());
  PriorRows prior;
  for (auto& [unknown, column] : columns) {
    column = static_cast<double>(prior.unknowns.size());
    prior.unknowns.push_back(unknown);
  }
  const auto count = static_cast<Eigen::Index>(sums.size());
  prior.rows.setZero(count, static_cast<Eigen::Index>(prior.unknowns.size()));
  prior.expected.setZero(count);
  for (Eigen::Index row = 0; row < count; ++row) {
    for (const auto& [unknown, factor] : sums[static_cast<std::size_t>(row)]) {
      prior.rows(row, static_cast<Eigen::Index>(columns[unknown])) = factor;
    }
  }
  return prior;
}

}  // namespace Velorn
