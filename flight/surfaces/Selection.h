// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// An expression over the fields of a point that says whether the point is selected.
//
//     Selection selection("Amplitude > 5 and not Classification == 6");
//     for (const auto& name : selection.names()) ...
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Velorn::Flights {

/// Comparisons, arithmetic and functions, joined by `and`, `or`, `not` and parentheses; `not`
/// binds less than a comparison and more than `and`. The decimal separator is a point whatever the
/// language.
class Selection {
 public:
  /// @param text  empty or blank: every point is selected
  /// @throws Error that shows the place of a fault in the text
  explicit Selection(const std::string& text);
  ~Selection();
  Selection(Selection&&) noexcept;
  Selection& operator=(Selection&&) noexcept;

  bool isEmpty() const { return parser_ == nullptr; }
  /// Fields that it asks for, in alphabetical order.
  const std::vector<std::string>& names() const { return names_; }

  /// @param values  of the fields, in the order of the names
  /// @return false, too, when one of them or the result is NaN
  bool selects(const std::vector<double>& values);

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
  std::vector<std::string> names_;
};

}  // namespace Velorn::Flights
