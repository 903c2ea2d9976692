// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/TruthFile.h"

#include <iterator>
#include <nlohmann/json.hpp>

#include <fmt/format.h>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Eigen::Vector3d;
using Geomra::degree, Geomra::degreesPerRadian;
using Json = nlohmann::ordered_json;  // keeps the order of the keys

Json listOf(const Vector3d& v) {
  return {v[0], v[1], v[2]};
}

/// Three of the twelve globals in the units of the file.
/// @param factor  from the inner unit to that of the file, per component
Json globalOf(const Json& unit, const Vector3d& real, const Vector3d& nominal,
              const Vector3d& factor) {
  return {{"unit", unit},
          {"true", listOf(real.cwiseProduct(factor))},
          {"nominal", listOf(nominal.cwiseProduct(factor))},
          {"error", listOf((real - nominal).cwiseProduct(factor))}};
}

Json globalsOf(const MountingValues& nominal, const MountingValues& real) {
  const Vector3d ones = Vector3d::Ones(), degrees = degreesPerRadian * ones;
  return {{"offsets", globalOf({"m", "deg", "deg"}, real.offsets, nominal.offsets,
                               Vector3d(1.0, degreesPerRadian, degreesPerRadian))},
          {"scales", globalOf("1", real.scales, nominal.scales, ones)},
          {"misalignment", globalOf("deg", real.misalignment, nominal.misalignment, degrees)},
          {"leverArm", globalOf("m", real.leverArm, nominal.leverArm, ones)}};
}

Json correctionOf(const char* unit, const Correction& c, double factor) {
  return {{"unit", unit},
          {"constant", listOf(factor * c.constant)},
          {"linear", listOf(factor * c.linear)},
          {"sine",
           {{"amplitude", listOf(factor * c.amplitude)},
            {"period", listOf(c.period)},
            {"phase", listOf(c.phase)}}}};
}

Json stripOf(const StripTruth& strip) {
  return {{"file", strip.file},
          {"points", strip.points},
          {"firstTime", strip.errors.firstTime},
          {"lastTime", strip.lastTime},
          {"heightAboveGround", strip.plan.heightAboveGround},
          {"position", correctionOf("m", strip.errors.position, 1.0)},
          {"attitude", correctionOf("deg", strip.errors.attitude, 1.0 / degree)}};
}

Json optionsOf(const SimulationSettings& options) {
  return {{"seed", options.seed},
          {"points", options.points},
          {"strips", options.strips},
          {"length", options.length},
          {"height", options.height},
          {"speed", options.speed},
          {"terrainScale", options.terrainScale},
          {"rangeNoise", options.rangeNoise},
          {"angleNoise", options.angleNoise},
          {"errorScale", options.errorScale},
          {"onlyErrors", options.onlyErrors},
          {"slowErrors", options.slowErrors},
          {"flatControl", options.flatControl},
          {"epsg", options.epsg}};
}

}  // namespace

std::string truthText(const SimulationSettings& options, const MountingValues& nominal,
                      const MountingValues& real, const std::vector<StripTruth>& strips) {
  Json truth{{"format", "velorn synthetic flight"},
             {"version", 1},
             {"options", optionsOf(options)},
             {"week", FlightPlan::week},
             {"globals", globalsOf(nominal, real)}};
  truth["strips"] = Json::array();
  for (const auto& strip : strips) truth["strips"].push_back(stripOf(strip));
  return truth.dump(2) + "\n";
}

std::string planesText(const Terrain& terrain) {
  std::string text = "plane,class,easting,northing,height,normal_e,normal_n,normal_h\n";
  std::uint32_t number = 0;
  for (const Plane& plane : terrain.planes()) {
    const auto& [p, n] = std::pair(plane.through, plane.normal);
    fmt::format_to(std::back_inserter(text), "{},{},{},{},{},{},{},{}\n", number++,
                   static_cast<int>(plane.surface), p.x, p.y, p.z, n.x, n.y, n.z);
  }
  return text;
}

}  // namespace Velorn::Flights::Simulation
