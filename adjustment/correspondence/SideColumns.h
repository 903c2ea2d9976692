// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The columns of one side of a block and their names in the container.
#pragma once

namespace Velorn {

/// Calls use(name, column) for what describes the surface.
template <typename Side, typename Use>
void forEachSurfaceColumn(Side& side, const Use& use) {
  use("Positions", side.world);
  use("NormalVector", side.normals);
}

/// Calls use(name, column) for the rest.
template <typename Side, typename Use>
void forEachMeasuredColumn(Side& side, const Use& use) {
  use("GPSTime", side.times);
  use("ScannerCoordiantes", side.scanner);  // spelled so in the files
  use("DirectionDelta", side.directionDeltas);
  use("Classification", side.classes);
}

template <typename Side, typename Use>
void forEachColumn(Side& side, const Use& use) {
  forEachSurfaceColumn(side, use);
  forEachMeasuredColumn(side, use);
}

}  // namespace Velorn
