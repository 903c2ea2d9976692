// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <numbers>

constexpr double degree = std::numbers::pi / 180.0;  ///< [rad]
