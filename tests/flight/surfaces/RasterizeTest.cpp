// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <numeric>

#include <gmock/gmock.h>
#include <unistd.h>

#include "flight/strips/OrFail.h"
#include "flight/surfaces/TerrainClasses.h"
#include "platform/geomra/Degree.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/flight/surfaces/RasterStrip.h"
#include "tests/support/Limit.h"
#include <velorn/DataBlock.h>

namespace {

using namespace Velorn::Flights;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::Each, testing::HasSubstr, testing::IsEmpty;
using Codes = std::vector<std::uint8_t>;

std::size_t sumOf(const PerClass& counts) {
  return std::accumulate(counts.begin(), counts.end(), std::size_t{0});
}

std::size_t sumOf(const RasterCounts& counts) {
  return counts.notFinite + counts.notLast + counts.notPlanar + counts.notTerrain +
         counts.notSelected + sumOf(counts.surface);
}

Velorn::DataBlock dataOf(const std::filesystem::path& file) {
  Strandel::Bundle bundle;
  orFail(Strandel::MyStorage(0, 0, 0, 1).load(file, bundle));
  const auto grid = bundle.slices().at(0)->uniqueGrid();
  Velorn::DataBlock block;
  for (const auto id : grid->cartesian()->field("Positions")->fragments()) {
    const auto fragment = std::make_shared<Strandel::FragmentId>(id);
    orFail(block.appendData(*grid, fragment, false, true));
  }
  return block;
}

struct Rasterize : testing::Test {
  TemporaryFolder folder;
  std::filesystem::path strip = folder / "strip.kx", raster = folder / "raster.kx";

  void save(StripColumns columns = rasterStrip()) const { saveStrip(strip, std::move(columns)); }
};

TEST_F(Rasterize, WritesPlanarPointsAndTheirRasterAndLeavesTheStripAsItIs) {
  save();
  const std::string before = contentOf(strip);
  const RasterCounts counts = rasterize(strip, raster);
  EXPECT_TRUE(contentOf(strip) == before);
  EXPECT_EQ(counts.points, 3600U);
  EXPECT_EQ(sumOf(counts), 3600U);
  EXPECT_GT(sumOf(counts.surface), 3200U);  // all but the steps about the roof
  EXPECT_NEAR(counts.medianRoughness, 0.02, 0.002);
  const auto whole = rasterStrip();
  const auto numbers = OneGridFile(planarOf(raster)).world<std::uint32_t>("PointNumber");
  const auto planar = readPlanarPoints(planarOf(raster), strip, rasterConfiguration());
  ASSERT_EQ(numbers.size(), sumOf(counts.surface));
  ASSERT_EQ(planar.size(), numbers.size());
  for (std::size_t k = 0; k < numbers.size(); k += 7) {
    EXPECT_EQ(planar.times[k], whole.times[numbers[k]]);
    EXPECT_EQ(planar.beams[k], whole.directions[numbers[k]]);
    EXPECT_EQ(planar.scanner[k], whole.scanner[numbers[k]]);
  }
  const auto chosen = dataOf(raster);
  ASSERT_EQ(chosen.world->size(), sumOf(counts.representatives));
  EXPECT_TRUE(std::is_sorted(chosen.times->begin(), chosen.times->end()));
  const auto first = static_cast<std::size_t>(
      std::find(planar.times.begin(), planar.times.end(), chosen.times->back()) -
      planar.times.begin());
  EXPECT_EQ(planar.delivered.at(first), chosen.world->back());
  EXPECT_EQ(planar.normals.at(first), chosen.normals->back());
  EXPECT_EQ(planar.codes.at(first), chosen.rigorousClasses->back());
  EXPECT_EQ(chosen.amplitudes->back(), whole.amplitude[numbers[first]]);
}

TEST_F(Rasterize, RefusesPlanarPointsOfAnotherStrip) {
  save();
  rasterize(strip, raster);
  const auto refusal = [&] {
    return refusalOf([&] { readPlanarPoints(planarOf(raster), strip, rasterConfiguration()); });
  };
  auto shorter = rasterStrip();
  const auto shorten = [](auto&... columns) { (columns.resize(100), ...); };
  shorten(shorter.world, shorter.scanner, shorter.times, shorter.directions, shorter.returnNumber,
          shorter.numberOfReturns, shorter.classification, shorter.amplitude,
          shorter.pointSourceId);
  save(shorter);
  EXPECT_THAT(refusal(), AllOf(HasSubstr(planarOf(raster).string()), HasSubstr(strip.string()),
                               HasSubstr("not numbers of the 100 points")));
  save();
  change(planarOf(raster), [](Strandel::Grid& grid) {
    const auto field = grid.chart(Strandel::worldChartName)->field("PointNumber");
    auto numbers = *field->values<std::uint32_t>({0}).values;
    std::swap(numbers.at(3), numbers.at(4));
    EXPECT_EQ(field->setValues<std::uint32_t>({0}, std::move(numbers)), "");
  });
  EXPECT_THAT(refusal(), HasSubstr("not numbers of the 3600 points"));
}

TEST_F(Rasterize, SaysHowFarRepresentativesLieFromTheirPlanes) {
  save();
  rasterize(strip, raster);
  const OneGridFile made(raster);
  const auto positions = made.world<point>("Positions");
  const auto codes = made.world<std::uint8_t>("RigorousClassification");
  const auto distance = made.world<double>("PlaneDistance");
  double sum = 0.0, count = 0.0;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (codes[i] != 14) continue;
    const double off = positions[i].z - distance[i] - 100.0;  // what is left is the plane's error
    sum += off * off, ++count;
  }
  ASSERT_GT(count, 0.0);
  EXPECT_LT(std::sqrt(sum / count), 0.012);  // 0.02 m over the root of 16 points, and some tilt
  EXPECT_THAT(made.world<double>("Roughness"), Each(testing::Lt(0.1)));
  EXPECT_THAT(made.world<std::uint16_t>("PointSourceID"), Each(7));
}

