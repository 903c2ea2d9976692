// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The points of the one grid of a container: their columns.
//
//     GridFile strip("strip_01.kx", configuration);
//     const auto positions = strip.world<point>("Positions").whole();
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "flight/strips/OrFail.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/InputParameter.h>

namespace Velorn::Flights {

/// A fragment with points.
struct Piece {
  Strandel::FragmentId fragment;
  std::size_t first = 0;  ///< number of its first point in the file
  std::size_t count = 0;
};

/// Calls use(piece, first, count) for one block of points after the other, counted in its piece.
template <typename Use>
void forEachBlock(const std::vector<Piece>& pieces, const Use& use) {
  constexpr std::size_t block = std::size_t{1} << 20U;  // whole chunks of a file
  for (const Piece& piece : pieces) {
    for (std::size_t first = 0; first < piece.count; first += block) {
      use(piece, first, std::min(block, piece.count - first));
    }
  }
}

/// One field of all points, checked to be complete when it is made.
template <Strandel::Value T>
class FieldOfFile {
 public:
  FieldOfFile(std::string name, Strandel::FieldPtr field, const std::vector<Piece>& pieces)
      : name_(std::move(name)), field_(std::move(field)), pieces_(&pieces) {}

  /// All values; shared with nobody.
  std::shared_ptr<const std::vector<T>> whole() const {
    if (pieces_->size() == 1) return read(pieces_->front(), 0, pieces_->front().count);
    auto all = std::make_shared<std::vector<T>>();
    for (const Piece& piece : *pieces_) {
      const auto values = read(piece, 0, piece.count);
      all->insert(all->end(), values->begin(), values->end());
    }
    return all;
  }

  /// Calls use(number of the first point, values) for one block of points after the other.
  template <typename Use>
  void forEachBlock(const Use& use) const {
    Flights::forEachBlock(*pieces_, [&](const Piece& piece, std::size_t first, std::size_t count) {
      const auto values = read(piece, first, count);
      use(piece.first + first, std::span<const T>(*values));
    });
  }

  /// The values of some points.
  /// @param numbers  ascending
  std::vector<T> at(std::span<const std::uint32_t> numbers) const {
    std::vector<T> chosen;
    chosen.reserve(numbers.size());
    forEachBlock([&](std::size_t first, std::span<const T> values) {
      while (chosen.size() < numbers.size() && numbers[chosen.size()] < first + values.size()) {
        chosen.push_back(values[numbers[chosen.size()] - first]);
      }
    });
    return chosen;
  }

  /// Rows of one fragment.
  std::shared_ptr<const std::vector<T>> read(const Piece& piece, std::size_t first,
                                             std::size_t count) const {
    auto values = field_->template values<T>(piece.fragment, first, count);
    if (!values) throw Error(name_ + ": " + values.error);
    return values.values;
  }

 private:
  std::string name_;  // for messages
  Strandel::FieldPtr field_;
  const std::vector<Piece>* pieces_;
};

/// The field of the world chart that tells how many points there are.
struct CountedField {
  const char* name;
  Strandel::ValueType type;
};
inline constexpr CountedField countedByPlaces{"Positions", Strandel::ValueType::Point};

/// What a container without a grid, or with a grid without charts, is taken for.
enum class Bare : std::uint8_t { fault, noPoints };

/// A container of points, of which one grid is read.
class GridFile {
 public:
  /// Reads the structure of a container with one grid.
  /// @throws Error, naming the file: no container, not one grid, no positions, fields of several
  ///         lengths
  explicit GridFile(std::filesystem::path path);

  /// The same where one grid of several may be meant: the one that `GridName` of the configuration
  /// names. Of several slices the first counts.
  GridFile(std::filesystem::path path, const Velorn::InputParameter& configuration,
           Bare bare = Bare::fault, const CountedField& counted = countedByPlaces);
  GridFile(const GridFile&) = delete;
  GridFile& operator=(const GridFile&) = delete;

  const std::filesystem::path& path() const { return path_; }
  const Strandel::Grid& grid() const { return *grid_; }
  std::size_t size() const;
  /// GPS week of the times.
  /// @throws Error, naming file and grid, when there is no attribute `WeekNumber`
  std::uint32_t week() const;
  const std::vector<Piece>& pieces() const { return pieces_; }

  /// A field of the chart.
  /// @param advice  what to do when there is none
  /// @throws Error, naming file and object: no such field, another type, a fragment without it
  /// @{
  template <Strandel::Value T>
  FieldOfFile<T> world(const std::string& name, const std::string& advice = {}) const {
    return field<T>(Strandel::worldChartName, name, advice);
  }
  template <Strandel::Value T>
  FieldOfFile<T> scanner(const std::string& name, const std::string& advice = {}) const {
    return field<T>(Strandel::scannerChartName, name, advice);
  }
  /// @}

  /// A field of the world chart; empty when there is none of that name.
  Strandel::FieldPtr worldField(const std::string& name) const;

  /// @param object  in the world chart; empty: the file
  /// @throws Error that names file and object
  [[noreturn]] void refuse(const std::string& object, const std::string& fault) const;

 private:
  GridFile(std::filesystem::path path, std::shared_ptr<Strandel::MyStorage> storage);
  void findPoints(const CountedField& counted);
  template <Strandel::Value T>
  FieldOfFile<T> field(const char* chart, const std::string& name,
                       const std::string& advice) const {
    return {nameOf(chart, name), checkedField(chart, name, Strandel::valueTypeOf<T>(), advice),
            pieces_};
  }
  std::string nameOf(const char* chart, const std::string& name) const;
  Strandel::FieldPtr checkedField(const char* chart, const std::string& name,
                                  Strandel::ValueType type, const std::string& advice) const;

  std::filesystem::path path_;
  std::shared_ptr<Strandel::MyStorage> storage_;
  Strandel::Bundle bundle_;
  Strandel::GridPtr grid_;
  std::vector<Piece> pieces_;
};

/// Writes a bundle beside its target and renames it; an existing file is replaced.
/// @throws Error with the status of a write error
void saveBundle(Strandel::Bundle& bundle, const std::filesystem::path& path,
                const Strandel::MyStorage& storage);

/// The storage of a configuration, or the usual one.
std::shared_ptr<Strandel::MyStorage> storageOf(const Velorn::InputParameter& configuration);

}  // namespace Velorn::Flights
