// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>

#include <fmt/format.h>

#include "tests/adjustment/georef/StripsToGeoreference.h"

using namespace Strandel;
using testing::Contains, testing::StartsWith;
namespace fs = std::filesystem;

namespace {

constexpr const char* noSection = "Error in scanner2world: Code: 2";
// 299702547 * 1, as the strip has them.
constexpr double directionLength = 149851273.5;

const std::vector<std::pair<std::string, std::string>> computed{
    {worldChartName, "Positions"}, {scannerChartName, "Waveforms.DirectionDelta"}};
const std::vector<std::pair<std::string, std::string>> recomputed{{scannerChartName, "Positions"}};

class StripGeoreferencing : public StripsToGeoreference {
 protected:
  void expectWorldPoints(const Bundle& result, const Bundle& strip, double length) const {
    for (const std::uint32_t fragment : {0U, 1U}) {
      const auto points = expected(strip, fragment, length);
      EXPECT_EQ(points.message, "");
      EXPECT_EQ(valuesOf<point>(worldChart(result), "Positions", fragment), points.world);
      EXPECT_EQ(valuesOf<vector>(scannerChart(result), "Waveforms.DirectionDelta", fragment),
                points.directions);
    }
  }
};

/// The stored range, and the same from the data.
void expectTrueRange(const Field& field) {
  ASSERT_TRUE(field.storedRange()) << field.name();
  Field fresh(field.name(), field.valueType());
  for (const auto fragment : field.fragments()) {
    if (field.valueType() == ValueType::Point) {
      fresh.setValues(fragment, field.values<Geomra::PhysicalSpace::point>(fragment).values);
    } else {
      fresh.setValues(fragment, field.values<Geomra::PhysicalSpace::vector>(fragment).values);
    }
  }
  EXPECT_EQ(field.storedRange()->minimum, fresh.range().range->minimum) << field.name();
  EXPECT_EQ(field.storedRange()->maximum, fresh.range().range->maximum) << field.name();
}

}  // namespace

TEST_F(StripGeoreferencing, GivesTheWorldPointsOfThePointListAndLeavesAllElseAsItWas) {
  auto strip = measuredStrip();
  const auto file = save(strip);
  const std::string before = contentOf(fs::path(file));
  for (const int storageMode : {0, 1}) {
    ASSERT_EQ(georeference(file, out, false, storageMode), "");  // the second replaces the first
    const auto result = load(output);
    expectWorldPoints(result, strip, directionLength);
    for (const auto& [chart, field] : computed) {
      expectTrueRange(*grid(result)->chart(chart)->field(field));
    }
    EXPECT_EQ(worldChart(result)->field("GPSTime"), scannerChart(result)->field("GPSTime"));
    EXPECT_EQ(worldChart(result)->field("Positions")->attributes().text("Unit"), "m");
    EXPECT_EQ(contentWithout(load(output), computed), contentWithout(load(file), computed));
  }
  EXPECT_TRUE(contentOf(fs::path(file)) == before);
  EXPECT_EQ(filesInFolder(), 4U);  // trajectory, folder, strip and output
  ASSERT_EQ(georeference(file, ""), "");
  EXPECT_EQ(intactContentOf(load(file)), intactContentOf(load(output)));
  EXPECT_EQ(filesInFolder(), 4U);
  EXPECT_TRUE(console.empty());
}

TEST_F(StripGeoreferencing, InvertedGivesTheScannerPointsOfThePointListAndMarksThem) {
  auto strip = measuredStrip();
  scannerChart(strip)->field("Positions")->attributes().remove("ScannerCoordsModified");
  const auto file = save(strip);
  ASSERT_EQ(georeference(file, ""), "");
  for (const auto& outputFolder : {out, std::string()}) {
    const auto georeferenced = load(file);
    ASSERT_EQ(georeference(file, outputFolder, true), "");
    const auto result = load(outputFolder.empty() ? fs::path(file) : output);
    for (const std::uint32_t fragment : {0U, 1U}) {
      const auto world = valuesOf<point>(worldChart(georeferenced), "Positions", fragment);
      std::vector<point> scanner(world.size());
      Velorn::world2scanner(parameters, trajectory, scanner,
                            valuesOf<double>(scannerChart(strip), "GPSTime", fragment), 2318, 0,
                            world);
      EXPECT_EQ(valuesOf<point>(scannerChart(result), "Positions", fragment), scanner);
    }
    const auto positions = scannerChart(result)->field("Positions");
    EXPECT_EQ(positions->attributes().integer("ScannerCoordsModified"), 1);
    expectTrueRange(*positions);
    EXPECT_EQ(contentWithout(result, recomputed), contentWithout(georeferenced, recomputed));
  }
}

