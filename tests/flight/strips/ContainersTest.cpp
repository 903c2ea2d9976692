// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <tuple>

#include <gmock/gmock.h>

#include "adjustment/correspondence/SideColumns.h"
#include "flight/strips/BlockName.h"
#include "flight/strips/GridFile.h"
#include "flight/strips/OrFail.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/flight/Containers.h>

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::AllOf, testing::ElementsAre, testing::HasSubstr;

StripColumns twoPoints() {
  StripColumns columns;
  columns.week = 2318;
  columns.world = {{1, 2, 3}, {4, 5, 6}};
  columns.times = {10.0, 10.5};
  return columns;
}

TEST(Containers, AStripComesBackAsItWasWithOneTimeForBothCharts) {
  const TemporaryFolder folder;
  const auto file = folder / "strip.kx";
  const auto comesBack = [&](const StripColumns& columns) {
    saveStrip(file, columns);
    const auto read = loadStrip(file);
    const auto fieldsOf = [](const StripColumns& c) {
      return std::tie(c.week, c.world, c.scanner, c.times, c.directions, c.normals, c.returnNumber,
                      c.numberOfReturns, c.classification, c.amplitude, c.pointSourceId,
                      c.sourceIndex, c.sourceFile);
    };
    return fieldsOf(read) == fieldsOf(columns);
  };
  auto columns = twoPoints();
  EXPECT_TRUE(comesBack(columns)) << "missing fields are empty columns";
  columns.scanner = {{7, 8, 9}, {1, 2, 3}};
  columns.directions = {{0, 0, 1}, {0, 0, 2}};
  columns.normals = {{0, 0, 1}, {0, 1, 0}};
  columns.returnNumber = {1, 2};
  columns.numberOfReturns = {3, 4};
  columns.classification = {2, 6};
  columns.amplitude = {0.5, 1.5};
  columns.pointSourceId = {7, 65535};
  columns.sourceIndex = {1ULL << 40U, 0};
  columns.sourceFile = "a.las";
  EXPECT_TRUE(comesBack(columns));
  Strandel::Bundle bundle;
  orFail(Strandel::MyStorage(0, 0, 0, 1).load(file, bundle));
  const auto grid = bundle.grids().front();
  EXPECT_EQ(grid->cartesian()->field("GPSTime"),
            grid->chart(Strandel::scannerChartName)->field("GPSTime"));
}

TEST(Containers, ABlockComesBackUnlessItsSidesDifferInLength) {
  const TemporaryFolder folder;
  const auto storage = std::make_shared<Strandel::MyStorage>(0, 0, 0, 1);
  for (const bool isGroundTruth : {false, true}) {
    Velorn::CorrespondenceBlock block(folder / "c0_1.kx", isGroundTruth, 2318, 2319, storage);
    for (const double x : {100.0, 200.0}) {
      block.add({{x, 1, 2}, {x, 3, 4}, x, {x, 5, 6}, {x, 7, 8}, 11},
                {{x, 9, 0}, {x, 1, 3}, x + 5, {x, 2, 4}, {x, 3, 5}, 12});
    }
    orFail(block.save());
    const auto [i, j, readGroundTruth, classes] = loadCorrespondences(block.path());
    EXPECT_EQ(readGroundTruth, isGroundTruth);
    EXPECT_THAT(classes, ElementsAre(11, 11));
    EXPECT_EQ(i.week, 2318U);
    EXPECT_THAT(i.times, ElementsAre(100, 200));
    EXPECT_THAT(i.world, ElementsAre(point{100, 1, 2}, point{200, 1, 2}));
    EXPECT_THAT(i.normals, ElementsAre(vector{100, 5, 6}, vector{200, 5, 6}));
    EXPECT_THAT(j.world, ElementsAre(point{100, 9, 0}, point{200, 9, 0}));
    EXPECT_THAT(j.normals, ElementsAre(vector{100, 2, 4}, vector{200, 2, 4}));
    if (!isGroundTruth) {
      EXPECT_EQ(j.week, 2319U);
      EXPECT_THAT(j.times, ElementsAre(105, 205));
      EXPECT_THAT(j.scanner, ElementsAre(point{100, 1, 3}, point{200, 1, 3}));
      EXPECT_THAT(j.directions, ElementsAre(vector{100, 3, 5}, vector{200, 3, 5}));
    }
    Velorn::forEachColumn(block.sideJ(), [](const char*, auto& column) { column->pop_back(); });
    orFail(block.save());
    EXPECT_THAT(refusalOf([&] { loadCorrespondences(block.path()); }),
                HasSubstr("c0_1.kx: its sides have 2 and 1 points"));
  }
}

TEST(Containers, ColumnsOfUnequalLengthAreRefusedAndTheFileStaysAsItWas) {
  const TemporaryFolder folder;
  writeContent(folder / "strip.kx", "before");
  auto columns = twoPoints(), beamsAlone = columns;
  columns.amplitude = {1.0};
  EXPECT_THAT(refusalOf([&] { saveStrip(folder / "strip.kx", columns); }),
              AllOf(HasSubstr("strip.kx"), HasSubstr("Amplitude")));
  beamsAlone.directions.resize(2);  // belong to scanner coordinates
  EXPECT_THAT(refusalOf([&] { saveStrip(folder / "strip.kx", beamsAlone); }),
              HasSubstr("strip.kx: not written: "));
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
