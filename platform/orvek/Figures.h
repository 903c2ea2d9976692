// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Figures of a set of numbers: mean, spread, quantiles. Pure functions, values in and figures out.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "platform/Visibility.h"

namespace OrvekStatistic {

/// Figures that need no order of the values, in the values' unit; "not known" is NaN.
struct Moments {
  static constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

  std::uint64_t count = 0;             ///< n
  double mean = unknown;               ///< m = sum x / n
  double standardDeviation = unknown;  ///< sqrt(sum (x - m)^2 / (n - 1)); unknown for n = 1
  double rms = unknown;                ///< sqrt(sum x^2 / n), the distance from zero, not from m
  double minimum = unknown;
  double maximum = unknown;
};

/// Two passes in double: first the mean, by a compensated sum (Neumaier 1974), then the squares of
/// what is left. Neither the number of values nor a large common offset costs digits.
/// @return all figures for finite values; the count alone when there are none, or when one of them
///         (or their sum) is not finite
VELORN_PLATFORM_EXPORT Moments moments(std::span<const float> values);
VELORN_PLATFORM_EXPORT Moments moments(std::span<const double> values);

/// Quantile with linear interpolation between the order statistics x(0) <= ... <= x(n-1):
///   h = (n - 1) p,   q = x(floor h) + (h - floor h) (x(floor h + 1) - x(floor h))
/// (type 7 of Hyndman and Fan 1996; p = 0 is the minimum, p = 1 the maximum, p = 0.5 the median).
/// Selects instead of sorting, O(n), without further memory: the values are left in another order.
/// @param p  probability in [0, 1]
/// @return   NaN when there are no values, when one of them is NaN, and for p outside [0, 1]
VELORN_PLATFORM_EXPORT double quantileInPlace(std::span<float> values, double p);
VELORN_PLATFORM_EXPORT double quantileInPlace(std::span<double> values, double p);

/// Normalised median absolute deviation, a standard deviation that outliers do not move:
///   1.4826 median |x - median x|
/// (1.4826 = 1 / Phi^-1(3/4) makes it the standard deviation of normally distributed values).
/// The values are left in another order.
/// @return NaN when there are no values, when one of them is NaN, and when the median is infinite
VELORN_PLATFORM_EXPORT double nmadInPlace(std::span<float> values);
VELORN_PLATFORM_EXPORT double nmadInPlace(std::span<double> values);

/// The same figures for values that are to keep their order.
VELORN_PLATFORM_EXPORT double quantile(std::vector<double> values, double p);
VELORN_PLATFORM_EXPORT double median(std::vector<double> values);
VELORN_PLATFORM_EXPORT double nmad(std::vector<double> values);

}  // namespace OrvekStatistic
