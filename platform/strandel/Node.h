// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What bundle, slice, grid, chart and field have in common.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "platform/Visibility.h"
#include "platform/strandel/Attributes.h"

namespace Strandel {

namespace Hdf5 {
struct StoredNode;
}

/// A named place in a bundle with attributes.
class Node {
 public:
  explicit Node(std::string name) : name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  Attributes& attributes() { return attributes_; }
  const Attributes& attributes() const { return attributes_; }

  /// The file it was loaded from, for messages; empty when it was made in memory.
  VELORN_PLATFORM_EXPORT std::filesystem::path sourceFile() const;

  // Implementation: where in which file the storage found this node; empty when it was made in
  // memory.
  const std::shared_ptr<const Hdf5::StoredNode>& stored() const { return stored_; }
  void setStored(std::shared_ptr<const Hdf5::StoredNode> stored) { stored_ = std::move(stored); }

 private:
  std::string name_;
  Attributes attributes_;
  std::shared_ptr<const Hdf5::StoredNode> stored_;
};

}  // namespace Strandel
