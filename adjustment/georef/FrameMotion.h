// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The motion of a frame by exact values at some times of its interval.
#pragma once

#include "adjustment/georef/FrameKernel.h"

namespace Velorn {

/// How the aircraft turns in an interval, and how the scanner sits in it.
struct FrameMounting {
  double turning[3][4];         ///< a'(u) − a'(0), powers of u [rad]
  double sines[3], cosines[3];  ///< of a'(0)
  double misalignment[3][3];    ///< M S: from the scanner's axes to the body's
  double leverArm[3];           ///< l [m]
};

/// Sets frame.motion: C N l with the sensor's place, and C N M S, at as many times as the
/// polynomial has coefficients, Chebyshev's nodes. All else of the frame must be set.
void setMotion(IntervalFrame& frame, const FrameMounting& mounting);

}  // namespace Velorn
