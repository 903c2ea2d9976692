// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The folder of the correspondence blocks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/strandel/MyStorage.h"
#include <velorn/SphericalBeing.h>

namespace Velorn::Flights {

/// The two records of one correspondence.
struct BlockEntry {
  Velorn::SphericalBeing i, j;
};

/// Name and weeks of a block.
struct BlockTitle {
  std::uint32_t i, j;  ///< file ids
  bool isGroundTruth;
  std::uint32_t weekI, weekJ;
};

class BlockFolder {
 public:
  /// Makes the folder, marks it as incomplete and removes the blocks that it holds; other files
  /// stay.
  /// @throws Error of status 6
  BlockFolder(std::filesystem::path folder, std::shared_ptr<Strandel::MyStorage> storage);

  /// Writes a block; nothing for no entries.
  /// @throws Error of status 6
  void write(const BlockTitle& title, const std::vector<BlockEntry>& entries) const;

  /// Removes the mark.
  /// @throws Error of status 6
  void finish() const;

 private:
  std::filesystem::path folder_;
  std::shared_ptr<Strandel::MyStorage> storage_;
};

}  // namespace Velorn::Flights
