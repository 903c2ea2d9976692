// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gtest/gtest.h>

#include "adjustment/georef/PowerSeries.h"

namespace {

using Series = Velorn::PowerSeries<2, 4>;

double valueAt(const Series& f, double x, double y) {
  double sum = 0;
  for (std::size_t i = 0; i <= 4; ++i) {
    for (std::size_t j = 0; i + j <= 4; ++j) {
      sum += f[Series::place({i, j})] * std::pow(x, static_cast<double>(i)) *
             std::pow(y, static_cast<double>(j));
    }
  }
  return sum;
}

}  // namespace

TEST(PowerSeries, FollowsEachFunctionAboutAPlaceToTheFifthOrder) {
  const auto follows = [](const std::string& name, double x0, double y0, const auto& f) {
    const Series series = f(Series::variable(x0, 0), Series::variable(y0, 1));
    const double x = 1e-3, y = -2e-3;  // to the fourth 1e-11, to the fifth 1e-14
    EXPECT_NEAR(valueAt(series, x, y), f(x0 + x, y0 + y), 1e-12) << name << " at " << x0;
  };
  for (const double x0 : {0.4, 1.3, 2.8}) {
    follows("product", x0, 0.7, [](auto x, auto y) { return (2.0 - x) * y * (x - 1.0) + y * x; });
    follows("quotient", x0, 0.9, [](auto x, auto y) { return (1.0 + y) / x; });
    follows("root", x0, 0.6, [](auto x, auto y) { return sqrt(x * y + 1.0); });
    follows("sine", x0, 0.2, [](auto x, auto y) { return sin(x - y) * 3.0; });
    follows("cosine", x0, 0.2, [](auto x, auto y) { return -cos(x * y); });
    follows("sinh", x0, 0.2, [](auto x, auto y) { return sinh(x + y); });
    follows("logarithm", x0, 0.5, [](auto x, auto y) { return log1p(x / y); });
    for (const double sign : {1.0, -1.0}) {
      follows("angle", x0, 0.8, [sign](auto x, auto y) { return atan2(y * sign, x); });
      follows("angle beyond", -x0, 0.8, [sign](auto x, auto y) { return atan2(y * sign, x); });
    }
  }
}
