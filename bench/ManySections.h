// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A block of any number of parallel strips with one across for every 24 of them, divided into many
// sections, as correspondence files.
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

class ManySections {
 public:
  static constexpr unsigned sectionsOfStrip = 20, linesAcross = 24;
  static constexpr double secondsOfSection = 3, speed = 60, height = 600, spacing = 150,
                          sight = 320;
  static constexpr double length = sectionsOfStrip * secondsOfSection * speed;  // [m]

  /// @param ofPair  correspondences of two neighbouring strips; others have their share of the
  ///                overlap
  ManySections(unsigned strips, std::size_t ofPair) : strips_(strips), random_(29) {
    configuration.RootPath = folder.path();
    configuration.CellSizeWeights = {3, 1, 1, 1, 1};
    std::filesystem::create_directory(folder / "03_correspondences");
    uncorrected_ = parameters();
    fly();
    for (unsigned i = 0; i < strips_; ++i) {
      for (unsigned j = i + 1; j < strips_; ++j) measurePair(i, j, ofPair);
      measureGroundTruth(i, ofPair / 50);
    }
  }

  unsigned sections() const { return strips_ * sectionsOfStrip; }
  std::size_t correspondences() const { return correspondences_; }

  /// Without corrections.
  Velorn::SolverParameters parameters() const {
    std::string sections, ids;
    std::vector<std::filesystem::path> names;
    for (unsigned strip = 0; strip < strips_; ++strip) {
      for (unsigned k = 0; k < sectionsOfStrip; ++k) {
        sections += fmt::format("StripID: {}, sectionID: {}, t: {:.15f}, type: LINEAR\n", strip,
                                strip * sectionsOfStrip + k, startOf(strip) + k * secondsOfSection);
      }
      names.emplace_back(fmt::format("strip{}.kx", strip));
      ids += fmt::format("id: {} file: {} type: strip\n", strip, names.back().string());
    }
    writeContent(folder / "sections", sections);
    writeContent(folder / "unknowns",
                 parameterText(std::vector<double>(24 * std::size_t{this->sections()} + 12)));
    writeContent(folder / "ids", ids);
    Velorn::SolverParameters model(names, configuration);
    const auto fault = model.restore(folder / "sections", folder / "unknowns", folder / "ids");
    if (!fault.empty()) throw std::runtime_error(fault);
    return model;
  }

  TemporaryFolder folder;
  Velorn::InputParameter configuration;
  Velorn::Trajectory trajectory{{}};

 private:
  using point = Geomra::PhysicalSpace::point;
  using vector = Geomra::PhysicalSpace::vector;

  /// An axis of flight in plan and the rectangle that its strip sees.
  struct Line {
    point begin;
    vector direction;  // horizontal, of length 1
    double lowEast, highEast, lowNorth, highNorth;
  };

  struct Points {
    std::vector<point> places, scanner;
    std::vector<vector> normals;
    std::vector<double> times;
  };

  static double startOf(unsigned strip) { return 1000.0 + 100.0 * strip; }
  unsigned across() const { return strips_ / (linesAcross + 1); }

  /// To and fro along the northing, then those across.
  Line lineOf(unsigned strip) const {
    constexpr double east = 500000, north = 5250000;
    const unsigned parallel = strips_ - across();
    if (strip < parallel) {
      const double at = east + spacing * strip;
      const bool isBack = strip % 2 == 1;
      return {{at, isBack ? north + length : north, 0},
              {0, isBack ? -1.0 : 1.0, 0},
              at - sight,
              at + sight,
              north,
              north + length};
    }
    const double from = east + spacing * linesAcross * (strip - parallel), at = north + length / 2;
    return {{from, at, 0}, {1, 0, 0}, from, from + length, at - sight, at + sight};
  }

