// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A list of texts, as hosts hand over the names of strip files.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace Plome {

/// Texts in the order in which they were added; duplicates are kept.
class StringList {
 public:
  using value_type = std::string;
  using const_iterator = std::vector<std::string>::const_iterator;

  StringList() = default;
  StringList(std::initializer_list<std::string> texts) : texts_(texts) {}
  explicit StringList(std::vector<std::string> texts) : texts_(std::move(texts)) {}

  void add(std::string text) { texts_.push_back(std::move(text)); }
  std::size_t size() const { return texts_.size(); }
  bool empty() const { return texts_.empty(); }

  /// @throws std::out_of_range for an index not below size()
  const std::string& at(std::size_t index) const { return texts_.at(index); }

  const_iterator begin() const { return texts_.begin(); }
  const_iterator end() const { return texts_.end(); }

 private:
  std::vector<std::string> texts_;
};

}  // namespace Plome
