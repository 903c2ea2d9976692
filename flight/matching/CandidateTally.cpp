// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/CandidateTally.h"

#include <algorithm>
#include <utility>

namespace Velorn::Flights {

std::size_t& CandidateTally::countOf(Fate fate, Funnel& funnel) {
  switch (fate) {
    case Fate::tooFar:
    case Fate::taken:
      return funnel.tooFar;
    case Fate::angle:
      return funnel.angle;
    case Fate::noPlane:
    case Fate::roughness:
      return funnel.roughness;
    case Fate::outlier:
      return funnel.outlier;
    case Fate::thinned:
      return funnel.thinned;
    case Fate::kept:
      break;
  }
  return funnel.kept;
}

std::vector<JudgedCandidate> CandidateTally::judged() && {
  std::ranges::sort(judged_, {}, [](const JudgedCandidate& one) { return one.pair.i; });
  return std::move(judged_);
}

}  // namespace Velorn::Flights