TEST_F(Rasterize, GivesTheSameBytesTheSecondTime) {
  save();
  rasterize(strip, raster);
  const std::string planarOnce = contentOf(planarOf(raster)), rasterOnce = contentOf(raster);
  rasterize(strip, raster);
  EXPECT_TRUE(contentOf(planarOf(raster)) == planarOnce);
  EXPECT_TRUE(contentOf(raster) == rasterOnce);
}

TEST_F(Rasterize, TakesPointsOfSeveralFragmentsForOneStrip) {
  save();
  rasterize(strip, raster);
  change(strip, [](Strandel::Grid& grid) {
    const auto split = [](Strandel::Field& field, auto values) {
      using T = typename decltype(values)::value_type;
      const auto half = values.begin() + 1700;
      orFail(field.setValues<T>({3}, std::vector<T>(values.begin(), half)));
      orFail(field.setValues<T>({8}, std::vector<T>(half, values.end())));
    };
    const auto cut = [&]<typename T>(Strandel::Chart& chart, const char* name, T) {
      const auto values = *chart.field(name)->template values<T>({0}).values;
      chart.removeField(name);
      split(*chart.makeField(name, Strandel::valueTypeOf<T>()), values);
    };
    auto& world = *grid.chart(Strandel::worldChartName);
    auto& scanner = *grid.chart(Strandel::scannerChartName);
    cut(world, "Positions", point{});
    cut(world, "GPSTime", double{});
    scanner.shareField(world.field("GPSTime"));
    cut(world, "Amplitude", double{});
    cut(world, "PointSourceID", std::uint16_t{});
    for (const char* name : {"ReturnNumber", "NumberOfReturns", "Classification"}) {
      cut(world, name, std::uint8_t{});
    }
    cut(scanner, "Positions", point{});
    cut(scanner, "Waveforms.DirectionDelta", vector{});
  });
  rasterize(strip, folder / "raster2.kx");
  EXPECT_TRUE(contentOf(planarOf(raster)) == contentOf(planarOf(folder / "raster2.kx")));
  EXPECT_TRUE(contentOf(raster) == contentOf(folder / "raster2.kx"));
}

TEST_F(Rasterize, TakesTheClassesThatTheOwnerGave) {
  Codes given(3600, 2);
  std::fill(given.begin() + 600, given.begin() + 1200, std::uint8_t{13});
  for (const bool isOfVersion01 : {false, true}) {
    save();
    change(strip, [&](Strandel::Grid& grid) {
      auto& world = *grid.chart(Strandel::worldChartName);
      const auto set = [&](const char* name, Codes values) {
        auto field = world.makeField(name, Strandel::ValueType::UInt8);
        orFail(field->setValues<std::uint8_t>({0}, std::move(values)));
        return field;
      };
      if (isOfVersion01) {  // which wrote its own classes into strips
        set("RigorousClassification", Codes(3600, 15))
            ->attributes()
            .set("Origin", std::string("velorn rasterize"));
      }
      set(isOfVersion01 ? "GivenClassification" : "RigorousClassification", given);
    });
    const RasterCounts counts = rasterize(strip, raster);
    EXPECT_GT(counts.surface[3], 500U);
    EXPECT_EQ(sumOf(counts.surface), counts.surface[3]);
    EXPECT_EQ(counts.notTerrain, 3000U);
  }
}

