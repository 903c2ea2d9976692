// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The summary of a run: a sentence of it that is tested alone.
#pragma once

#include <string>

#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// Says of the forward angle's scale that it hardly moves a point, where no sensor has one so
/// large: a scanner that looks straight to its sides leaves it free.
/// @param scale            deviation from one
/// @param farthestForward  largest amount of a forward scanner coordinate [m]
/// @return empty where there is nothing to say
std::string idleScaleText(double scale, double farthestForward);

}  // namespace Velorn::Flights
