// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The rules of the rounds: when to stop, how far the next one searches, what to do without
// convergence, coarse rounds. The steps themselves are somebody else's, in tests those of nobody.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// A model that an adjustment left, which the next step begins with.
struct RoundModel {
  ModelFiles files;
  std::string digest;  ///< of all that it depends on
};

/// One round on its way.
struct Round {
  unsigned int number = 1;
  double radius = 0.0;  ///< of the search [m]
  double scale = 1.0;   ///< above 1: a coarse round
  std::optional<RoundModel> start;

  bool isCoarse() const { return scale > 1.0; }
};

/// What the rounds are made of.
class RoundSteps {
 public:
  RoundSteps() = default;
  virtual ~RoundSteps() = default;
  RoundSteps(const RoundSteps&) = delete;
  RoundSteps& operator=(const RoundSteps&) = delete;

  /// The round as an earlier run has it, if nothing has changed since.
  virtual std::optional<RoundReport> finished(const Round& round) = 0;
  /// @throws Error for correspondences that no adjustment could use
  virtual MatchReport match(const Round& round) = 0;
  /// @throws Error; a solver that does not converge is none
  virtual AdjustmentReport adjust(const Round& round) = 0;
  /// Remembers a round for `finished`.
  virtual void keep(const Round& round, const RoundReport& report) = 0;
  /// Of the model that a round leaves.
  virtual std::string digestOf(const Round& round) = 0;
  virtual void tell(const std::string& line) = 0;
};

struct RoundPlan {
  bool matches = true, adjusts = true;  ///< without one of both the other is done once
  unsigned int coarse = 0, fine = 5;    ///< rounds at most
  double widest = 3.0;                  ///< search radius [m]
};

/// What the rounds leave, also when a step of them throws.
struct RoundsResult {
  std::vector<RoundReport> reports;
  std::optional<RoundModel> model;  ///< none unless the last solver converged
};

/// A matching in one line.
std::string matchingLine(unsigned int round, const MatchReport& matching, bool isSkipped);

/// From coarse to fine, and then until the fit of the pairs changes by less than 1 %.
/// @throws what the steps throw
void runRounds(const RoundPlan& plan, RoundSteps& steps, RoundsResult& result);

}  // namespace Velorn::Flights