TEST_F(StripGeoreferencing, DirectionsHaveHalfTheLengthThatLightGoesInASampleAt32Bits) {
  struct Case {
    std::optional<std::int64_t> velocity, interval;
    double length;
  };
  for (const Case& with :
       {Case{299702547, 1, directionLength}, Case{{}, 1, 0.0}, Case{299702547, {}, 0.0},
        Case{4294967295, 3, 2147483646.5}, Case{65536, 65536, 0.0}}) {
    auto strip = measuredStrip();
    auto& attributes = grid(strip)->waveforms()->attributes() = {};
    if (with.velocity) attributes.set("Scanner Group Velocity", *with.velocity);
    if (with.interval) attributes.set("WaveformSampleInterval", *with.interval);
    ASSERT_EQ(georeference(save(strip), out), "");
    expectWorldPoints(load(output), strip, with.length);
  }
}

TEST_F(StripGeoreferencing, EveryFaultHasItsMessageAndItsFileAndTheStripIsSavedAsItWas) {
  struct Case {
    bool inverse;
    std::string message;
    std::function<void(Bundle&)> spoil;
  };
  const auto file = (folder / "a.kx").string();
  const std::vector<Case> cases{
      {false, "scanner2world, have more than one grid",
       [](Bundle& b) { b.makeSlice(1)->makeGrid("other"); }},
      {false, "scanner2world, have no grid", [](Bundle& b) { b.slice(0)->removeGrid("strip"); }},
      {false, "scanner2world: Have no WeekNumber attribute for this strip",
       [](Bundle& b) { grid(b)->attributes().set("WeekNumber", std::int64_t{-1}); }},
      {true, "The weeknumber 2319of strip name " + file + "(0)is not part of the trajectory",
       [](Bundle& b) { grid(b)->attributes().set("WeekNumber", std::int64_t{2319}); }},
      {true, "scanner2world: Have no scanner_chart",
       [](Bundle& b) { grid(b)->removeChart(scannerChartName); }},
      {false,
       "scanner2world: " + file +
           ": the attribute WaveformSampleInterval is -4, outside 0 to 4294967295",
       [](Bundle& b) {
         grid(b)->waveforms()->attributes().set("WaveformSampleInterval", std::int64_t{-4});
       }},
      {false, "scanner2world: Have no ScannerCoordsF",
       [](Bundle& b) { scannerChart(b)->removeField("Positions"); }},
      {true, "scanner2world: Have no ScannerCoordsF",
       [](Bundle& b) { scannerChart(b)->makeField("Positions", ValueType::Vector); }},
      {false, "scanner2world: Have no scanner chunks!",
       [](Bundle& b) {
         for (const auto& [name, chart] : grid(b)->charts()) chart->removeField("GPSTime");
       }},
      {false, "scanner2world: Have no scanner chunks!",
       [](Bundle& b) {
         scannerChart(b)->removeField("Positions");
         scannerChart(b)->makeField("Positions", ValueType::Point);
       }},
      {false, "scanner2world: Have no scanner-coords chunk!",
       [](Bundle& b) {
         for (const std::uint32_t i : {0U, 1U}) scannerChart(b)->field("Positions")->setAbsent({i});
       }},
      {true, "scanner2world: Have no world chunks!",
       [](Bundle& b) { worldChart(b)->removeField("Positions"); }},
      {true, "scanner2world: Have no world chunks!",
       [](Bundle& b) { grid(b)->removeChart(worldChartName); }},
      {true, "worldToScannerCoordinates: Have no chunks!", [](Bundle& b) {
         for (const std::uint32_t i : {0U, 1U}) worldChart(b)->field("Positions")->setAbsent({i});
       }}};
  for (const auto& [inverse, message, spoil] : cases) {
    SCOPED_TRACE(message);
    fs::remove(output);
    auto strip = measuredStrip();
    spoil(strip);
    save(strip);
    EXPECT_EQ(georeference(file, out, inverse), message);
    EXPECT_EQ(contentOf(errorFile), fmt::format("{}: {}", file, message));
    EXPECT_EQ(intactContentOf(load(output)), intactContentOf(load(file)));
  }
}

TEST_F(StripGeoreferencing, AStripWithACodeIsSavedWithItsPointsAndLosesItsErrorFileOnceItIsRight) {
  auto strip = measuredStrip();
  auto times = valuesOf<double>(scannerChart(strip), "GPSTime", 0);
  times[5] = -1;
  scannerChart(strip)->field("GPSTime")->setValues<double>({0}, times);
  const auto file = save(strip);
  EXPECT_EQ(georeference(file, out), noSection);
  EXPECT_EQ(contentOf(errorFile), file + ": " + noSection);
  const auto result = load(output);
  const auto points = expected(strip, 0, directionLength);
  EXPECT_EQ(points.message, noSection);
  EXPECT_EQ(valuesOf<point>(worldChart(result), "Positions", 0), points.world);
  EXPECT_EQ(valuesOf<point>(worldChart(result), "Positions", 1),
            expected(strip, 1, directionLength).world);

  strip = measuredStrip();
  save(strip);
  EXPECT_EQ(georeference(file, out), "");
  EXPECT_FALSE(fs::exists(errorFile));
}