  double noise(double size) { return std::normal_distribution<double>(0, size)(random_); }
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }

  void fly() {
    constexpr double rate = 20;
    std::vector<Record> records;
    for (unsigned strip = 0; strip < strips_; ++strip) {
      const Line line = lineOf(strip);
      const double yaw = std::atan2(line.direction.x, line.direction.y) * 180 / std::numbers::pi;
      for (int i = -40; i <= sectionsOfStrip * secondsOfSection * rate + 40; ++i) {
        const double s = i / rate;
        const point place = line.begin + speed * s * line.direction;
        records.push_back({startOf(strip) + s,
                           {place.x, place.y, height + 3 * std::sin(s)},
                           {3 * std::sin(0.9 * s), 2 * std::cos(1.3 * s), yaw + std::cos(s)}});
      }
    }
    TrajectoryFile({records}).save(folder / "trajectory.kx");
    trajectory = Velorn::Trajectory({folder / "trajectory.kx"});
    if (!trajectory.importTrajectory().empty()) throw std::runtime_error("trajectory");
  }

  /// Places on hills in a rectangle, about when a strip flies past.
  Points ground(std::size_t count, const Line& area) {
    Points points;
    for (std::size_t k = 0; k < count; ++k) {
      const double e = between(area.lowEast, area.highEast);
      const double n = between(area.lowNorth, area.highNorth);
      const double east = 0.5 * std::cos(e / 40), north = -0.6 * std::sin(n / 50);
      const double size = std::sqrt(1 + east * east + north * north);
      points.places.push_back({e, n, 20 * std::sin(e / 40) + 30 * std::cos(n / 50)});
      points.normals.push_back({-east / size, -north / size, 1 / size});
    }
    return points;
  }

  /// @return the scanner coordinates and times of places as a strip with errors measures them
  Points measured(const Points& ground, unsigned strip) {
    Points points = ground;
    const Line line = lineOf(strip);
    for (const point& place : ground.places) {
      const vector from = place - line.begin;
      const double along = from.x * line.direction.x + from.y * line.direction.y;
      const double seconds =
          std::clamp(along / speed + noise(0.05), 0.0, sectionsOfStrip * secondsOfSection - 0.001);
      points.times.push_back(startOf(strip) + seconds);
    }
    points.scanner.resize(points.times.size());
    if (!world2scanner(uncorrected_, trajectory, points.scanner, points.times, gpsWeek, strip,
                       points.places)
             .empty()) {
      throw std::runtime_error("world2scanner");
    }
    for (std::size_t k = 0; k < points.scanner.size(); ++k) {
      const auto& raw = points.scanner[k];
      auto q = Velorn::polarForm<double>({raw.x, raw.y, raw.z});
      const double drift = std::sin(0.02 * (points.times[k] - 1000));
      q[0] += 0.1 + 0.05 * drift + noise(0.02);
      q[1] += 2e-4 * drift + noise(1e-5);
      q[2] += 1e-4 * (strip % 5) + noise(1e-5);
      const auto s = Velorn::cartesianForm<double>(q);
      points.scanner[k] = {s[0], s[1], s[2]};
    }
    return points;
  }

  void save(Velorn::CorrespondenceBlock& block) {
    if (const auto fault = block.save(); !fault.empty()) throw std::runtime_error(fault);
    correspondences_ += block.size();
  }

  Velorn::CorrespondenceBlock blockOf(const std::string& name, bool isGroundTruth) const {
    return {folder / "03_correspondences" / name, isGroundTruth, gpsWeek, gpsWeek,
            configuration.Storage};
  }

  void measurePair(unsigned i, unsigned j, std::size_t ofPair) {
    const Line a = lineOf(i), b = lineOf(j);
    const Line area{{},
                    {},
                    std::max(a.lowEast, b.lowEast),
                    std::min(a.highEast, b.highEast),
                    std::max(a.lowNorth, b.lowNorth),
                    std::min(a.highNorth, b.highNorth)};
    const double east = area.highEast - area.lowEast, north = area.highNorth - area.lowNorth;
    if (east < spacing || north < spacing) return;
    const double share = east * north / ((2 * sight - spacing) * length);
    const Points places =
        ground(static_cast<std::size_t>(share * static_cast<double>(ofPair)), area);
    const Points first = measured(places, i), second = measured(places, j);
    auto block = blockOf(fmt::format("c{}_{}.kx", i, j), false);
    for (std::size_t k = 0; k < places.places.size(); ++k)
      block.add(at(first, k, 11), at(second, k, 11));
    save(block);
  }

  void measureGroundTruth(unsigned strip, std::size_t count) {
    const Points places = ground(count, lineOf(strip)), points = measured(places, strip);
    auto block = blockOf(fmt::format("c{}_{}_GroundTruth.kx", strip, strips_), true);
    for (std::size_t k = 0; k < count; ++k) {
      block.add(at(points, k, 10), {places.places[k], {}, 0, places.normals[k], {}, 10});
    }
    save(block);
  }

  static Velorn::SphericalBeing at(const Points& points, std::size_t k, std::uint8_t classCode) {
    return {points.places[k],  points.scanner[k], points.times[k],
            points.normals[k], {0, 0, 1},         classCode};
  }

  unsigned strips_;
  Velorn::SolverParameters uncorrected_;
  std::mt19937_64 random_;
  std::size_t correspondences_ = 0;
};
