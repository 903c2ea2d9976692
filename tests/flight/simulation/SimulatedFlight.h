// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A small synthetic flight for tests, and its files read back.
#pragma once

#include <cmath>
#include <cstdint>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "flight/strips/OrFail.h"
#include "platform/geomra/Degree.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Simulate.h>

/// Few points, three strips of which one crosses; everything else as by default.
inline Velorn::Flights::SimulationSettings smallFlight() {
  Velorn::Flights::SimulationSettings options;
  options.points = 20'000;
  options.strips = 2;
  options.length = 800.0;
  return options;
}

inline Velorn::Flights::SimulationReport make(const std::filesystem::path& folder,
                                              const Velorn::Flights::SimulationSettings& settings,
                                              bool overwrite = false) {
  return Velorn::Flights::simulate(folder, settings, overwrite, {});
}

/// The single grid of a container; throws the message when it cannot be read.
class OneGridFile {
 public:
  explicit OneGridFile(const std::filesystem::path& file) {
    Velorn::Flights::orFail(Strandel::MyStorage(0, 0, 0, 1).load(file, bundle_));
  }

  template <typename T>
  std::vector<T> column(const char* chart, const char* field) const {
    const auto read =
        bundle_.slices().at(0)->uniqueGrid()->chart(chart)->field(field)->values<T>({0});
    Velorn::Flights::orFail(read.error);
    return *read.values;
  }
  template <typename T>
  std::vector<T> world(const char* field) const {
    return column<T>(Strandel::worldChartName, field);
  }

 private:
  Strandel::Bundle bundle_;
};

/// Where the points of a strip truly lie.
inline OneGridFile surfacesOf(const std::filesystem::path& folder,
                              const std::filesystem::path& strip) {
  return OneGridFile(folder / "truth" / (strip.stem().string() + "_planes.kx"));
}

/// A plane of truth/planes.csv.
struct TruePlane {
  int surface;
  Geomra::PhysicalSpace::point through;
  Geomra::PhysicalSpace::vector normal;
};

/// The code that a point on the plane gets: ground of more than 3° is a slope.
inline std::uint8_t codeOf(const TruePlane& plane) {
  if (plane.surface == 6) return 11;
  if (plane.surface == 40) return 13;
  return plane.normal.z < std::cos(3.0 * Geomra::degree) ? 12 : 14;
}

inline std::vector<TruePlane> planesIn(const std::filesystem::path& folder) {
  std::istringstream lines(contentOf(folder / "truth" / "planes.csv"));
  std::vector<TruePlane> planes;
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line)) {
    const auto row = nlohmann::json::parse("[" + line + "]");
    planes.push_back({row[1].get<int>(),
                      {row[2].get<double>(), row[3].get<double>(), row[4].get<double>()},
                      {row[5].get<double>(), row[6].get<double>(), row[7].get<double>()}});
  }
  return planes;
}

inline nlohmann::json truthIn(const std::filesystem::path& folder) {
  return nlohmann::json::parse(contentOf(folder / "truth.json"));
}

inline std::vector<std::filesystem::path> stripsIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> strips;
  const auto truth = truthIn(folder);
  for (const auto& strip : truth["strips"]) {
    strips.push_back(folder / strip["file"].get<std::string>());
  }
  return strips;
}
