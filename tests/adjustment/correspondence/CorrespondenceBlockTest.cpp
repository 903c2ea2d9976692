// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <random>

#include <gmock/gmock.h>

#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/CorrespondenceBlock.h>

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using Strandel::Bundle, Strandel::Grid;
using testing::ElementsAre, testing::HasSubstr, testing::StartsWith;
using Velorn::CorrespondenceBlock, Velorn::SphericalBeing;

namespace {

SphericalBeing randomBeing(std::mt19937_64& random) {
  std::uniform_real_distribution<double> metre(-1e6, 1e6);
  const auto next = [&] { return metre(random); };
  return {{next(), next(), next()}, {next(), -0.0, 1e-310},   next(),
          {next(), next(), next()}, {next(), next(), next()}, static_cast<std::uint8_t>(random())};
}

/// Blocks in a folder, and what the console was told.
class Blocks : public testing::Test {
 protected:
  CorrespondenceBlock saved(std::size_t count, bool groundTruth = false) {
    CorrespondenceBlock block(path, groundTruth, 2318, 2319, storage);
    std::mt19937_64 random(3);
    for (std::size_t k = 0; k < count; ++k) {
      records.emplace_back(randomBeing(random), randomBeing(random));
      block.add(records.back().first, records.back().second);
    }
    EXPECT_EQ(block.save(), "");
    return block;
  }

  CorrespondenceBlock load() const { return {path, storage}; }

  /// Changes a saved file as another program could have written it.
  void change(const std::function<void(Bundle&)>& action) {
    Bundle bundle;
    ASSERT_EQ(storage->load(path, bundle), "");
    action(bundle);
    ASSERT_EQ(storage->save(bundle, path, "wd"), "");
  }

  void expectRecords(const CorrespondenceBlock& block) const {
    EXPECT_EQ(block.errorText(), "");
    ASSERT_EQ(block.size(), records.size());
    for (std::uint32_t k = 0; k < block.size(); ++k) EXPECT_EQ(block.get(k), records[k]) << k;
  }

  TemporaryFolder folder;
  std::filesystem::path path = folder / "c0_1.kx";
  std::shared_ptr<Strandel::MyStorage> storage = std::make_shared<Strandel::MyStorage>(0, 0, 1, 1);
  std::vector<std::pair<SphericalBeing, SphericalBeing>> records;
  ConsoleLines console;
};

Grid& grid(Bundle& bundle, const char* name = "Grid_I") {
  return *bundle.slice(0)->grid(name);
}

/// Appends a second fragment that repeats the first, to all columns of a grid but one.
void repeatFragment(Grid& grid, const std::string& except, std::uint32_t number = 1) {
  const auto repeat = [&]<typename T>(Strandel::Field& field, T) {
    ASSERT_EQ(field.setValues<T>({number}, field.values<T>({0}).values), "");
  };
  for (const auto& [name, field] : grid.cartesian()->fields()) {
    if (name == except) continue;
    if (field->valueType() == Strandel::ValueType::Double) repeat(*field, double());
    if (field->valueType() == Strandel::ValueType::Point) repeat(*field, point());
    if (field->valueType() == Strandel::ValueType::Vector) repeat(*field, vector());
    if (field->valueType() == Strandel::ValueType::UInt8) repeat(*field, std::uint8_t());
  }
}

}  // namespace

TEST_F(Blocks, KeepEveryRecordBitByBitThroughTheFile) {
  for (const bool groundTruth : {false, true}) {
    records.clear();
    expectRecords(saved(50, groundTruth));
    const auto block = load();
    expectRecords(block);
    EXPECT_EQ(block.isGroundTruth(), groundTruth);
    EXPECT_FALSE(block.sideI().groundTruth);
    EXPECT_EQ(block.sideJ().groundTruth, groundTruth);
    EXPECT_EQ(block.sideI().weekNumber, 2318U);
    EXPECT_EQ(block.sideJ().weekNumber, 2319U);
  }
}

TEST_F(Blocks, LieInTheFileAsOtherProgramsExpectThem) {
  saved(2, true);
  Bundle bundle;
  ASSERT_EQ(storage->load(path, bundle), "");
  for (const char* name : {"Grid_I", "GroundTruth"}) {
    ASSERT_TRUE(bundle.slice(0)->grid(name)) << name;
    std::vector<std::string> names;
    for (const auto& [field, unused] : grid(bundle, name).cartesian()->fields())
      names.push_back(field);
    EXPECT_THAT(names, ElementsAre("Classification", "DirectionDelta", "GPSTime", "NormalVector",
                                   "Positions", "ScannerCoordiantes"));
  }
  EXPECT_EQ(bundle.slice(0)->numberOfGrids(), 2U);
  EXPECT_EQ(grid(bundle).attributes().unsigned32("weeknumber"), 2318U);
}

