// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Matching and adjusting in turn: each round searches in the strips as the round before adjusted
// them, and starts from its unknowns.
#pragma once

#include <optional>

#include "flight/chain/Adjustment.h"
#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// What the last round left.
struct RoundsResult {
  Json reports = Json::array();     ///< of each round: "round", "matching", "adjustment", "skipped"
  std::optional<ModelFiles> model;  ///< none unless the last solver converged
  Json key;                         ///< of the last adjustment
};

/// As many rounds as the project wants, fewer when the fit of the pairs changes by less than 1 %.
/// Without the word for one of both the other is done once.
/// @throws Error; a solver that does not converge is none, it ends the rounds
RoundsResult runRounds(const RunContext& run);

}  // namespace Velorn::Flights