TEST_F(Rasterize, RespectsEchoesSelectionAndAmplitudeLimits) {
  auto columns = rasterStrip();
  std::fill_n(columns.numberOfReturns.begin(), 100, std::uint8_t{2});
  std::fill_n(columns.returnNumber.begin() + 100, 50, std::uint8_t{0});  // single
  save(columns);
  const RasterCounts all = rasterize(strip, raster);
  EXPECT_EQ(all.notLast, 100U);
  auto configuration = rasterConfiguration();
  configuration.Amplitude[1] = 45.0;  // of roofs: 3500 points are below
  const RasterCounts bright = rasterize(strip, raster, configuration);
  EXPECT_LT(bright.surface[1], 60U);
  EXPECT_EQ(bright.surface[4], all.surface[4]);
  EXPECT_EQ(sumOf(bright), 3600U);
  const RasterCounts ground =
      rasterize(strip, raster, rasterConfiguration("Classification == 2 and PointSourceID == 7"));
  EXPECT_EQ(ground.surface[1], 0U);
  EXPECT_EQ(ground.notSelected, all.surface[1]);
  EXPECT_EQ(ground.surface[2], all.surface[2]);
}

TEST_F(Rasterize, OfPointsWithoutSurfaceIsAReadableRasterWithoutPoints) {
  auto columns = rasterStrip();
  std::fill(columns.classification.begin(), columns.classification.end(), std::uint8_t{5});
  columns.world[17].x = std::nan("");
  columns.times[18] = HUGE_VAL;
  save(columns);
  const RasterCounts counts = rasterize(strip, raster);
  EXPECT_EQ(counts.notFinite, 2U);
  EXPECT_EQ(counts.notTerrain, 3598U);
  EXPECT_THAT(OneGridFile(raster).world<point>("Positions"), IsEmpty());
  EXPECT_EQ(readPlanarPoints(planarOf(raster), strip, rasterConfiguration()).size(), 0U);
  save();
  change(strip, [](Strandel::Grid& grid) {
    for (const auto& [chartName, chart] : grid.charts()) {
      for (const auto& [name, field] : std::map(chart->fields())) {
        const auto type = field->valueType();
        chart->removeField(name);
        chart->makeField(name, type);
      }
    }
  });
  EXPECT_EQ(rasterize(strip, raster).points, 0U);
  EXPECT_EQ(rasterize(strip, raster).points, 0U);
}

TEST_F(Rasterize, RefusesAStripWithoutWhatItNeedsAndLeavesItAsItIs) {
  const auto without = [&](const char* chart, const char* name) {
    save();
    change(strip, [&](Strandel::Grid& grid) { grid.chart(chart)->removeField(name); });
    const std::string before = contentOf(strip);
    std::string fault = refusalOf([&] { rasterize(strip, raster); });
    EXPECT_EQ(contentOf(strip), before);
    EXPECT_THAT(fault, HasSubstr("strip.kx: "));
    EXPECT_THAT(fault, HasSubstr(name));
    return fault;
  };
  for (const char* name :
       {"Positions", "GPSTime", "ReturnNumber", "NumberOfReturns", "Classification", "Amplitude"}) {
    without(Strandel::worldChartName, name);
  }
  without(Strandel::scannerChartName, "Positions");
  EXPECT_THAT(without(Strandel::scannerChartName, "Waveforms.DirectionDelta"),
              HasSubstr("georeference"));
  save();
  change(strip, [](Strandel::Grid& grid) { grid.attributes().remove("WeekNumber"); });
  EXPECT_THAT(refusalOf([&] { rasterize(strip, raster); }), HasSubstr("WeekNumber"));
  save();
  EXPECT_THAT(refusalOf([&] { rasterize(strip, raster, rasterConfiguration("Amplitud > 3")); }),
              HasSubstr("Amplitud; the fields of numbers are Amplitude, Classification, "));
  writeContent(strip, "no container");
  EXPECT_THAT(refusalOf([&] { rasterize(strip, raster); }), HasSubstr("strip.kx: "));
  EXPECT_FALSE(std::filesystem::exists(raster));
}

