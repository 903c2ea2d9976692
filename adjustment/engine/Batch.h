// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What goes in and out of a kernel: arrays over the correspondences of a batch, plain doubles, so
// that kernels can be compiled for one processor each.
#pragma once

#include "adjustment/engine/Columns.h"
#include "adjustment/engine/LocalPlace.h"

namespace Velorn {

inline constexpr std::size_t batchSize = 128;
inline constexpr std::size_t lanesAtOnce = 8;  ///< counts of a batch are filled up to a multiple
/// Columns, the residual, one further column, filled up to a multiple of four.
inline constexpr std::size_t mostRows = mostColumns + 4;

using BatchArray = std::array<double, batchSize>;

/// Of one side, what holds no unknown.
struct alignas(64) BatchSide {
  std::array<BatchArray, 3> polar;     ///< as recorded; of the ground truth its world point
  std::array<BatchArray, 3> position;  ///< interpolated
  std::array<BatchArray, 3> attitude;  ///< interpolated
  BatchArray dt;                       ///< since the start of the section [s]
  BatchArray time;                     ///< since the middle of the pair's times in it [s]
};

/// Correspondences of two sections and of one class. Those beyond the count, up to a multiple of
/// lanesAtOnce, have a zero normal and are otherwise like another one.
struct alignas(64) Batch {
  std::array<BatchSide, 2> sides;
  std::array<BatchArray, 3> normal;
  std::size_t count = 0;
  const LocalPlace* place = nullptr;  ///< near all of them; may be null

  std::size_t filled() const { return (count + lanesAtOnce - 1) / lanesAtOnce * lanesAtOnce; }
};

/// What the correspondences of a batch have in common.
struct BatchSetup {
  Vector3<double> offsets, scales, leverArm;
  Turn<double> misalignment;
  std::array<SectionCorrections<double>, 2> corrections;
  std::array<UsedPowers, 2> used;
  const Projection* projection;
  bool isGroundTruth;
  double weight;  ///< of the class
  bool hasHuber;  ///< whether Huber's function with its corner at 1 acts on the residuals
  Columns columns;
};

/// One array per column, then the residual, every entry times the square root of the derivative of
/// Huber's function, which is `factor`.
struct alignas(64) BatchRows {
  std::array<BatchArray, mostRows> rows;
  BatchArray factor;
};

/// How one processor computes batches. ρ(r²) is Huber's function, or r² without it; the cost is
/// half its sum.
struct BatchKernel {
  const char* name;
  /// Residuals alone. @return Σ ρ(r²)
  double (*cost)(const BatchSetup&, const Batch&);
  /// Residuals and derivatives. @return Σ ρ(r²)
  double (*rows)(const BatchSetup&, const Batch&, BatchRows&);
  /// Adds the products of all pairs of rows to the lower triangle of a matrix.
  /// @param count   rows, a multiple of four
  /// @param lanes   entries of a row, a multiple of lanesAtOnce
  /// @param matrix  mostRows entries from one row to the next
  void (*addProducts)(const BatchRows&, std::size_t count, std::size_t lanes, double* matrix);
};

/// The kernels that this processor can run, the fastest first; the last one is plain.
const std::vector<BatchKernel>& batchKernels();

}  // namespace Velorn
