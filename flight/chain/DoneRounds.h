// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The rounds that a root folder holds: the rules of the rounds are gone through once more, and
// every step is looked up instead of being done.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "flight/chain/RoundWork.h"

namespace Velorn::Flights {

struct DoneRound {
  Round round;
  RoundReport report;  ///< without an adjustment where none ended well
};

struct DoneRounds {
  std::vector<DoneRound> rounds;
  std::string missing;  ///< why the next round is not there; empty: there is no other
};

/// As far as inputs and settings are those that the rounds were done with; the limit of the number
/// of rounds does not count.
/// @param run  with the steps that were done, and not forced to do them again
DoneRounds doneRounds(const RunContext& run, RoundWork& work);

}  // namespace Velorn::Flights
