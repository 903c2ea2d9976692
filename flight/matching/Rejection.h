// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which correspondences of a pair do not go with the others.
#pragma once

#include <vector>

#include "flight/matching/Correspondence.h"
#include "flight/matching/PairSearch.h"

namespace Velorn::Flights {

/// Median and NMAD: 1.4826 times the median of the absolute deviations from it.
struct Spread {
  double median, nmad;
};

/// @return NaN for no values, or when one of them is NaN; of an even number of values the mean of
/// the middle two counts
Spread spreadOf(std::vector<double> values);

/// Whose distances along the normal are expected to be alike.
enum class Alike : std::uint8_t {
  ofClass,      ///< those of a class
  ofDirection,  ///< those of a class whose normals look the same way, as `stratumOf` parts them:
                ///< while strips lie far apart the few walls must not be measured by the ground
};

/// The first step of `rejectUnlike` alone, with median and NMAD of the distances that are left.
void rejectRough(std::vector<Correspondence>& pairs, CandidateTally& tally);

/// Takes out, class by class, the correspondences with a neighbourhood on either side that is
/// rougher than the median + 3 NMAD of that side, then those with a distance along the normal
/// beyond the median ± 3 NMAD of those alike. Fewer than ten are judged by all of the pair
/// together, and fewer than five in all are outliers: nobody could tell. An NMAD below 1 mm counts
/// as 1 mm. The funnels get median and NMAD of the distances per class before the second step.
void rejectUnlike(std::vector<Correspondence>& pairs, CandidateTally& tally,
                  Alike alike = Alike::ofClass);

}  // namespace Velorn::Flights
