// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>

#include <gmock/gmock.h>

#include "adjustment/trajectory/TimeIndex.h"

using Velorn::TimeIndex;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
using Times = std::vector<double>;

/// The slow twin: the map that the index stands for.
std::map<double, std::uint64_t> mapOf(const Times& times) {
  std::map<double, std::uint64_t> map;
  for (std::size_t i = 0; i < times.size(); ++i) map[times[i]] = i;
  return map;
}

TimeIndex indexOf(const Times& times) {
  TimeIndex index;
  index.append(times, 0);
  index.build();
  return index;
}

/// Every stamp and one ulp to either side of it, the middles of all gaps, both ends and beyond.
Times questionsAbout(const Times& times, std::mt19937_64& random) {
  Times questions{-infinity, infinity, 0.0, -0.0, std::numeric_limits<double>::max()};
  for (std::size_t i = 0; i < times.size(); ++i) {
    const double t = times[i];
    for (const double q :
         {t, std::nextafter(t, -infinity), std::nextafter(t, infinity), t - 1, t + 1}) {
      questions.push_back(q);
    }
    questions.push_back(times[i] / 2 + times[(i + 1) % times.size()] / 2);
  }
  if (!times.empty()) {
    const auto [low, high] = std::minmax_element(times.begin(), times.end());
    std::uniform_real_distribution<double> fraction(0, 1);
    for (int i = 0; i < 2000; ++i) {
      const double f = fraction(random);
      questions.push_back(*low * (1 - f) + *high * f);
    }
  }
  return questions;
}

void expectTheMap(const Times& times, const TimeIndex& index) {
  const auto map = mapOf(times);
  ASSERT_EQ(index.size(), map.size());
  std::size_t place = 0;
  for (const auto& [time, record] : map) {
    ASSERT_EQ(index[place].time, time);
    ASSERT_EQ(index[place].record, record) << "at time " << time;
    ++place;
  }
  std::mt19937_64 random(5);
  for (const double t : questionsAbout(times, random)) {
    const auto found = map.lower_bound(t);
    const auto asked = index.lowerBound(t);
    ASSERT_EQ(asked == index.size(), found == map.end()) << t;
    if (found != map.end()) {
      ASSERT_EQ(index[asked].time, found->first) << t;
    }
  }
}

template <typename Next>
Times timesBy(std::size_t count, Next next) {
  Times times;
  for (std::size_t i = 0; i < count; ++i) times.push_back(next(static_cast<double>(i)));
  return times;
}

double uniform(std::mt19937_64& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

using Pattern = std::pair<const char*, Times>;

std::vector<Pattern> patterns() {
  constexpr double most = std::numeric_limits<double>::max();
  std::mt19937_64 random(4);
  double t = 345600;
  return {{"none", {}},
          {"one", {5}},
          {"two", {5, 7}},
          {"three", {5, 6, 7}},
          {"at200Hz", timesBy(5000, [](double i) { return 259200 + i * 0.005; })},
          {"atRandom", timesBy(3000, [&](double) { return uniform(random, 0, 604800); })},
          {"backwards", timesBy(1000, [](double i) { return 100 - 0.1 * i; })},
          {"twoFlightsFarApart",
           timesBy(2000, [](double i) { return i < 1000 ? i * 1e-3 : 5e5 + i * 1e-3; })},
          {"crowdsThatDouble", timesBy(1500, [](double i) { return std::exp2(i / 40 - 20); })},
          {"neighbouringDoubles",
           timesBy(500, [&](double) { return t = std::nextafter(t, infinity); })},
          {"repeatedInDisorder",
           timesBy(4000, [&](double) { return std::floor(uniform(random, -300, 300)); })},
          {"repeatedInOrder", timesBy(900, [](double i) { return std::floor(i / 3); })},
          {"allTheSame", Times(10, 4.0)},
          {"bothZeros", {0.0, 1.0, -0.0, 2.0}},
          {"overAllDoubles", {-most, -1e300, -1, 0, 1e-300, 1, 1e300, most}},
          {"subnormal", timesBy(20, [](double i) { return i * 5e-324; })}};
}

class TimePattern : public testing::TestWithParam<Pattern> {};

}  // namespace

TEST_P(TimePattern, IsSearchedAsInTheMapAlsoWhenItCameInPieces) {
  const Times& times = GetParam().second;
  expectTheMap(times, indexOf(times));
  TimeIndex index;
  for (std::size_t first = 0; first < times.size(); first += 7) {
    const auto end = std::min(first + 7, times.size());
    index.append(Times(times.data() + first, times.data() + end), first);
    if (first % 210 == 0) index.build();  // what was built before takes part again
  }
  index.build();
  expectTheMap(times, index);
}

INSTANTIATE_TEST_SUITE_P(TimeIndex, TimePattern, testing::ValuesIn(patterns()),
                         [](const auto& test) { return test.param.first; });

TEST(TimeIndex, AnswersNotANumberWithTheFirstPlace) {
  EXPECT_EQ(indexOf({1, 2, 3}).lowerBound(std::nan("")), 0U);
  EXPECT_EQ(TimeIndex().lowerBound(std::nan("")), 0U);
}

TEST(TimeIndex, TakesAtMost24BytesPerRecord) {
  const auto index = indexOf(timesBy(100000, [](double i) { return i * 0.005; }));
  EXPECT_LE(index.bytes(), 24 * index.size());
}
