// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/comparison/Truth.h"

#include <fstream>
#include <nlohmann/json.hpp>

#include <fmt/format.h>

#include "flight/simulation/PlanePairs.h"
#include "platform/geomra/Degree.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights::Comparison {
namespace {

using Geomra::degree;

namespace fs = std::filesystem;
using Eigen::Vector3d;
using PlainJson = nlohmann::json;

Vector3d listed(const PlainJson& three) {
  return {three.at(0).get<double>(), three.at(1).get<double>(), three.at(2).get<double>()};
}

/// @param which  "true" or "nominal"
Simulation::MountingValues mountingIn(const PlainJson& globals, const char* which) {
  const auto in = [&](const char* name) { return listed(globals.at(name).at(which)); };
  return {in("offsets").cwiseProduct(Vector3d(1.0, degree, degree)), in("scales"),
          degree * in("misalignment"), in("leverArm")};
}

/// @param unit  of the file, in metres or radians
Simulation::Correction correctionIn(const PlainJson& json, double unit) {
  const PlainJson& sine = json.at("sine");
  return {unit * listed(json.at("constant")), unit * listed(json.at("linear")),
          unit * listed(sine.at("amplitude")), listed(sine.at("period")), listed(sine.at("phase"))};
}

TrueStrip stripIn(const PlainJson& json, const fs::path& folder) {
  TrueStrip strip;
  strip.file = folder / json.at("file").get<std::string>();
  strip.planes = folder / "truth" / (strip.file.stem().string() + "_planes.kx");
  strip.errors = {json.at("firstTime").get<double>(), correctionIn(json.at("position"), 1.0),
                  correctionIn(json.at("attitude"), degree)};
  strip.lastTime = json.at("lastTime").get<double>();
  return strip;
}

Truth truthIn(const PlainJson& json, const fs::path& folder) {
  Truth truth;
  truth.week = json.at("week").get<unsigned int>();
  truth.rangeNoise = json.at("options").at("rangeNoise").get<double>();
  truth.angleNoise = degree * json.at("options").at("angleNoise").get<double>();
  truth.real = mountingIn(json.at("globals"), "true");
  truth.nominal = mountingIn(json.at("globals"), "nominal");
  truth.trajectory = folder / "trajectory.kx";
  for (const PlainJson& strip : json.at("strips")) truth.strips.push_back(stripIn(strip, folder));
  return truth;
}

/// A line "plane,class,easting,northing,height,normal_e,normal_n,normal_h".
Velorn::TerrainType kindIn(const std::string& line) {
  const PlainJson row = PlainJson::parse("[" + line + "]");
  Simulation::Plane plane;
  plane.surface = static_cast<Simulation::Surface>(row.at(1).get<int>());
  plane.normal = {row.at(5).get<double>(), row.at(6).get<double>(), row.at(7).get<double>()};
  return Simulation::kindOf(plane);
}

std::vector<Velorn::TerrainType> kindsIn(std::istream& file) {
  std::vector<Velorn::TerrainType> kinds;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) kinds.push_back(kindIn(line));
  return kinds;
}

std::ifstream opened(const fs::path& folder, const char* name) {
  std::error_code fault;
  std::ifstream file(folder / name);
  if (fs::is_regular_file(folder / name, fault) && file) return file;
  throw Error(fmt::format(
      "{}: is no folder of a synthetic flight: it has no {}. TRUTH is the folder that `velorn "
      "simulate` wrote, with truth.json, trajectory.kx, the strips and truth/",
      folder.string(), name));
}

}  // namespace

Truth readTruth(const fs::path& folder) {
  auto description = opened(folder, "truth.json");
  auto planes = opened(folder, "truth/planes.csv");
  const char* name = "truth.json";
  try {
    Truth truth = truthIn(PlainJson::parse(description), folder);
    name = "truth/planes.csv";
    truth.kindOfPlane = kindsIn(planes);
    return truth;
  } catch (const PlainJson::exception& fault) {
    throw Error(fmt::format("{}: is not as `velorn simulate` writes it: {}",
                            (folder / name).string(), fault.what()));
  }
}

}  // namespace Velorn::Flights::Comparison
