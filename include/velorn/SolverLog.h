// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the solver's own library logs.
#pragma once

#include <velorn/Visibility.h>

namespace Velorn {

/// Leaves nothing of that log but errors, on standard error: remarks on the solver's workings, such
/// as that a single block needs no ordering, are nothing for the users of a program. For programs
/// that do not set up the log (glog) themselves; does nothing when that was done.
VELORN_EXPORT void keepSolverLogQuiet();

}  // namespace Velorn
