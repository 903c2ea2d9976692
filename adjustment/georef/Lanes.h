// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Eight doubles at once, for sources that are compiled for several processors, of which the program
// takes the best when it starts. Everything here is inlined into them.
#pragma once

#include <cstddef>
#include <cstring>

#if defined(__x86_64__) && !defined(VELORN_SANITIZED)
#define VELORN_FOR_SEVERAL_PROCESSORS \
  __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define VELORN_FOR_SEVERAL_PROCESSORS
#endif
#define VELORN_INLINE __attribute__((always_inline)) inline
#define VELORN_INLINE_LAMBDA __attribute__((always_inline))

namespace Velorn::OnLanes {

constexpr std::size_t lanes = 8;
using Lanes = double __attribute__((vector_size(lanes * sizeof(double))));
using Mask = long long __attribute__((vector_size(lanes * sizeof(double))));

struct Triple {
  Lanes x, y, z;
};

VELORN_INLINE Lanes all(double value) {
  return Lanes{} + value;
}

VELORN_INLINE Lanes squareRoot(const Lanes& a) {
  Lanes root;
  for (std::size_t i = 0; i < lanes; ++i) root[i] = __builtin_sqrt(a[i]);
  return root;
}

VELORN_INLINE Lanes load(const double* from) {
  Lanes value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

VELORN_INLINE void store(double* to, const Lanes& value) {
  std::memcpy(to, &value, sizeof value);
}

/// k[0] + k[1] x + ...
template <std::size_t degree>
VELORN_INLINE Lanes rising(const double* k, const Lanes& x) {
  Lanes sum = all(k[degree]);
  for (std::size_t m = degree; m-- > 0;) sum = sum * x + k[m];
  return sum;
}

/// Coefficients in the order of LocalPolynomials.
/// @{
template <std::size_t degree>
VELORN_INLINE Lanes falling(const double* k, const Lanes& x) {
  Lanes sum = all(k[0]);
  for (std::size_t m = 1; m <= degree; ++m) sum = sum * x + k[m];
  return sum;
}

template <std::size_t degree>
VELORN_INLINE Lanes falling(const double* k, const Lanes& x, const Lanes& y) {
  if constexpr (degree == 0) {
    return all(k[0]);
  } else {
    // The coefficients of lower m, but with the powers of x one lower.
    return falling<degree - 1>(k, x, y) * x + falling<degree>(k + degree * (degree + 1) / 2, y);
  }
}

template <std::size_t degree>
VELORN_INLINE Lanes falling(const double* k, const Lanes& x, const Lanes& y, const Lanes& z) {
  if constexpr (degree == 0) {
    return all(k[0]);
  } else {
    return falling<degree - 1>(k, x, y, z) * x +
           falling<degree>(k + degree * (degree + 1) * (degree + 2) / 6, y, z);
  }
}
/// @}

struct Turn {
  Lanes sine, cosine;
};

/// Of an angle up to 0.12 rad; the first terms left out are below 2e-16.
VELORN_INLINE Turn ofSmall(const Lanes& a) {
  constexpr double sine[] = {1.0, -1.0 / 6, 1.0 / 120, -1.0 / 5040, 1.0 / 362880};
  constexpr double cosine[] = {1.0, -1.0 / 2, 1.0 / 24, -1.0 / 720, 1.0 / 40320};
  const Lanes a2 = a * a;
  return {a * rising<4>(sine, a2), rising<4>(cosine, a2)};
}

VELORN_INLINE Turn sum(const Turn& a, const Turn& b) {
  return {a.sine * b.cosine + a.cosine * b.sine, a.cosine * b.cosine - a.sine * b.sine};
}

}  // namespace Velorn::OnLanes
