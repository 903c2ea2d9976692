// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cmath>
#include <limits>
#include <system_error>

#include <gmock/gmock.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/platform/strandel/Storages.h"
#include "tests/support/SmallStrip.h"
#include "tests/support/TemporaryFolder.h"

using namespace Strandel;
using Geomra::PhysicalSpace::point;
using testing::ElementsAre, testing::HasSubstr;

class RoundTrip : public testing::TestWithParam<const MyStorage*> {};

// Several chunks of most types, the last one not full; fewer where every access is checked.
#ifdef VELORN_SANITIZED
constexpr std::size_t many = 70000;
#else
constexpr std::size_t many = 250000;
#endif

TEST_P(RoundTrip, KeepsEveryValueAttributeAndName) {
  for (const std::size_t points : {std::size_t{0}, std::size_t{1}, std::size_t{1000}, many}) {
    const TemporaryFolder folder;
    Bundle strip = smallStrip(points);
    ASSERT_EQ(GetParam()->save(strip, folder / "a.kx", "w"), "");
    EXPECT_TRUE(intactContentOf(loaded(folder / "a.kx")) == intactContentOf(strip))
        << points << " points";
  }
}

INSTANTIATE_TEST_SUITE_P(Storages, RoundTrip,
                         testing::Values(&flushed, &flushedCompressed, &unprotected));

TEST(Strandel, EqualContentGivesEqualFiles) {
  const TemporaryFolder folder;
  Bundle first = smallStrip(), second = smallStrip(), other = smallStrip(100, 2);
  ASSERT_EQ(flushed.save(first, folder / "a.kx", "w"), "");
  ASSERT_EQ(flushed.save(second, folder / "b.kx", "w"), "");
  ASSERT_EQ(flushed.save(other, folder / "c.kx", "w"), "");
  EXPECT_TRUE(contentOf(folder / "a.kx") == contentOf(folder / "b.kx"));
  EXPECT_FALSE(contentOf(folder / "a.kx") == contentOf(folder / "c.kx"));
}

TEST(Strandel, ASharedFieldStaysOneFieldWithOneSetOfData) {
  const TemporaryFolder folder;
  Bundle strip = smallStrip(10000);
  ASSERT_EQ(flushed.save(strip, folder / "a.kx", "w"), "");
  Bundle read = loaded(folder / "a.kx");
  EXPECT_EQ(fieldOf(read, worldChartName, "GPSTime"), fieldOf(read, scannerChartName, "GPSTime"));
  const auto before = std::filesystem::file_size(folder / "a.kx");
  ASSERT_EQ(flushed.save(read, folder / "a.kx", "wd"), "");  // a copy must not double it
  EXPECT_LE(std::filesystem::file_size(folder / "a.kx"), before);
  read = loaded(folder / "a.kx");
  EXPECT_EQ(fieldOf(read, worldChartName, "GPSTime"), fieldOf(read, scannerChartName, "GPSTime"));
}

TEST(Strandel, AFileTakesWhatItsValuesNeed) {
  const TemporaryFolder folder;
  const auto bytesOf = [&]<typename T>(ValueType type, std::vector<T> values) {
    Bundle bundle;
    const auto chart = bundle.makeSlice(0)->makeGrid("g")->makeChart(worldChartName);
    EXPECT_EQ(chart->makeField("f", type)->template setValues<T>({0}, std::move(values)), "");
    EXPECT_EQ(flushed.save(bundle, folder / "a.kx", "wd"), "");
    return std::filesystem::file_size(folder / "a.kx");
  };
  constexpr std::size_t rows = 140000, ofStructure = 8192;
  std::vector<double> doubles(rows);
  std::vector<std::uint64_t> ascending(rows);
  for (std::size_t i = 0; i < rows; ++i) doubles[i] = std::sin(double(ascending[i] = i));
  // A second chunk that holds a few values is not filled up to a megabyte.
  EXPECT_LT(bytesOf(ValueType::Double, doubles), 8 * rows + ofStructure);
  EXPECT_LT(bytesOf(ValueType::UInt64, ascending), rows / 2 + ofStructure);
  EXPECT_LT(bytesOf(ValueType::UInt8, std::vector<std::uint8_t>(rows, 2)), rows / 50 + ofStructure);
}

TEST(Strandel, AnInPlaceChangeChangesThatFieldAlone) {
  const TemporaryFolder folder;
  Bundle strip = smallStrip();
  ASSERT_EQ(flushedCompressed.save(strip, folder / "a.kx", "w"), "");
  Bundle read = loaded(folder / "a.kx");
  const auto positions = fieldOf(read, worldChartName, "Positions");
  EXPECT_FALSE(positions->touched());
  ASSERT_EQ(positions->setValues<point>({1}, std::vector<point>(50, {1, 2, 3})), "");
  EXPECT_TRUE(positions->touched());
  const std::string wanted = intactContentOf(read);
  ASSERT_EQ(flushed.save(read, folder / "a.kx", "wd"), "");
  EXPECT_FALSE(positions->touched());
  EXPECT_TRUE(intactContentOf(loaded(folder / "a.kx")) == wanted);
  // The bundle goes on with the data of the file it came from, which is gone from the folder by
  // now.
  ASSERT_EQ(flushed.save(read, folder / "b.kx", "w"), "");
  EXPECT_TRUE(intactContentOf(loaded(folder / "b.kx")) == wanted);
}

