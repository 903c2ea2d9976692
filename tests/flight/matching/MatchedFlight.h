// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A small synthetic flight whose strips are rasterized with the planes that are known, and what a
// matching of it needs.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <utility>

#include "flight/matching/Match.h"
#include "flight/strips/Watcher.h"
#include "tests/flight/matching/MatchFiles.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include <velorn/CorrespondenceBlock.h>

class MatchedFlight {
 public:
  using point = Geomra::PhysicalSpace::point;
  using vector = Geomra::PhysicalSpace::vector;

  explicit MatchedFlight(const Velorn::Flights::SimulationSettings& simulated)
      : groundTruth(folder / "ground_truth.kx") {
    make(folder.path(), simulated);
    strips = stripsIn(folder.path());
    planes = planesIn(folder.path());
    for (const auto& made : {planarPoints(), rasters()}) std::filesystem::create_directory(made);
    for (std::size_t k = 0; k < strips.size(); ++k) rasterize(k);
    std::filesystem::copy(groundTruth, rasters() / groundTruth.filename());
    configuration.RootPath = folder.path();
    configuration.SearchRadius = 4.0;
    Velorn::Flights::orFail(configuration.check());
  }

  Velorn::Flights::MatchReport match(const Velorn::Flights::Solution* solution = nullptr,
                                     const Velorn::Flights::PairObserver& observe = {}) {
    Velorn::Flights::Watcher silent{{}};
    std::vector<Velorn::Flights::SurfaceFiles> files;
    for (const auto& strip : strips) {
      files.push_back({strip, planarPoints() / strip.filename(), rasters() / strip.filename()});
    }
    Velorn::Flights::SurfaceStore surfaces(files, rasters() / groundTruth.filename(), configuration,
                                           memory);
    return Velorn::Flights::match(configuration, surfaces, options, solution, silent, observe);
  }

  std::filesystem::path planarPoints() const { return folder / "02_planar"; }
  std::filesystem::path rasters() const { return folder / "02_raster"; }
  std::filesystem::path blocks() const { return folder / "03_correspondences"; }

  /// The blocks of the folder by name.
  std::map<std::string, Velorn::CorrespondenceBlock> loadedBlocks() const {
    std::map<std::string, Velorn::CorrespondenceBlock> all;
    for (const auto& entry : std::filesystem::directory_iterator(blocks())) {
      Velorn::CorrespondenceBlock block(entry.path(), configuration.Storage);
      Velorn::Flights::orFail(block.errorText());
      all.emplace(entry.path().filename().string(), block);
    }
    return all;
  }

  /// Place of a measurement in its strip.
  std::size_t numberOf(std::size_t strip, double time) const {
    const auto& times = points[strip].times;
    return static_cast<std::size_t>(std::lower_bound(times.begin(), times.end(), time) -
                                    times.begin());
  }

  TemporaryFolder folder;
  std::filesystem::path groundTruth;
  std::vector<std::filesystem::path> strips;
  std::vector<TruePlane> planes;
  std::vector<Velorn::Flights::MatchPoints> points;  ///< of each strip
  std::vector<std::vector<std::uint32_t>> planeOf;   ///< number of the plane of each of them
  std::size_t memory = 0;
  Velorn::InputParameter configuration;
  Velorn::Flights::MatchOptions options;

 private:
  /// Normals, classes and distances from the true planes; every third point stands for the others.
  void rasterize(std::size_t strip) {
    const OneGridFile file(strips[strip]);
    auto& all = points.emplace_back();
    all.delivered = file.world<point>("Positions");
    all.times = file.world<double>("GPSTime");
    all.scanner = file.column<point>(Strandel::scannerChartName, "Positions");
    all.beams = file.column<vector>(Strandel::scannerChartName, "Waveforms.DirectionDelta");
    all.week = static_cast<std::uint32_t>(truthIn(folder.path())["week"].get<int>());
    planeOf.push_back(surfacesOf(folder.path(), strips[strip]).world<std::uint32_t>("Plane"));
    auto raster = all;
    std::vector<std::uint32_t> third;
    for (std::uint32_t k = 0; k < all.size(); ++k) {
      const TruePlane& plane = planes[planeOf.back()[k]];
      all.normals.push_back(plane.normal);
      all.codes.push_back(codeOf(plane));
      raster.roughness.push_back(0.02);
      raster.heights.push_back(dot(plane.normal, all.delivered[k] - plane.through));
      if (k % 3 == 0) third.push_back(k);
    }
    raster.normals = all.normals;
    raster.codes = all.codes;
    raster.keep(third);
    savePlanes(planarPoints() / strips[strip].filename(), all);
    saveMatchPoints(rasters() / strips[strip].filename(), raster);
  }
};
