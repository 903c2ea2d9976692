// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One laser point of a correspondence, with everything that georeferencing it anew needs.
#pragma once

#include <cstdint>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn {

/// The class byte is 10 plus the TerrainType: 10 ground truth, 11 roof, 12 slope, 13 bed, 14 flat.
struct SphericalBeing {
  SphericalBeing() = default;
  SphericalBeing(const Geomra::PhysicalSpace::point& world,
                 const Geomra::PhysicalSpace::point& scanner, const double& time,
                 const Geomra::PhysicalSpace::vector& surfaceNormal,
                 const Geomra::PhysicalSpace::vector& beamDelta, const std::uint8_t& classCode)
      : worldPosition(world),
        scannerPosition(scanner),
        gpsTime(time),
        normal(surfaceNormal),
        directionDelta(beamDelta),
        classification(classCode) {}

  Geomra::PhysicalSpace::point worldPosition;    ///< projected, with height [m]
  Geomra::PhysicalSpace::point scannerPosition;  ///< (down, forward, right) [m]
  double gpsTime = 0.0;                          ///< [s of week]
  Geomra::PhysicalSpace::vector normal;          ///< of the surface at the point
  Geomra::PhysicalSpace::vector directionDelta;  ///< of the beam, from the point to the sensor
  std::uint8_t classification = 0;

  friend bool operator==(const SphericalBeing&, const SphericalBeing&) = default;
};

}  // namespace Velorn
