// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

#include <gmock/gmock.h>
#include <omp.h>

#include "flight/matching/Correspondence.h"
#include "flight/matching/CorrespondenceRows.h"
#include "flight/matching/Rejection.h"
#include "flight/matching/SolverMemory.h"
#include "flight/strips/OrFail.h"
#include "platform/morvane/Console.h"
#include "tests/flight/matching/MatchedFlight.h"
#include "tests/flight/simulation/TrueWorld.h"
#include "tests/support/Refusal.h"

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point;
using testing::HasSubstr;

/// Three strips with some three points per square of 4 m, without errors but the noise.
Velorn::Flights::SimulationSettings denseFlight() {
  Velorn::Flights::SimulationSettings options;
  options.points = 40'000;
  options.strips = 2;
  options.length = 500.0;
  options.height = 150.0;
  options.errorScale = 0.0;
  return options;
}

std::string bytesOf(const MatchedFlight& flight) {
  std::string all;
  for (const auto& [name, block] : flight.loadedBlocks()) {
    all += name + contentOf(flight.blocks() / name);
  }
  return all;
}

/// How many of a block's correspondences are on one plane, both points on it by their planes.
struct OnPlanes {
  std::size_t common = 0, all = 0;
};

OnPlanes onPlanes(const MatchedFlight& flight) {
  OnPlanes sum;
  for (const auto& [name, block] : flight.loadedBlocks()) {
    if (block.isGroundTruth()) continue;
    const auto i = std::size_t(name[1] - '0'), j = std::size_t(name[3] - '0');
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      const auto [a, b] = block.get(k);
      const auto planeA = flight.planeOf[i][flight.numberOf(i, a.gpsTime)];
      sum.common += planeA == flight.planeOf[j][flight.numberOf(j, b.gpsTime)] ? 1 : 0;
      ++sum.all;
    }
  }
  return sum;
}

std::size_t accountedFor(const Funnel& f) {
  return f.tooFar + f.angle + f.roughness + f.outlier + f.thinned + f.kept;
}

TEST(Match, FindsPointsOfCommonPlanesAndAccountsForEveryCandidate) {
  MatchedFlight flight(denseFlight());
  const MatchReport report = flight.match();
  const OnPlanes found = onPlanes(flight);
  EXPECT_GT(found.all, 1000U);
  EXPECT_GT(double(found.common), 0.99 * double(found.all));
  ASSERT_FALSE(report.pairs.empty());
  std::size_t kept = 0;
  for (const PairReport& pair : report.pairs) {
    EXPECT_EQ(accountedFor(pair.sum()), pair.sum().candidates);
    kept += pair.sum().kept;
  }
  EXPECT_EQ(kept, report.correspondences);
  EXPECT_TRUE(report.pairs.back().isGroundTruth);
  EXPECT_EQ(found.all + report.withGroundTruth, report.correspondences);
  EXPECT_GT(report.onInclinedGroundTruth, 10U);
  EXPECT_GT(report.groundTruthPatches, 10U);
  EXPECT_LT(report.disagreement, 0.01);    // range noise of 2 cm, the mean of 16 points on one side
  EXPECT_GT(report.typicalDistance, 0.2);  // the strips have some points per square metre
  EXPECT_LT(report.typicalDistance, 1.5);
  // What the solver needs is told from the blocks' sizes.
  const auto evaluation = Velorn::Evaluation::Condensed;
  const auto room = [&](double part) {
    return static_cast<std::uint64_t>(part *
                                      double(report.correspondences * bytesOfSolver(evaluation)));
  };
  EXPECT_NO_THROW(requireSolverMemory(flight.blocks(), evaluation, room(1.02)));
  EXPECT_THROW(requireSolverMemory(flight.blocks(), evaluation, room(0.98)), Error);
}

TEST(Match, WritesTheSameBytesForAnyNumberOfThreadsAndAnyMemory) {
  MatchedFlight flight(denseFlight());
  flight.options.maxCorrespondences = 1500;
  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  flight.match();
  const std::string alone = bytesOf(flight);
  omp_set_num_threads(2);
  flight.match();
  EXPECT_TRUE(bytesOf(flight) == alone);
  for (const std::size_t enoughForRasters : {800'000UL, 1'000'000'000UL}) {
    flight.memory = enoughForRasters;
    flight.match();
    EXPECT_TRUE(bytesOf(flight) == alone) << "points held in " << flight.memory << " bytes";
  }
  flight.options.seed = 2;
  flight.match();
  EXPECT_FALSE(bytesOf(flight) == alone) << "another seed keeps others";
  omp_set_num_threads(threads);
}

