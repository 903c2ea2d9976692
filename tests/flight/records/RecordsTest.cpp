// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <nlohmann/json.hpp>
#include <regex>

#include <gmock/gmock.h>

#include "flight/records/FinishedRun.h"
#include "flight/records/ReportJson.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;
namespace fs = std::filesystem;
using testing::HasSubstr;
using Phase = RunState::Phase;

namespace {

/// With a value in every field that JSON has.
RunReport fullReport() {
  RunReport run;
  run.program = "1.2.3";
  run.steps = "+rasterize";
  run.root = "/root";
  run.strips = {{7, "/a.kx", 5, 2318, 1.5, 2.5, {}, 0.25}};
  RasterCounts counts;
  counts.points = 5;
  counts.surface = {1, 2, 3, 4, 5};
  counts.medianRoughness = 0.01;
  run.rasterizing = RasterizingReport{{{"a.kx", true, counts}}, {"g.kx", false, counts}, 2.5};
  MatchReport matching;
  matching.pairs = {{0, 1, false, {}}, {1, 9, true, {}}};
  matching.pairs[0].classes[2] = {9, 1, 2, 3, 1, 1, 1, 0.5, unknownFigure};
  matching.correspondences = 77;
  AdjustmentReport adjustment;
  adjustment.correspondences = {1, 2, 3, 4, 5};
  adjustment.before.pairs = {3, 1, 2, 3, 4, 5, 6, 7, 8};
  adjustment.globals.misalignment = {0.1, 0.2, 0.3};
  adjustment.heldSections = {{"a.kx", 3, 12, true, false}};
  adjustment.movements = {{"a.kx", 0.3, 0.1}};
  adjustment.solver.termination = "CONVERGENCE";
  run.apart = ApartReport{0.5, {{0, 1, {1.0, 2.0, 3.0}, 99}}, unknownFigure, 2};
  run.rounds = {{1, 2.0, true, false, matching, {}}, {2, 1.0, false, true, matching, adjustment}};
  run.roundsEnd = "settled";
  run.stability = StabilityReport{0.04, 3, 1, 0.01, 0.02, {{"roll", "deg", 0.1, 0.05, 0.2}}, 0.01};
  run.adjustment = adjustment;
  run.model = ModelFiles{"00/s.txt", "00/p.txt", "00/i.txt"};
  run.datum = DatumReport{{"control"}, {"flat"}};
  run.georeferencing = GeoreferencingReport{"/root/05", 1, 5, {}, true, 0.5};
  run.failure = "why";
  run.peakMemory = 12345;
  return run;
}

TEST(ReportJson, ReadsBackWhatItWrote) {
  const auto json = jsonOf(fullReport());
  RunReport again;
  fromJson(json, again);
  EXPECT_EQ(jsonOf(again), json);
  EXPECT_TRUE(std::isnan(again.rounds[0].matching->pairs[0].classes[2].nmad));
  EXPECT_EQ(json["rounds"][0]["scale"], 2.0);
  EXPECT_FALSE(json["rounds"][1].contains("scale"));
  EXPECT_EQ(json["adjustment"]["globals"]["misalignment"][1], 0.2);
  EXPECT_EQ(json["files"]["parameters"], "00/p.txt");
  RunReport none;
  fromJson(jsonOf(none), none);
  EXPECT_FALSE(none.adjustment || none.rasterizing || none.datum);
}

TEST(ReportJson, ReadsWhatEarlierProgramsOfItsVersionWrote) {
  auto json = jsonOf(fullReport());
  for (const char* name : {"scale", "apart", "rounds_end", "stability"}) json.erase(name);
  for (auto* adjustment : {&json["adjustment"], &json["rounds"][1]["adjustment"]}) {
    for (const char* name : {"moved", "moved_by_one", "redundancy", "control"}) {
      adjustment->erase(name);
    }
  }
  for (const char* name : {"control", "support"}) json["rounds"][1]["matching"].erase(name);
  RunReport read;
  fromJson(json, read);
  EXPECT_TRUE(std::isnan(read.adjustment->moved));
  EXPECT_FALSE(read.apart || read.stability || read.scale);
  EXPECT_EQ(read.rounds[1].matching->correspondences, 77U);
}

TEST(ReportJson, RefusesWhatIsNoReport) {
  const auto good = jsonOf(fullReport());
  for (const char* key : {"schema", "version", "strips", "rounds", "adjustment"}) {
    auto bad = good;
    bad[key] = "else";
    RunReport report;
    EXPECT_THROW(fromJson(bad, report), nlohmann::json::exception) << key;
  }
}

TEST(StepRecords, HoldOnlyWhileKeyAndOutputsAreTheSame) {
  const TemporaryFolder folder;
  const StepRecord record(folder.path(), "match");
  StepKey key("match"), other("match");
  key.add("radius", 3.0);
  other.add("radius", 3.5);
  writeContent(folder / "out.kx", "1");
  MatchReport report;
  report.correspondences = 5;
  record.finish(key, {folder / "out.kx"}, report);
  EXPECT_EQ(record.valid<MatchReport>(key)->correspondences, 5U);
  EXPECT_FALSE(record.valid<MatchReport>(other));
  EXPECT_FALSE(record.valid<GeoreferencingReport>(key)) << "of another step";
  writeContent(folder / "out.kx", "12");
  EXPECT_FALSE(record.valid<MatchReport>(key));
  record.finish(key, {}, report);
  for (const char* damage : {"", "{", "[1]", R"({"key": 3})"}) {
    writeContent(folder / "match.json", damage);
    EXPECT_FALSE(record.valid<MatchReport>(key)) << damage;
  }
}

std::string refusalOf(const fs::path& root) {
  try {
    const FinishedRun run(root);
  } catch (const Error& error) {
    return error.what();
  }
  return "none";
}

TEST(States, OfARunSayWhetherItsResultCanBeUsed) {
  const TemporaryFolder root;
  EXPECT_THAT(refusalOf(root / "no"), HasSubstr("no such folder"));
  EXPECT_THAT(refusalOf(root.path()), HasSubstr("it has no run.json"));
  RunState state;
  state.steps = "+rasterize";
  state.write(root.path());
  EXPECT_THAT(refusalOf(root.path()), HasSubstr("a run is going on there"));
  const auto killed = std::regex_replace(contentOf(root / "run.json"),
                                         std::regex(R"("start": "\d+")"), R"("start": "1")");
  writeContent(root / "run.json", killed);
  EXPECT_THAT(refusalOf(root.path()), HasSubstr("was interrupted; `velorn run` goes on"));
  state.phase = Phase::failed;
  state.message = "no planes";
  state.write(root.path());
  EXPECT_THAT(refusalOf(root.path()), HasSubstr("failed: no planes; mend that"));
  state.phase = Phase::finished;
  state.write(root.path());
  EXPECT_EQ(refusalOf(root.path()), "none");
  EXPECT_THROW(FinishedRun(root.path()).model(), Error);
  state.model = ModelFiles{"s.txt", "p.txt", "i.txt"};
  state.write(root.path());
  EXPECT_THROW(FinishedRun(root.path()).model(), Error) << "its files are gone";
  for (const char* name : {"s.txt", "p.txt", "i.txt"}) writeContent(root / name, "");
  EXPECT_EQ(FinishedRun(root.path()).model().parameters, root / "p.txt");
  for (const char* damage : {"", "{}", "[1]", R"({"format": "velorn run", "version": 9})"}) {
    writeContent(root / "run.json", damage);
    EXPECT_THAT(refusalOf(root.path()), HasSubstr("run.json: does not tell the state"));
  }
}

}  // namespace
