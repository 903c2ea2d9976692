// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "adjustment/trajectory/TrajectoryFragment.h"
#include "platform/geomra/Degree.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Trajectory.h>

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::AllOf, testing::Contains, testing::ElementsAre, testing::HasSubstr, testing::IsEmpty,
    testing::Pair, testing::StartsWith;
using Velorn::TimeRange, Velorn::Trajectory;

namespace {

const std::string noData = "Trajectory::importTrajectory: have no data for the current fragment";
const std::string noCodes =
    "Trajectory::importTrajectory: epsg for height/spatial or weeknumber not available!";
const std::string noMounting =
    "Trajectory::importTrajectory: Leverarm or Misalignment not available!";

std::string invalidCode(unsigned code) {
  return "Invalid EPSG code " + std::to_string(code) +
         "! Is not UTM with ellipsoid WGS84 or ETRS89.";
}

class TrajectoryImport : public testing::Test {
 protected:
  fs::path save(TrajectoryFile file, const std::string& name = "t.kx") const {
    return file.save(folder / name);
  }

  /// What importing a file says after it was changed.
  std::string told(const std::function<void(TrajectoryFile&)>& change) const {
    TrajectoryFile file({recordsAt({1, 2, 3})});
    change(file);
    return Trajectory({save(std::move(file))}).importTrajectory();
  }

  /// The same for the attributes of its chart.
  std::string toldOf(const std::string& attribute, const Strandel::Attribute& value) const {
    return told([&](auto& file) { file.chart()->attributes().set(attribute, value); });
  }
  std::string toldWithout(const std::string& attribute) const {
    return told([&](auto& file) { file.chart()->attributes().remove(attribute); });
  }

  static double xAt(const Trajectory& trajectory, double t, unsigned inWeek = gpsWeek) {
    point position;
    vector attitude;
    EXPECT_TRUE(trajectory.interpolateTrajectory(t, inWeek, position, attitude, false)) << t;
    return position.x;
  }

  TemporaryFolder folder;
  ConsoleLines console;
};

}  // namespace

TEST_F(TrajectoryImport, TakesRecordsCodesAndMountingOfAFile) {
  Trajectory trajectory({save(TrajectoryFile({recordsAt({1, 2, 3, 4})}))});
  EXPECT_EQ(trajectory.getLeverarm(), point());
  EXPECT_FALSE(trajectory.week_number_exists(gpsWeek));
  ASSERT_EQ(trajectory.importTrajectory(), "");
  EXPECT_THAT(console, IsEmpty());
  EXPECT_EQ(trajectory.numberOfRecords(), 4U);
  EXPECT_THAT(trajectory.timeRanges(), ElementsAre(Pair(gpsWeek, TimeRange{1, 4})));
  EXPECT_EQ(trajectory.getLeverarm(), (point{0.1, 0.2, 0.3}));
  EXPECT_EQ(trajectory.getMisalignment(), (point{0.5, -0.25, 90.0}));
  EXPECT_EQ(trajectory.getEpsgSpatial(), 32632U);
  EXPECT_EQ(trajectory.getEpsgHeight(), 4979U);
  EXPECT_DOUBLE_EQ(trajectory.getMercator().getCentralMeridian(), 9 * Geomra::degree);

  point position;
  vector attitude;
  ASSERT_TRUE(trajectory.interpolateTrajectory(3, gpsWeek, position, attitude, true));
  EXPECT_EQ(position, (point{20, 40, 60}));
  EXPECT_DOUBLE_EQ(attitude.x, 2 * Geomra::degree);
  EXPECT_DOUBLE_EQ(attitude.y, 1 * Geomra::degree);
  EXPECT_DOUBLE_EQ(attitude.z, 20.0 / 30 * Geomra::degree);
}

TEST_F(TrajectoryImport, MergesFragmentsSlicesAndFilesInWhateverOrderOfTime) {
  TrajectoryFile late({recordsAt({7, 8, 9}, 700), {}, recordsAt({6, 5}, 600)});
  late.addSlice({recordsAt({4}, 400)}, gpsWeek, 1);
  const auto early = save(TrajectoryFile({recordsAt({1, 2, 3}, 100)}), "early.kx");
  const auto other = save(TrajectoryFile({recordsAt({2.5, 0, 1}, 900)}, 0), "other.kx");
  Trajectory trajectory({late.save(folder / "late.kx"), early, other});
  ASSERT_EQ(trajectory.importTrajectory(), "");
  EXPECT_THAT(trajectory.timeRanges(),
              ElementsAre(Pair(0U, TimeRange{0, 2.5}), Pair(gpsWeek, TimeRange{1, 9})));
  EXPECT_TRUE(trajectory.week_number_exists(0));
  EXPECT_FALSE(trajectory.week_number_exists(gpsWeek + 1));
  const std::map<double, double> xs{{1, 100}, {3, 120}, {4, 400}, {5, 610},
                                    {6, 600}, {7, 700}, {9, 720}};
  for (const auto& [t, x] : xs) EXPECT_EQ(xAt(trajectory, t), x) << t;
  EXPECT_EQ(xAt(trajectory, 1, 0), 920);
}

