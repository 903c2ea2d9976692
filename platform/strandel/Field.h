// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One quantity of all points of a chart (their positions, their GPS times), in one or more
// fragments.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Visibility.h"
#include "platform/strandel/Node.h"
#include "platform/strandel/ValueType.h"

namespace Strandel {

/// Names one piece of every field of a grid; the points of a grid are its fragments' points in
/// ascending number.
struct VELORN_PLATFORM_EXPORT FragmentId {
  std::uint32_t number = 0;
  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the zero of the comparison for one
  friend auto operator<=>(const FragmentId&, const FragmentId&) = default;
};

/// Values read from a field, or why there are none.
template <Value T>
struct Read {
  std::shared_ptr<const std::vector<T>>
      values;  ///< empty pointer exactly when `error` is not empty
  std::string error;
  explicit operator bool() const { return values != nullptr; }
};

/// Smallest and largest value; per component for points and vectors (their bounding box), else in
/// the first entry. A component in which any value is NaN has NaN for both. 64-bit integers are
/// rounded to double.
struct ValueRange {
  std::array<double, 3> minimum{};
  std::array<double, 3> maximum{};

  double lowest() const { return minimum[0]; }
  double highest() const { return maximum[0]; }
};

/// A range, or why there is none; both empty for a field without values.
struct RangeRead {
  std::optional<ValueRange> range;
  std::string error;
};

class ColumnSource;

/// Data are read when they are asked for and belong to whoever asked; data that were set are held
/// until the field goes. Reading operations may be called from several threads as long as nobody
/// writes.
class VELORN_PLATFORM_EXPORT Field : public Node {
 public:
  Field(std::string name, ValueType type) : Node(std::move(name)), type_(type) {}

  ValueType valueType() const { return type_; }

  /// Known fragments in ascending order, also those whose chunk is absent.
  std::vector<FragmentId> fragments() const;
  bool hasChunk(FragmentId fragment) const { return chunk(fragment) != nullptr; }
  std::size_t size(
      FragmentId fragment) const;  ///< values of one fragment; 0 when its chunk is absent
  std::size_t size() const;        ///< values of all fragments

  /// All values of one fragment. Refused: another type than the field's, an absent chunk, a damaged
  /// file, too little memory.
  template <Value T>
  Read<T> values(FragmentId fragment) const {
    return values<T>(fragment, 0, size(fragment));
  }

  /// `count` values of one fragment from `first` on; refused when they reach beyond its end.
  template <Value T>
  Read<T> values(FragmentId fragment, std::size_t first, std::size_t count) const;

  /// Sets the values of a fragment (made if it is new) and marks the field as touched. The array is
  /// shared, not copied; nobody may change it afterwards.
  /// @return empty, or that T is not the field's type; the field is then as before
  template <Value T>
  std::string setValues(FragmentId fragment, std::shared_ptr<const std::vector<T>> values);
  template <Value T>
  std::string setValues(FragmentId fragment, std::vector<T> values) {
    return setValues<T>(fragment, std::make_shared<const std::vector<T>>(std::move(values)));
  }

  /// Makes the fragment known, without a chunk.
  void setAbsent(FragmentId fragment);

  /// Smallest and largest value over all fragments: the stored one when the file has it and nobody
  /// changed the data, else by reading them, in blocks.
  RangeRead range() const;

  /// True since values were set, or somebody marked the field, until the bundle is saved.
  bool touched() const { return touched_; }
  void touch() { touched_ = true; }
  void clearTouched() { touched_ = false; }

  // Implementation, for the storage.
  const ColumnSource* chunk(FragmentId fragment) const;
  void addStoredChunk(FragmentId fragment, std::shared_ptr<const ColumnSource> source);
  void setStoredRange(std::optional<ValueRange> range) { storedRange_ = range; }
  const std::optional<ValueRange>& storedRange() const { return storedRange_; }

 private:
  std::string faultOf(FragmentId fragment, ValueType asked) const;
  std::string readRows(FragmentId fragment, std::size_t first, std::size_t count, void* rows) const;

  ValueType type_;
  std::map<FragmentId, std::shared_ptr<const ColumnSource>> chunks_;  // an empty pointer: absent
  std::optional<ValueRange> storedRange_;
  bool touched_ = false;
};

using FieldPtr = std::shared_ptr<Field>;

}  // namespace Strandel