/// Distances of the records of all blocks from the planes that the points fell on.
std::vector<double> offPlane(const MatchedFlight& flight) {
  std::vector<double> all;
  const auto add = [&](char strip, const Velorn::SphericalBeing& being) {
    const auto k = std::size_t(strip - '0');
    const auto& plane = flight.planes[flight.planeOf[k][flight.numberOf(k, being.gpsTime)]];
    all.push_back(std::abs(dot(plane.normal, being.worldPosition - plane.through)));
  };
  for (const auto& [name, block] : flight.loadedBlocks()) {
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      add(name[1], block.get(k).first);
      if (!block.isGroundTruth()) add(name[3], block.get(k).second);
    }
  }
  return all;
}

TEST(Match, MovesPointsOntoTheirPlanesInTheWorldAndBeforeTheScannerAlike) {
  MatchedFlight flight(denseFlight());
  flight.match();
  for (const auto& [name, block] : flight.loadedBlocks()) {
    if (block.isGroundTruth()) continue;
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      const auto strip = std::size_t(name[1] - '0');
      const auto a = block.get(k).first;
      const auto& points = flight.points[strip];
      const std::size_t number = flight.numberOf(strip, a.gpsTime);
      const double along =
          lengthOf(a.scannerPosition - point{}) - lengthOf(points.scanner[number] - point{});
      const auto moved = a.worldPosition - points.delivered[number];
      ASSERT_NEAR(dot(moved, points.beams[number]), -along * lengthOf(points.beams[number]),
                  1e-5);  // of 1e-8 m
      const auto& plane = flight.planes[flight.planeOf[strip][number]];
      ASSERT_NEAR(dot(plane.normal, a.worldPosition - plane.through), 0.0, 1e-6);
    }
  }
  EXPECT_LT(spreadOf(offPlane(flight)).median, 0.005);
  flight.options.ontoPlanes = false;
  flight.match();
  EXPECT_GT(spreadOf(offPlane(flight)).median, 0.01);  // the noise is 2 cm
}

TEST(Match, RejectsPlantedOutliers) {
  MatchedFlight flight(denseFlight());
  const std::size_t before = flight.match().correspondences;
  // Some points of the second strip lie half a metre too high.
  const auto lift = [&](MatchPoints& points) {
    for (std::size_t k = 0; k < points.size(); ++k) {
      if (flight.numberOf(1, points.times[k]) % 201 == 0) points.delivered[k].z += 0.5;
    }
  };
  auto measured = flight.points[1];
  lift(measured);
  saveMeasured(flight.strips[1], measured);
  const auto raster = flight.rasters() / flight.strips[1].filename();
  auto candidates = readMatchPoints(raster, flight.configuration);
  lift(candidates);
  saveMatchPoints(raster, candidates);
  const MatchReport report = flight.match();
  EXPECT_LT(report.correspondences, before - 30);
  EXPECT_GT(report.correspondences, 0.9 * double(before));
  const auto off = offPlane(flight);
  EXPECT_LT(*std::max_element(off.begin(), off.end()), 0.2);
  EXPECT_LT(report.disagreement, 0.01);
}

/// Some points of the second strip are turned away, and some of the first have no plane.
void plantRefusals(const MatchedFlight& flight) {
  const auto planar = flight.planarPoints() / flight.strips[1].filename();
  auto points = flight.points[1];
  for (std::size_t k = 0; k < points.size(); k += 50) points.normals[k] = {1, 0, 0};
  savePlanes(planar, points);
  const auto raster = flight.rasters() / flight.strips[0].filename();
  auto candidates = readMatchPoints(raster, flight.configuration);
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    if (k % 50 == 0) candidates.heights[k] = std::nan("");
    if (k % 50 == 1) candidates.roughness[k] = 0.04;
    if (k % 50 == 2) candidates.heights[k] += 0.3;
  }
  saveMatchPoints(raster, candidates);
}

/// Of the rows that are correspondences: times of both points, and the second place with the ground
/// truth.
using KeptSet = std::multiset<std::array<double, 3>>;

