// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <functional>

#include <gmock/gmock.h>

#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/DataBlock.h>

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using Strandel::FragmentId, Strandel::ValueType;
using testing::ElementsAre, testing::IsEmpty, testing::SizeIs;
using Velorn::DataBlock;

namespace {

const std::string prefix = "DataBlock::getData: ";

std::shared_ptr<FragmentId> fragment(std::uint32_t number) {
  return std::make_shared<FragmentId>(FragmentId{number});
}

/// Values that tell field and fragment: `first`, then one more each.
template <typename T>
void fill(Strandel::Chart& chart, const char* name, int first) {
  const auto field = chart.makeField(name, Strandel::valueTypeOf<T>());
  for (const std::uint32_t number : {0U, 1U}) {
    std::vector<T> values;
    for (int last = first + (number == 0 ? 3 : 2); first < last; ++first) {
      if constexpr (sizeof(T) == 3 * sizeof(double)) {
        values.push_back({static_cast<double>(first), 0, 0});
      } else {
        values.push_back(static_cast<T>(first));
      }
    }
    EXPECT_EQ(field->template setValues<T>({number}, std::move(values)), "");
  }
}

/// A strip of a fragment 0 with three points and a fragment 1 with two.
class Attributes : public testing::Test {
 protected:
  Attributes() {
    fill<point>(*world, "Positions", 0);
    fill<vector>(*world, "NormalVector", 10);
    fill<double>(*world, "GPSTime", 20);
    fill<point>(*scanner, "Positions", 30);
    fill<std::uint8_t>(*world, "ReturnNumber", 40);
    fill<std::uint8_t>(*world, "NumberOfReturns", 50);
    fill<std::uint8_t>(*world, "Classification", 60);
    fill<vector>(*scanner, "Waveforms.DirectionDelta", 70);
    fill<double>(*world, "Amplitude", 80);
    fill<std::uint8_t>(*world, "RigorousClassification", 90);
  }

  std::string get(std::uint32_t number, bool worldOnly = false, bool rigorous = true) {
    return block.getData(*grid, fragment(number), worldOnly, rigorous);
  }
  std::string append(std::uint32_t number, bool worldOnly = false, bool rigorous = true) {
    return block.appendData(*grid, fragment(number), worldOnly, rigorous);
  }
  void expectSizes(std::size_t always, std::size_t measured, std::size_t rigorous) const {
    EXPECT_THAT(*block.world, SizeIs(always));
    EXPECT_THAT(*block.normals, SizeIs(always));
    EXPECT_THAT(*block.classes, SizeIs(always));
    EXPECT_THAT(*block.times, SizeIs(measured));
    EXPECT_THAT(*block.scanner, SizeIs(measured));
    EXPECT_THAT(*block.returnNumbers, SizeIs(measured));
    EXPECT_THAT(*block.numbersOfReturns, SizeIs(measured));
    EXPECT_THAT(*block.directionDeltas, SizeIs(measured));
    EXPECT_THAT(*block.amplitudes, SizeIs(measured));
    EXPECT_THAT(*block.rigorousClasses, SizeIs(rigorous));
  }

  Strandel::GridPtr grid = std::make_shared<Strandel::Grid>("strip");
  Strandel::ChartPtr world = grid->makeChart(Strandel::worldChartName);
  Strandel::ChartPtr scanner = grid->makeChart(Strandel::scannerChartName);
  DataBlock block;
};

}  // namespace

TEST_F(Attributes, OfOneFragmentComeFromTheirFields) {
  for (int times = 0; times < 2; ++times) {  // the second time they replace the first
    ASSERT_EQ(get(1), "");
    EXPECT_THAT(*block.world, ElementsAre(point{3, 0, 0}, point{4, 0, 0}));
    EXPECT_THAT(*block.normals, ElementsAre(vector{13, 0, 0}, vector{14, 0, 0}));
    EXPECT_THAT(*block.times, ElementsAre(23, 24));
    EXPECT_THAT(*block.scanner, ElementsAre(point{33, 0, 0}, point{34, 0, 0}));
    EXPECT_THAT(*block.returnNumbers, ElementsAre(43, 44));
    EXPECT_THAT(*block.numbersOfReturns, ElementsAre(53, 54));
    EXPECT_THAT(*block.classes, ElementsAre(63, 64));
    EXPECT_THAT(*block.directionDeltas, ElementsAre(vector{73, 0, 0}, vector{74, 0, 0}));
    EXPECT_THAT(*block.amplitudes, ElementsAre(83, 84));
    EXPECT_THAT(*block.rigorousClasses, ElementsAre(93, 94));
  }
}