TEST(Strandel, AnAbsentChunkIsKnownWithoutValues) {
  const TemporaryFolder folder;
  Bundle bundle;
  const auto field =
      bundle.makeSlice(2.5)->makeGrid("g")->makeChart("c")->makeField("f", ValueType::UInt8);
  field->setAbsent({3});
  ASSERT_EQ(flushed.save(bundle, folder / "a.kx", "w"), "");
  const auto read = loaded(folder / "a.kx").slice(2.5)->grid("g")->chart("c")->field("f");
  EXPECT_THAT(read->fragments(), ElementsAre(FragmentId{3}));
  EXPECT_FALSE(read->hasChunk({3}));
  EXPECT_THAT(read->values<std::uint8_t>({3}).error,
              HasSubstr("f: fragment 3: its chunk is absent"));
  EXPECT_THAT(read->values<std::uint8_t>({0}).error, HasSubstr("fragment 0: missing"));
  EXPECT_FALSE(read->range().range);
}

TEST(Strandel, RowsAreReadFromAnywhereAndNotBeyondTheEnd) {
  const TemporaryFolder folder;
  std::vector<double> times(300000);
  for (std::size_t i = 0; i < times.size(); ++i) times[i] = 0.5 * static_cast<double>(i);
  for (const auto* with : {&flushed, &flushedCompressed}) {
    Bundle bundle;
    bundle.makeSlice(0)
        ->makeGrid("g")
        ->makeChart(worldChartName)
        ->makeField("GPSTime", ValueType::Double)
        ->setValues({0}, times);
    ASSERT_EQ(with->save(bundle, folder / "a.kx", "wd"), "");
    const auto field = fieldOf(loaded(folder / "a.kx"), worldChartName, "GPSTime");
    for (const auto& [first, count] : {std::pair{0u, 1u},
                                       {131071u, 2u},
                                       {131072u, 131072u},
                                       {299999u, 1u},
                                       {5u, 299995u},
                                       {300000u, 0u}}) {
      const auto read = field->values<double>({0}, first, count);
      ASSERT_TRUE(read) << read.error;
      EXPECT_TRUE(std::equal(read.values->begin(), read.values->end(), times.begin() + first))
          << first;
      EXPECT_EQ(read.values->size(), count);
    }
    EXPECT_THAT(field->values<double>({0}, 299999, 2).error, HasSubstr("beyond its 300000 values"));
    EXPECT_THAT(field->values<double>({0}, 1, std::numeric_limits<std::size_t>::max()).error,
                HasSubstr("beyond"));
    EXPECT_THAT(field->values<point>({0}).error,
                HasSubstr("GPSTime: fragment 0: holds double, not point"));
  }
}

TEST(Strandel, TheStoredRangeFollowsTheData) {
  const TemporaryFolder folder;
  Bundle bundle;
  const auto chart = bundle.makeSlice(0)->makeGrid("g")->makeChart(worldChartName);
  const auto times = chart->makeField("GPSTime", ValueType::Double);
  times->setValues<double>({0}, {5, -2, 9});
  times->setValues<double>({1}, {11, 3});
  EXPECT_EQ(times->range().range->highest(), 11);
  chart->makeField("Positions", ValueType::Point)
      ->setValues<point>({0}, {{1, -1, 7}, {2, -5, 3}, {0, 0, 0}});
  ASSERT_EQ(flushed.save(bundle, folder / "a.kx", "w"), "");

  Bundle read = loaded(folder / "a.kx");
  const auto field = fieldOf(read, worldChartName, "GPSTime");
  ASSERT_TRUE(field->storedRange());
  EXPECT_EQ(field->storedRange()->lowest(), -2);
  const auto box = fieldOf(read, worldChartName, "Positions")->range().range;
  EXPECT_THAT(box->minimum, ElementsAre(0, -5, 0));
  EXPECT_THAT(box->maximum, ElementsAre(2, 0, 7));

  field->setValues<double>({0}, {1, 2, 3});
  EXPECT_FALSE(field->storedRange());
  EXPECT_EQ(field->range().range->lowest(), 1);
  EXPECT_EQ(field->range().range->highest(), 11);
  ASSERT_EQ(flushed.save(read, folder / "a.kx", "wd"), "");
  EXPECT_EQ(fieldOf(loaded(folder / "a.kx"), worldChartName, "GPSTime")->range().range->lowest(),
            1);

  field->setValues<double>({0}, {1, std::nan(""), 3});
  EXPECT_TRUE(std::isnan(field->range().range->lowest()));
  EXPECT_TRUE(std::isnan(field->range().range->highest()));
}

