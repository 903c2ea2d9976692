// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Georeferencing against the world coordinates of a simulator that we did not write. Takes the
// 5,000 points in tests/data/oracle, or a whole flight of the same layout:
//
//     VELORN_ORACLE=<folder> flights_OracleTest
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "flight/formats/Sbet.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Georeferencing.h>

using namespace Velorn::Flights;

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;

namespace {

struct Strip {
  std::vector<double> times;    // [s of week]
  std::vector<point> scanner;   // [m]
  std::vector<point> expected;  // easting, northing, height [m]
};

/// A line of eight numbers, whatever the locale.
std::array<double, 8> numbersOf(const std::string& line) {
  std::array<double, 8> numbers{};
  const char* at = line.data();
  for (auto& number : numbers) {
    const auto [end, error] = std::from_chars(at, line.data() + line.size(), number);
    if (error != std::errc()) throw std::runtime_error("no eight numbers: " + line);
    at = end + 1;
  }
  return numbers;
}

std::map<int, Strip> readPoints(const std::filesystem::path& file) {
  std::map<int, Strip> strips;
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);  // the names of the columns
  while (std::getline(stream, line)) {
    const auto [strip, time, s0, s1, s2, east, north, height] = numbersOf(line);
    Strip& target = strips[static_cast<int>(strip)];
    target.times.push_back(time);
    target.scanner.push_back({s0, s1, s2});
    target.expected.push_back({east, north, height});
  }
  return strips;
}

point pointOf(const nlohmann::json& json) {
  return {json.at(0), json.at(1), json.at(2)};
}

/// The trajectory of the folder in a container, as an import would write it.
std::filesystem::path writeTrajectory(const std::filesystem::path& folder,
                                      const std::filesystem::path& target) {
  const auto mount = nlohmann::json::parse(contentOf(folder / "mount.json"));
  auto columns = trajectoryColumns(readSbet(folder / "trajectory.sbet"), mount.at("epsg"));
  columns.week = mount.at("gps_week");
  columns.leverArm = pointOf(mount.at("lever_arm_m"));
  columns.misalignment = pointOf(mount.at("misalignment_deg"));
  saveTrajectory(target, std::move(columns));
  return target;
}

std::filesystem::path oracleFolder() {
  const std::string named = variable("VELORN_ORACLE");
  return named.empty() ? VELORN_TEST_DATA "/oracle" : named;
}

}  // namespace

TEST(Oracle, WorldCoordinatesOfAnotherSimulatorAreReproduced) {
  const TemporaryFolder scratch;
  const auto folder = oracleFolder();
  const auto strips = readPoints(folder / "points.csv");
  Velorn::Trajectory trajectory({writeTrajectory(folder, scratch / "trajectory.kx")});
  ASSERT_EQ(trajectory.importTrajectory(), "");
  Velorn::SolverParameters parameters(std::vector<std::filesystem::path>(strips.size(), "strip.kx"),
                                      Velorn::InputParameter());
  ASSERT_EQ(parameters.setEmptySections(trajectory.getLeverarm(), trajectory.getMisalignment()),
            "");

  const unsigned week = trajectory.timeRanges().begin()->first;
  std::size_t count = 0;
  vector squares;
  unsigned stripId = 0;
  for (const auto& [name, strip] : strips) {
    std::vector<point> world(strip.times.size());
    std::vector<vector> directions(strip.times.size());
    ASSERT_EQ(Velorn::scanner2world(parameters, trajectory, strip.scanner, strip.times, week,
                                    stripId++, world, directions, 0.0, false),
              "");
    for (std::size_t i = 0; i < world.size(); ++i) {
      const vector d = world[i] - strip.expected[i];
      squares = squares + vector{d.x * d.x, d.y * d.y, d.z * d.z};
    }
    count += world.size();
  }
  ASSERT_GE(count, 5000u);
  const auto rms = [&](double sum) { return std::sqrt(sum / static_cast<double>(count)); };
  fmt::print("{} points, RMS [mm]: E {:.4f}, N {:.4f}, h {:.4f}\n", count, 1e3 * rms(squares.x),
             1e3 * rms(squares.y), 1e3 * rms(squares.z));
  // World and scanner coordinates are rounded to a millimetre: 0.29 mm RMS each, and the
  // simulator's own figures add a little.
  EXPECT_LE(rms(squares.x), 0.55e-3);
  EXPECT_LE(rms(squares.y), 0.55e-3);
  EXPECT_LE(rms(squares.z), 0.55e-3);
}
