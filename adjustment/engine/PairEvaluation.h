// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Sums over the correspondences of two sections, or of one chunk of them, at any values of the
// unknowns. With the Jacobian J of the residuals r = w u · (Q − P), and Huber's function acting as
// the solver's corrector lets it (rows times sqrt(ρ'), which is 1 without it):
//
//     const PairEvaluation evaluation(store, pair, unknowns);
//     const NormalSums sums = evaluation.sums(run, chunk, everyBlock);   // J'J, J'r, r'r, Σ ρ(r²)
//
// The result is the same to the last bit for any number of threads.
#pragma once

#include <Eigen/Core>
#include <span>

#include "adjustment/engine/Batch.h"
#include "adjustment/engine/CorrespondenceStore.h"

namespace Velorn {

/// Sums over correspondences. Rows and columns of `products` stand for those of J, then r, then the
/// further column z if there was one.
struct NormalSums {
  std::vector<Columns::Place> columns;  ///< which unknown each column of J belongs to
  Eigen::MatrixXd products;             ///< [J r z]' [J r z]
  double twiceCost = 0.0;               ///< Σ ρ(r²)
  std::size_t count = 0;

  auto normalMatrix() const { return products.topLeftCorner(size(), size()); }  ///< J'J
  auto gradient() const { return products.col(size()).head(size()); }           ///< J'r
  double sumOfSquares() const { return products(size(), size()); }              ///< r'r
  auto furtherProducts() const { return products.col(size() + 1); }             ///< J'z, r'z, z'z

 private:
  Eigen::Index size() const { return static_cast<Eigen::Index>(columns.size()); }
};

/// A few rows that stand for many residuals: F'F = J'J, F'f = J'r, f'f = Σ ρ(r²).
struct CondensedRows {
  std::vector<Columns::Place> columns;  ///< which unknown each column of F belongs to
  Eigen::MatrixXd rows;  ///< [F f], at most as many rows as columns; empty where a residual is not
                         ///< finite
  double twiceCost = 0.0;  ///< Σ ρ(r²)
};

/// The correspondences of a pair of sections at certain values of the unknowns. It keeps
/// references; the store must be closed.
class PairEvaluation {
 public:
  /// Blocks of unknowns that get columns; see unknownBlocks.
  using Asked = std::array<bool, unknownBlocks>;
  static constexpr Asked everyBlock{true, true, true, true, true, true, true, true};

  /// @param unknowns  the blocks of Columns.h, six of them for the ground truth, eight otherwise
  /// @param kernel    how to compute; all kernels agree but for rounding
  PairEvaluation(const CorrespondenceStore& store, const SectionPair& pair,
                 const double* const* unknowns, const BatchKernel& kernel = batchKernels().front());

  /// Σ ρ(r²) of all correspondences.
  double twiceCost(int threads) const;

  /// [F f] in place of the residuals r of all correspondences and their Jacobian J.
  CondensedRows condensed(const Asked& asked, int threads) const;

  /// Over the correspondences of one chunk.
  /// @param further  empty, or a column z with one entry per correspondence of the chunk in their
  ///                 order: the derivative [m per unit] of u · (Q − P) by one further unknown. It
  ///                 gets weight and Huber's factor as the other columns.
  NormalSums sums(const ClassRun& run, const Chunk& chunk, const Asked& asked,
                  std::span<const double> further = {}) const;

 private:
  struct Piece;
  struct Totals;

  BatchSetup setupOf(const ClassRun& run, const Asked& asked) const;
  bool isLong() const;
  std::vector<Piece> pieces() const;
  void load(std::span<const CorrespondenceRecord> records, Batch& batch) const;
  double addTo(Eigen::MatrixXd& products, const BatchSetup& setup,
               std::span<const CorrespondenceRecord> records, std::size_t columns,
               std::span<const double> further) const;
  double twiceCost(const Piece& piece) const;
  Totals totals(const Asked& asked, int threads) const;

  const CorrespondenceStore& store_;
  const SectionPair& pair_;
  const BatchKernel& kernel_;
  BatchSetup setup_;
};

}  // namespace Velorn
