// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A small flight, imported and adjusted, on its way out.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "flight/exchange/FlightTrajectory.h"
#include "flight/formats/LasFile.h"
#include "flight/formats/TrajectoryExport.h"
#include "flight/records/RunState.h"
#include "flight/strips/GridFile.h"
#include "platform/morvane/Console.h"
#include "platform/tessaly/TransverseMercator.h"
#include "tests/flight/exchange/TenSeconds.h"
#include "tests/support/LasBytes.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Georeferencing.h>
#include <velorn/flight/Containers.h>
#include <velorn/flight/Error.h>
#include <velorn/flight/Export.h>
#include <velorn/flight/Georeference.h>
#include <velorn/flight/Import.h>

using namespace Velorn::Flights;
namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::AllOf, testing::HasSubstr;

inline constexpr double week = 604800.0;
inline constexpr std::int64_t weekNumber = 2318;
inline constexpr std::array<double, 12> globals{0,     0,      0,     0,   0,    0,
                                                0.001, -0.002, 0.003, 0.1, -0.2, 0.3};
inline constexpr point leverArm{globals[9], globals[10], globals[11]};

inline double length(const vector& v) {
  return std::hypot(v.x, v.y, v.z);
}

/// Linear corrections of one strip: entry 4 j + m multiplies dt^m of component j, positions first.
inline std::array<double, 24> correctionsOf(std::size_t strip) {
  const double sign = strip == 0 ? 1.0 : -1.0;
  std::array<double, 24> values{};
  values[0] = sign * 1.25;    // easting [m]
  values[1] = sign * 0.02;    // [m/s]
  values[4] = -0.5;           // northing
  values[8] = 0.25;           // height
  values[9] = 0.01;           // [m/s]
  values[12] = sign * 0.002;  // roll [rad]
  values[17] = 0.0005;        // pitch [rad/s]
  values[20] = 0.001;         // yaw
  return values;
}

/// Ten seconds with two strips, from the 1st to the 3rd and from the 6th to the 8th, imported and
/// georeferenced with an adjustment. Between the strips a GPS week ends.
class ExportedFlight : public testing::Test {
 protected:
  ExportedFlight() {
    writeSbet(folder / "flight.sbet", flown);
    saveLas("a.las", 1.0);
    saveLas("b.las", 6.0);
    import();
    saveModel();
    georeference();
    options.strips = {folder / "05_adjusted/a_SA.kx", folder / "05_adjusted/b_SA.kx"};
    options.output = folder / "delivery";
  }

  /// Of a point of a source, after the first record of the trajectory [s].
  static double timeOf(std::uint64_t number, double first) {
    return first + 0.01 * static_cast<double>((number * 37) % 200);
  }

  void saveLas(const std::string& name, double first) const {
    LasSample made = lasOverZone32(200);
    for (std::uint64_t k = 0; k < 200; ++k) {
      made.points[k].time = static_cast<double>(weekNumber) * week + begin - 1e9 + timeOf(k, first);
    }
    writeContent(folder / name, lasBytes(made));
  }

  void import() {
    ImportSettings from;
    from.strips = {folder / "a.las", folder / "b.las"};
    from.trajectory.files = {folder / "flight.sbet"};
    from.output = folder / "flight";
    imported = importFlight(from, {});
  }

  /// @param locked  the trajectory stays as it is
  static std::string parameterText(bool locked) {
    std::string parameters =
        "#Number of local parameters: 48\n#Number of global parameters: 12 (see last line)\n\n";
    const auto add = [&](const auto& values) {
      for (const double value : values) parameters += fmt::format("{:.15f} ", value);
    };
    for (std::size_t k = 0; k < 2; ++k) {
      add(locked ? std::array<double, 24>{} : correctionsOf(k));
      parameters += "\n";
    }
    add(globals);
    return parameters;
  }

  void saveModel() {
    std::string sections, ids;
    for (std::size_t k = 0; k < 2; ++k) {
      starts.push_back(imported.strips.at(k).first - 0.5);
      ids += fmt::format("id: {} file: elsewhere/{}.kx type: strip\n", k, k == 0 ? "a" : "b");
      sections += fmt::format("StripID: {0}, sectionID: {0}, t: {1:.15f}, type: LINEAR\n", k,
                              starts.back());
    }
    model = {folder / "00_parameter/Sections.txt", folder / "00_parameter/Parameter.txt",
             folder / "00_parameter/StripID.txt"};
    fs::create_directory(folder / "00_parameter");
    writeContent(model.sections, sections);
    writeContent(model.parameters, parameterText(false));
    writeContent(model.stripIds, ids);
  }

  void georeference() {
    GeoreferencingInput input;
    for (const auto& strip : imported.strips) input.strips.push_back(strip.file);
    input.trajectories = imported.trajectories;
    input.outputFolder = folder / "05_adjusted";
    input.model = model;
    Velorn::Flights::georeference(input, {});
  }

  void takeModel() {
    options.model = model;
    options.trajectories = imported.trajectories;
  }

  /// Makes the folder the root of a run that did all steps, and names nothing else of it.
  void takeRoot() {
    state.phase = RunState::Phase::finished;
    state.model = {"00_parameter/Sections.txt", "00_parameter/Parameter.txt",
                   "00_parameter/StripID.txt"};
    for (const auto& strip : imported.strips) state.strips.push_back(strip.file);
    state.trajectories = imported.trajectories;
    state.isGeoreferenced = true;
    state.write(folder.path());
    options.root = folder.path();
    options.strips.clear();
  }

  ExportReport done() {
    told.clear();
    Watch watch;
    watch.message = [this](const auto& line) { told.push_back(line); };
    return exportFlight(options, watch);
  }

  std::string refusal(std::optional<Error::Kind> kind = {}) {
    return refusalOf([this] { done(); }, kind);
  }

  /// A strip of points with these numbers in a source.
  fs::path stripFrom(const std::string& source, std::vector<std::uint64_t> numbers) const {
    StripColumns columns;
    columns.week = weekNumber;
    columns.world.resize(numbers.size(), point{500001.0, 5341002.0, 3.0});
    for (const auto number : numbers) columns.times.push_back(begin + timeOf(number, 1.0));
    columns.sourceIndex = std::move(numbers);
    columns.sourceFile = source;
    saveStrip(folder / "made.kx", std::move(columns));
    return folder / "made.kx";
  }

  TemporaryFolder folder;
  const double begin = week - 4.5;
  const std::vector<SbetRecord> flown = tenSeconds(begin);
  ImportReport imported;
  std::vector<double> starts;  // of the sections [s of week]
  ModelFiles model;
  RunState state;
  ExportSettings options;
  std::vector<std::string> told;
  Morvane::ConsoleRedirection silence{[](std::string_view) {}};
};
