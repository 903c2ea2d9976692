// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/SurfaceStore.h"

#include <system_error>
#include <utility>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace fs = std::filesystem;

SurfaceStore::SurfaceStore(std::vector<SurfaceFiles> strips, fs::path groundTruth,
                           Velorn::InputParameter configuration, std::size_t memory)
    : groundTruth_(std::move(groundTruth)),
      configuration_(std::move(configuration)),
      room_(memory) {
  for (auto& files : strips) strips_.push_back({std::move(files), {}, {}});
}

void SurfaceStore::requireFiles() const {
  const auto require = [](const fs::path& file) {
    std::error_code fault;
    if (fs::exists(file, fault)) return;
    throw Error(file.string() + ": no such raster; rasterize first", Error::MissingFile);
  };
  for (const auto& strip : strips_) {
    require(strip.files.planar);
    require(strip.files.raster);
  }
  require(groundTruth_);
}

/// @return whether there was room
bool SurfaceStore::take(MatchPoints& points, Kept& kept) {
  if (points.bytes() > room_) return false;
  room_ -= points.bytes();
  kept = std::move(points);
  return true;
}

void SurfaceStore::forget(std::size_t strip) {
  Strip& its = strips_.at(strip);
  for (Kept* kept : {&its.planar, &its.raster}) {
    if (*kept) room_ += (*kept)->bytes();
    kept->reset();
  }
}

void SurfaceStore::forgetAll() {
  for (std::size_t strip = 0; strip < size(); ++strip) forget(strip);
}

template <typename Read>
MatchPoints SurfaceStore::chosen(Kept& kept, const Wanted& wanted, const Read& read) {
  if (kept) return kept->at(numbersOf(*kept, wanted));
  MatchPoints points = read();
  if (take(points, kept)) return kept->at(numbersOf(*kept, wanted));
  points.keep(numbersOf(points, wanted));
  return points;
}

MatchPoints SurfaceStore::planar(std::size_t strip, const Wanted& wanted) {
  Strip& its = strips_.at(strip);
  if (its.files.planar == its.files.raster) return raster(strip, wanted);
  return chosen(its.planar, wanted, [&] {
    return readPlanarPoints(its.files.planar, its.files.strip, configuration_);
  });
}

MatchPoints SurfaceStore::raster(std::size_t strip, const Wanted& wanted) {
  Strip& its = strips_.at(strip);
  return chosen(its.raster, wanted,
                [&] { return readMatchPoints(its.files.raster, configuration_); });
}

KnownPoints SurfaceStore::knownPoints() const {
  return readGroundTruth(groundTruth_, configuration_);
}

}  // namespace Velorn::Flights
