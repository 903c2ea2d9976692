// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Sine and cosine at once, without branches; xsimd's take turns at reducing the angle, and call a
// function on plain doubles for the largest ones.
#pragma once

#include <xsimd/xsimd.hpp>

#include "adjustment/georef/Rotation.h"

namespace Velorn::Detail {

/// Σ c[i] zⁱ, by Horner's rule.
template <typename Batch, std::size_t terms>
Batch polynomial(const Batch& z, const double (&c)[terms]) {
  Batch sum(c[terms - 1]);
  for (std::size_t i = terms - 1; i-- > 0;) sum = xsimd::fma(sum, z, Batch(c[i]));
  return sum;
}

/// To 1e-16 for angles up to 1e5 rad, of which multiples of π/2 are taken in three parts (W. J.
/// Cody and W. Waite, Software Manual for the Elementary Functions, 1980, chapter 8); beyond, it
/// loses digits as the angle itself does. Between -π/4 and π/4 by Taylor's series, whose first term
/// left out is below 2e-17.
template <typename Batch>
SineCosine<Batch> vectorSineCosine(const Batch& angle) {
  constexpr double parts[] = {0x1.921fb54400000p+0, 0x1.0b4611a600000p-34, 0x1.3198a2e037073p-69};
  constexpr double sines[] = {-1.0 / 6,        1.0 / 120,          -1.0 / 5040,        1.0 / 362880,
                              -1.0 / 39916800, 1.0 / 6227020800.0, -1.0 / 1307674368e3};
  constexpr double cosines[] = {1.0 / 24,           -1.0 / 720,        1.0 / 40320,
                                -1.0 / 3628800,     1.0 / 479001600.0, -1.0 / 87178291200.0,
                                1.0 / 20922789888e3};
  const Batch turns = xsimd::nearbyint(angle * Batch(0.63661977236758134308));
  Batch r = angle;
  for (const double part : parts) r = xsimd::fnma(turns, Batch(part), r);
  const Batch z = r * r;
  const Batch sine = xsimd::fma(r * z, polynomial(z, sines), r);
  const Batch cosine = xsimd::fma(z * z, polynomial(z, cosines), 1.0 - 0.5 * z);
  // By the quarter turns left over: (s, c), (c, -s), (-s, -c), (-c, s).
  const Batch quarter = turns - 4.0 * xsimd::floor(turns * 0.25);
  const auto isSwapped = quarter == Batch(1.0) || quarter == Batch(3.0);
  const Batch a = xsimd::select(isSwapped, cosine, sine);
  const Batch b = xsimd::select(isSwapped, sine, cosine);
  return {xsimd::select(quarter >= Batch(2.0), -a, a),
          xsimd::select(quarter == Batch(1.0) || quarter == Batch(2.0), -b, b)};
}

}  // namespace Velorn::Detail
