// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A small strip to rasterize: a flat field, a slope and a flat roof, each by its LAS class.
#pragma once

#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "flight/strips/OrFail.h"
#include "flight/surfaces/Rasterize.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/support/NoProgress.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Containers.h>

/// 3600 points, half a metre apart.
inline Velorn::Flights::StripColumns rasterStrip() {
  std::mt19937 random(9);
  std::normal_distribution<double> noise(0.0, 0.02);
  Velorn::Flights::StripColumns strip;
  strip.week = 2318;
  for (int i = 0; i < 3600; ++i) {
    const int column = i % 60, row = i / 60;
    const double x = 0.5 * column, y = 0.5 * row;
    const bool roof = x >= 20 && y >= 15, slope = x >= 20 && y < 15;
    const double z = roof ? 106.0 : slope ? 100.0 + 0.2 * (x - 20) : 100.0;
    strip.world.push_back({6e5 + x, 5.25e6 + y, z + noise(random)});
    strip.scanner.push_back({400.0, 0.0, x});
    strip.directions.push_back({15.0 - x, 15.0 - y, 500.0 - z});
    strip.times.push_back(1000.0 + 1e-3 * i);
    strip.returnNumber.push_back(1);
    strip.numberOfReturns.push_back(1);
    strip.classification.push_back(roof ? 6 : 2);
    strip.amplitude.push_back(10.0 + 0.01 * i);
    strip.pointSourceId.push_back(7);
  }
  return strip;
}

inline Velorn::InputParameter rasterConfiguration(const std::string& selection = "") {
  Velorn::InputParameter configuration;
  configuration.SelectionStr = selection;
  Velorn::Flights::orFail(configuration.check());
  return configuration;
}

/// The planar points go beside the raster.
inline std::filesystem::path planarOf(std::filesystem::path raster) {
  return raster.replace_extension(".planar.kx");
}

inline Velorn::Flights::RasterCounts rasterize(
    const std::filesystem::path& strip, const std::filesystem::path& raster,
    const Velorn::InputParameter& configuration = rasterConfiguration()) {
  NoProgress progress;
  return Velorn::Flights::rasterizeStrip({strip, planarOf(raster), raster}, configuration, {},
                                         progress);
}

/// Changes the only grid of a file.
inline void change(const std::filesystem::path& file,
                   const std::function<void(Strandel::Grid&)>& action) {
  const Strandel::MyStorage storage(0, 0, 0, 1);
  Strandel::Bundle bundle;
  Velorn::Flights::orFail(storage.load(file, bundle));
  action(*bundle.slices().at(0)->uniqueGrid());
  Velorn::Flights::orFail(storage.save(bundle, file, "wd"));
}