TEST_F(TrajectoryImport, KeepsTheLaterOfTwoRecordsOfOneTime) {
  const auto first = save(TrajectoryFile({recordsAt({1, 2, 2, 3}), recordsAt({3}, 33)}), "a.kx");
  const auto second = save(TrajectoryFile({recordsAt({1}, 11)}), "b.kx");
  Trajectory trajectory({first, second});
  ASSERT_EQ(trajectory.importTrajectory(), "");
  EXPECT_EQ(trajectory.numberOfRecords(), 6U);
  EXPECT_EQ(xAt(trajectory, 1), 11);
  EXPECT_EQ(xAt(trajectory, 2), 20);
  EXPECT_EQ(xAt(trajectory, 3), 33);
}

TEST_F(TrajectoryImport, AcceptsAFileWithoutRecords) {
  const auto path = save(TrajectoryFile(std::vector<std::vector<Record>>(1)));
  Trajectory trajectory({path});
  EXPECT_EQ(trajectory.importTrajectory(), "");
  EXPECT_THAT(trajectory.timeRanges(), IsEmpty());
}

TEST_F(TrajectoryImport, AcceptsNorthernUtmOnWgs84AndEtrs89Only) {
  for (const std::int64_t code : {32601, 32632, 32660, 25828, 25832, 25837}) {
    EXPECT_EQ(toldOf("EPSG_SPATIAL", code), "") << code;
  }
  for (const unsigned code : {0U, 4326U, 32600U, 32661U, 25827U, 25838U}) {
    EXPECT_EQ(toldOf("EPSG_SPATIAL", std::int64_t{code}), invalidCode(code));
  }
  EXPECT_EQ(toldWithout("EPSG_SPATIAL"), invalidCode(4294967295));
  EXPECT_EQ(toldOf("EPSG_SPATIAL", std::int64_t{-1}), invalidCode(4294967295));
  EXPECT_EQ(toldOf("EPSG_SPATIAL", std::string("32632")), invalidCode(4294967295));
}

TEST_F(TrajectoryImport, AsksForHeightCodeWeekLeverArmAndMisalignment) {
  EXPECT_EQ(toldWithout("EPSG_HEIGHT"), noCodes);
  EXPECT_EQ(toldWithout("WeekNumber"), noCodes);
  EXPECT_EQ(toldOf("WeekNumber", std::int64_t{4294967295}), noCodes);
  EXPECT_EQ(toldWithout("LeverArm"), noMounting);
  EXPECT_EQ(toldWithout("Misalignment"), noMounting);
  EXPECT_EQ(toldOf("LeverArm", point{-9999, 0, 0}), noMounting);
  EXPECT_EQ(toldOf("LeverArm", point{0, -9999, -9999}), "");
  EXPECT_THAT(toldOf("Misalignment", point{0, 0, std::nan("")}),
              AllOf(HasSubstr("not finite"), HasSubstr("t.kx")));
}

TEST_F(TrajectoryImport, NamesFilesThatAreMissingOrNoContainers) {
  const auto missing = (folder / "none.kx").string();
  EXPECT_EQ(Trajectory({missing}).importTrajectory(),
            "importTrajectory: Error, File not found - " + missing);
  writeContent(folder / "text.kx", "no container");
  for (const auto& path : {folder / "text.kx", folder.path()}) {
    console.clear();
    EXPECT_EQ(Trajectory({path}).importTrajectory(),
              "Trajectory::importTrajectory: have no bundle");
    EXPECT_THAT(console, ElementsAre(HasSubstr(path.string())));
  }
}