TEST_F(Rasterize, TellsWhatCannotBeWritten) {
  save();
  const std::string before = contentOf(strip);
  {
    const Limit disk(RLIMIT_FSIZE, 100'000);
    EXPECT_THAT(refusalOf([&] { rasterize(strip, raster); }, Error::NoSpace),
                HasSubstr("raster.kx: "));
  }
  EXPECT_TRUE(contentOf(strip) == before);
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
  if (geteuid() != 0) {  // root may write everywhere
    EXPECT_THAT(refusalOf([&] { rasterize(strip, raster); }, Error::NoSpace),
                HasSubstr("raster.kx"));
  }
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
  EXPECT_THAT(refusalOf([&] { rasterize(strip, "/dev/null/raster.kx"); }, Error::NoSpace),
              HasSubstr("/dev/null/raster.kx"));
  EXPECT_THAT(refusalOf([&] { rasterize(strip, strip); }), HasSubstr("would replace"));
}

TEST_F(Rasterize, ThatIsInterruptedLeavesTheStripAsItIs) {
  struct Interrupting : NoProgress {
    void report(const std::string& /*text*/, std::size_t current, std::size_t total) override {
      if (current > 0 && total > 0) throw Error("interrupted");
    }
  } progress;
  save();
  const std::string before = contentOf(strip);
  EXPECT_EQ(
      refusalOf([&] {
        rasterizeStrip({strip, planarOf(raster), raster}, rasterConfiguration(), {}, progress);
      }),
      "interrupted");
  EXPECT_TRUE(contentOf(strip) == before);
  EXPECT_FALSE(std::filesystem::exists(raster));
}

TEST(RasterCheck, NamesTheClassWhoseCellsAreTooSmall) {
  auto configuration = rasterConfiguration();
  configuration.CellSize[1] = 0.0;
  EXPECT_THAT(refusalOf([&] { check(configuration); }, Error::BadSettings),
              HasSubstr("CellSize of ROOF"));
}

TEST_F(Rasterize, OfGroundTruthHasOnePointPerCellWithItsUnitNormal) {
  GroundTruthColumns truth;
  for (int i = 0; i < 100; ++i) {
    truth.positions.push_back({6e5 + 0.26 * i, 5.25e6, 450.0});
    truth.normals.push_back(i == 3 ? vector{} : vector{0.0, 0.0, i == 4 ? -2.0 : 1.0});
    truth.classification.push_back(static_cast<std::uint8_t>(i));
  }
  truth.positions[5].z = std::nan("");
  saveGroundTruth(folder / "truth.kx", truth);
  const RasterCounts counts =
      rasterizeGroundTruth(folder / "truth.kx", raster, rasterConfiguration());
  EXPECT_EQ(counts.notFinite, 1U);
  EXPECT_EQ(counts.notPlanar, 1U);
  EXPECT_EQ(counts.representatives[0], 98U);  // cells of 0.1 m
  const OneGridFile made(raster);
  EXPECT_THAT(made.world<vector>("NormalVector"), Each(vector{0.0, 0.0, 1.0}));
  EXPECT_EQ(made.world<std::uint8_t>("Classification").at(3), 4);
  change(folder / "truth.kx", [](Strandel::Grid& grid) {
    grid.chart(Strandel::worldChartName)->removeField("NormalVector");
  });
  EXPECT_THAT(
      refusalOf([&] { rasterizeGroundTruth(folder / "truth.kx", raster, rasterConfiguration()); }),
      HasSubstr("truth.kx: DataBlock::getData: no world NormalVector"));
}

struct Shares {
  double points = 0, surface = 0, rightClass = 0, rightNormal = 0;
};

/// Over all points of a strip that may be matched.
Shares sharesOf(const std::filesystem::path& folder, const std::string& strip,
                const std::filesystem::path& planarPoints) {
  const auto planes = planesIn(folder);
  const OneGridFile made(planarPoints);
  const auto numbers = made.world<std::uint32_t>("PointNumber");
  const auto codes = made.world<std::uint8_t>("RigorousClassification");
  const auto normals = made.world<vector>("NormalVector");
  const auto plane = surfacesOf(folder, strip).world<std::uint32_t>("Plane");
  Shares shares;
  shares.points = static_cast<double>(plane.size());
  for (std::size_t i = 0; i < codes.size(); ++i) {
    ++shares.surface;
    const TruePlane& real = planes.at(plane[numbers[i]]);
    if (codes[i] == codeOf(real)) ++shares.rightClass;
    const double degrees =
        std::acos(std::min(1.0, dot(normals[i], real.normal))) * Geomra::degreesPerRadian;
    if (degrees < 3.0) ++shares.rightNormal;
  }
  return shares;
}

// Of a flight over known planes.
TEST(RasterizedFlight, HasTheClassesAndNormalsOfItsPlanes) {
  const TemporaryFolder folder;
  SimulationSettings options = smallFlight();
  options.points = 200'000;
  options.height = 150.0;  // half a point per square metre
  make(folder.path(), options);
  rasterize(folder / "strip_01.kx", folder / "raster.kx");
  const Shares shares = sharesOf(folder.path(), "strip_01", planarOf(folder / "raster.kx"));
  // What is left out lies within a neighbourhood's reach of an edge of its plane.
  EXPECT_GT(shares.surface, 0.75 * shares.points);
  EXPECT_GT(shares.rightClass, 0.995 * shares.surface);
  EXPECT_GT(shares.rightNormal, 0.995 * shares.surface);
}

}  // namespace
