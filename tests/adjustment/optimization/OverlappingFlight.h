// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Three strips over hills that see the same points, with errors of the scanner, of every strip and
// of every measurement, as correspondence files.
#pragma once

#include <cmath>
#include <fstream>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "adjustment/georef/Measurement.h"
#include "tests/adjustment/model/ParameterTexts.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/Georeferencing.h>
#include <velorn/InputParameter.h>
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

/// One section of a strip, by its number in the list.
struct SectionAt {
  unsigned strip;
  int start;  // [s after the strip's start]
  const char* type;
};

/// What the flight is like.
struct FlightPlan {
  std::size_t pairs = 250;  // of every two strips
  std::size_t groundTruth = 120;
  double outliers = 0.0;  // share of points that are metres off
  unsigned classes = 4;   // of the pairs
  std::vector<SectionAt> sections{{0, 0, "LINEAR"}, {1, 0, "LINEAR"}, {2, 0, "LINEAR"}};
};

class OverlappingFlight {
 public:
  static constexpr unsigned strips = 3;
  static constexpr double seconds = 20, height = 600, centreEast = 600000, centreNorth = 5250000;

  explicit OverlappingFlight(FlightPlan plan) : plan_(std::move(plan)), random_(17) {
    configuration.RootPath = folder.path();
    configuration.CellSizeWeights = {3, 1, 1, 1, 0.5};
    std::filesystem::create_directory(folder / "03_correspondences");
    uncorrected_ = parameters();
    fly();
    measure();
  }

  static double startOf(unsigned strip) { return 1000 + 100.0 * strip; }

  /// Without corrections.
  Velorn::SolverParameters parameters() const {
    std::string sections, ids;
    for (std::size_t i = 0; i < plan_.sections.size(); ++i) {
      const auto& [strip, start, type] = plan_.sections[i];
      sections += "StripID: " + std::to_string(strip) + ", sectionID: " + std::to_string(i) +
                  ", t: " + std::to_string(static_cast<int>(startOf(strip)) + start) +
                  ".000000000000000, type: " + type + "\n";
    }
    std::vector<std::filesystem::path> names;
    for (unsigned i = 0; i < strips; ++i) {
      names.emplace_back("strip" + std::to_string(i) + ".kx");
      ids += "id: " + std::to_string(i) + " file: " + names.back().string() + " type: strip\n";
    }
    writeContent(folder / "sections", sections);
    writeContent(folder / "unknowns",
                 parameterText(std::vector<double>(24 * plan_.sections.size() + 12)));
    writeContent(folder / "ids", ids);
    Velorn::SolverParameters model(names, configuration);
    const auto fault = model.restore(folder / "sections", folder / "unknowns", folder / "ids");
    if (!fault.empty()) throw std::runtime_error(fault);
    return model;
  }

  /// A trajectory file without the strips before one.
  std::filesystem::path startingAt(unsigned strip) const {
    return TrajectoryFile({recordsFrom(strip)})
        .save(folder / ("trajectory" + std::to_string(strip) + ".kx"));
  }

  TemporaryFolder folder;
  Velorn::InputParameter configuration;
  Velorn::Trajectory trajectory{{}};

 private:
  struct Ground {
    Geomra::PhysicalSpace::point point;
    Geomra::PhysicalSpace::vector normal;
  };

  /// Direction of flight and place of a strip: two side by side to and fro, one across.
  struct Line {
    double azimuth, aside;  // [rad], [m] to the right of the centre
    double east(double along, double right) const {
      return centreEast + along * std::sin(azimuth) + right * std::cos(azimuth);
    }
    double north(double along, double right) const {
      return centreNorth + along * std::cos(azimuth) - right * std::sin(azimuth);
    }
    double along(const Geomra::PhysicalSpace::point& p) const {
      return (p.x - centreEast) * std::sin(azimuth) + (p.y - centreNorth) * std::cos(azimuth);
    }
  };
  static Line lineOf(unsigned strip) {
    constexpr double pi = std::numbers::pi;
    const Line lines[] = {{0.2, 100}, {0.2 + pi, 100}, {0.2 + pi / 2, 30}};
    return lines[strip];
  }

