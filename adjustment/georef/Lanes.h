// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Several doubles at once, for sources that are compiled for several processors: as many as each
// one's registers hold. The program takes the best for the one that it runs on. Everything here is
// inlined into these sources.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "adjustment/georef/Polynomials.h"

namespace Velorn::OnLanes {

template <std::size_t count>
struct Vector;
template <>
struct Vector<2> {
  using Lanes = double __attribute__((vector_size(16)));
};
template <>
struct Vector<4> {
  using Lanes = double __attribute__((vector_size(32)));
};
template <>
struct Vector<8> {
  using Lanes = double __attribute__((vector_size(64)));
};
template <std::size_t count>
using Lanes = typename Vector<count>::Lanes;

template <typename L>
constexpr std::size_t lanesOf = sizeof(L) / sizeof(double);

template <typename L>
VELORN_INLINE L squareRoot(const L& a) {
  L root;
  for (std::size_t i = 0; i < lanesOf<L>; ++i) root[i] = __builtin_sqrt(a[i]);
  return root;
}

template <typename L>
VELORN_INLINE L load(const double* from) {
  L value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <typename L>
VELORN_INLINE void store(double* to, const L& value) {
  std::memcpy(to, &value, sizeof value);
}

template <typename L>
struct Turn {
  L sine, cosine;
};

/// Of an angle up to 0.12 rad; the first terms left out are below 2e-16.
template <typename L>
VELORN_INLINE Turn<L> ofSmall(const L& a) {
  constexpr double sine[] = {1.0, -1.0 / 6, 1.0 / 120, -1.0 / 5040, 1.0 / 362880};
  constexpr double cosine[] = {1.0, -1.0 / 2, 1.0 / 24, -1.0 / 720, 1.0 / 40320};
  const L a2 = a * a;
  return {a * rising<4>(sine, a2), rising<4>(cosine, a2)};
}

template <typename L>
VELORN_INLINE Turn<L> sum(const Turn<L>& a, const Turn<L>& b) {
  return {a.sine * b.cosine + a.cosine * b.sine, a.cosine * b.cosine - a.sine * b.sine};
}

template <std::size_t count>
using Count = std::integral_constant<std::size_t, count>;

#if defined(__x86_64__) && !defined(VELORN_SANITIZED)
template <typename Work>
__attribute__((target("avx512f,avx512dq,avx512vl,avx2,fma"))) auto onEight(const Work& work) {
  return work(Count<8>());
}

template <typename Work>
__attribute__((target("avx2,fma"))) auto onFour(const Work& work) {
  return work(Count<4>());
}

/// Calls `work`, which is to be inlined, with as many lanes as suit the processor: this is where it
/// is compiled for each.
template <typename Work>
auto onBestLanes(const Work& work) {
  const bool hasFour = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  const bool hasEight = hasFour && __builtin_cpu_supports("avx512f") &&
                        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
  if (hasEight) return onEight(work);
  return hasFour ? onFour(work) : work(Count<2>());
}
#else
template <typename Work>
auto onBestLanes(const Work& work) {
  return work(Count<2>());
}
#endif

}  // namespace Velorn::OnLanes
