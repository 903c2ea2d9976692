// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include <gmock/gmock.h>

#include "flight/formats/ControlFile.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;
using testing::AllOf, testing::HasSubstr, testing::ThrowsMessage;

namespace {

Control controlOf(const std::string& content, double radius = 1.0) {
  const TemporaryFolder folder;
  writeContent(folder / "control.csv", content);
  return readControl(folder / "control.csv", radius);
}

}  // namespace

TEST(ControlFile, ColumnsAreFoundByTheirNamesInAnyOrder) {
  const auto control = controlOf(
      "# surveyed in spring\n"
      "Id;Z [m];\"Northing\";Easting(m);remark;NZ;NX;NY;Radius\n"
      "P1;20.5;5341543.5;656079.25;roof;-2;0;1;1.5\n"
      "\n"
      "; 21 ; 5341501 ; 655906 ;; ; ; ;\n",
      0.75);
  ASSERT_EQ(control.patches.size(), 2u);
  EXPECT_EQ(control.withoutNormal, 1u);
  const auto &first = control.patches[0], &second = control.patches[1];
  EXPECT_EQ(first.name, "P1");
  EXPECT_EQ(first.centre, (Geomra::PhysicalSpace::point{656079.25, 5341543.5, 20.5}));
  EXPECT_DOUBLE_EQ(first.normal.z, 2 / std::sqrt(5.0));  // turned upward, of length one
  EXPECT_DOUBLE_EQ(first.normal.y, -1 / std::sqrt(5.0));
  EXPECT_EQ(first.radius, 1.5);
  EXPECT_EQ(second.name, "line 5");
  EXPECT_EQ(second.normal, (Geomra::PhysicalSpace::vector{0, 0, 1}));
  EXPECT_EQ(second.radius, 0.75);
}

TEST(ControlFile, WithoutNamesTheNumberOfColumnsTells) {
  EXPECT_EQ(controlOf("1 2 3\n4 5 6\n").withoutNormal, 2u);
  const auto seven = controlOf("1,2,3,0.6,0,0.8,4").patches.at(0);
  EXPECT_EQ(seven.centre, (Geomra::PhysicalSpace::point{1, 2, 3}));
  EXPECT_DOUBLE_EQ(seven.normal.x, 0.6);
  EXPECT_EQ(seven.radius, 4.0);
}

TEST(ControlFile, WhatIsNoControlIsRefusedWithItsLine) {
  struct Case {
    const char *content, *told;
  };
  for (const auto& [content, told] :
       {Case{"", "holds no point"}, Case{"E,N,h\n", "holds no point"},
        Case{"E,N,nx\n1,2,3\n", "line 1: no column is the height"},
        Case{"E,x,N,h\n", "two columns are the easting"},
        Case{"E,N,h,nx,ny\n", "all of nx, ny and nz"},
        Case{"1,2,3,4\n", "4 columns without a line of names"},
        Case{"P1,656079,5341543,21,0,0,1\n", "the easting in column 1 is \"P1\", no number"},
        Case{"7,656079,5341543,21,0,0,1\n", "the height is 5341543 m; if the columns"},
        Case{"1,2,3\n1,2,3,4\n", "line 2: there are 4 columns, in the first line 3"},
        Case{"E,N,h\n1,2\n", "line 2: there is no column 3 for the height, only 2: \"1,2\""},
        Case{"E,N,h,nx,ny,nz\n1,2,3,0,0,0\n", "line 2: the normal has no direction"},
        Case{"E,N,h,nx,ny,nz\n1,2,3,0,nan,1\n", "line 2: the ny in column 5 is nan"},
        Case{"E,N,h,nx,ny,nz\n1,2,3,0,,1\n", "line 2: the ny in column 5 is \"\", no number"},
        Case{"E,N,h,radius\n1,2,3,-1\n", "line 2: the radius is -1 m, not between 0 and 1000"}}) {
    SCOPED_TRACE(content);
    EXPECT_THAT([&text = content] { controlOf(text); },
                ThrowsMessage<Error>(AllOf(HasSubstr("control.csv: "), HasSubstr(told))));
  }
  EXPECT_THAT([] { controlOf("1 2 3\n", -1); }, ThrowsMessage<Error>(HasSubstr("-1 m")));
}

TEST(PatchPoints, LieInTheDiscOfThePatchAndLeaveNoHole) {
  constexpr double spacing = 0.3, radius = 1.2;
  for (const auto& normal : {Geomra::PhysicalSpace::vector{0, 0, 1}, {0.6, 0, 0.8}, {1, 0, 0}}) {
    const ControlPatch patch{"roof", {656000, 5341000, 20}, normal, radius};
    const auto columns = patchPoints({patch}, spacing);
    ASSERT_EQ(columns.positions.size(), 49u);  // points with whole coordinates within 4 of (0, 0)
    EXPECT_EQ(columns.normals.size(), 49u);
    EXPECT_EQ(columns.classification, std::vector<std::uint8_t>(49, 2));
    EXPECT_EQ(std::count(columns.positions.begin(), columns.positions.end(), patch.centre), 1);
    for (const auto& position : columns.positions) {
      const auto away = position - patch.centre;
      EXPECT_NEAR(dot(away, normal), 0.0, 4e-9);  // a northing has steps of 1e-9 m
      EXPECT_LE(std::sqrt(dot(away, away)), radius + 4e-9);
      double nearest = radius;
      for (const auto& other : columns.positions) {
        if (other != position)
          nearest = std::min(nearest, std::sqrt(dot(other - position, other - position)));
      }
      EXPECT_NEAR(nearest, spacing, 4e-9);
    }
  }
}

TEST(PatchPoints, EachPatchHasAtLeastItsPointAndNoneTooMany) {
  const ControlPatch point{"A", {1, 2, 3}, {0, 0, 1}, 0.0}, disc{"B", {4, 5, 6}, {0, 1, 0}, 1.0};
  const auto columns = patchPoints({point, disc}, 1.0);
  ASSERT_EQ(columns.positions.size(), 6u);
  EXPECT_EQ(columns.positions[0], point.centre);
  EXPECT_EQ(columns.normals[5], disc.normal);
  auto rim = disc;
  rim.radius = 0.3;  // 2.9999999999999996 steps of 0.1
  EXPECT_EQ(patchPoints({rim}, 0.1).positions.size(), 29u);
  const auto tooDense = [&] { patchPoints({point, disc}, 1e-4); };
  EXPECT_THAT(tooDense, ThrowsMessage<Error>(HasSubstr("control patch B of 1 m radius")));
  for (const double spacing : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), 1e-320}) {
    EXPECT_THROW(patchPoints({point, disc}, spacing), Error);
  }
}
