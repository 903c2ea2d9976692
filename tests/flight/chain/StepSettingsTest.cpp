// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <set>
#include <type_traits>

#include <gmock/gmock.h>

#include "flight/chain/StepSettings.h"
#include "platform/morvane/Console.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Containers.h>
#include <velorn/flight/Flight.h>

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr Step allSteps[] = {Step::Rasterize, Step::Match, Step::Adjust, Step::Georeference};

/// Makes another value of one, which a run can work with as well.
struct Change {
  const Setting& setting;

  void operator()(bool* value) const { *value = !*value; }
  template <typename T>
  requires std::is_integral_v<T>
  void operator()(T* value) const { ++*value; }
  void operator()(double* value) const { *value = *value == 0.0 ? 1.0 : 0.9 * *value; }
  void operator()(std::string* value) const {
    if (!setting.words.empty()) {
      *value = setting.words.front();
    } else if (setting.isPath) {
      *value = copied(*value);
    } else {
      *value = setting.name == std::string("selection") ? "ReturnNumber >= 1" : "strip";
    }
  }
  void operator()(fs::path* value) const { *value /= "elsewhere"; }
  void operator()(std::vector<int>* value) const { value->push_back(0); }
  void operator()(std::vector<double>* value) const { (*this)(&value->front()); }
  void operator()(std::vector<std::string>* value) const {
    if (setting.isPath) {
      value->back() = copied(value->back());
    } else if (value->empty()) {
      value->push_back(setting.words.front());
    } else {
      value->pop_back();
    }
  }
  void operator()(std::map<int, double>* value) const { (*value)[0] = 1000.0; }

  /// The same file under another name, if there is one.
  static std::string copied(const fs::path& file) {
    const auto copy = fs::path(file).replace_extension(".copy.kx");
    if (fs::exists(file)) fs::copy_file(file, copy);
    return copy.string();
  }
};

void change(const Setting& setting, FlightSettings& settings) {
  std::visit(Change{setting}, setting.place(settings));
}

std::vector<std::string> differing(const FlightSettings& one, const FlightSettings& other) {
  std::vector<std::string> names;
  for (const auto& setting : settingsTable()) {
    if (valueText(setting, one) != valueText(setting, other)) names.emplace_back(setting.name);
  }
  return names;
}

std::vector<std::string> linesOf(const FlightSettings& settings, Step step) {
  StepKey key("step");
  addSettings(settings, step, key);
  return key.lines();
}

TEST(StepSettings, OfEverySettingAreInTheKeysOfTheStepsThatItNames) {
  FlightSettings usual;
  usual.strips = {"a.kx"};
  usual.trajectories = {"t.kx"};
  for (const auto& setting : settingsTable()) {
    FlightSettings other = usual;
    change(setting, other);
    EXPECT_THAT(differing(usual, other), ElementsAre(setting.name)) << "one place, one setting";
    EXPECT_EQ(valueFault(setting, other), "") << setting.name;
    for (const Step step : allSteps) {
      const bool isNamed = std::ranges::count(setting.steps, step) > 0 && !setting.isPath;
      EXPECT_EQ(linesOf(other, step) != linesOf(usual, step), isNamed)
          << setting.name << " and " << nameOf(step);
    }
  }
}

/// A run of a flight of few points, and which steps of it are done.
struct StepByStep {
  StepByStep() {
    SimulationSettings options;
    options.points = 80'000;
    options.strips = 2;
    options.length = 500;
    make(folder / "flight", options);
    for (const auto& strip : stripsIn(folder / "flight")) settings.strips.push_back(strip.string());
    settings.trajectories = {(folder / "flight/trajectory.kx").string()};
    settings.groundTruth = (folder / "flight/ground_truth.kx").string();
    settings.configuration().RootPath = folder / "out";
    settings.match.maxCorrespondences = 1500;
    settings.rounds = 1;
    settings.stability = false;
    settings.model.isRelative = true;  // so few points are on little ground truth
  }

  /// Of the first round: what is done in others is done for the first time.
  std::vector<std::string> done() const {
    bool matches = false;
    const auto hear = [&](const std::string& line) {
      const bool isMatching =
          line.starts_with("round 1: ") && line.find("correspondences") != std::string::npos;
      matches = matches || (isMatching && !line.ends_with("skipped"));
    };
    const RunReport report = Flight(settings, {{}, hear, {}}).run();
    std::vector<std::string> steps;
    const auto& rasters = *report.rasterizing;
    if (!std::ranges::all_of(rasters.strips, &RasterReport::isSkipped) ||
        !rasters.groundTruth.isSkipped) {
      steps.emplace_back("rasterize");
    }
    if (matches) steps.emplace_back("match");
    if (!report.rounds.front().isSkipped) steps.emplace_back("adjust");
    if (report.georeferencing && !report.georeferencing->isSkipped) {
      steps.emplace_back("georeference");
    }
    return steps;
  }

  TemporaryFolder folder;
  FlightSettings settings;
  Morvane::ConsoleRedirection silence{[](std::string_view) {}};
};

/// The steps that a setting names, and all that build on their results.
std::vector<std::string> expectedOf(const Setting& setting) {
  std::vector<std::string> steps;
  for (const Step step : allSteps) {
    const bool isFollowing = !steps.empty();
    if (isFollowing || std::ranges::count(setting.steps, step) > 0) {
      steps.emplace_back(nameOf(step));
    }
  }
  return steps;
}

/// The keys above hold for every setting; that runs go by them is seen by one of each kind.
TEST(StepSettings, ThatChangeMakeARunDoTheirStepsAgainAndNoOther) {
#ifdef VELORN_SANITIZED
  GTEST_SKIP() << "many runs of the same code";
#endif
  StepByStep run;
  EXPECT_EQ(run.done().size(), std::size(allSteps));
  EXPECT_THAT(run.done(), IsEmpty());
  std::set<std::vector<Step>> seen;
  for (const auto& setting : settingsTable()) {
    // Another root holds nothing that was done, and more rounds are done for the first time.
    const std::set<std::string> others{"root",   "name",          "steps",
                                       "rounds", "coarse-rounds", "stability"};
    if (others.contains(setting.name)) continue;
    if (!seen.insert(setting.steps).second && !setting.isPath) continue;
    change(setting, run.settings);
    EXPECT_EQ(run.done(), expectedOf(setting)) << setting.name;
  }
}

}  // namespace
