// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a matching finds of each patch of the ground truth, and why some of it is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "flight/matching/GroundTruth.h"
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

class ControlTally {
 public:
  /// All patches, with nothing found yet.
  explicit ControlTally(const GroundTruth& known);

  void count(std::uint32_t item, std::size_t ControlItem::*counter) { ++(items_[item].*counter); }

  /// Counts those of the first list that the second one lacks.
  /// @param after  a part of the first
  void countGone(const std::vector<Correspondence>& before,
                 const std::vector<Correspondence>& after, std::size_t ControlItem::*counter);

  /// Takes in what is kept of a strip.
  void add(const std::vector<Correspondence>& kept);

  /// All patches by id, with their misfits as searched, and why one has no correspondence.
  std::vector<ControlItem> items() const;

 private:
  const GroundTruth& known_;
  std::vector<ControlItem> items_;
  std::vector<std::vector<double>> distances_;  // of each item
};

/// Takes out what lies on another surface than the patch does in most of the strip: roofs or cars
/// above it. That is farther than 10 cm and 3 NMAD off the median of the strip's points at the same
/// patch, so that at least half of them stay, however far off all are. Judges outliers.
/// @param pairs  of one strip
void leaveOtherSurfaces(std::vector<Correspondence>& pairs, const GroundTruth& known,
                        CandidateTally& tally);

}  // namespace Velorn::Flights
