// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Runs of a small flight from the first step to the last.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "flight/strips/OrFail.h"
#include "platform/morvane/Console.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Flight.h>

/// Settings for a copy of a small flight with one parallel and two crossing strips.
class SmallRun : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    pristine = new TemporaryFolder;
    Velorn::Flights::SimulationSettings options;
    options.points = 300'000;
    options.strips = 2;
    options.length = 500;
    make(pristine->path(), options);
  }
  static void TearDownTestSuite() {
    delete pristine;
    pristine = nullptr;
  }

  SmallRun() {
    std::filesystem::copy(pristine->path(), flight(), std::filesystem::copy_options::recursive);
    for (const auto& strip : stripsIn(flight())) settings.strips.push_back(strip.string());
    settings.trajectories = {(flight() / "trajectory.kx").string()};
    settings.groundTruth = (flight() / "ground_truth.kx").string();
    settings.configuration().RootPath = folder / "out";
    settings.match.maxCorrespondences = 1500;
    settings.rounds = 2;
    settings.stability = false;
  }

  std::filesystem::path flight() const { return folder / "flight"; }

  Velorn::Flights::RunReport done() {
    lines.clear();
    return Velorn::Flights::Flight(settings, watch).run();
  }

  std::string refusal(Velorn::Flights::Error::Kind kind = Velorn::Flights::Error::BadInput) {
    try {
      done();
    } catch (const Velorn::Flights::Error& error) {
      EXPECT_EQ(error.kind(), kind);
      return error.what();
    }
    return "none";
  }

  /// Lines of steps; others tell of the points and of how far strips lie apart.
  std::size_t steps() const {
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [](const auto& line) {
      return !line.starts_with("points ") && !line.starts_with("strips lie ");
    }));
  }

  std::size_t skipped() const {
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(), [](const auto& line) { return line.ends_with("skipped"); }));
  }

  /// Replaces a column of the world chart of a strip.
  template <typename T, typename Change>
  void change(std::size_t strip, const char* name, const Change& to) {
    Strandel::Bundle bundle;
    const Strandel::MyStorage storage(0, 0, 1, 1);
    Velorn::Flights::orFail(storage.load(settings.strips[strip], bundle));
    const auto field = bundle.grids().at(0)->cartesian()->field(name);
    auto values = *field->values<T>({0}).values;
    to(values);
    Velorn::Flights::orFail(field->setValues<T>({0}, std::move(values)));
    Velorn::Flights::orFail(storage.save(bundle, settings.strips[strip], "wd"));
  }

  inline static TemporaryFolder* pristine = nullptr;
  TemporaryFolder folder;
  Velorn::Flights::FlightSettings settings;
  std::vector<std::string> lines;
  Velorn::Flights::Watch watch{{}, [this](const auto& line) { lines.push_back(line); }, {}};
  Morvane::ConsoleRedirection silence{[](std::string_view) {}};
};

/// Runs beside the one that sanitizers see, of the same code; each would take a minute there.
class SeveralRuns : public SmallRun {
 protected:
  void SetUp() override {
#ifdef VELORN_SANITIZED
    GTEST_SKIP() << "one whole run is enough for the sanitizers";
#endif
  }
};
