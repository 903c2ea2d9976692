// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "tests/flight/exchange/ExportedFlight.h"

namespace {

std::vector<std::string> recordsIn(const LasFile& file) {
  std::vector<std::string> records;
  const std::size_t size = file.header().recordLength;
  file.readBytes([&](std::uint64_t, std::uint64_t count, const char* bytes) {
    for (std::size_t k = 0; k < count; ++k) records.emplace_back(bytes + k * size, size);
  });
  return records;
}

std::vector<point> placesIn(const LasFile& file) {
  std::vector<point> places;
  file.read([&](std::uint64_t, std::span<const LasPoint> points) {
    for (const auto& one : points) places.push_back(one.place);
  });
  return places;
}

TEST_F(ExportedFlight, BecomesLasFilesThatDifferFromTheirSourcesByTheAdjustedCoordinatesAlone) {
  const auto report = done();
  ASSERT_EQ(report.files.size(), 2U);  // without an adjustment nothing but the strips
  for (const std::string name : {"a", "b"}) {
    const LasFile source(folder / (name + ".las")), made(options.output / (name + ".las"));
    const auto before = recordsIn(source), after = recordsIn(made);
    ASSERT_EQ(after.size(), 200U);
    constexpr std::size_t coordinates = 12;
    for (std::size_t k = 0; k < after.size(); ++k) {
      EXPECT_EQ(after[k].substr(coordinates), before[k].substr(coordinates));
    }
    const GridFile strip(folder / ("05_adjusted/" + name + "_SA.kx"));
    const auto index = strip.world<std::uint64_t>("SourceIndex").whole();
    const auto adjusted = strip.world<point>("Positions").whole();
    const auto was = placesIn(source), is = placesIn(made);
    for (std::size_t k = 0; k < index->size(); ++k) {
      const vector moved = is[(*index)[k]] - (*adjusted)[k];
      EXPECT_LE(std::max({std::abs(moved.x), std::abs(moved.y), std::abs(moved.z)}), 0.005 + 1e-9);
      EXPECT_GT(length(is[(*index)[k]] - was[(*index)[k]]), 0.5);
    }
  }
}

TEST_F(ExportedFlight, IsFoundInTheRootOfItsRun) {
  takeRoot();
  EXPECT_EQ(done().files.size(), 6U);
  const auto trajectory = contentOf(options.output / "trajectory.txt");
  // Mounting and trajectory need no adjusted strips.
  state.isGeoreferenced = false;
  state.write(folder.path());
  EXPECT_THAT(refusal(), HasSubstr("05_adjusted: holds no strips that the last run there has"));
  options.wishes = Wishes{false, true, true};
  options.output = folder / "no strips";
  EXPECT_EQ(done().files.size(), 4U);
  EXPECT_EQ(contentOf(options.output / "trajectory.txt"), trajectory);
  fs::remove(imported.trajectories[0]);
  EXPECT_THAT(refusal(), HasSubstr("no such file; the run used it. --trajectory names where"));
}

TEST_F(ExportedFlight, IsRefusedFromARunThatDidNotFinishThoughAnOlderModelLiesThere) {
  takeRoot();
  const auto refusalOf = [&](RunState::Phase phase) {
    state.phase = phase;
    state.write(folder.path());
    return refusal();
  };
  EXPECT_THAT(refusalOf(RunState::Phase::running),
              AllOf(HasSubstr("a run is going on there"), HasSubstr("when it has finished")));
  auto json = nlohmann::json::parse(contentOf(folder / "run.json"));
  json["process"]["start"] = "1";  // the number of its process went to this one
  writeContent(folder / "run.json", json.dump());
  const auto goesOn = AllOf(HasSubstr("was interrupted"), HasSubstr("`velorn run` goes on"));
  EXPECT_THAT(refusal(), goesOn);
  json["process"]["number"] = 1 << 30;
  writeContent(folder / "run.json", json.dump());
  EXPECT_THAT(refusal(), goesOn);
  EXPECT_THAT(refusalOf(RunState::Phase::interrupted), goesOn);
  state.message = "the disk is full";
  EXPECT_THAT(refusalOf(RunState::Phase::failed),
              AllOf(HasSubstr("failed: the disk is full"), HasSubstr("run again")));
  state.model.reset();
  state.steps = "+rasterize";
  options.strips = {folder / "05_adjusted/a_SA.kx"};
  EXPECT_THAT(refusalOf(RunState::Phase::finished),
              AllOf(HasSubstr("did \"+rasterize\" and adjusted nothing"),
                    HasSubstr("`velorn run` does all steps")));
  writeContent(folder / "run.json", "{}");
  EXPECT_THAT(refusal(), HasSubstr("run.json: does not tell the state of a run"));
  fs::remove(folder / "run.json");
  EXPECT_THAT(refusal(), HasSubstr("has no run.json"));
  EXPECT_FALSE(fs::exists(options.output));
}

TEST_F(ExportedFlight, IsRefusedWithoutItsSourcesAndLeavesThemAlone) {
  const std::string source = contentOf(folder / "a.las");
  options.overwrite = true;
  options.output = folder.path();
  EXPECT_THAT(refusal(), AllOf(HasSubstr("a.las: points of"), HasSubstr("--output")));
  EXPECT_EQ(contentOf(folder / "a.las"), source);
  options.output = folder / "delivery";
  fs::create_directory(folder / "moved");
  fs::rename(folder / "a.las", folder / "moved/a.las");
  EXPECT_THAT(refusal(), AllOf(HasSubstr("a_SA.kx: its points come from"), HasSubstr("a.las"),
                               HasSubstr("--source-folder")));
  EXPECT_FALSE(fs::exists(options.output));
  options.sourceFolder = folder / "moved";
  EXPECT_EQ(refusal(), "not refused");
  options.overwrite = false;
  EXPECT_THAT(refusal(), HasSubstr("--overwrite"));
  fs::remove(options.output / "a.las");
  fs::create_symlink("nowhere", options.output / "a.las");
  EXPECT_THAT(refusal(), HasSubstr("a.las: exists; --overwrite")) << "a link is somebody's";
  options.strips.push_back(options.strips[0]);
  EXPECT_THAT(refusal(), HasSubstr("would both become"));
  options.strips = {options.strips[0]};
  writeContent(folder / "moved/a.las", lasBytes(lasSample(4, 6, 199)));
  EXPECT_THAT(refusal(), AllOf(HasSubstr("has 200 points"), HasSubstr("only 199")));
}

TEST_F(ExportedFlight, IsRefusedForPointsThatAreNotThoseOfItsSource) {
  const std::string source = folder / "a.las";
  options.strips = {stripFrom("", {})};
  EXPECT_THAT(refusal(),
              AllOf(HasSubstr("made.kx: names no SourceFile"), HasSubstr("velorn import")));
  options.strips = {stripFrom(source, {3, 200})};
  EXPECT_THAT(refusal(), AllOf(HasSubstr("made.kx"), HasSubstr("names point 200, counted from 0"),
                               HasSubstr("which has 200")));
  options.strips = {stripFrom(source, {9, 3, 9})};
  EXPECT_THAT(refusal(), HasSubstr("two points come from point 9 of"));
  EXPECT_FALSE(fs::exists(options.output / "made.las"));
  options.strips = {stripFrom(source, {9, 3})};
  saveLas("a.las", 1.01);
  EXPECT_THAT(refusal(), HasSubstr("point 3, counted from 0, of"));
  saveLas("a.las", 1.0);
  EXPECT_EQ(refusal(), "not refused");
  EXPECT_EQ(LasFile(options.output / "made.las").header().count, 2U);
}

TEST_F(ExportedFlight, IsRefusedWithoutWhatItsAdjustmentUsed) {
  options.wishes = Wishes{false, true, true};
  EXPECT_THAT(refusal(), HasSubstr("--strip-ids"));
  options.model = model;
  EXPECT_THAT(refusal(), HasSubstr("--trajectory"));
  options.trajectories = {imported.trajectories.at(0)};
  EXPECT_THAT(refusal(),
              AllOf(HasSubstr("b_SA.kx: measured from"), HasSubstr("the trajectory is")));
  options.trajectories = imported.trajectories;
  options.strips[1] = options.strips[0];
  EXPECT_THAT(refusal(), HasSubstr("both are the strip a.kx of the adjustment"));
  EXPECT_FALSE(fs::exists(options.output));
}

}  // namespace
