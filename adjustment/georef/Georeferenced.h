// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the sensor model says of one measurement.
#pragma once

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn {

/// What went wrong with a measurement; the numbers are those of the messages.
enum class Code { none = 0, noPosition = 1, noSection = 2, noGeographicPoint = 3 };

/// A world point, and the sensor position it was measured from.
struct Georeferenced {
  Geomra::PhysicalSpace::point world;   ///< w, projected, with height [m]
  Geomra::PhysicalSpace::point sensor;  ///< p', projected, with height [m]
  Code code = Code::none;               ///< of the last step that failed
};

}  // namespace Velorn
