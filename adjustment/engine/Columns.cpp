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

}  // namespace Velorn
