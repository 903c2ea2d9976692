// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A flight over known planes is rasterized: are normals and classes those of the planes?
#include <cmath>

#include <gtest/gtest.h>

#include "flight/surfaces/TerrainClasses.h"
#include "platform/geomra/Degree.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/flight/surfaces/RasterStrip.h"

namespace {

using namespace Velorn::Flights;

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
    const double degrees =
        std::acos(std::min(1.0, dot(normals[i], real.normal))) * Geomra::degreesPerRadian;
    if (degrees < 3.0) ++shares.rightNormal;
  }
  return shares;
}

TEST(RasterizedFlight, HasTheClassesAndNormalsOfItsPlanes) {
  const TemporaryFolder folder;
  Velorn::Flights::SimulationSettings options = smallFlight();
  options.points = 200'000;
  options.height = 150.0;  // half a point per square metre
  make(folder.path(), options);
  rasterize(folder / "strip_01.kx", folder / "raster.kx");
  const Shares shares = sharesOf(folder.path(), "strip_01");
  // What is left out lies within a neighbourhood's reach of an edge of its plane.
  EXPECT_GT(shares.surface, 0.75 * shares.points);
  EXPECT_GT(shares.rightClass, 0.995 * shares.surface);
  EXPECT_GT(shares.rightNormal, 0.995 * shares.surface);
}

}  // namespace