TEST_F(Blocks, WithoutCorrespondencesWriteNothing) {
  saved(0);
  EXPECT_FALSE(std::filesystem::exists(path));
  CorrespondenceBlock none;
  EXPECT_EQ(none.size(), 0U);
  EXPECT_EQ(none.save(), "");
  none.add({}, {});
  EXPECT_THAT(none.save(), HasSubstr("no storage"));
}

TEST_F(Blocks, GrowAfterSavingAndLoading) {
  auto block = saved(3);
  for (int times = 0; times < 2; ++times) {
    std::mt19937_64 random(4);
    records.emplace_back(randomBeing(random), randomBeing(random));
    block.add(records.back().first, records.back().second);
    ASSERT_EQ(block.save(), "");
    block = load();
    expectRecords(block);
  }
}

TEST_F(Blocks, ThatLackSomethingSayWhatAndAreNotSavedOverTheirFile) {
  const std::string side = "SphericalBeingData::SphericalBeingData: ";
  const std::string file = "CorrespondenceBlock::load: cannot load grid for file " + path.string();
  const auto without = [](const std::vector<std::string>& names, const char* of = "Grid_I") {
    return [=](Bundle& bundle) {
      for (const auto& name : names) {
        grid(bundle, of).cartesian()->removeField(name);
        grid(bundle, of).attributes().remove(name);
      }
    };
  };
  const auto removed = [](const std::vector<std::string>& names) {
    return [=](Bundle& bundle) {
      for (const auto& name : names) bundle.slice(0)->removeGrid(name);
    };
  };
  struct Case {
    std::function<void(Bundle&)> change;
    std::string error;
  };
  const std::vector<Case> cases{
      {without({"Positions", "NormalVector"}), side + "No field forPositions"},
      {without({"NormalVector", "weeknumber"}), side + "No field forNormalVector"},
      {without({"weeknumber", "GPSTime"}), side + "No weeknumber"},
      {without({"GPSTime", "ScannerCoordiantes"}), side + "No field forGPSTime"},
      {without({"ScannerCoordiantes", "DirectionDelta"}), side + "No field forScannerCoordiantes"},
      {without({"DirectionDelta", "Classification"}), side + "No field forDirectionDelta"},
      {without({"Classification"}, "Grid_J"), side + "No field forClassification"},
      {removed({"Grid_I"}), side + "No grid"},
      {removed({"Grid_J"}), file},
      {removed({"Grid_I", "Grid_J"}), file},
      {[](Bundle& bundle) { bundle = Bundle(); }, file},
      {[](Bundle& bundle) { grid(bundle).removeChart(Strandel::worldChartName); }, side + "No rep"},
      {[](Bundle& bundle) { grid(bundle).attributes().set("weeknumber", std::int64_t{-1}); },
       side + "No weeknumber"},
      {[](Bundle& bundle) { grid(bundle).cartesian()->field("GPSTime")->setAbsent({0}); },
       side + "No Chunk for GPSTime"},
      {[](Bundle& bundle) {
         const auto normals =
             grid(bundle).cartesian()->makeField("NormalVector", Strandel::ValueType::Point);
         ASSERT_EQ(normals->setValues<point>({0}, std::vector<point>(4)), "");
       },
       side + "No field forNormalVector"},
      {[](Bundle& bundle) { repeatFragment(grid(bundle), "GPSTime"); },
       "CorrespondenceBlock::load: " + path.string() +
           ": Grid_I: GPSTime holds 4 values in 1 fragments, Positions 8 in 2"}};
  for (const auto& [action, error] : cases) {
    saved(4);
    change(action);
    const auto before = contentOf(path);
    auto block = load();
    EXPECT_EQ(block.errorText(), error);
    EXPECT_THAT(block.save(), HasSubstr(error));
    EXPECT_EQ(contentOf(path), before);
    EXPECT_THROW(block.get(4), std::out_of_range) << error;
    EXPECT_THAT(block.sideI().toText() + block.sideJ().toText(), StartsWith("Index"));
  }
}

