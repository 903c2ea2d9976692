// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Terrain.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "flight/simulation/Random.h"
#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

constexpr double tileSize = 40.0;  // edge of a tile [m]

/// Every so many rows of tiles one is a river, which flows from west to east.
constexpr std::int64_t rowsPerRiver = 20, riverRow = 10;
constexpr double floorHalfWidth = 8.0, riverDepth = 4.0;

/// Unit normal of a plane that falls by a slope towards an azimuth.
vector normalOf(double slope, double aspect) {
  return {std::sin(slope) * std::sin(aspect), std::sin(slope) * std::cos(aspect), std::cos(slope)};
}

/// Soft hills: the height of the fields' middles.
double heightOfHills(double e, double n, double scale) {
  return Terrain::level + scale * 2.0 * std::sin(e / (170.0 * scale)) +
         scale * 1.5 * std::cos(n / (230.0 * scale));
}

}  // namespace

bool Rectangle::contains(double e, double n, double slack) const {
  const double a = u(e, n), b = v(e, n);
  return a >= uLow - slack && a <= uHigh + slack && b >= vLow - slack && b <= vHigh + slack;
}

double Plane::heightAt(double e, double n) const {
  return through.z - (normal.x * (e - through.x) + normal.y * (n - through.y)) / normal.z;
}

double Plane::slope() const {
  return std::atan2(std::hypot(normal.x, normal.y), normal.z);
}

double Plane::aspect() const {
  return std::atan2(normal.x, normal.y);
}

Terrain::Terrain(const Extent& extent, std::uint64_t seed, double scale)
    : scale_(scale), side_(scale * tileSize) {
  const auto index = [this](double metres) {
    return static_cast<std::int64_t>(std::floor(metres / side_));
  };
  const std::int64_t firstColumn = index(extent.west), firstRow = index(extent.south);
  west_ = static_cast<double>(firstColumn) * side_;
  south_ = static_cast<double>(firstRow) * side_;
  columns_ = index(extent.east) - firstColumn + 1;
  rows_ = index(extent.north) - firstRow + 1;
  for (std::int64_t row = firstRow; row < firstRow + rows_; ++row) {
    for (std::int64_t column = firstColumn; column < firstColumn + columns_; ++column) {
      addTile(column, row, seed);
    }
  }
}

void Terrain::addTile(std::int64_t column, std::int64_t row, std::uint64_t seed) {
  Random random(seed, Draw::terrain, static_cast<std::uint64_t>(column),
                static_cast<std::uint64_t>(row));
  tiles_.push_back({static_cast<std::uint32_t>(planes_.size()), 0, 0, {}});
  const double e = (static_cast<double>(column) + 0.5) * side_;
  const double n = (static_cast<double>(row) + 0.5) * side_;
  const Rectangle square{e, n, 1.0, 0.0, -side_ / 2.0, side_ / 2.0, -side_ / 2.0, side_ / 2.0};
  if (row % rowsPerRiver == riverRow) return addRiver(square);
  const double height = heightOfHills(e, n, scale_);
  const double kind = random.uniform(0.0, 1.0);
  const double azimuth = random.uniform(0.0, 360.0) * degree;
  if (kind < 0.20) return addField(square, height, random.uniform(4.0, 20.0) * degree, azimuth);
  addField(square, height, 0.0, 0.0);
  if (kind < 0.40) return;
  const double a = scale_ * random.uniform(10.0, 13.0), b = scale_ * random.uniform(7.0, 9.0);
  const Rectangle house{e + scale_ * random.uniform(-2.8, 2.8),
                        n + scale_ * random.uniform(-2.8, 2.8),
                        std::cos(azimuth),
                        std::sin(azimuth),
                        -a,
                        a,
                        -b,
                        b};
  const double slope = kind < 0.52 ? 0.0 : random.uniform(15.0, 40.0) * degree;
  addHouse(house, height + scale_ * random.uniform(3.0, 7.0), slope);
}

void Terrain::addPlane(const Plane& plane, bool roof) {
  Tile& tile = tiles_.back();
  ++(roof ? tile.roofs : tile.grounds);
  planes_.push_back(plane);
  planes_.back().tile = static_cast<std::uint32_t>(tiles_.size() - 1);
  const Rectangle& r = plane.footprint;
  for (const double u : {r.uLow, r.uHigh}) {
    for (const double v : {r.vLow, r.vHigh}) {
      const double corner = plane.heightAt(r.easting + r.cosine * u - r.sine * v,
                                           r.northing + r.sine * u + r.cosine * v);
      lowest_ = std::min(lowest_, corner);
      highest_ = std::max(highest_, corner);
    }
  }
}

void Terrain::addField(const Rectangle& square, double height, double slope, double aspect) {
  addPlane({{square.easting, square.northing, height},
            normalOf(slope, aspect),
            square,
            Surface::ground,
            0},
           false);
}

/// Two banks and the bed between them.
void Terrain::addRiver(const Rectangle& square) {
  const double halfWidth = scale_ * floorHalfWidth;
  const double bankSlope = std::atan(scale_ * riverDepth / (side_ / 2.0 - halfWidth));
  const double bed = level - scale_ * 3.0;
  Rectangle part = square;
  part.vHigh = -halfWidth;
  const point south{square.easting, square.northing - halfWidth, bed};
  addPlane({south, normalOf(bankSlope, 0.0), part, Surface::ground, 0}, false);
  part.vLow = -halfWidth;
  part.vHigh = halfWidth;
  const point middle{square.easting, square.northing, bed};
  addPlane({middle, normalOf(0.0, 0.0), part, Surface::bed, 0}, false);
  part.vLow = halfWidth;
  part.vHigh = side_ / 2.0;
  const point north{square.easting, square.northing + halfWidth, bed};
  addPlane({north, normalOf(bankSlope, std::numbers::pi), part, Surface::ground, 0}, false);
}

/// A flat roof for slope 0, else two that meet in a ridge along u.
void Terrain::addHouse(const Rectangle& house, double eaves, double slope) {
  tiles_.back().house = house;
  const point middle{house.easting, house.northing, eaves + house.vHigh * std::tan(slope)};
  if (slope == 0.0) {
    return addPlane({middle, normalOf(0.0, 0.0), house, Surface::building, 0}, true);
  }
  // The left half falls towards +v, whose azimuth follows from its east and north components.
  const double left = std::atan2(-house.sine, house.cosine);
  Rectangle part = house;
  part.vLow = 0.0;
  addPlane({middle, normalOf(slope, left), part, Surface::building, 0}, true);
  part.vLow = house.vLow;
  part.vHigh = 0.0;
  addPlane({middle, normalOf(slope, left + std::numbers::pi), part, Surface::building, 0}, true);
}

bool Terrain::belongs(std::uint32_t number, double easting, double northing) const {
  const Plane& plane = planes_[number];
  const Tile& tile = tiles_[plane.tile];
  const bool isGround = number < tile.firstPlane + tile.grounds;
  const bool underHouse = isGround && tile.roofs > 0 && tile.house.contains(easting, northing);
  return plane.footprint.contains(easting, northing) && !underHouse;
}

}  // namespace Velorn::Flights::Simulation