TEST_F(StripGeoreferencing, TheLastFragmentWithAFaultGivesTheMessageAndTheOthersTheirPoints) {
  auto strip = measuredStrip();
  scannerChart(strip)->field("GPSTime")->setValues<double>({0}, std::vector<double>(60, -1.0));
  scannerChart(strip)->field("Positions")->setAbsent({1});
  const auto file = save(strip);
  EXPECT_EQ(georeference(file, ""), "scanner2world: Have no scanner-coords chunk!");
  EXPECT_TRUE(fs::exists(folder / "ERROR_SCANNER2WORLD_a.txt"));
  const auto result = load(file);
  EXPECT_EQ(valuesOf<point>(worldChart(result), "Positions", 0),
            expected(strip, 0, directionLength).world);
  EXPECT_EQ(valuesOf<point>(worldChart(result), "Positions", 1),
            valuesOf<point>(worldChart(strip), "Positions", 1));
}

TEST_F(StripGeoreferencing, WorldPointsOfAFragmentWithoutScannerPointsAreNotPassedOver) {
  auto strip = measuredStrip();
  worldChart(strip)->field("Positions")->setValues<point>({2}, {{1, 2, 3}});
  EXPECT_EQ(georeference(save(strip), out), "scanner2world: Have no scanner-coords chunk!");
  expectWorldPoints(load(output), strip, directionLength);
}

TEST_F(StripGeoreferencing, PointsThatCannotBeComputedAtAllKeepTheOldOnes) {
  parameters = Velorn::SolverParameters();
  auto strip = measuredStrip();
  const auto file = save(strip);
  EXPECT_THAT(georeference(file, ""), StartsWith("scanner2world: "));
  EXPECT_EQ(intactContentOf(load(file)), intactContentOf(strip));
}

TEST_F(StripGeoreferencing, MakesFieldsThatAreMissingOrOfAnotherType) {
  auto bare = measuredStrip(), other = measuredStrip();
  grid(bare)->removeChart(worldChartName);
  scannerChart(bare)->removeField("Waveforms.DirectionDelta");
  worldChart(other)->removeField("Positions");
  worldChart(other)
      ->makeField("Positions", ValueType::Double)
      ->setValues<double>({0}, std::vector<double>(60));
  scannerChart(other)->removeField("GPSTime");  // the world chart has it
  for (auto* strip : {&bare, &other}) {
    ASSERT_EQ(georeference(save(*strip), out), "");
    expectWorldPoints(load(output), measuredStrip(), directionLength);
  }
}

TEST_F(StripGeoreferencing, PointsThatBothChartsLinkToAreNotOverwritten) {
  auto strip = measuredStrip();
  worldChart(strip)->shareField(scannerChart(strip)->field("Positions"));
  for (const bool inverse : {false, true}) {
    ASSERT_EQ(georeference(save(strip), out, inverse), "");
    const auto result = load(output);
    const auto& kept = inverse ? worldChart(result) : scannerChart(result);
    const auto& made = inverse ? scannerChart(result) : worldChart(result);
    for (const std::uint32_t i : {0U, 1U}) {
      const auto points = valuesOf<point>(scannerChart(strip), "Positions", i);
      EXPECT_EQ(valuesOf<point>(kept, "Positions", i), points);
      EXPECT_NE(valuesOf<point>(made, "Positions", i), points);
    }
  }
}

TEST_F(StripGeoreferencing, AStripOfNoPointsStaysOne) {
  auto strip = smallStrip(0);
  const auto file = save(strip);
  for (const bool inverse : {false, true}) {
    EXPECT_EQ(georeference(file, out, inverse), "");
    EXPECT_EQ(worldChart(load(output))->field("Positions")->size(), 0U);
  }
}

TEST_F(StripGeoreferencing, CountsCoordinatesThatAreNotFinite) {
  auto strip = measuredStrip();
  const auto spoil = [](const FieldPtr& field, std::uint32_t fragment, std::size_t place) {
    auto points = *field->values<point>({fragment}).values;
    points[place].y = std::numeric_limits<double>::quiet_NaN();
    points[place + 1].z = std::numeric_limits<double>::infinity();
    field->setValues<point>({fragment}, std::move(points));
  };
  for (const std::uint32_t i : {0U, 1U}) spoil(scannerChart(strip)->field("Positions"), i, 3);
  spoil(worldChart(strip)->field("Positions"), 1, 7);
  const auto file = save(strip);
  EXPECT_EQ(georeference(file, out), "Error in scanner2world: Code: 3");
  EXPECT_THAT(console,
              Contains("scanner2world: " + file + ": 4 of 90 scanner points are not finite"));
  const auto world = valuesOf<point>(worldChart(load(output)), "Positions", 1);
  EXPECT_EQ(std::count_if(world.begin(), world.end(), [](auto p) { return std::isfinite(p.x); }),
            28);
  georeference(file, out, true);
  EXPECT_THAT(console,
              Contains("scanner2world: " + file + ": 2 of 90 world points are not finite"));
}
