// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which of the found correspondences are kept.
#include <algorithm>
#include <map>
#include <numeric>
#include <random>

#include <gmock/gmock.h>

#include "flight/matching/Rejection.h"
#include "flight/matching/SolverMemory.h"
#include "flight/matching/Thinning.h"
#include "platform/geomra/Degree.h"
#include "tests/support/Refusal.h"

namespace {

using namespace Velorn::Flights;
using testing::ElementsAre;

std::vector<Correspondence> noisy(std::size_t count, std::uint8_t code, double mean,
                                  double deviation) {
  std::mt19937_64 random(code);
  std::normal_distribution<double> noise, rough(0.02, 0.003);
  std::vector<Correspondence> pairs(count);
  for (Correspondence& pair : pairs) {
    pair.code = code;
    pair.distance = mean + deviation * noise(random);
    pair.roughnessI = rough(random);
    pair.roughnessJ = rough(random);
  }
  return pairs;
}

template <typename... More>
std::vector<Correspondence> joined(std::vector<Correspondence> all, const More&... more) {
  (all.insert(all.end(), more.begin(), more.end()), ...);
  return all;
}

TEST(Rejection, TakesOutWhatIsUnlikeItsClass) {
  auto roofs = noisy(1000, 11, 0.3, 0.02);
  const auto flats = noisy(1000, 14, -0.1, 0.02);
  roofs[3].distance = roofs[4].distance = -0.1;  // usual among the others
  roofs[5].roughnessI = 0.05;
  roofs[6].roughnessJ = 0.05;
  auto pairs = joined(roofs, flats);
  CandidateTally tally;
  rejectUnlike(pairs, tally);
  EXPECT_NEAR(tally.funnels()[1].median, 0.3, 0.003);  // 3 of 1.25 sigma / sqrt(1000)
  EXPECT_NEAR(tally.funnels()[4].nmad, 0.02, 0.003);
  EXPECT_LT(tally.funnels()[1].outlier + tally.funnels()[1].roughness, 50U);
  EXPECT_GE(tally.funnels()[1].outlier, 2U);
  EXPECT_GE(tally.funnels()[1].roughness, 2U);
  for (const Correspondence& pair : pairs) {
    EXPECT_NEAR(pair.distance, pair.code == 11 ? 0.3 : -0.1, 0.07);
    EXPECT_LT(pair.roughnessI + pair.roughnessJ, 0.07);
  }
  EXPECT_EQ(pairs.size() + tally.funnels()[1].outlier + tally.funnels()[1].roughness +
                tally.funnels()[4].outlier + tally.funnels()[4].roughness,
            2000U);
}

TEST(Rejection, JudgesFewOfAClassByAllAndRefusesToJudgeAHandful) {
  auto roofs = noisy(2, 11, 0.0, 0.0);
  roofs[1].distance = 2.0;
  for (auto& pair : roofs) pair.roughnessI = pair.roughnessJ = 0.02;
  auto pairs = joined(roofs, noisy(100, 14, 0.0, 0.02));
  CandidateTally tally;
  rejectUnlike(pairs, tally);
  EXPECT_EQ(tally.funnels()[1].outlier, 1U);
  EXPECT_EQ(std::count_if(pairs.begin(), pairs.end(), [](auto& pair) { return pair.code == 11; }),
            1);

  auto alike = std::vector<Correspondence>(8, roofs[0]);  // NMAD 0
  alike[7].distance = 0.0029;
  rejectUnlike(alike, tally);
  EXPECT_EQ(alike.size(), 8U);
  alike[7].distance = 0.0031;
  rejectUnlike(alike, tally);
  EXPECT_EQ(alike.size(), 7U);
  alike.resize(4);
  rejectUnlike(alike, tally);
  EXPECT_TRUE(alike.empty());
  rejectUnlike(alike, tally);
  EXPECT_TRUE(std::isnan(tally.funnels()[1].median));
}

TEST(Rejection, MeasuresWallsByWallsWhereItIsToldTo) {
  auto walls = noisy(50, 12, 0.4, 0.02);
  for (auto& pair : walls) pair.normalI = {1, 0, 0};
  auto ground = noisy(1000, 12, 0.0, 0.02);
  for (auto& pair : ground) pair.normalI = {0, 0, 1};
  const auto all = joined(walls, ground);
  const auto keptWalls = [](const auto& pairs) {
    return std::ranges::count_if(pairs, [](auto& pair) { return pair.normalI.x == 1.0; });
  };
  CandidateTally tally;
  auto byClass = all, byDirection = all;
  rejectUnlike(byClass, tally);
  EXPECT_EQ(keptWalls(byClass), 0);
  rejectUnlike(byDirection, tally, Alike::ofDirection);
  EXPECT_GT(keptWalls(byDirection), 40);
}

TEST(Thinning, FillsVesselsLikeWater) {
  EXPECT_THAT(waterFilled({5, 100, 2, 100}, 27), ElementsAre(5, 10, 2, 10));
  EXPECT_THAT(waterFilled({5, 1, 2}, 1000), ElementsAre(5, 1, 2));
  EXPECT_THAT(waterFilled({9, 9, 9}, 10), ElementsAre(3, 3, 4));
  EXPECT_THAT(waterFilled({0, 7}, 3), ElementsAre(0, 3));
  EXPECT_TRUE(waterFilled({}, 3).empty());
}

TEST(Thinning, KeepsStrataEvenAndDependsOnTheSeedAlone) {
  std::vector<std::uint64_t> strata;
  for (std::uint64_t k = 0; k < 10'000; ++k) strata.push_back(k % 100 == 0 ? 7 : k % 3);
  const auto kept = thinned(strata, 403, 5);
  std::map<std::uint64_t, std::size_t> sizes;
  for (const auto k : kept) ++sizes[strata[k]];
  ASSERT_EQ(sizes.size(), 4U);
  for (const auto& [stratum, size] : sizes) EXPECT_NEAR(double(size), 100.75, 0.8) << stratum;
  EXPECT_EQ(kept.size(), 403U);
  EXPECT_TRUE(std::is_sorted(kept.begin(), kept.end()));
  EXPECT_EQ(thinned(strata, 403, 5), kept);
  EXPECT_NE(thinned(strata, 403, 6), kept);
  const double mean = std::accumulate(kept.begin(), kept.end(), 0.0) / 403.0;
  EXPECT_NEAR(mean, 5000.0, 3.0 * 2887.0 / std::sqrt(403.0)) << "from all over the list";
  EXPECT_EQ(thinned(strata, 20'000, 5).size(), strata.size());
  // Fewer than strata: which ones get one is chance, not the number of the stratum.
  std::vector<std::uint64_t> all(1000);
  std::iota(all.begin(), all.end(), 0U);
  const auto few = thinned(all, 100, 5);
  EXPECT_NEAR(std::accumulate(few.begin(), few.end(), 0.0) / 100.0, 500.0, 3.0 * 28.9);
}

TEST(Thinning, TellsSlopesAndAspectsApart) {
  const auto inclined = [](double slope, double aspect) {
    using Geomra::degree;
    return stratumOf(
        12, {std::sin(slope * degree) * std::sin(aspect * degree),
             std::sin(slope * degree) * std::cos(aspect * degree), std::cos(slope * degree)});
  };
  EXPECT_EQ(inclined(2.9, 10), inclined(1, 200));
  EXPECT_NE(inclined(3.1, 10), inclined(2.9, 10));
  EXPECT_EQ(inclined(4, 10), inclined(9, 40));
  EXPECT_NE(inclined(4, 10), inclined(4, 50));
  EXPECT_NE(inclined(9, 10), inclined(11, 10));
  EXPECT_NE(inclined(24, 10), inclined(26, 10));
  EXPECT_NE(stratumOf(11, {0, 0, 1}), stratumOf(14, {0, 0, 1}));
  EXPECT_EQ(inclined(20, 179.9), inclined(20, 136));
}

TEST(MaxCorrespondences, AreWhatIsSetOrSoManyPerStripAndRefusedWhereTheyDoNotFit) {
  EXPECT_EQ(maxCorrespondencesOf({}, 60), 1'800'000U);
  MatchSettings some;
  some.maxCorrespondences = 500;
  EXPECT_EQ(maxCorrespondencesOf(some, 60), 500U);
  const auto reference = Velorn::Evaluation::Reference;
  EXPECT_NO_THROW(requireSolverMemory(some, 60, Velorn::Evaluation::Condensed, 200'000));
  EXPECT_NO_THROW(requireSolverMemory(some, 60, reference, 1'500'000));
  EXPECT_NO_THROW(requireSolverMemory({}, 60, reference, {})) << "nobody says how much is free";
  EXPECT_EQ(
      refusalOf([&] { requireSolverMemory(some, 60, reference, 1'499'999); }, Error::BadSettings),
      "max-correspondences 500: the solver takes some 0.00 GB for 500 correspondences, and "
      "0.00 GB are free; max-correspondences 499 fits");
  EXPECT_EQ(
      refusalOf([&] { requireSolverMemory({}, 60, reference, 1'200'000'000); }, Error::BadSettings),
      "max-correspondences 0, which is 30000 for each of 60 strips: the solver takes some "
      "5.40 GB for 1800000 correspondences, and 1.20 GB are free; max-correspondences 400000 "
      "fits");
}

}  // namespace
