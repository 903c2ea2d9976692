// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Angles are radians inside, and degrees in files and texts for people.
#pragma once

#include <numbers>

namespace Geomra {

constexpr double degree = std::numbers::pi / 180.0;            ///< [rad]
constexpr double degreesPerRadian = 180.0 / std::numbers::pi;  ///< one radian [degree]

}  // namespace Geomra