TEST_F(Attributes, ThatAreMissingEndTheCallWithTheirMessage) {
  struct Case {
    Strandel::ChartPtr chart;
    const char* field;
    std::string message;
  };
  const std::vector<Case> inReverse{
      {world, "RigorousClassification", "no world RigorousClassification_C"},
      {world, "Amplitude", "no world Amplitude"},
      {scanner, "Waveforms.DirectionDelta", "no scanner  Waveforms.DirectionDelta"},
      {world, "Classification", "no world Classification"},
      {world, "NumberOfReturns", "no world NumberOfReturns"},
      {world, "ReturnNumber", "no world ReturnNumber"},
      {scanner, "Positions", "no scaner Positions"},
      {world, "GPSTime", "no world GPSTime"},
      {world, "NormalVector", "no world NormalVector"},
      {world, "Positions", "no world Positions for file strip"}};
  for (const auto& [chart, name, message] : inReverse) {  // so each is the first of those missing
    const auto field = chart->field(name);
    chart->removeField(name);
    EXPECT_EQ(get(0), prefix + message);
    chart->makeField(name, ValueType::Int64)
        ->setValues<std::int64_t>({0}, std::vector<std::int64_t>(3));
    EXPECT_EQ(get(0), prefix + message) << "another type";
    chart->makeField(name, field->valueType())->setAbsent({0});
    EXPECT_EQ(get(0), prefix + message) << "an absent chunk";
    EXPECT_EQ(append(0), prefix + message);
  }
  grid->removeChart(Strandel::worldChartName);
  for (const bool flag : {false, true}) EXPECT_EQ(get(0, flag, flag), prefix + "no WorldChart");
}

TEST_F(Attributes, OfTheWorldAloneNeedNeitherScannerNorClassification) {
  grid->removeChart(Strandel::scannerChartName);
  EXPECT_EQ(get(0), prefix + "no scaner Positions");
  EXPECT_EQ(get(0, true, false), "");
  expectSizes(3, 0, 0);
  EXPECT_EQ(get(0, true, true), "");
  expectSizes(3, 0, 3);
  world->removeField("Classification");
  EXPECT_EQ(get(0, true, false), "");
  EXPECT_THAT(*block.classes, IsEmpty());
}

TEST_F(Attributes, ReadBeforeAMissStay) {
  world->removeField("Amplitude");
  ASSERT_NE(get(0), "");
  EXPECT_THAT(*block.directionDeltas, SizeIs(3));
  EXPECT_THAT(*block.amplitudes, IsEmpty());
}

TEST_F(Attributes, OfFragmentsThatDoNotExistAreMissing) {
  EXPECT_EQ(get(7), prefix + "no world Positions for file strip");
  EXPECT_EQ(block.getData(*grid, nullptr, true, false),
            prefix + "no world Positions for file strip");
}

TEST_F(Attributes, OfUnequalLengthAreRefused) {
  ASSERT_EQ(world->field("Amplitude")->setValues<double>({0}, std::vector<double>(2)), "");
  EXPECT_EQ(get(0), prefix + "Amplitude has 2 values, 3 points");
}

TEST_F(Attributes, AreConcatenatedAndLeaveTheGridAsItWas) {
  ASSERT_EQ(append(1), "");
  ASSERT_EQ(append(0), "");
  ASSERT_EQ(append(1), "");
  EXPECT_THAT(*block.times, ElementsAre(23, 24, 20, 21, 22, 23, 24));
  expectSizes(7, 7, 7);
  EXPECT_THAT(*world->field("GPSTime")->values<double>({1}).values, ElementsAre(23, 24));
}

