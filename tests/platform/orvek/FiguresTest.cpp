// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Every figure against its formula, written down without care for speed or memory.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include <gmock/gmock.h>

#include "platform/orvek/Figures.h"

using namespace OrvekStatistic;

namespace {

constexpr double notKnown = Moments::unknown;
constexpr double infinity = std::numeric_limits<double>::infinity();

using Exact = std::vector<long double>;

long double sortedQuantile(Exact values, double p) {
  std::sort(values.begin(), values.end());
  const double h = static_cast<double>(values.size() - 1) * p;
  const auto low = static_cast<std::size_t>(std::floor(h));
  const auto high = std::min(low + 1, values.size() - 1);
  return values[low] + (h - std::floor(h)) * (values[high] - values[low]);
}

long double deviationFrom(const Exact& values, long double centre) {
  long double sum = 0;
  for (const long double value : values) sum += (value - centre) * (value - centre);
  return sum;
}

struct Sample {
  const char* name;
  float (*draw)(std::mt19937&);
};

float normal(std::mt19937& source) {
  return std::normal_distribution<float>(0.01F, 0.05F)(source);
}
float heavyTailed(std::mt19937& source) {
  return std::student_t_distribution<float>(1.0F)(source);
}
float duplicates(std::mt19937& source) {
  return std::round(std::normal_distribution<float>(0.0F, 2.0F)(source));
}
float farFromZero(std::mt19937& source) {
  return 4000.0F + std::uniform_real_distribution<float>(0.0F, 0.01F)(source);
}

class Figures : public testing::TestWithParam<Sample> {};

}  // namespace

TEST_P(Figures, AgreeWithTheirFormulasOnSortedCopies) {
  std::mt19937 source(7);
  for (const std::size_t count : {1u, 2u, 3u, 10u, 101u, 5000u}) {
    SCOPED_TRACE("count " + std::to_string(count) + ", seed 7");
    std::vector<float> values(count);
    for (float& value : values) value = GetParam().draw(source);
    const Exact exact(values.begin(), values.end());
    const auto n = static_cast<long double>(count);
    const long double mean = std::accumulate(exact.begin(), exact.end(), 0.0L) / n;
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    const double size = std::max(std::abs(*low), std::abs(*high));
    const double rounding = 4e-16 * size;  // two roundings of a double of this size

    const Moments figures = moments(values);
    EXPECT_EQ(figures.count, count);
    EXPECT_EQ(figures.minimum, *low);
    EXPECT_EQ(figures.maximum, *high);
    EXPECT_NEAR(figures.mean, static_cast<double>(mean), rounding);
    EXPECT_NEAR(figures.rms, static_cast<double>(std::sqrt(deviationFrom(exact, 0) / n)),
                1e-14 * size);
    if (count > 1) {
      const auto expected = static_cast<double>(std::sqrt(deviationFrom(exact, mean) / (n - 1)));
      EXPECT_NEAR(figures.standardDeviation, expected, 1e-13 * expected);
    } else {
      EXPECT_TRUE(std::isnan(figures.standardDeviation));
    }
    for (const double p : {0.0, 0.05, 0.25, 0.5, 0.9, 0.999, 1.0}) {
      EXPECT_NEAR(quantileInPlace(values, p), static_cast<double>(sortedQuantile(exact, p)),
                  rounding)
          << "p " << p;
    }
    Exact deviations = exact;
    const long double middle = sortedQuantile(exact, 0.5);
    for (long double& value : deviations) value = std::abs(value - middle);
    EXPECT_NEAR(nmadInPlace(values), static_cast<double>(1.4826L * sortedQuantile(deviations, 0.5)),
                rounding);

    const std::vector<double> doubles(exact.begin(), exact.end());
    EXPECT_EQ(median(doubles), quantileInPlace(values, 0.5));
    EXPECT_EQ(nmad(doubles), nmadInPlace(values));
    EXPECT_TRUE(std::is_permutation(values.begin(), values.end(), exact.begin()));
  }
}

INSTANTIATE_TEST_SUITE_P(Samples, Figures,
                         testing::Values(Sample{"normal", normal},
                                         Sample{"heavyTailed", heavyTailed},
                                         Sample{"duplicates", duplicates},
                                         Sample{"farFromZero", farFromZero}),
                         [](const auto& test) { return test.param.name; });

TEST(Moments, LoseNoDigitsToALargeOffsetOrToManyValues) {
  const std::vector<double> shifted{1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16};
  EXPECT_DOUBLE_EQ(moments(shifted).mean, 1e9 + 10);
  EXPECT_DOUBLE_EQ(moments(shifted).standardDeviation, std::sqrt(30.0));

  // A plain running sum would be off by some 1e-10 here.
  const std::vector<double> many(5'000'000, 0.1);
  EXPECT_DOUBLE_EQ(moments(many).mean, 0.1);
  EXPECT_LT(moments(many).standardDeviation, 1e-16);
}

TEST(Figures, OfNothingOrOfNoNumbersAreNotKnown) {
  const std::vector<double> none;
  EXPECT_EQ(moments(none).count, 0u);
  EXPECT_TRUE(std::isnan(moments(none).mean) && std::isnan(moments(none).minimum));
  EXPECT_TRUE(std::isnan(median(none)) && std::isnan(nmad(none)));

  const std::vector<double> holed{1.0, notKnown, 3.0};
  EXPECT_EQ(moments(holed).count, 3u);
  EXPECT_TRUE(std::isnan(moments(holed).mean) && std::isnan(moments(holed).maximum));
  EXPECT_TRUE(std::isnan(median(holed)) && std::isnan(nmad(holed)));

  const std::vector<double> three{3.0, 1.0, 2.0};
  for (const double p : {-1e-9, 1.0 + 1e-9, notKnown, infinity}) {
    EXPECT_TRUE(std::isnan(quantile(three, p))) << p;
  }
  EXPECT_EQ(three.front(), 3.0);  // by value: the order stays
}

TEST(Quantile, OfInfiniteValuesIsTheValueAtAnExactPlace) {
  const std::vector<double> values{infinity, 1.0, -infinity, 2.0, infinity};
  EXPECT_EQ(quantile(values, 0.0), -infinity);
  EXPECT_EQ(quantile(values, 0.5), 2.0);
  EXPECT_EQ(quantile(values, 0.9), infinity);
  EXPECT_TRUE(std::isnan(nmad({infinity, infinity, 0.0})));
  EXPECT_EQ(nmad({0.0, 0.0, infinity}), 0.0);
}
