// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// All that the evaluation keeps of a correspondence.
#pragma once

#include <array>
#include <cstdint>

namespace Velorn {

/// A laser point, without what all of its section have in common.
struct MeasurementRecord {
  std::array<double, 3> polar;  ///< as recorded [m], [rad], [rad]
  double time;                  ///< GPS [s of week]
};

/// Two corresponding points. Of the ground truth, `second.polar` is the world point and the rest of
/// `second` means nothing.
struct CorrespondenceRecord {
  MeasurementRecord first, second;
  std::array<double, 3> normal;                 ///< of the surface, as stored
  std::uint32_t firstInterval, secondInterval;  ///< of PoseIntervals
  std::uint32_t place;                          ///< of LocalPlaces
};
static_assert(sizeof(CorrespondenceRecord) == 104);

}  // namespace Velorn
