// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A flight over known planes is rasterized: are normals and classes those of the planes?
#include <cmath>
#include <cstdio>

#include <gtest/gtest.h>

#include "host/matching/Rasterize.h"
#include "host/matching/TerrainClasses.h"
#include "tests/host/simulation/SimulatedFlight.h"

namespace {

using namespace Matching;

struct Silent : Kestrum::LoaderProgress {
  void report(const std::string& /*text*/, std::size_t /*current*/,
              std::size_t /*total*/) override {}
};

Velorn::InputParameter checked() {
  Velorn::InputParameter configuration;
  orFail(configuration.check());
  return configuration;
}

std::uint8_t trueCode(const TruePlane& plane) {
  if (plane.surface == 6) return 11;
  if (plane.surface == 40) return 13;
  return plane.normal.z < std::cos(3.0 * 3.14159265358979 / 180) ? 12 : 14;
}

struct Shares {
  double points = 0, surface = 0, rightClass = 0, rightNormal = 0;
};

/// Over all points of a strip that may be matched.
Shares sharesOf(const std::filesystem::path& folder, const std::string& strip) {
  const auto planes = planesIn(folder);
  const OneGridFile made(folder / (strip + ".kx")),
      truth(folder / "truth" / (strip + "_planes.kx"));
  const auto codes = made.world<std::uint8_t>("RigorousClassification");
  const auto normals = made.world<vector>("NormalVector");
  const auto plane = truth.world<std::uint32_t>("Plane");
  Shares shares;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    ++shares.points;
    if (!isSurface(codes[i])) continue;
    ++shares.surface;
    const TruePlane& real = planes.at(plane[i]);
    if (codes[i] == trueCode(real)) ++shares.rightClass;
    const double degrees = std::acos(std::min(1.0, dot(normals[i], real.normal))) * 57.2957795;
    if (degrees < 3.0) ++shares.rightNormal;
  }
  return shares;
}

TEST(RasterizedFlight, HasTheClassesAndNormalsOfItsPlanes) {
  const TemporaryFolder folder;
  Simulation::Options options = Simulation::Options{};
  options.points = 1'000'000;
  options.height = 400.0;
  make(folder.path(), options);
  Silent progress;
  const auto counts =
      rasterizeStrip(folder / "strip_01.kx", folder / "raster.kx", checked(), {}, progress);
  const Shares shares = sharesOf(folder.path(), "strip_01");
  std::printf("%g points, %g surface, class %g, normal %g\n", shares.points,
              shares.surface / shares.points, shares.rightClass / shares.surface,
              shares.rightNormal / shares.surface);
  for (std::size_t i = 0; i < 5; ++i)
    std::printf("%zu %zu\n", counts.surface[i], counts.representatives[i]);
  std::printf("%zu %zu %zu %zu %zu %g\n", counts.notFinite, counts.notLast, counts.notPlanar,
              counts.notTerrain, counts.notSelected, counts.medianRoughness);
}

}  // namespace