TEST_F(Blocks, ThatCannotBeOpenedSaySoAndTheConsoleSaysWhy) {
  const auto whole = (saved(4), contentOf(path));
  const std::vector<std::pair<std::string, std::string>> files{
      {"empty", ""}, {"foreign", "no container"}, {"cut", whole.substr(0, whole.size() / 2)}};
  for (const auto& [name, content] : files) writeContent(folder / name, content);
  for (const char* name : {"empty", "foreign", "cut", "missing", "."}) {
    console.clear();
    const CorrespondenceBlock block(folder / name, storage);
    EXPECT_EQ(block.errorText(),
              "CorrespondenceBlock::load: cannot load file " + (folder / name).string());
    EXPECT_EQ(block.size(), 0U);
    EXPECT_THAT(console, ElementsAre(testing::AllOf(StartsWith("myGlobalBP:  failure: "),
                                                    HasSubstr((folder / name).string()))));
  }
  EXPECT_THAT(CorrespondenceBlock(path, nullptr).errorText(), HasSubstr("cannot load file"));
}

TEST_F(Blocks, WithADamagedValueNameFileAndColumn) {
  saved(1000);
  auto bytes = contentOf(path);
  double time = records[500].second.gpsTime;
  const auto place = bytes.find(std::string(reinterpret_cast<const char*>(&time), sizeof(time)));
  ASSERT_NE(place, std::string::npos);
  bytes[place] = static_cast<char>(bytes[place] ^ 1);
  writeContent(path, bytes);
  const auto block = load();
  EXPECT_THAT(block.errorText(), StartsWith("SphericalBeingData::SphericalBeingData: "));
  EXPECT_THAT(block.errorText(), HasSubstr(path.string() + ": /0/Grid_J"));
  EXPECT_THAT(block.errorText(), HasSubstr("GPSTime"));
}

TEST_F(Blocks, InSeveralFragmentsAreReadInOrderAndSavedAsOne) {
  saved(3);
  change([](Bundle& bundle) {
    for (const char* name : {"Grid_I", "Grid_J"}) repeatFragment(grid(bundle, name), "", 5);
    grid(bundle).cartesian()->field("GPSTime")->attributes().set("origin", std::string("foreign"));
  });
  const auto once = records;
  records.insert(records.end(), once.begin(), once.end());
  auto block = load();
  expectRecords(block);
  ASSERT_EQ(block.save(), "");
  expectRecords(load());
  change([](Bundle& bundle) {
    const auto times = grid(bundle).cartesian()->field("GPSTime");
    EXPECT_EQ(times->fragments().size(), 1U);
    EXPECT_EQ(times->attributes().text("origin"), "foreign");
  });
}

TEST_F(Blocks, OfFragmentsWithOtherNumbersAreNotPairedByTheirSums) {
  saved(3);
  change([](Bundle& bundle) {
    const auto times = grid(bundle).cartesian()->field("GPSTime");
    ASSERT_EQ(times->setValues<double>({1}, times->values<double>({0}).values), "");
    times->setAbsent({0});
  });
  EXPECT_THAT(load().errorText(), HasSubstr("of other numbers"));
}

TEST_F(Blocks, WithSidesOfUnequalLengthLoadAndGuardTheShorterOne) {
  saved(3);
  change([](Bundle& bundle) { repeatFragment(grid(bundle), ""); });
  const auto block = load();
  EXPECT_EQ(block.errorText(), "");
  EXPECT_EQ(block.size(), 6U);
  EXPECT_EQ(block.sideJ().size(), 3U);
  EXPECT_EQ(block.get(2), records[2]);
  try {
    block.get(3);
    FAIL();
  } catch (const std::out_of_range& error) {
    EXPECT_EQ(std::string(error.what()),
              "CorrespondenceBlock::get: " + path.string() + ": index 3, the sides hold 6 and 3");
  }
}

TEST_F(Blocks, AreDumpedAsATableOfEachSide) {
  CorrespondenceBlock block(path, true, 1, 1, storage);
  block.add({}, {{1, -2.0004, 3e6}, {0.0005, 5, 6}, 7.1239, {0, 0, 1}, {-0.1, 0, 0.25}, 10});
  const std::string head =
      "Index\tGPSTime\t\tWorld_XYZ\t\tScanner_"
      "XYZ\t\tNormalVector\t\tDirectionDelta\tClassification\n" +
      std::string(104, '-') + "\n";
  EXPECT_EQ(block.sideJ().toText(),
            head +
                "0\t7.124\t(1.000, -2.000, 3000000.000)\t(0.001, 5.000, 6.000)\t"
                "(0.000, 0.000, 1.000)\t(-0.100, 0.000, 0.250)\t10, 1 \n");
  EXPECT_THAT(block.sideI().toText(), testing::EndsWith("\t0, 0 \n"));
}
