// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Between the platform's points and the matrices of the sensor model.
#pragma once

#include "adjustment/georef/Rotation.h"
#include "platform/geomra/PhysicalSpace.h"

namespace Velorn {

/// Of a point or a vector.
template <typename Triple>
Vector3<double> vectorOf(const Triple& triple) {
  return {triple.x, triple.y, triple.z};
}

inline Geomra::PhysicalSpace::point pointOf(const Vector3<double>& v) {
  return {v[0], v[1], v[2]};
}

}  // namespace Velorn
