// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <numeric>

#include <gmock/gmock.h>

#include "flight/matching/ControlMisfits.h"
#include "flight/matching/ControlTally.h"
#include "flight/matching/ControlWeights.h"
#include "flight/matching/SupportTally.h"
#include "tests/flight/matching/MatchedFlight.h"

using namespace Velorn::Flights;

namespace {

using testing::Each;
using testing::ElementsAre;

/// Weights of patches with these misfits where pairs of strips disagree by 4 mm.
std::vector<double> weightsOf(const std::vector<double>& misfits) {
  std::vector<ControlItem> items(misfits.size());
  for (std::size_t k = 0; k < items.size(); ++k) items[k].misfit = misfits[k];
  weigh(items, 0.004);
  std::vector<double> weights;
  for (const ControlItem& item : items) weights.push_back(item.weight);
  return weights;
}

TEST(ControlWeights, FallForAWrongPatchAndNotWhereManyFitBadly) {
  EXPECT_THAT(weightsOf({0.002, -0.004, 0.1, 0.006, -0.001}),
              ElementsAre(1.0, 1.0, testing::DoubleNear(0.09, 1e-12), 1.0, 1.0));
  EXPECT_EQ(weightsOf({0.002, -0.004, -2.0, 0.006, unknownFigure})[2], leastControlWeight);
  EXPECT_THAT(weightsOf({0.05, -0.06, 0.02, -0.01, 0.07, -0.04, 0.03, 0.09}), Each(1.0));
  EXPECT_THAT(weightsOf({0.001, 0.002, 0.001, 0.1, 0.2, -0.1}), Each(testing::Gt(0.9)));
  EXPECT_THAT(weightsOf({0.001, 0.1, unknownFigure}), Each(1.0));  // who is wrong of two?
  EXPECT_DOUBLE_EQ(controlSpread(std::vector<double>{0.001}, 0.04), 0.04);
}

/// Raises a patch of the rasterized ground truth.
void raise(const MatchedFlight& flight, std::uint32_t patch, double height) {
  const auto file = flight.rasters() / flight.groundTruth.filename();
  const KnownPoints points = readGroundTruth(file, flight.configuration);
  const GroundTruth known(points);
  auto places = points.places;
  for (std::size_t k = 0; k < places.size(); ++k) {
    if (known.patchOf(k) == patch) places[k].z += height;
  }
  GridEditor(file).set("Positions", places).save();
}

std::size_t correspondencesOf(const MatchReport& report) {
  return std::accumulate(
      report.control.begin(), report.control.end(), std::size_t{0},
      [](std::size_t sum, const auto& item) { return sum + item.correspondences; });
}

TEST(ControlOfAMatching, KeepsAPatchThatIsWrongAndNamesOneWithoutASurface) {
  auto simulated = smallFlight();
  simulated.points = 60'000;
  simulated.errorScale = 0.0;
  MatchedFlight flight(simulated);
  const MatchReport sound = flight.match();
  ASSERT_GT(sound.control.size(), 10U);
  std::vector<std::uint32_t> byNumber(sound.control.size());
  std::iota(byNumber.begin(), byNumber.end(), 0U);
  std::ranges::stable_sort(byNumber, std::greater{},
                           [&](std::uint32_t id) { return sound.control[id].correspondences; });
  const std::uint32_t wrong = byNumber[0], gone = byNumber[1];
  ASSERT_GT(sound.control[gone].correspondences, 0U);
  raise(flight, wrong, 0.5);
  raise(flight, gone, 50.0);
  flight.options.weighsControl = true;
  const MatchReport report = flight.match();
  const ControlItem &raised = report.control[wrong], &lost = report.control[gone];
  EXPECT_GE(2 * raised.correspondences, sound.control[wrong].correspondences);
  EXPECT_NEAR(std::abs(raised.misfit), 0.5, 0.1);
  EXPECT_LT(raised.weight, 0.2);
  EXPECT_EQ(lost.correspondences, 0U);
  EXPECT_EQ(lost.leftOut, "no surface in reach");
  EXPECT_EQ(correspondencesOf(report), report.withGroundTruth);
  for (const ControlItem& item : report.control) {
    if (item.id == wrong || item.correspondences < 4) continue;
    EXPECT_GT(item.weight, 0.8) << item.id;
  }

  // The weight is the length of the normals, and the misfits do not hang on it.
  const GroundTruth known(
      readGroundTruth(flight.rasters() / flight.groundTruth.filename(), flight.configuration));
  std::size_t weak = 0;
  for (const auto& [name, block] : flight.loadedBlocks()) {
    if (!block.isGroundTruth()) continue;
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      const auto [first, second] = block.get(k);
      const auto patch = known.patchOf(known.nearest(second.worldPosition, 0.001).number);
      EXPECT_NEAR(lengthOf(first.normal), report.control[patch].weight, 1e-12);
      weak += patch == wrong ? 1 : 0;
    }
  }
  EXPECT_EQ(weak, raised.correspondences);
}

TEST(OtherSurfaces, AreLeftOutOfAPatchButNeverMostOfIt) {
  KnownPoints points;
  for (int k = 0; k < 8; ++k) {  // two patches
    points.places.push_back({k < 4 ? 1.0 * k : 100.0 + k, 0, 0});
    points.normals.push_back({0, 0, 1});
    points.codes.push_back(14);
  }
  const GroundTruth known(points);
  std::vector<Correspondence> pairs;
  for (std::uint32_t k = 0; k < 40; ++k) {
    Correspondence one;
    one.j = k % 8;
    one.code = 10;
    one.distance = (one.j < 4 ? 0.0 : 0.8) + 0.001 * k;  // the second patch is wrong by 0.8 m
    if (one.j == 0 && k > 20) one.distance += 1.6;       // a car stands on the first one
    pairs.push_back(one);
  }
  CandidateTally tally;
  leaveOtherSurfaces(pairs, known, tally);
  EXPECT_EQ(tally.funnels()[0].outlier, 2U);
  EXPECT_EQ(pairs.size(), 38U);
}

TEST(SupportOfStrips, TellsTheirTimesAndTheDirectionLookedAtLeast) {
  SupportTally tally(2);
  for (int k = 0; k <= 100; ++k) {
    tally.add(0, 10.0 + k, {0, k % 2 == 0 ? 0.6 : -0.6, 0.8});  // south and north
    tally.add(0, 10.0 + k, {0.1, 0, 0.995});                    // flat
  }
  const auto one = tally.strips();
  EXPECT_EQ(one[0].correspondences, 202U);
  EXPECT_NEAR(one[0].first, 15.0, 0.6);
  EXPECT_NEAR(one[0].last, 105.0, 0.6);
  EXPECT_NEAR(one[0].weakestAspect, 0.0, 1e-12);
  EXPECT_EQ(one[1].correspondences, 0U);
  for (int k = 0; k < 10; ++k) tally.add(0, 50.0, {0.6, 0, 0.8});
  EXPECT_NEAR(tally.strips()[0].weakestAspect, 3.6, 1e-12);
}

}  // namespace
