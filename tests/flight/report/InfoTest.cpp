// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <nlohmann/json.hpp>
#include <string>

#include <gmock/gmock.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/platform/strandel/Processes.h"
#include "tests/support/SmallStrip.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Describe.h>

using namespace Velorn::Flights;

using Json = nlohmann::ordered_json;
using testing::ElementsAre, testing::HasSubstr, testing::IsEmpty;

namespace {

void save(Strandel::Bundle bundle, const std::filesystem::path& path) {
  ASSERT_EQ(Strandel::MyStorage(0, 0, 1, 1).save(bundle, path, "wd"), "");
}

struct Document {
  Json document;
  std::vector<std::string> faults;
};

/// Of one file.
Document describe(const std::filesystem::path& file) {
  const auto documents = documentFiles({file});
  return {Json::parse(documents.text).at("files").at(0), documents.faults};
}

const Json& named(const Json& list, const std::string& name) {
  for (const auto& entry : list) {
    if (entry.at("name") == name) return entry;
  }
  throw std::runtime_error("nothing is named " + name + " in " + list.dump());
}

/// Takes the stored range from two fields and flips a bit in the data of the first.
constexpr const char* damage = R"(
import h5py
with h5py.File('strip.kx', 'r+', libver=('v110', 'v110')) as file:
    w = file['0/strip/StandardCartesianChart3D']
    for name in ('GPSTime', 'U32'):
        del w[name].attrs['range_count']
    place = w['GPSTime/0'].id.get_chunk_info(0).byte_offset
with open('strip.kx', 'r+b') as file:
    file.seek(place)
    byte = file.read(1)
    file.seek(place)
    file.write(bytes([byte[0] ^ 64]))
)";

}  // namespace

TEST(Info, DescribesEveryLevelOfAContainer) {
  const TemporaryFolder folder;
  auto strip = smallStrip();
  const auto grid = strip.grids().front();
  grid->cartesian()->makeField("Amplitude", Strandel::ValueType::Int16)->setAbsent({7});
  save(strip, folder / "strip.kx");

  const auto [document, faults] = describe(folder / "strip.kx");
  EXPECT_THAT(faults, IsEmpty());
  EXPECT_EQ(document.at("kind"), "container");
  EXPECT_EQ(document.at("attributes").at("Comment"), "Überflug 3");
  const Json& slice = document.at("slices").at(0);
  EXPECT_EQ(slice.at("time"), 0.0);
  const Json& stripGrid = named(slice.at("grids"), "strip");
  EXPECT_EQ(stripGrid.at("points"), 150);
  EXPECT_EQ(stripGrid.at("attributes").at("WeekNumber"), 2318);
  EXPECT_EQ(stripGrid.at("waveforms").at("Scanner Group Velocity"), 299702547);
  const Json& world = named(stripGrid.at("charts"), "StandardCartesianChart3D");
  EXPECT_EQ(world.at("attributes").at("LeverArm"), Json::parse("[0.12, -0.08, 0.45]"));

  const Json& times = named(world.at("fields"), "GPSTime");
  EXPECT_EQ(times.at("type"), "double");
  EXPECT_EQ(times.at("count"), 150);
  EXPECT_THAT(times.at("shared_with"), ElementsAre("ScannerCoordinateSystem"));
  const auto range = grid->cartesian()->field("GPSTime")->range().range.value();
  EXPECT_EQ(times.at("minimum"), range.lowest());
  EXPECT_EQ(times.at("maximum"), range.highest());

  const Json& positions = named(world.at("fields"), "Positions");
  EXPECT_FALSE(positions.contains("shared_with"));  // the scanner's Positions are others
  EXPECT_EQ(positions.at("maximum").size(), 3u);
  EXPECT_EQ(positions.at("attributes").at("Unit"), "m");
  EXPECT_TRUE(named(world.at("fields"), "U32").at("minimum").is_number_integer());
  EXPECT_EQ(named(world.at("fields"), "Amplitude").at("fragments"), Json::parse(R"([
      {"number": 0, "count": 100}, {"number": 1, "count": 50},
      {"number": 7, "count": 0, "absent": true}])"));
}

