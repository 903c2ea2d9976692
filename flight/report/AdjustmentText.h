// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// An adjustment in a few lines for people.
#pragma once

#include <string>

#include "flight/chain/Adjustment.h"

namespace Velorn::Flights {

/// How well the strips fit before and after, how the solver ended, and which sections were held
/// constant and why.
std::string summaryOf(const AdjustmentOutcome& outcome, bool isControlled);

}  // namespace Velorn::Flights
