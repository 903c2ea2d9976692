// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "tests/adjustment/georef/StripsToGeoreference.h"

using testing::ElementsAre, testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

class Progress : public Kestrum::LoaderProgress {
 public:
  void report(const std::string& text, std::size_t current, std::size_t total) override {
    reports.push_back(fmt::format("{}{} of {}", text, current, total));
    if (!thrown.empty()) throw std::runtime_error(thrown);
  }
  std::vector<std::string> reports;
  std::string thrown;
};

class GeoreferencingRun : public StripsToGeoreference {
 protected:
  GeoreferencingRun() {
    for (const char* name : {"a.kx", "b.kx", "c.kx"}) {
      auto bundle = measuredStrip();
      strips.emplace_back(save(bundle, name));
    }
  }

  std::string run(const std::set<int>& selected, const std::string& outputFolder,
                  bool inverse = false) {
    return Velorn::scanner2world(strips, {folder / "trajectory.kx"}, outputFolder, inverse, 0, "",
                                 "", selected, false, progress);
  }

  std::vector<std::string> outputs() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(out)) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::vector<fs::path> strips;
  std::shared_ptr<Progress> progress = std::make_shared<Progress>();
};

}  // namespace

TEST_F(GeoreferencingRun, ProcessesTheSelectedStripsAndTellsOfAll) {
  ASSERT_EQ(run({1}, out), "");
  EXPECT_THAT(outputs(), ElementsAre("b_SA.kx"));
  EXPECT_THAT(progress->reports,
              ElementsAre("scan2World #0 of 3", "scan2World #1 of 3", "scan2World #2 of 3"));
  progress.reset();
  ASSERT_EQ(run({}, out), "");
  EXPECT_THAT(outputs(), ElementsAre("a_SA.kx", "b_SA.kx", "c_SA.kx"));
  // The mounting is the trajectory's.
  EXPECT_EQ(valuesOf<point>(worldChart(load(folder / "out/c_SA.kx")), "Positions", 1),
            expected(measuredStrip(), 1, 0.0).world);
  EXPECT_THAT(console, IsEmpty());
}

TEST_F(GeoreferencingRun, InvertsAndSaysSo) {
  ASSERT_EQ(run({0}, ""), "");
  const auto world = intactContentOf(load(strips[0]));
  ASSERT_EQ(run({0}, "", true), "");
  EXPECT_THAT(console,
              ElementsAre(" INVERSE CALLED! Recalculate from world to scanner coordinates..."));
  EXPECT_NE(intactContentOf(load(strips[0])), world);
}

TEST_F(GeoreferencingRun, EndsAtTheFirstStripWithAMessage) {
  auto other = measuredStrip();
  grid(other)->attributes().set("WeekNumber", std::int64_t{7});
  save(other, "b.kx");
  EXPECT_EQ(run({}, out), "The weeknumber 7of strip name " + strips[1].string() +
                              "(1)is not part of the trajectory");
  EXPECT_THAT(outputs(), ElementsAre("ERROR_SCANNER2WORLD_b.txt", "a_SA.kx", "b_SA.kx"));
}

TEST_F(GeoreferencingRun, EndsBeforeAnyStripWithoutTrajectoryOrStrips) {
  fs::remove(folder / "trajectory.kx");
  EXPECT_EQ(run({}, out),
            "importTrajectory: Error, File not found - " + (folder / "trajectory.kx").string());
  saveTrajectory();
  strips.clear();
  EXPECT_NE(run({}, out), "");
  EXPECT_THAT(outputs(), IsEmpty());
}

TEST_F(GeoreferencingRun, RefusesOutputsThatWouldReplaceEachOtherOrAStripBeforeAnyWork) {
  auto bundle = measuredStrip();
  strips.emplace_back(save(bundle, "out/b.kx"));
  EXPECT_EQ(run({}, out), "scanner2world: the output " + out + "/b_SA.kx of strip " +
                              strips[3].string() + " belongs to strip " + strips[1].string());
  strips[3] = save(bundle, "out/a_SA.kx");
  const auto before = contentOf(strips[3]);
  EXPECT_EQ(run({}, out), "scanner2world: the output " + out + "/a_SA.kx of strip " +
                              strips[0].string() + " belongs to strip " + strips[3].string());
  EXPECT_TRUE(contentOf(strips[3]) == before);
  EXPECT_THAT(progress->reports, IsEmpty());
  EXPECT_EQ(run({1, 2}, out), "");
  EXPECT_TRUE(contentOf(strips[3]) == before);
}

TEST_F(GeoreferencingRun, LetsNoExceptionOut) {
  progress->thrown = "cancelled";
  EXPECT_EQ(run({}, out), "scanner2world: cancelled");
  EXPECT_THAT(outputs(), IsEmpty());
}
