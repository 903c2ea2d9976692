// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/Figures.h"

#include <algorithm>
#include <cmath>

namespace OrvekStatistic {
namespace {

constexpr double unknown = Moments::unknown;

/// Sums up and keeps what each addition rounds away (Neumaier 1974).
template <typename Real>
double meanOf(std::span<const Real> values) {
  double sum = 0.0, lost = 0.0;
  for (const double value : values) {
    const double next = sum + value;
    lost += std::abs(sum) >= std::abs(value) ? (sum - next) + value : (value - next) + sum;
    sum = next;
  }
  return (sum + lost) / static_cast<double>(values.size());
}

template <typename Real>
double squaresAround(double mean, std::span<const Real> values) {
  double squares = 0.0;
  for (const double value : values) squares += (value - mean) * (value - mean);
  return squares;
}

template <typename Real>
Moments momentsOf(std::span<const Real> values) {
  Moments result;
  result.count = values.size();
  const double mean = meanOf(values);
  if (!std::isfinite(mean)) return result;

  const auto n = static_cast<double>(values.size());
  const double squares = squaresAround(mean, values);
  const auto [minimum, maximum] = std::minmax_element(values.begin(), values.end());
  result.mean = mean;
  if (values.size() > 1) result.standardDeviation = std::sqrt(squares / (n - 1.0));
  result.rms = std::hypot(mean, std::sqrt(squares / n));  // sum x^2 = sum (x - m)^2 + n m^2
  result.minimum = *minimum;
  result.maximum = *maximum;
  return result;
}

// std::nth_element compares, and a NaN has no place in an order.
template <typename Real>
bool canBeOrdered(std::span<const Real> values) {
  return !values.empty() &&
         std::none_of(values.begin(), values.end(), [](Real value) { return std::isnan(value); });
}

/// Quantile of key(x); `key` is evaluated instead of stored.
template <typename Real, typename Key>
double quantileBy(std::span<Real> values, double p, const Key& key) {
  const auto less = [&key](Real a, Real b) { return key(a) < key(b); };
  const double position = static_cast<double>(values.size() - 1) * p;
  const auto below = std::min(static_cast<std::size_t>(position), values.size() - 1);
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(below);
  std::nth_element(values.begin(), place, values.end(), less);
  const double low = key(*place), rest = position - static_cast<double>(below);
  if (rest == 0.0 || below + 1 == values.size()) return low;
  const double high = key(*std::min_element(place + 1, values.end(), less));
  return low == high ? low : std::lerp(low, high, rest);
}

template <typename Real>
double quantileOf(std::span<Real> values, double p) {
  if (!(p >= 0.0 && p <= 1.0) || !canBeOrdered<Real>(values)) return unknown;
  return quantileBy(values, p, [](double value) { return value; });
}

template <typename Real>
double nmadOf(std::span<Real> values) {
  const double middle = quantileOf(values, 0.5);
  if (!std::isfinite(middle)) return unknown;
  return 1.4826 *
         quantileBy(values, 0.5, [middle](double value) { return std::abs(value - middle); });
}

}  // namespace

Moments moments(std::span<const float> values) {
  return momentsOf(values);
}

Moments moments(std::span<const double> values) {
  return momentsOf(values);
}

double quantileInPlace(std::span<float> values, double p) {
  return quantileOf(values, p);
}

double quantileInPlace(std::span<double> values, double p) {
  return quantileOf(values, p);
}

double nmadInPlace(std::span<float> values) {
  return nmadOf(values);
}

double nmadInPlace(std::span<double> values) {
  return nmadOf(values);
}

double quantile(std::vector<double> values, double p) {
  return quantileInPlace(values, p);
}

double median(std::vector<double> values) {
  return quantileInPlace(values, 0.5);
}

double nmad(std::vector<double> values) {
  return nmadInPlace(values);
}

}  // namespace OrvekStatistic