TEST_F(TrajectoryImport, AsksForOneGridWithAWorldChartPerSlice) {
  const auto grid = [](auto& file) { return file.bundle.slice(0)->uniqueGrid(); };
  EXPECT_EQ(told([&](auto& file) { grid(file)->removeChart(Strandel::worldChartName); }),
            "scannerToWorldCoordinatesReborn: Have no wrold_chart");
  EXPECT_THAT(console, Contains(AllOf(StartsWith("scannerToWorld"), HasSubstr("t.kx"))));
  EXPECT_THAT(told([&](auto& file) { file.bundle.slice(0)->removeGrid("path"); }),
              AllOf(HasSubstr("that at 0 has 0"), HasSubstr("t.kx")));
  EXPECT_THAT(told([&](auto& file) { file.bundle.slice(0)->makeGrid("second"); }),
              AllOf(HasSubstr("that at 0 has 2"), HasSubstr("t.kx")));
}

TEST_F(TrajectoryImport, AsksForAllFiveFieldsOfAFragment) {
  EXPECT_EQ(told([](auto& file) { file.chart()->removeField("Positions"); }),
            "Trajectory::importTrajectory: no Positions!");
  for (const char* name : {"GPSTime", "Roll", "Pitch", "Yaw"}) {
    EXPECT_EQ(told([&](auto& file) { file.chart()->removeField(name); }), noData) << name;
    EXPECT_EQ(told([&](auto& file) { file.chart()->field(name)->setAbsent({0}); }), noData) << name;
    EXPECT_EQ(told([&](auto& file) {
                file.chart()->makeField(name, Strandel::ValueType::UInt8);
                file.chart()->field(name)->template setValues<std::uint8_t>({0}, {1, 2, 3});
              }),
              noData)
        << name;
    EXPECT_THAT(console, Contains(AllOf(HasSubstr("t.kx: fragment 0: "), HasSubstr(name)))) << name;
  }
}

TEST_F(TrajectoryImport, RefusesValuesThatAreNotFinite) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const auto toldWith = [this](const char* field, const Record& bad) {
    const std::vector<Record> records{recordOf(1, 1), recordOf(2, 2), bad, recordOf(4, 4)};
    Trajectory trajectory({save(TrajectoryFile({recordsAt({5, 6, 7}), records, recordsAt({9})}))});
    EXPECT_THAT(trajectory.importTrajectory(),
                AllOf(StartsWith("Trajectory::importTrajectory: " + std::string(field) +
                                 " of record 2 in fragment 1 is not finite: "),
                      HasSubstr("t.kx")));
    // The fragment before stays, and can be used.
    EXPECT_THAT(trajectory.timeRanges(), ElementsAre(Pair(gpsWeek, TimeRange{5, 7})));
    EXPECT_EQ(trajectory.numberOfRecords(), 3U);
    EXPECT_EQ(xAt(trajectory, 6), 10);
  };
  for (const double bad : {nan, HUGE_VAL, -HUGE_VAL}) {
    toldWith("GPSTime", {bad, {}, {}});
    toldWith("Positions", {3, {1, 2, bad}, {}});
    toldWith("Positions", {3, {bad, 2, 3}, {}});
    toldWith("Roll", {3, {}, {bad, 0, 0}});
    toldWith("Pitch", {3, {}, {0, bad, 0}});
    toldWith("Yaw", {3, {}, {0, 0, bad}});
  }
}

TEST_F(TrajectoryImport, ReadsTheOtherSlicesOfAFileAfterAFaultAndNoOtherFile) {
  TrajectoryFile faulty({recordsAt({1, 2, 3})}, 1, 0);
  faulty.addSlice({recordsAt({4, 5, 6})}, 2, 1);
  faulty.addSlice({recordsAt({7, 8, 9})}, 3, 2);
  faulty.addSlice({recordsAt({1, 2, 3})}, 4, 3);
  faulty.chart(1)->attributes().remove("LeverArm");
  faulty.chart(2)->attributes().remove("EPSG_HEIGHT");
  const auto good = save(TrajectoryFile({recordsAt({1, 2, 3})}, 5), "good.kx");
  const auto later = save(TrajectoryFile({recordsAt({1, 2, 3})}, 6), "later.kx");
  Trajectory trajectory({good, faulty.save(folder / "faulty.kx"), later});
  EXPECT_EQ(trajectory.importTrajectory(), noCodes);  // the last fault of the file
  EXPECT_THAT(console, ElementsAre(AllOf(StartsWith(noMounting), HasSubstr("slice at 1")),
                                   AllOf(StartsWith(noCodes), HasSubstr("slice at 2"))));
  for (const unsigned read : {1U, 4U, 5U}) EXPECT_EQ(xAt(trajectory, 2, read), 10) << read;
  for (const unsigned left : {2U, 3U, 6U})
    EXPECT_FALSE(trajectory.week_number_exists(left)) << left;
}

