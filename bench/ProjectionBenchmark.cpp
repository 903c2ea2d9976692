// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Cost per point of the coordinate operations, each beside its baseline: the geodesy library
// underneath, called directly with degrees on both sides. The ratio is what our units, checks and
// the call into the platform cost.
#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/TransverseMercator.hpp>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

#include <benchmark/benchmark.h>

#include "platform/geomra/Degree.h"
#include "platform/tessaly/EarthCentredCoordinates.h"
#include "platform/tessaly/TransverseMercator.h"

namespace {

using Geomra::PhysicalSpace::point;
using Points = std::array<point, 1024>;

using Geomra::degree;
constexpr double meridian = 9.0;  // [deg], of zone 32
const auto zone = Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(32632);
const auto& series = GeographicLib::TransverseMercator::UTM();
const auto& geocentric = GeographicLib::Geocentric::WGS84();

// Longitude, latitude [deg] and height [m] of places in the zone.
const Points& places() {
  static const Points made = [] {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> beside(-3.5, 3.5), latitude(0, 84), height(-100, 5000);
    Points points;
    for (auto& p : points) p = {meridian + beside(random), latitude(random), height(random)};
    return points;
  }();
  return made;
}

point inRadians(const point& p) {
  return {p.x * degree, p.y * degree, p.z};
}
point inZone(const point& p) {
  return Tessaly::transverseMercatorProjection(inRadians(p), zone, true);
}
point inEarth(const point& p) {
  return Tessaly::ellipsoidalToCartesian(inRadians(p), zone.getEllipsoid(), true);
}

// Runs an operation over all places, which are first brought into the form that it takes.
template <typename Prepare, typename Operation>
void perPoint(benchmark::State& state, Prepare prepare, Operation operation) {
  Points points = places();
  for (auto& p : points) p = prepare(p);
  for (auto _ : state) {
    for (const auto& p : points) benchmark::DoNotOptimize(operation(p));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(points.size()));
}

void projectGeographicLib(benchmark::State& state) {
  perPoint(
      state, [](const point& p) { return p; },
      [](const point& p) {
        point q;
        series.Forward(meridian, p.y, p.x, q.x, q.y);
        return q;
      });
}
void project(benchmark::State& state) {
  perPoint(state, inRadians,
           [](const point& p) { return Tessaly::transverseMercatorProjection(p, zone, true); });
}

void unprojectGeographicLib(benchmark::State& state) {
  perPoint(state, inZone, [](const point& p) {
    point q;
    series.Reverse(meridian, p.x - 500000.0, p.y, q.y, q.x);
    return q;
  });
}
void unproject(benchmark::State& state) {
  perPoint(state, inZone, [](const point& p) {
    return Tessaly::inverseTransverseMercatorProjection(p, zone, true);
  });
}

void toEarthCentredGeographicLib(benchmark::State& state) {
  perPoint(
      state, [](const point& p) { return p; },
      [](const point& p) {
        point q;
        geocentric.Forward(p.y, p.x, p.z, q.x, q.y, q.z);
        return q;
      });
}
void toEarthCentred(benchmark::State& state) {
  perPoint(state, inRadians, [](const point& p) {
    return Tessaly::ellipsoidalToCartesian(p, zone.getEllipsoid(), true);
  });
}

void fromEarthCentredGeographicLib(benchmark::State& state) {
  perPoint(state, inEarth, [](const point& p) {
    point q;
    geocentric.Reverse(p.x, p.y, p.z, q.y, q.x, q.z);
    return q;
  });
}
void fromEarthCentred(benchmark::State& state) {
  perPoint(state, inEarth, [](const point& p) {
    return Tessaly::cartesianToEllipsoidalWithConvergedInfo(p, zone.getEllipsoid(), true);
  });
}

// Of each group the first is the baseline; an iteration is 1024 points.
BENCHMARK(projectGeographicLib)->Name("Project1024Points/GeographicLib");
BENCHMARK(project)->Name("Project1024Points/Tessaly");
BENCHMARK(unprojectGeographicLib)->Name("Unproject1024Points/GeographicLib");
BENCHMARK(unproject)->Name("Unproject1024Points/Tessaly");
BENCHMARK(toEarthCentredGeographicLib)->Name("ToEarthCentred1024Points/GeographicLib");
BENCHMARK(toEarthCentred)->Name("ToEarthCentred1024Points/Tessaly");
BENCHMARK(fromEarthCentredGeographicLib)->Name("FromEarthCentred1024Points/GeographicLib");
BENCHMARK(fromEarthCentred)->Name("FromEarthCentred1024Points/Tessaly");

}  // namespace
