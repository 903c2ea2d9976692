// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <memory>

#include <gmock/gmock.h>

#include "flight/simulation/FlightPlan.h"
#include "flight/strips/BlockName.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/flight/simulation/TrueWorld.h"
#include "tests/support/Refusal.h"
#include <velorn/CorrespondenceBlock.h>

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using Velorn::SphericalBeing;
namespace fs = std::filesystem;

constexpr unsigned groundTruthId = 4;  // of a small flight

Velorn::Flights::SimulationSettings pairedFlight() {
  auto options = smallFlight();
  options.correspondences = 3000;
  return options;
}

/// A block by the numbers in its name.
struct Block {
  BlockName name;
  Velorn::CorrespondenceBlock content;
};

std::vector<Block> blocksIn(const fs::path& folder) {
  const auto storage = std::make_shared<Strandel::MyStorage>(0, 0, 0, 1);
  std::vector<Block> blocks;
  for (const std::string& name : namesIn(folder / "03_correspondences")) {
    blocks.push_back({blockNameIn(name).value(),
                      Velorn::CorrespondenceBlock(folder / "03_correspondences" / name, storage)});
    EXPECT_EQ(blocks.back().content.errorText(), "") << name;
  }
  return blocks;
}

/// A strip's files read back, and its points under the truth; points are found by their times.
struct StripRead {
  StripRead(const fs::path& folder, std::size_t strip) : real(trueWorld(folder, strip)) {
    const fs::path path = stripsIn(folder)[strip];
    const OneGridFile file(path);
    times = file.world<double>("GPSTime");
    world = file.world<point>("Positions");
    scanner = file.column<point>(Strandel::scannerChartName, "Positions");
    directions = file.column<vector>(Strandel::scannerChartName, "Waveforms.DirectionDelta");
    planes = surfacesOf(folder, path).world<std::uint32_t>("Plane");
  }

  /// The number of a point, all of whose columns are those of the strip.
  std::size_t numberOf(const SphericalBeing& being) const {
    const auto found = std::lower_bound(times.begin(), times.end(), being.gpsTime);
    const auto k = static_cast<std::size_t>(found - times.begin());
    EXPECT_EQ(times.at(k), being.gpsTime);
    EXPECT_EQ(world[k], being.worldPosition);
    EXPECT_EQ(scanner[k], being.scannerPosition);
    EXPECT_EQ(directions[k], being.directionDelta);
    return k;
  }

  std::vector<point> real, world, scanner;
  std::vector<double> times;
  std::vector<vector> directions;
  std::vector<std::uint32_t> planes;
};

TEST(KnownCorrespondences, LieOnOnePlaneUnderTheTruthAndDecimetresApartAsDelivered) {
  const TemporaryFolder folder;
  auto options = pairedFlight();
  options.rangeNoise = options.angleNoise = 0.0;
  make(folder.path(), options);
  const auto planes = planesIn(folder.path());
  const auto control = OneGridFile(folder / "ground_truth.kx").world<point>("Positions");
  std::vector<StripRead> strips;
  for (std::size_t i = 0; i < groundTruthId; ++i) strips.emplace_back(folder.path(), i);
  double real = 0.0, delivered = 0.0, apart = 0.0, number = 0.0;
  for (const Block& block : blocksIn(folder.path())) {
    const auto& side = strips.at(block.name.i);
    for (std::uint32_t k = 0; k < block.content.size(); ++k) {
      const auto [first, second] = block.content.get(k);
      const std::size_t i = side.numberOf(first);
      const TruePlane& plane = planes.at(side.planes[i]);
      ASSERT_EQ(first.normal, plane.normal);
      ASSERT_EQ(second.normal, plane.normal);
      ASSERT_EQ(second.classification, codeOf(plane));
      ASSERT_EQ(first.classification, block.name.isGroundTruth ? 10 : codeOf(plane));
      point partner = second.worldPosition;
      if (block.name.isGroundTruth) {
        ASSERT_EQ(std::count(control.begin(), control.end(), partner), 1);
        ASSERT_EQ(second.scannerPosition, point());
      } else {
        const auto& other = strips.at(block.name.j);
        const std::size_t j = other.numberOf(second);
        ASSERT_EQ(other.planes[j], side.planes[i]);
        partner = other.real[j];
      }
      const vector away = partner - side.real[i];
      real = std::max(real, std::abs(dot(away, first.normal)));
      apart = std::max(apart, std::sqrt(dot(away, away)));
      const double off = dot(second.worldPosition - first.worldPosition, first.normal);
      delivered += off * off;
      ++number;
    }
  }
  EXPECT_LT(real, 1e-6);
  EXPECT_LT(apart, 5.0 + 1e-6);
  EXPECT_GT(std::sqrt(delivered / number), 0.05);
  EXPECT_LT(std::sqrt(delivered / number), 2.0);
}

TEST(KnownCorrespondences, EveryStripAndEveryKindTakesPartAndNoPointIsFirstTwice) {
  const TemporaryFolder folder;
  const auto summary = make(folder.path(), pairedFlight());
  std::array<int, 5> ofStripOrControl{};
  std::map<int, int> ofClass;
  std::size_t number = 0;
  for (const Block& block : blocksIn(folder.path())) {
    EXPECT_LT(block.name.i, block.name.j);
    EXPECT_EQ(block.name.isGroundTruth, block.name.j == groundTruthId);
    EXPECT_EQ(block.content.isGroundTruth(), block.name.isGroundTruth);
    EXPECT_EQ(block.content.sideI().weekNumber, Simulation::FlightPlan::week);
    EXPECT_EQ(block.content.sideJ().weekNumber,
              block.name.isGroundTruth ? 0 : Simulation::FlightPlan::week);
    const auto& times = *block.content.sideI().times;
    EXPECT_EQ(std::adjacent_find(times.begin(), times.end(), std::greater_equal<>()), times.end());
    for (const auto code : *block.content.sideI().classes) ++ofClass[code];
    const auto size = static_cast<int>(block.content.size());
    ofStripOrControl.at(block.name.i) += size;
    ofStripOrControl.at(block.name.j) += size;
    number += block.content.size();
  }
  EXPECT_EQ(number, 3000);
  EXPECT_EQ(number, summary.correspondences);
  EXPECT_GE(*std::min_element(ofStripOrControl.begin(), ofStripOrControl.end()), 100);
  for (const int code : {10, 11, 12, 13, 14}) EXPECT_GE(ofClass[code], 100) << code;
}

TEST(KnownCorrespondences, AFlightTooSparseForAnAdjustmentIsRefused) {
  const TemporaryFolder folder;
  auto options = pairedFlight();
  options.points = 1000;
  EXPECT_THAT(refusalOf([&] { make(folder.path(), options); }),
              testing::HasSubstr("choose more --points"));
  EXPECT_FALSE(fs::exists(folder / "03_correspondences"));
  EXPECT_FALSE(fs::exists(folder / "truth.json"));
}

}  // namespace
