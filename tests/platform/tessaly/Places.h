// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Places for the tests of coordinates: the table of places.txt, and random ones in UTM zones.
#pragma once

#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <locale>
#include <numbers>
#include <ostream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/geomra/Degree.h"
#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/TransverseMercator.h"

inline constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

/// What one tool says of one place.
struct Place {
  std::string name, tool;
  unsigned int epsg = 0;
  Geomra::PhysicalSpace::point geographic;    // [rad], [rad], [m]
  Geomra::PhysicalSpace::point projected;     // [m]
  Geomra::PhysicalSpace::point earthCentred;  // [m]

  Tessaly::TransverseMercatorProjectionParameter zone() const {
    return Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(epsg);
  }
  friend std::ostream& operator<<(std::ostream& stream, const Place& place) {
    return stream << place.name << " in EPSG " << place.epsg << " by " << place.tool;
  }
};

/// All rows of places.txt; throws when there are none.
inline std::vector<Place> placesOfTheTable() {
  std::ifstream table(std::string(VELORN_TEST_DATA) + "/places.txt");
  std::vector<Place> places;
  for (std::string line; std::getline(table, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream words(line);
    words.imbue(std::locale::classic());
    Place p;
    words >> p.name >> p.tool >> p.epsg >> p.geographic.x >> p.geographic.y >> p.geographic.z >>
        p.projected.x >> p.projected.y >> p.earthCentred.x >> p.earthCentred.y >> p.earthCentred.z;
    if (!words) throw std::runtime_error("places.txt: not understood: " + line);
    p.geographic.x *= Geomra::degree;
    p.geographic.y *= Geomra::degree;
    p.projected.z = p.geographic.z;
    places.push_back(p);
  }
  if (places.empty()) throw std::runtime_error("places.txt: missing or empty");
  return places;
}

/// Name of a test of one row: what gtest allows there are letters, digits and '_'.
inline std::string nameOf(const testing::TestParamInfo<Place>& row) {
  return row.param.name + "_" + row.param.tool;
}

/// Geographic points [rad], [rad], [m] up to 3.5° beside a meridian [deg], 0 to 84° north.
inline std::vector<Geomra::PhysicalSpace::point> randomPlaces(double meridian, std::size_t count,
                                                              std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> beside(-3.5, 3.5), latitude(0, 84), height(-100, 5000);
  std::vector<Geomra::PhysicalSpace::point> places(count);
  for (auto& place : places) {
    place = {(meridian + beside(random)) * Geomra::degree, latitude(random) * Geomra::degree,
             height(random)};
  }
  return places;
}

/// Distance of two projected or two earth-centred points [m].
inline double apart(const Geomra::PhysicalSpace::point& a, const Geomra::PhysicalSpace::point& b) {
  return std::sqrt(dot(b - a, b - a));
}

/// Distance of two neighbouring geographic points [m]; longitudes may be turns apart.
inline double apartOnEarth(const Geomra::PhysicalSpace::point& a,
                           const Geomra::PhysicalSpace::point& b) {
  constexpr double radius = 6.4e6;
  const double longitudes = std::remainder(b.x - a.x, 2.0 * std::numbers::pi);
  return std::hypot(radius * std::cos(a.y) * longitudes, radius * (b.y - a.y), b.z - a.z);
}

// Our own operations stay within 4e-9 m of an evaluation with 113 bits, the tools not farther off;
// the table has nine decimals.
inline constexpr double betweenPrograms = 1e-8;  // [m]

// Twice 4e-9 m, one way each.
inline constexpr double thereAndBack = 8e-9;  // [m]
