// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "flight/strips/BlockName.h"
#include "flight/strips/Containers.h"
#include "flight/strips/GridFile.h"
#include "flight/strips/OrFail.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point;
using testing::AllOf, testing::HasSubstr;

StripColumns twoPoints() {
  StripColumns columns;
  columns.week = 2318;
  columns.world = {{1, 2, 3}, {4, 5, 6}};
  columns.times = {10.0, 10.5};
  return columns;
}

Strandel::GridPtr gridIn(const std::filesystem::path& file, Strandel::Bundle& bundle) {
  orFail(Strandel::MyStorage(0, 0, 0, 1).load(file, bundle));
  return bundle.slices().at(0)->uniqueGrid();
}

TEST(Containers, AStripHasTheFieldsThatWereGivenAndOneTimeForBothCharts) {
  const TemporaryFolder folder;
  auto columns = twoPoints();
  columns.scanner = {{7, 8, 9}, {1, 2, 3}};
  columns.classification = {2, 6};
  saveStrip(folder / "strip.kx", columns);
  Strandel::Bundle bundle;
  const auto grid = gridIn(folder / "strip.kx", bundle);
  EXPECT_EQ(grid->attributes().integer("WeekNumber"), 2318);
  const auto world = grid->cartesian(), scanner = grid->chart(Strandel::scannerChartName);
  EXPECT_EQ(world->fields().size(), 3);
  EXPECT_EQ(scanner->fields().size(), 2);
  EXPECT_EQ(world->field("GPSTime"), scanner->field("GPSTime"));
  EXPECT_EQ(*scanner->field("Positions")->values<Geomra::PhysicalSpace::point>({0}).values,
            columns.scanner);
}

TEST(Containers, AStripWithoutScannerCoordinatesHasOneChart) {
  const TemporaryFolder folder;
  saveStrip(folder / "strip.kx", twoPoints());
  Strandel::Bundle bundle;
  EXPECT_EQ(gridIn(folder / "strip.kx", bundle)->charts().size(), 1);
}

TEST(Containers, ColumnsOfUnequalLengthAreRefusedAndTheFileStaysAsItWas) {
  const TemporaryFolder folder;
  writeContent(folder / "strip.kx", "before");
  auto columns = twoPoints();
  columns.amplitude = {1.0};
  EXPECT_THAT(refusalOf([&] { saveStrip(folder / "strip.kx", columns); }),
              AllOf(HasSubstr("strip.kx"), HasSubstr("Amplitude")));
  EXPECT_EQ(contentOf(folder / "strip.kx"), "before");
}

TEST(BlockName, IsReadAsItIsWritten) {
  for (const std::string name : {"c0_1.kx", "c12_4294967295.kx", "c0_7_GroundTruth.kx"}) {
    const auto block = blockNameIn(name);
    ASSERT_TRUE(block.has_value()) << name;
    EXPECT_EQ(fileNameOf(*block), name);
  }
  EXPECT_TRUE(blockNameIn("c0_7_GroundTruth.kx")->isGroundTruth);
}

TEST(BlockName, IsNoOtherName) {
  for (const char* name : {"", "c0.kx", "c0_1", "c0_1.kx.part", "xc0_1.kx", "c-1_2.kx", "c_1.kx",
                           "c0_1_groundtruth.kx", "c0_1_2.kx"}) {
    EXPECT_FALSE(blockNameIn(name).has_value()) << name;
  }
}

TEST(BlockName, KeepsIdsThatAreTooLargeApartFromSmallOnes) {
  EXPECT_EQ(blockNameIn("c1_4294967296.kx")->j, 4294967295U);
  EXPECT_EQ(blockNameIn("c99999999999999999999_2.kx")->i, 4294967295U);
}

class Grids : public testing::Test {
 protected:
  /// Adds a grid with as many points to the file.
  void add(const char* name, std::size_t points, double time = 0.0) {
    const auto chart = bundle.makeSlice(time)->makeGrid(name)->makeChart(Strandel::worldChartName);
    orFail(chart->makeField("Positions", Strandel::ValueType::Point)
               ->setValues<point>({0}, std::vector<point>(points)));
    save();
  }
  void save() { saveBundle(bundle, file, {0, 0, 1, 1}); }

  TemporaryFolder folder;
  std::filesystem::path file = folder / "points.kx";
  Strandel::Bundle bundle;
  Velorn::InputParameter configuration;
};

TEST_F(Grids, AreReadWhereOneIsMeant) {
  add("a", 2);
  EXPECT_EQ(GridFile(file).size(), 2U);
  add("b", 3);
  EXPECT_THAT(refusalOf([&] { GridFile grid(file); }), HasSubstr("points.kx: holds 2 grids"));
  EXPECT_THAT(refusalOf([&] { GridFile grid(file, configuration); }), HasSubstr("the grids a, b"));
  configuration.GridName = "b";
  EXPECT_EQ(GridFile(file, configuration).size(), 3U);
}

TEST_F(Grids, OfOtherSlicesAreNotPassedOverUnlessTheConfigurationMay) {
  add("a", 2);
  add("a", 3, 1.0);
  EXPECT_THAT(refusalOf([&] { GridFile grid(file); }), HasSubstr("holds 2 grids"));
  EXPECT_EQ(GridFile(file, configuration).size(), 2U);
}

TEST_F(Grids, ThatAreBareHoldNoPointsOnlyWhereThatIsAllowed) {
  const auto isRefused = [&] {
    EXPECT_THAT(refusalOf([&] { GridFile grid(file); }), HasSubstr("points.kx"));
    EXPECT_THAT(refusalOf([&] { GridFile grid(file, configuration); }), HasSubstr("points.kx"));
    EXPECT_EQ(GridFile(file, configuration, Bare::noPoints).size(), 0U);
  };
  save();
  isRefused();
  const auto grid = bundle.makeSlice(0.0)->makeGrid("a");
  save();
  isRefused();
  grid->makeChart(Strandel::worldChartName)->makeField("Plane", Strandel::ValueType::UInt32);
  save();
  EXPECT_THAT(refusalOf([&] { GridFile other(file, configuration, Bare::noPoints); }),
              AllOf(HasSubstr("points.kx"), HasSubstr("Positions: no points")));
}

}  // namespace
