// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Collects values and tells their figures and their histogram.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/Visibility.h"
#include "platform/orvek/Bins.h"
#include "platform/orvek/Figures.h"

namespace OrvekStatistic {

/// What a Statistic tells of its values; Figures.h has the formulas. Without values every figure is
/// NaN ("not known").
struct Summary {
  /// Probabilities of `quantiles`.
  static constexpr std::array probabilities{0.05, 0.25, 0.75, 0.95};

  Moments moments;  ///< of all finite values, also those outside the histogram's range
  double median = Moments::unknown;
  double nmad = Moments::unknown;
  std::array<double, probabilities.size()> quantiles{Moments::unknown, Moments::unknown,
                                                     Moments::unknown, Moments::unknown};
  std::uint64_t notNumbers = 0;  ///< NaN values, in no figure and no bin
  std::uint64_t infinite = 0;    ///< infinite values, in no figure and no bin
};

/// Values with their figures and their histogram:
///
///     OrvekStatistic::Statistic differences(-2.0, 2.0, 0.02);
///     for (...) differences.addValue(difference);
///     differences.compute();
///     differences.summary().nmad;
///
/// Keeps every value as a float, for exact quantiles: 4 bytes each. NaN and infinite values are
/// counted apart and enter nothing else. Not for use by several threads at once.
class VELORN_PLATFORM_EXPORT Statistic {
 public:
  /// @param lower, upper, binWidth  range and bins of the histogram (Bins.h), in the unit of the
  ///                                values; the figures do not depend on them
  /// @throws std::invalid_argument  for a range or a width that makes no bins
  Statistic(double lower, double upper, double binWidth);

  void addValue(float value);

  /// The number of finite values added.
  std::size_t size() const { return values_.size(); }

  /// Makes summary() and bins() tell of all values added so far. O(n), without further memory; at
  /// once when no value came in since the last time.
  void compute();

  /// As of the last compute(); before it, of no values.
  const Summary& summary() const { return summary_; }
  const Bins& bins() const { return bins_; }

  /// Any quantile of the values added so far (quantileInPlace of Figures.h).
  double quantile(double p);

  /// Computes, and writes both as text (StatisticFiles.h), each whole or not at all.
  /// @return empty, or "Statistic::write: <path>: <fault>"
  std::string write(const std::filesystem::path& summaryFile,
                    const std::filesystem::path& histogramFile);

 private:
  std::vector<float> values_;
  std::uint64_t notNumbers_ = 0;
  std::uint64_t infinite_ = 0;
  Bins empty_;
  Bins bins_;
  Summary summary_;
  bool upToDate_ = true;
};

}  // namespace OrvekStatistic