KeptSet keptIn(const MatchedFlight& flight) {
  KeptSet kept;
  for (const auto& [name, block] : flight.loadedBlocks()) {
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      const auto [i, j] = block.get(k);
      const bool isKnown = block.isGroundTruth();
      kept.insert({i.gpsTime, isKnown ? j.worldPosition.x : j.gpsTime,
                   dot(i.normal, j.worldPosition - i.worldPosition)});
    }
  }
  return kept;
}

TEST(Match, ShowsWhoLooksWhatBecameOfEveryCandidateAndMatchesTheSame) {
  MatchedFlight flight(denseFlight());
  flight.options.maxCorrespondences = 1500;
  plantRefusals(flight);
  const MatchReport unseen = flight.match();
  const std::string blocks = bytesOf(flight);
  std::array<std::size_t, fateCount> all{};
  KeptSet kept;
  std::size_t next = 0;
  std::map<std::array<std::uint32_t, 2>, Funnel> seen;
  const MatchReport report = flight.match(nullptr, [&](const MatchedPair& pair) {
    const auto rows = rowsOf(pair, nullptr, true);
    ASSERT_EQ(rows.size(), pair.candidates.size());
    Funnel& funnel = seen[{pair.i, pair.j}];
    for (const CorrespondenceRow& row : rows) {
      ++all[static_cast<std::size_t>(row.fate)];
      ++funnel.candidates;
      funnel.tooFar += row.fate == Fate::tooFar || row.fate == Fate::taken ? 1 : 0;
      funnel.angle += row.fate == Fate::angle ? 1 : 0;
      funnel.roughness += row.fate == Fate::noPlane || row.fate == Fate::roughness ? 1 : 0;
      funnel.outlier += row.fate == Fate::outlier ? 1 : 0;
      funnel.thinned += row.fate == Fate::thinned ? 1 : 0;
      EXPECT_EQ(row.patch.has_value(), pair.isWithGroundTruth());
      EXPECT_TRUE(std::isnan(row.after));
      if (row.fate == Fate::angle && !row.patch) {
        EXPECT_GT(row.angle, 5.0);
      }
      if (row.fate == Fate::tooFar) {
        EXPECT_EQ(std::isnan(row.before), !row.patch);
      }
      if (row.fate != Fate::kept) continue;
      EXPECT_LT(row.angle, 5.0);
      EXPECT_NEAR(lengthOf(row.normal), 1.0, 1e-12);
      kept.insert({row.timeI, row.patch ? row.placeJ.x : row.timeJ, row.before});
    }
    ++next;
  });
  EXPECT_TRUE(bytesOf(flight) == blocks) << "a look changes nothing";
  EXPECT_EQ(report.correspondences, unseen.correspondences);
  for (std::size_t k = 0; k < fateCount; ++k) {
    EXPECT_GT(all[k], 0U) << "fate " << k;
  }
  ASSERT_EQ(next, report.pairs.size());
  for (const PairReport& pair : report.pairs) {
    const Funnel sum = pair.sum(), &found = seen.at({pair.i, pair.j});
    EXPECT_EQ(
        std::tie(sum.candidates, sum.tooFar, sum.angle, sum.roughness, sum.outlier, sum.thinned),
        std::tie(found.candidates, found.tooFar, found.angle, found.roughness, found.outlier,
                 found.thinned));
  }
  const KeptSet expected = keptIn(flight);
  ASSERT_EQ(kept.size(), expected.size());
  for (auto one = kept.begin(), other = expected.begin(); one != kept.end(); ++one, ++other) {
    ASSERT_EQ((*one)[0], (*other)[0]);
    ASSERT_EQ((*one)[1], (*other)[1]);
    ASSERT_NEAR((*one)[2], (*other)[2], 1e-7);  // of coordinates of 5e6 m
  }
}

TEST(Match, SearchesWithASolutionAndStoresTheDeliveredPlaces) {
  MatchedFlight flight(denseFlight());
  const double before = flight.match().pairs.back().classes[0].median;
  const auto trajectory = trajectoryIn(flight.folder.path());
  auto arm = trajectory.getLeverarm();
  arm.z += 0.4;  // all points come to lie 40 cm lower
  Velorn::SolverParameters parameters(flight.strips, flight.configuration);
  orFail(parameters.setEmptySections(arm, trajectory.getMisalignment()));
  const Solution solution{parameters, trajectory};
  const MatchReport report = flight.match(&solution);
  // Planes are inclined by up to 40°.
  EXPECT_NEAR(report.pairs.back().classes[0].median - before, 0.36, 0.05);
  EXPECT_LT(report.disagreement, 0.01);
  const auto off = offPlane(flight);
  EXPECT_GT(off.size(), 1000U);
  EXPECT_LT(spreadOf(off).median, 0.005) << "as delivered, not as searched";
}

