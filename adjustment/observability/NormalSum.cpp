// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/observability/NormalSum.h"

#include <stdexcept>

#include <fmt/format.h>

namespace Velorn {

void NormalSum::add(const std::vector<Eigen::Index>& unknowns, const Eigen::MatrixXd& block,
                    double factor) {
  const auto size = static_cast<Eigen::Index>(unknowns.size());
  if (block.rows() != size || block.cols() != size) {
    throw std::invalid_argument(fmt::format("NormalSum: a block of {} x {} for {} unknowns",
                                            block.rows(), block.cols(), size));
  }
  for (const Eigen::Index unknown : unknowns) {
    if (unknown < 0 || unknown >= unknowns_) {
      throw std::invalid_argument(fmt::format("NormalSum: unknown {} of {}", unknown, unknowns_));
    }
  }
  if (!(block * factor).allFinite()) {
    throw std::invalid_argument("NormalSum: a block has a value that is not finite");
  }
  const auto [place, isNew] = blocks_.try_emplace(unknowns, factor * block);
  if (!isNew) place->second += factor * block;
}

void NormalSum::add(std::span<const PriorRows> rows) {
  for (const auto& row : rows) add(row.unknowns, row.rows.transpose() * row.rows);
}

NormalMatrix NormalSum::matrix() const {
  std::vector<Eigen::Triplet<double>> entries;
  for (const auto& [unknowns, block] : blocks_) {
    for (Eigen::Index j = 0; j < block.cols(); ++j) {
      for (Eigen::Index i = 0; i < block.rows(); ++i) {
        entries.emplace_back(static_cast<int>(unknowns[static_cast<std::size_t>(i)]),
                             static_cast<int>(unknowns[static_cast<std::size_t>(j)]), block(i, j));
      }
    }
  }
  NormalMatrix matrix(unknowns_, unknowns_);
  matrix.setFromTriplets(entries.begin(), entries.end());
  return matrix;
}

}  // namespace Velorn
