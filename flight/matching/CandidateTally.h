// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What becomes of the candidates of two strips, or of a strip and the ground truth: counted, and
// listed for those who look.
#pragma once

#include <array>
#include <vector>

#include "flight/matching/Correspondence.h"
#include "flight/surfaces/TerrainClasses.h"
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// By the class index: ground truth, roof, slope, bed points, flat.
using Funnels = std::array<Funnel, 5>;

class CandidateTally {
 public:
  /// @param lists  `judged` is filled, too
  explicit CandidateTally(bool lists = false) : lists_(lists) {}

  void add(const Correspondence& candidate) { ++funnelOf(candidate).candidates; }

  /// Each of those that were added once.
  void judge(const Correspondence& candidate, Fate fate) {
    ++countOf(fate, funnelOf(candidate));
    if (lists_) judged_.push_back({candidate, fate});
  }

  Funnels& funnels() { return funnels_; }
  const Funnels& funnels() const { return funnels_; }
  /// In the order of the candidates' numbers i.
  std::vector<JudgedCandidate> judged() &&;

 private:
  Funnel& funnelOf(const Correspondence& candidate) {
    return funnels_.at(classIndexOf(candidate.code));
  }
  static std::size_t& countOf(Fate fate, Funnel& funnel);

  bool lists_;
  Funnels funnels_;
  std::vector<JudgedCandidate> judged_;
};

}  // namespace Velorn::Flights