TEST(Strandel, GridsAreFoundByNameAndTheUniqueOneWithout) {
  Bundle bundle;
  EXPECT_EQ(bundle.slice(0.0), nullptr);
  EXPECT_EQ(bundle.makeSlice(std::nan("")), nullptr);
  const auto slice = bundle.makeSlice(0.0);
  EXPECT_EQ(bundle.makeSlice(0.0), slice);
  EXPECT_EQ(slice->uniqueGrid(), nullptr);
  const auto grid = slice->makeGrid("Grid_I");
  EXPECT_EQ(slice->uniqueGrid(), grid);
  slice->makeGrid("Grid_J");
  EXPECT_EQ(slice->uniqueGrid(), nullptr);
  EXPECT_EQ(slice->numberOfGrids(), 2u);
  EXPECT_EQ(slice->grid("Grid_I"), grid);
  EXPECT_EQ(slice->grid("GroundTruth"), nullptr);
  EXPECT_EQ(grid->cartesian(), nullptr);
  const auto world = grid->makeChart(worldChartName);
  EXPECT_EQ(world, grid->cartesian());
}

TEST(Attributes, AreReadOnlyAsWhatTheyAre) {
  Attributes attributes;
  attributes.set("week", std::int64_t{2318});
  attributes.set("large", std::int64_t{1} << 32);
  attributes.set("negative", std::int64_t{-1});
  attributes.set("name", std::string("strip"));
  EXPECT_EQ(attributes.unsigned32("week"), 2318u);
  EXPECT_EQ(attributes.real("week"), 2318.0);
  EXPECT_EQ(attributes.unsigned32("large"), std::nullopt);
  EXPECT_EQ(attributes.unsigned32("negative"), std::nullopt);
  EXPECT_EQ(attributes.unsigned32("name"), std::nullopt);
  EXPECT_EQ(attributes.point("name"), std::nullopt);
  EXPECT_EQ(attributes.text("missing"), std::nullopt);
}

// ---- What a save refuses; the file that was there stays ----

TEST(Strandel, SaveRefusesWhatCannotBeStoredAndKeepsTheFile) {
  const TemporaryFolder folder;
  const auto path = folder / "a.kx";
  writeContent(path, "old");
  const auto refused = [&](auto&& change) {
    Bundle strip = smallStrip();
    change(*strip.slice(0)->uniqueGrid());
    auto fault = flushed.save(strip, path, "wd");
    EXPECT_EQ(contentOf(path), "old");
    EXPECT_THAT(fault, HasSubstr("Strandel::MyStorage::save: " + path.string() + ": /0/strip"));
    return fault;
  };
  EXPECT_THAT(refused([](Grid& grid) { grid.makeChart("a/b"); }),
              HasSubstr("\"a/b\" cannot be a name"));
  EXPECT_THAT(refused([](Grid& grid) { grid.cartesian()->makeField("", ValueType::Double); }),
              HasSubstr("cannot be a name"));
  EXPECT_THAT(refused([](Grid& grid) {
                grid.cartesian()->field("GPSTime")->setValues<double>({1}, {1, 2, 3});
              }),
              HasSubstr("fragment 1: ScannerCoordinateSystem/GPSTime holds 3 values, "
                        "ScannerCoordinateSystem/Positions 50"));
  EXPECT_THAT(refused([](Grid& grid) {
                grid.cartesian()->field("GPSTime")->attributes().set("minimum", 1.0);
              }),
              HasSubstr("GPSTime: the attribute name \"minimum\" is the format's own"));
}

TEST(Strandel, SaveAndLoadRefuseUnknownModesSettingsAndPlaces) {
  const TemporaryFolder folder;
  Bundle strip = smallStrip();
  EXPECT_THAT(flushed.save(strip, folder / "a.kx", "a"), HasSubstr("unknown open mode \"a\""));
  EXPECT_THAT(MyStorage(7, 0, 0, 1).save(strip, folder / "a.kx", "w"),
              HasSubstr("compression is 7"));
  EXPECT_THAT(MyStorage(0, 0, 0, 2).load(folder / "a.kx", strip), HasSubstr("version is 2"));
  EXPECT_THAT(flushed.save(strip, folder / "no/a.kx", "w"),
              HasSubstr(std::generic_category().message(ENOENT)));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  ASSERT_EQ(flushed.save(strip, folder / "a.kx", "w"), "");
  EXPECT_THAT(flushed.save(strip, folder / "a.kx", "w"), HasSubstr("exists already"));
}
