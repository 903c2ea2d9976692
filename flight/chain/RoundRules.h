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
  double radius = 0.0;         ///< of the search [m]
  double controlRadius = 0.0;  ///< of the search for ground truth [m]
  double scale = 1.0;          ///< above 1: a coarse round
  /// Planes are fitted anew where the round before puts the points: a mounting that was far off had
  /// bent the strips.
  bool seesAnew = false;
  std::optional<RoundModel> start;

  bool isCoarse() const { return scale > 1.0; }
};

/// Search radius of a coarse round in units of its scale times the distance of the points.
inline constexpr double spacingsSearched = 4.0;

/// What the rounds are made of.
class RoundSteps {
 public:
  RoundSteps() = default;
  virtual ~RoundSteps() = default;
  RoundSteps(const RoundSteps&) = delete;
  RoundSteps& operator=(const RoundSteps&) = delete;

  /// How far the strips lie apart as delivered.
  virtual ApartReport apart() = 0;
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
  /// Rounds that come first, each finer than the one before; none said: as many as the distance of
  /// the strips asks for.
  std::optional<unsigned int> coarse;
  unsigned int fine = 10;        ///< rounds after them, at most
  double widest = 3.0;           ///< search radius [m]
  double noise = unknownFigure;  ///< standard deviation of points along normals [m]
};

/// What the rounds leave, also when a step of them throws.
struct RoundsResult {
  std::optional<ApartReport> apart;  ///< where the rounds decided by it
  std::vector<RoundReport> reports;
  std::optional<RoundModel> model;  ///< none unless the last solver converged
  std::string end;                  ///< why there is no other round
  std::vector<std::string> warnings;
};

/// A matching in one line.
std::string matchingLine(unsigned int round, const MatchReport& matching, bool isSkipped);

/// So many coarse rounds that the first searches as far as the strips lie apart; none where rounds
/// that search within `radius` find their way by themselves.
/// @param radius  of the search in other rounds [m]
unsigned int coarseRoundsFor(const ApartReport& apart, double radius);

/// From coarse to fine, and then until points move by less than a millimetre, or a tenth of their
/// standard deviation, or within their noise and not less than in the round before, and no global
/// correction creeps. A round after which ground truth fits
/// much worse than before is taken back.
/// @throws what the steps throw
void runRounds(const RoundPlan& plan, RoundSteps& steps, RoundsResult& result);

}  // namespace Velorn::Flights
