// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which unknowns of two sections and of the mounting have a column in the Jacobian, and their
// derivatives in the order of the columns.
#pragma once

#include <array>
#include <vector>

#include "adjustment/engine/PointChain.h"

namespace Velorn {

/// The eight blocks of unknowns of a residual: offsets, scales, misalignment, lever arm, position
/// and angle corrections of the first point's section, those of the second's.
inline constexpr std::size_t unknownBlocks = 8, sectionBlocks = 4;
inline constexpr std::array<int, unknownBlocks> blockSizes{3, 3, 3, 3, 12, 12, 12, 12};
inline constexpr int mostColumns = 60;

/// Unknowns with a column: of the blocks that are asked for, those that the types of the sections
/// have. Columns stand in the order of the unknowns.
struct Columns {
  std::array<bool, unknownBlocks> isAsked{};
  std::array<UsedPowers, 2> used{};  ///< of both sections; none without a second

  /// Place among the unknowns of its block, and the block, of every column.
  struct Place {
    std::size_t block;
    int entry;
  };
  std::vector<Place> places() const;

  /// Turns a matrix with columns for polynomials about the middle of the times, whose powers are
  /// nearly independent of each other, into one for the unknowns, which are about the start of the
  /// section.
  /// @param middles  of both sections, since their starts [s]
  /// @param matrix   its first columns are these; others stay
  void moveToStarts(const std::array<double, 2>& middles, Eigen::Ref<Eigen::MatrixXd> matrix) const;
};

/// Derivatives by the point of one side, and what they are multiplied with on the way to unknowns.
template <typename T>
struct SideDerivatives {
  PointGradient<T> gradient;
  Vector3<T> polar;  ///< as recorded
  T time;            ///< since the middle of the pair's times in the section [s]
};

namespace Detail {

template <typename T, typename Put>
void putPolynomial(const Vector3<T>& gradient, const T& time, int powers, const Put& put) {
  for (int j = 0; j < 3; ++j) {
    T derivative = gradient[j];
    for (int m = 0; m < powers; ++m) {
      put(derivative);
      derivative *= time;
    }
  }
}

template <typename T, typename Put>
void putSection(const Columns& columns, std::size_t side, const SideDerivatives<T>& of,
                const Put& put) {
  const std::size_t block = sectionBlocks + 2 * side;
  const UsedPowers used = columns.used[side];
  if (columns.isAsked[block]) putPolynomial(of.gradient.position, of.time, used.position, put);
  if (columns.isAsked[block + 1]) putPolynomial(of.gradient.attitude, of.time, used.angles, put);
}

}  // namespace Detail

/// Calls put(derivative) for every column in turn; those of a section are of polynomials about the
/// middle.
/// @param second  null for the ground truth
template <typename T, typename Put>
void putDerivatives(const Columns& columns, const SideDerivatives<T>& first,
                    const SideDerivatives<T>* second, const Put& put) {
  const auto putGlobal = [&](std::size_t block, const auto& of) {
    if (!columns.isAsked[block]) return;
    for (int i = 0; i < 3; ++i) put(second ? T(of(first, i) + of(*second, i)) : T(of(first, i)));
  };
  using Side = SideDerivatives<T>;
  putGlobal(0, [](const Side& side, int i) { return side.gradient.polar[i]; });
  putGlobal(1, [](const Side& side, int i) { return T(side.gradient.polar[i] * side.polar[i]); });
  putGlobal(2, [](const Side& side, int i) { return side.gradient.misalignment[i]; });
  putGlobal(3, [](const Side& side, int i) { return side.gradient.leverArm[i]; });
  Detail::putSection(columns, 0, first, put);
  if (second) Detail::putSection(columns, 1, *second, put);
}

}  // namespace Velorn