TEST(Match, LeavesOutPointsWithoutAPlaceAndSaysSo) {
  MatchedFlight flight(denseFlight());
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto& file = flight.strips[1];
  auto points = flight.points[1];
  points.delivered[10].x = points.scanner[11].y = points.times[12] = nan;
  const std::size_t middle = points.size() / 2;
  for (std::size_t k = middle; k < middle + 100; ++k) points.times[k] = 1.0;  // no trajectory yet
  for (std::size_t k = middle + 100; k < middle + 200; ++k) points.scanner[k].x = 1e300;
  saveMeasured(file, points);
  std::string told;
  const Morvane::ConsoleRedirection console([&](std::string_view line) { told += line; });
  const auto trajectory = trajectoryIn(flight.folder.path());
  Velorn::SolverParameters parameters(flight.strips, flight.configuration);
  orFail(parameters.setEmptySections(trajectory.getLeverarm(), trajectory.getMisalignment()));
  const Solution solution{parameters, trajectory};
  EXPECT_GT(flight.match(&solution).correspondences, 1000U);
  EXPECT_THAT(told,
              HasSubstr(file.string() + ": 103 points are left out: a coordinate, beam or time"));
  EXPECT_THAT(told, HasSubstr("left out: the trajectory does not hold their time and week"));
  for (const auto& [name, block] : flight.loadedBlocks()) {
    for (const point& place : *block.sideJ().world) ASSERT_TRUE(std::isfinite(place.x + place.z));
  }
}

TEST(Match, MarksTheFolderUntilItIsWholeAndRemovesStaleBlocksAlone) {
  MatchedFlight flight(denseFlight());
  std::filesystem::create_directory(flight.blocks());
  writeContent(flight.blocks() / "c7_9.kx", "stale");
  writeContent(flight.blocks() / "c7_9_GroundTruth.kx", "stale");
  writeContent(flight.blocks() / "c7_9.kx.mine", "kept");
  flight.match();
  const auto exists = [&](const char* name) {
    return std::filesystem::exists(flight.blocks() / name);
  };
  EXPECT_FALSE(exists("c7_9.kx") || exists("c7_9_GroundTruth.kx"));
  EXPECT_TRUE(exists("c7_9.kx.mine"));
  EXPECT_FALSE(exists(unfinishedName));
  std::filesystem::remove(flight.blocks() / "c7_9.kx.mine");

  const auto raster = flight.rasters() / flight.strips[1].filename();
  const std::string whole = contentOf(raster), blocks = bytesOf(flight);
  std::filesystem::remove(raster);
  EXPECT_THAT(refusalOf([&] { flight.match(); }, Error::MissingFile), HasSubstr(raster.string()));
  EXPECT_TRUE(bytesOf(flight) == blocks) << "inputs are looked at before anything is removed";
  writeContent(raster, whole);

  std::filesystem::remove_all(flight.blocks());
  writeContent(flight.blocks(), "a file where the folder is to be");
  EXPECT_THAT(refusalOf([&] { flight.match(); }, Error::NoSpace),
              HasSubstr(flight.blocks().string()));
}

TEST(Match, HasNoPairsWhereNothingOverlaps) {
  MatchedFlight flight(denseFlight());
  for (std::size_t k = 1; k < flight.strips.size(); ++k) {
    const auto file = flight.rasters() / flight.strips[k].filename();
    auto points = readMatchPoints(file, flight.configuration);
    if (k == 1) points.keep({});
    std::filesystem::remove(file);
    for (point& place : points.delivered) place.x += 1e5 * double(k);
    saveMatchPoints(file, points);
  }
  std::filesystem::remove(flight.rasters() / flight.groundTruth.filename());
  Strandel::Bundle nothing;
  nothing.makeSlice(0.0)->makeGrid("ground_truth");
  orFail(
      GridEditor::storage().save(nothing, flight.rasters() / flight.groundTruth.filename(), "wd"));
  const MatchReport report = flight.match();
  EXPECT_TRUE(report.pairs.empty());
  EXPECT_EQ(report.correspondences, 0U);
  EXPECT_TRUE(std::isnan(report.disagreement));
}

}  // namespace
