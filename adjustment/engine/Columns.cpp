// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/Columns.h"

namespace Velorn {

std::vector<Columns::Place> Columns::places() const {
  std::vector<Place> all;
  for (std::size_t block = 0; block < unknownBlocks; ++block) {
    if (!isAsked[block]) continue;
    if (block < sectionBlocks) {
      for (int entry = 0; entry < blockSizes[block]; ++entry) all.push_back({block, entry});
      continue;
    }
    const auto& powers = used[(block - sectionBlocks) / 2];
    const int count = block % 2 == 0 ? powers.position : powers.angles;
    for (int j = 0; j < 3; ++j) {
      for (int m = 0; m < count; ++m) all.push_back({block, 4 * j + m});
    }
  }
  return all;
}

void Columns::moveToStarts(const std::array<double, 2>& middles,
                           Eigen::Ref<Eigen::MatrixXd> matrix) const {
  const auto all = places();
  // From the last one on: a column takes those of lower powers before they are changed.
  for (auto column = static_cast<Eigen::Index>(all.size()); column-- > 0;) {
    const auto [block, entry] = all[static_cast<std::size_t>(column)];
    if (block < sectionBlocks) continue;
    // dt^m = (t + c)^m = sum over k of binomial(m, k) c^(m - k) t^k, k down from m.
    const double middle = middles[(block - sectionBlocks) / 2];
    double factor = 1.0;
    for (int k = entry % 4, below = 1; k > 0; --k, ++below) {
      factor *= middle * k / below;
      matrix.col(column) += factor * matrix.col(column - below);
    }
  }
}

}  // namespace Velorn
