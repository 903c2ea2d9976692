// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Polynomials over any scalar, also over several doubles at once. Everything here is inlined into
// the sources, which are compiled for several processors.
#pragma once

#include <cstddef>

#define VELORN_INLINE __attribute__((always_inline)) inline
#define VELORN_INLINE_LAMBDA __attribute__((always_inline))

namespace Velorn::OnLanes {

template <typename L>
VELORN_INLINE L all(double value) {
  return L{} + value;
}

/// k[0] + k[1] x + ...
template <std::size_t degree, typename L>
VELORN_INLINE L rising(const double* k, const L& x) {
  L sum = all<L>(k[degree]);
  for (std::size_t m = degree; m-- > 0;) sum = sum * x + k[m];
  return sum;
}

/// Of one, two or three variables, with the coefficients in the order in which they are needed:
/// rising m is a falling power of the first variable, degree − m, within it that of the second
/// falls from m, and so on.
/// @{
template <std::size_t degree, typename L>
VELORN_INLINE L falling(const double* k, const L& x) {
  L sum = all<L>(k[0]);
  for (std::size_t m = 1; m <= degree; ++m) sum = sum * x + k[m];
  return sum;
}

template <std::size_t degree, typename L>
VELORN_INLINE L falling(const double* k, const L& x, const L& y) {
  if constexpr (degree == 0) {
    return all<L>(k[0]);
  } else {
    // The coefficients of lower m, but with the powers of x one lower.
    return falling<degree - 1>(k, x, y) * x + falling<degree>(k + degree * (degree + 1) / 2, y);
  }
}

template <std::size_t degree, typename L>
VELORN_INLINE L falling(const double* k, const L& x, const L& y, const L& z) {
  if constexpr (degree == 0) {
    return all<L>(k[0]);
  } else {
    return falling<degree - 1>(k, x, y, z) * x +
           falling<degree>(k + degree * (degree + 1) * (degree + 2) / 6, y, z);
  }
}
/// @}

}  // namespace Velorn::OnLanes
