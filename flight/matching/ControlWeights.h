// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Robust weights of the patches of the ground truth, all correspondences of a patch together.
//
// With the misfits m of all patches under one model and the spread s of the bulk of them,
//     s = max(1 cm, spread of the pairs, q / 1.15),  q the |m| that three quarters do not exceed
// a patch weighs w = min(1, (3 s / |m|)²), and at least 0.05: w multiplies the residual, so that
// beyond 3 s the pull w² |m| of a patch falls, as that of the redescending M-estimators does
// (Hampel, Ronchetti, Rousseeuw and Stahel: Robust Statistics, 1986, section 2.6). 1.15 is the
// quantile of the normal distribution. Misfits of more than a quarter of the patches make s as
// large as they are: what is wrong then is not the patches, and no weight hides it.
#pragma once

#include <span>
#include <vector>

#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

inline constexpr double leastControlWeight = 0.05;

/// The spread s of the bulk of the patches [m].
/// @param misfits  in any order [m]; those that are not known (NaN) do not count
/// @param ofPairs  spread of the pairs of strips [m]; NaN: not known
double controlSpread(std::span<const double> misfits, double ofPairs);

/// @param spread  s [m]
/// @return 1 for a misfit that is not known
double controlWeight(double misfit, double spread);

/// Sets the weights of all items by their misfits.
/// @param disagreement  of the pairs of strips, median of the absolute distances [m]
void weigh(std::vector<ControlItem>& items, double disagreement);

}  // namespace Velorn::Flights
