// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "flight/strips/OrFail.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Containers.h>

using namespace Velorn::Flights;

namespace {

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

}  // namespace
