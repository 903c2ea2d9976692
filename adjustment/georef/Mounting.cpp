// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/Mounting.h"

#include <velorn/SolverParameters.h>

namespace Velorn {

Mounting<double> uncorrectedMountingOf(const SolverParameters& parameters) {
  Mounting<double> mounting{Vector3<double>::Zero(), Vector3<double>::Zero(), {}, {}};
  Vector3<double> misalignment;
  for (unsigned int i = 0; i < 3; ++i) {
    mounting.leverArm[i] = parameters.getLeverArm(i);
    misalignment[i] = parameters.getMisalignment(i);
  }
  mounting.misalignment = rotation(misalignment);
  return mounting;
}

Mounting<double> mountingOf(const SolverParameters& parameters) {
  Mounting<double> mounting = uncorrectedMountingOf(parameters);
  for (unsigned int i = 0; i < 3; ++i) {
    mounting.offsets[i] = parameters.getRangeAngleOffset(i);
    mounting.scales[i] = parameters.getRangeAngleScale(i);
  }
  return mounting;
}

}  // namespace Velorn
