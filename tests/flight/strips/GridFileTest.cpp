// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "flight/strips/GridFile.h"
#include "flight/strips/OrFail.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point;
using testing::AllOf, testing::HasSubstr;

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