  double noise(double size) { return std::normal_distribution<double>(0, size)(random_); }
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }

  std::vector<Record> recordsFrom(unsigned firstStrip) const {
    constexpr double speed = 30, rate = 20;
    std::vector<Record> records;
    for (unsigned strip = firstStrip; strip < strips; ++strip) {
      const Line line = lineOf(strip);
      for (int i = -1; i <= seconds * rate + 1; ++i) {
        const double s = i / rate, along = speed * (s - seconds / 2);
        records.push_back({startOf(strip) + s,
                           {line.east(along, line.aside), line.north(along, line.aside),
                            height + 20 + 3 * std::sin(s)},
                           {3 * std::sin(0.9 * s), 2 * std::cos(1.3 * s),
                            line.azimuth * 180 / std::numbers::pi + std::cos(s)}});
      }
    }
    return records;
  }

  void fly() {
    trajectory = Velorn::Trajectory({startingAt(0)});
    if (!trajectory.importTrajectory().empty()) throw std::runtime_error("trajectory");
  }

  /// A point that all strips see, on hills of slopes up to 40 degrees.
  Ground ground() {
    const double e = between(-180, 180), n = between(-180, 180);
    const double east = 0.5 * std::cos(e / 40), north = -0.6 * std::sin(n / 50);
    const double length = std::sqrt(1 + east * east + north * north);
    return {{centreEast + e, centreNorth + n, 20 * std::sin(e / 40) + 30 * std::cos(n / 50)},
            {-east / length, -north / length, 1 / length}};
  }

  /// The point as a strip measures it, about when it flies past.
  Velorn::SphericalBeing measured(const Ground& ground, unsigned strip, std::uint8_t classCode) {
    constexpr double speed = 30;
    const double time =
        startOf(strip) + seconds / 2 + lineOf(strip).along(ground.point) / speed + noise(0.3);
    const std::vector<double> times{time};
    const std::vector<Geomra::PhysicalSpace::point> world{ground.point};
    std::vector<Geomra::PhysicalSpace::point> scanner(1);
    if (!world2scanner(uncorrected_, trajectory, scanner, times, gpsWeek, 0, world).empty()) {
      throw std::runtime_error("world2scanner");
    }
    auto q = Velorn::polarForm<double>({scanner[0].x, scanner[0].y, scanner[0].z});
    q[0] += 0.15 + noise(0.06);
    q[1] += 2e-4 * (strip + 1) + noise(1e-5);
    q[2] += 1e-4 - 3e-4 * strip + 5e-6 * (time - startOf(strip)) + noise(1e-5);
    if (between(0, 1) < plan_.outliers) q[0] += 4;
    const auto s = Velorn::cartesianForm<double>(q);
    return {ground.point, {s[0], s[1], s[2]}, time, ground.normal, {0, 0, 1}, classCode};
  }

  void measure() {
    for (unsigned i = 0; i < strips; ++i) {
      for (unsigned j = i + 1; j < strips; ++j) {
        auto block = blockOf("c" + std::to_string(i) + "_" + std::to_string(j) + ".kx", false);
        for (std::size_t k = 0; k < plan_.pairs; ++k) {
          const auto place = ground();
          const auto classCode = static_cast<std::uint8_t>(11 + k % plan_.classes);
          block.add(measured(place, i, classCode), measured(place, j, classCode));
        }
        save(block);
      }
      auto block = blockOf("c" + std::to_string(i) + "_9_GroundTruth.kx", true);
      for (std::size_t k = 0; k < plan_.groundTruth; ++k) {
        const auto place = ground();
        block.add(measured(place, i, 10), {place.point, {}, 0, place.normal, {}, 10});
      }
      save(block);
    }
  }

  Velorn::CorrespondenceBlock blockOf(const std::string& name, bool isGroundTruth) const {
    return {folder / "03_correspondences" / name, isGroundTruth, gpsWeek, gpsWeek,
            configuration.Storage};
  }
  static void save(Velorn::CorrespondenceBlock& block) {
    const auto fault = block.save();
    if (!fault.empty()) throw std::runtime_error(fault);
  }

  FlightPlan plan_;
  Velorn::SolverParameters uncorrected_;
  std::mt19937_64 random_;
};