TEST_F(TrajectoryImport, StartsAnewWhenCalledAgainAndLeavesCopiesAlone) {
  const auto path = save(TrajectoryFile({recordsAt({1, 2, 3})}));
  Trajectory trajectory({path});
  ASSERT_EQ(trajectory.importTrajectory(), "");
  const Trajectory copy = trajectory;
  save(TrajectoryFile({recordsAt({4, 5, 6, 7}, 40)}, 1));
  ASSERT_EQ(trajectory.importTrajectory(), "");
  EXPECT_THAT(trajectory.timeRanges(), ElementsAre(Pair(1U, TimeRange{4, 7})));
  EXPECT_EQ(trajectory.numberOfRecords(), 4U);
  EXPECT_EQ(xAt(trajectory, 5, 1), 50);
  EXPECT_EQ(xAt(copy, 2), 10);

  fs::remove(path);
  EXPECT_NE(trajectory.importTrajectory(), "");
  EXPECT_EQ(trajectory.numberOfRecords(), 0U);
  EXPECT_FALSE(trajectory.week_number_exists(1));
}

TEST_F(TrajectoryImport, WarnsOfFilesInDifferentProjections) {
  TrajectoryFile other({recordsAt({4, 5, 6})});
  other.chart()->attributes().set("EPSG_SPATIAL", std::int64_t{32633});
  const auto path = save(TrajectoryFile({recordsAt({1, 2, 3})}));
  Trajectory trajectory({path, path, other.save(folder / "other.kx")});
  EXPECT_EQ(trajectory.importTrajectory(), "");
  EXPECT_THAT(console,
              ElementsAre(AllOf(HasSubstr("32632"), HasSubstr("32633"), HasSubstr("other.kx"))));
  EXPECT_DOUBLE_EQ(trajectory.getMercator().getCentralMeridian(), 15 * Geomra::degree);
}

// The storage refuses such a file; a bundle in memory is not checked by anybody else.
TEST_F(TrajectoryImport, RefusesColumnsOfUnequalLength) {
  const TrajectoryFile file({recordsAt({1, 2, 3})});
  const fs::path name = "t.kx";
  EXPECT_EQ(Velorn::TrajectoryFragment(*file.chart(), {0}, name).size(), 3U);
  file.chart()->field("Pitch")->setValues<double>({0}, {1, 2});
  Velorn::TrajectoryFragment fragment(*file.chart(), {0}, name);
  EXPECT_EQ(fragment.fault(), noData);
  EXPECT_EQ(fragment.size(), 0U);
  EXPECT_EQ(fragment.positions({0, 3}), nullptr);
  EXPECT_THAT(console, ElementsAre(HasSubstr("Pitch: 2 values, Positions has 3")));
}

// More records than are read at once.
TEST_F(TrajectoryImport, TakesBackALongFragmentWhoseLastValueIsNotFiniteAndGoesOn) {
  std::vector<Record> records;
  records.reserve(600000);
  for (int i = 0; i < 600000; ++i) records.push_back(recordOf(0.005 * i, i));
  const auto good = save(TrajectoryFile({records}), "good.kx");
  Trajectory whole({good});
  ASSERT_EQ(whole.importTrajectory(), "");
  EXPECT_EQ(whole.numberOfRecords(), records.size());
  for (const int i : {0, 262143, 262144, 262145, 524288, 599999}) {
    EXPECT_EQ(xAt(whole, 0.005 * i), i);
  }

  records.back().degrees.z = std::nan("");
  const auto before = save(TrajectoryFile({recordsAt({1, 2, 3})}, 1), "before.kx");
  TrajectoryFile bad({records});
  bad.addSlice({recordsAt({4, 5, 6})}, 3, 1);
  Trajectory trajectory({before, bad.save(folder / "bad.kx")});
  EXPECT_THAT(trajectory.importTrajectory(), HasSubstr("Yaw of record 599999 in fragment 0"));
  EXPECT_EQ(trajectory.numberOfRecords(), 6U);
  EXPECT_THAT(trajectory.timeRanges(),
              ElementsAre(Pair(1U, TimeRange{1, 3}), Pair(3U, TimeRange{4, 6})));
  EXPECT_FALSE(trajectory.week_number_exists(gpsWeek));
  point position;
  vector attitude;
  ASSERT_TRUE(trajectory.interpolateTrajectory(5, 3, position, attitude, true));
  EXPECT_EQ(position.x, 10);
  EXPECT_DOUBLE_EQ(attitude.x, 1 * Geomra::degree);
}