TEST(Info, AFieldThatCannotBeReadIsNamedAndTheOthersAreShown) {
  const TemporaryFolder folder;
  save(smallStrip(), folder / "strip.kx");
  runPython(folder.path(), damage);
  const auto [document, faults] = describe(folder / "strip.kx");
  ASSERT_EQ(faults.size(), 1u);  // the field is shared, and told once
  EXPECT_THAT(faults[0], testing::AllOf(HasSubstr("strip.kx"), HasSubstr("GPSTime")));
  const Json& charts = document.at("slices")[0].at("grids")[0].at("charts");
  for (const auto& chart : charts) {
    EXPECT_EQ(named(chart.at("fields"), "GPSTime").at("error"), faults[0]);
  }
  EXPECT_TRUE(
      named(named(charts, "StandardCartesianChart3D").at("fields"), "U32").contains("minimum"));
  EXPECT_THAT(describeFile(folder / "strip.kx").text,
              testing::AllOf(HasSubstr("UNREADABLE"), HasSubstr(faults[0])));
}

TEST(Info, TheListingIsAlignedAndHarmless) {
  const TemporaryFolder folder;
  Strandel::Bundle bundle;
  const auto chart = bundle.makeSlice(0.5)->makeGrid("g")->makeChart("c");
  chart->attributes().set("Note", std::string("Grüße\x1b[31m"));
  chart->makeField("Höhe", Strandel::ValueType::Double)->setValues<double>({0}, {1.5, 5316300.123});
  chart->makeField("Class", Strandel::ValueType::UInt8)
      ->setValues<std::uint8_t>({3}, std::vector<std::uint8_t>(1000, 2));
  const auto rays = chart->makeField("Rays", Strandel::ValueType::Vector);
  rays->setValues<Geomra::PhysicalSpace::vector>({0}, {{-1, 0, 3}, {0, 2, 3}});
  rays->attributes().set("Unit", std::string("m"));
  save(bundle, folder / "a.kx");
  EXPECT_EQ(describeFile(folder / "a.kx").text, (folder / "a.kx").string() + R"(: container
  slice at time 0.5
  grid g, 1002 points
    chart c
      Note = Grüße\x1b[31m
      field  type    count  fragments  minimum      maximum
      Class  uint8    1000          1        2            2
      Höhe   double      2          1      1.5  5316300.123
      Rays   vector      2          1       -1            0
                                             0            2
                                             3            3
          Unit = m
)");
}

TEST(Info, AnSbetTrajectoryIsDescribedByItsRanges) {
  const auto [document, faults] = describe(VELORN_TEST_DATA "/line/sbet.out");
  EXPECT_THAT(faults, IsEmpty());
  EXPECT_EQ(document.at("kind"), "sbet");
  EXPECT_EQ(document.at("records"), 200);
  // numpy: min and max of the columns, numpy.degrees of the angles
  EXPECT_EQ(document.at("time_s"), Json::parse("[400825.0013129992, 400825.9965316785]"));
  EXPECT_NEAR(document.at("longitude_deg")[0].get<double>(), -119.02382360363723, 1e-12);
  EXPECT_THAT(describeFile(VELORN_TEST_DATA "/line/sbet.out").text,
              HasSubstr("  records    200\n"));
}

TEST(Info, AFileThatCannotBeReadIsNamed) {
  const TemporaryFolder folder;
  writeContent(folder / "foreign.kx", "no container");
  const auto all = documentFiles(
      {folder / "foreign.kx", VELORN_TEST_DATA "/line/sbet.out", folder / "missing.sbet"});
  ASSERT_EQ(all.faults.size(), 2u);
  const auto files = Json::parse(all.text).at("files");
  EXPECT_EQ(files.at(0).at("error"), all.faults[0]);
  EXPECT_EQ(files.at(1).at("records"), 200);
  EXPECT_EQ(files.at(2).at("error"), all.faults[1]);
  for (const char* name : {"foreign.kx", "missing.kx", "missing.sbet"}) {
    const auto [text, faults] = describeFile(folder / name);
    EXPECT_THAT(faults, ElementsAre(HasSubstr((folder / name).string())));
    EXPECT_THAT(text, HasSubstr("UNREADABLE"));
  }
}