TEST_F(Attributes, ThatCannotBeAppendedLeaveTheBlockAsItWas) {
  ASSERT_EQ(get(1), "");
  for (const auto& [worldOnly, rigorous] : {std::pair{true, true}, {false, false}}) {
    EXPECT_THAT(append(0, worldOnly, rigorous), testing::HasSubstr("fragments before only"));
    expectSizes(2, 2, 2);
  }
  world->field("RigorousClassification")->setAbsent({0});
  EXPECT_EQ(append(0), prefix + "no world RigorousClassification_C");
  expectSizes(2, 2, 2);
}

TEST_F(Attributes, WithoutClassificationInOneFragmentStayInStep) {
  world->field("Classification")->setAbsent({0});
  for (const std::uint32_t number : {0U, 1U, 0U}) ASSERT_EQ(append(number, true, false), "");
  EXPECT_THAT(*block.classes, ElementsAre(0, 0, 0, 63, 64, 0, 0, 0));
}

TEST(Positions, AreThoseOfTheOneGridOrOfTheNamedOne) {
  const TemporaryFolder folder;
  ConsoleLines console;
  Velorn::InputParameter parameter;
  parameter.GridName = "b";
  const auto loaded = [&](const std::string& name,
                          const std::function<void(Strandel::Slice&)>& make) {
    console.clear();
    Strandel::Bundle bundle;
    if (make) make(*bundle.makeSlice(0));
    EXPECT_EQ(parameter.Storage->save(bundle, folder / name, "wd"), "");
    return *Velorn::loadPositions(folder / name, parameter);
  };
  const auto says = [&](const std::string& name, const std::string& what) {
    return ElementsAre("loadPositions: file " + (folder / name).string() + what);
  };
  const auto addGrid = [](Strandel::Slice& slice, const char* name, int first) {
    fill<point>(*slice.makeGrid(name)->makeChart(Strandel::worldChartName), "Positions", first);
  };
  const auto onlyA = [&](Strandel::Slice& slice) { addGrid(slice, "a", 1); };
  const auto both = [&](Strandel::Slice& slice) {
    addGrid(slice, "a", 1);
    addGrid(slice, "b", 6);
  };

  EXPECT_THAT(loaded("one", onlyA), SizeIs(5));
  const auto named = loaded("two", both);
  ASSERT_THAT(named, SizeIs(5));
  EXPECT_EQ(named.back(), (point{10, 0, 0}));
  EXPECT_THAT(console, IsEmpty());

  DataBlock block;  // a grid from a file is named by the file
  Strandel::Bundle bundle;
  ASSERT_EQ(parameter.Storage->load(folder / "one", bundle), "");
  EXPECT_EQ(block.getData(*bundle.grids().front(), fragment(2), true, false),
            prefix + "no world Positions for file " + (folder / "one").string());

  parameter.GridName = "c";
  EXPECT_THAT(loaded("other", both), IsEmpty());
  EXPECT_THAT(console, says("other", " has no positions"));
  EXPECT_THAT(loaded("chartless", [](auto& slice) { slice.makeGrid("a"); }), IsEmpty());
  EXPECT_THAT(console, says("chartless", " has no positions"));
  const std::function<void(Strandel::Slice&)> noSlice, emptySlice = [](Strandel::Slice&) {};
  for (const auto& content : {noSlice, emptySlice}) {
    EXPECT_THAT(loaded("gridless", content), IsEmpty());
    EXPECT_THAT(console, says("gridless", " has NumberOfGrids = 0"));
  }
  console.clear();
  EXPECT_THAT(*Velorn::loadPositions(folder / "none", parameter), IsEmpty());
  ASSERT_THAT(console, SizeIs(2));
  EXPECT_THAT(console[0], testing::StartsWith("myGlobalBP:  failure: "));
  EXPECT_EQ(console[1], "loadPositions: file " + (folder / "none").string() + " is null");
  parameter.Storage = nullptr;
  EXPECT_THAT(*Velorn::loadPositions(folder / "one", parameter), IsEmpty());
}
