// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The same bytes for any number of threads, from LAS files to LAS files.
#include <map>
#include <nlohmann/json.hpp>
#include <regex>

#include <gtest/gtest.h>

#include "flight/strips/Threads.h"
#include "platform/morvane/Console.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include <velorn/flight/Export.h>
#include <velorn/flight/Flight.h>
#include <velorn/flight/Import.h>

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;

const fs::path city = VELORN_TEST_DATA "/city";

void import(const fs::path& output) {
  ImportSettings settings;
  for (int k = 1; k <= 6; ++k) {
    settings.strips.push_back(city / ("strip_" + std::to_string(k) + ".las"));
  }
  settings.trajectory.files = {city / "trajectory.sbet"};
  settings.control = city / "control.csv";
  settings.leverArm = {0.12, -0.08, 0.45};
  settings.output = output;
  importFlight(settings, {});
}

void run(const fs::path& folder, unsigned int threads) {
  FlightSettings settings;
  settings.strips = {(folder / "strip_*.kx").string()};
  settings.trajectories = {(folder / "trajectory.kx").string()};
  settings.groundTruth = (folder / "ground_truth.kx").string();
  settings.configuration().RootPath = folder / "run";
  settings.configuration().TypeModel = "BIAS";
  settings.raster.neighbours = 14;
  settings.rounds = 1;
  settings.stability = false;
  settings.threads = threads;
  settings.repeatable = true;
  const Morvane::ConsoleRedirection silence([](std::string_view) {});
  EXPECT_TRUE(Flight(settings, {}).run().adjustment->solver.isConvergence());
}

/// From import to export, and a flight of a simulator beside it.
void makeAll(const fs::path& folder, unsigned int threads) {
  const LoopThreads hosts(threads);
  import(folder);
  run(folder, threads);
  EXPECT_EQ(threadsOfLoops(), static_cast<int>(threads)) << "the host's setting stays";
  ExportSettings delivery;
  delivery.root = folder / "run";
  delivery.output = folder / "delivery";
  exportFlight(delivery, {});
  SimulationSettings simulation = smallFlight();
  simulation.correspondences = 1500;
  make(folder / "simulated", simulation);
}

void removeEffort(nlohmann::json& value) {
  if (value.is_object()) {
    value.erase("seconds");
    value.erase("peak_memory");
  }
  if (!value.is_structured()) return;
  for (auto& entry : value) removeEffort(entry);
}

/// Of a file, without what tells how long the work took, and when it was done.
std::string comparable(const fs::path& file) {
  std::string bytes = contentOf(file);
  if (file.filename() == "summary.json") {
    auto summary = nlohmann::json::parse(bytes);
    removeEffort(summary);
    return summary.dump();
  }
  if (file.filename() == "summary.txt") {
    return std::regex_replace(bytes, std::regex(R"([0-9.]+ s[;,\n]|[0-9.]+ GB)"), "");
  }
  if (file.extension() == ".pdf") {
    return std::regex_replace(bytes, std::regex(R"(/CreationDate \([^)]*\))"), "");
  }
  return bytes;
}

/// All files but the solver's own protocol of its time, and the records of the steps, which name
/// the times of their files.
std::map<std::string, std::string> filesIn(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const fs::path& file = entry.path();
    const bool isLeftOut =
        file.parent_path().filename() == "steps" || file.filename() == "03_SolverStatus.txt";
    if (!entry.is_regular_file() || isLeftOut) continue;
    files[file.lexically_relative(folder).string()] = comparable(file);
  }
  return files;
}

TEST(RepeatableFlight, WritesTheSameBytesForAnyNumberOfThreads) {
  const TemporaryFolder scratch;
  const fs::path folder = scratch / "work";  // the same one each time: files name it
  const auto filesBy = [&](unsigned int threads) {
    makeAll(folder, threads);
    auto files = filesIn(folder);
    fs::remove_all(folder);
    return files;
  };
  const auto first = filesBy(1);
  for (const unsigned int threads : {2U, 3U}) {
    auto files = filesBy(threads);
    EXPECT_EQ(files.size(), first.size());
    for (const auto& [name, bytes] : first) EXPECT_TRUE(files[name] == bytes) << name;
  }
  for (const char* name :
       {"strip_1.kx", "trajectory.kx", "run/02_raster/strip_1.kx", "run/03_correspondences/c0_1.kx",
        "run/05_adjusted/strip_6_SA.kx", "run/00_parameter/Parameter_round1.txt.exact",
        "delivery/strip_6.las", "delivery/trajectory.sbet", "simulated/strip_01.kx"}) {
    EXPECT_TRUE(first.contains(name)) << name;
  }
}

}  // namespace
