// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Batches of doubles as the scalar of a kernel, for the processor that the including file is
// compiled for.
#pragma once

#include <utility>
#include <xsimd/xsimd.hpp>

#include "adjustment/engine/KernelTemplate.h"
#include "adjustment/engine/VectorSineCosine.h"

namespace Velorn {

namespace Detail {

/// Two batches as one: where a lane's number has the bit `step`, b + b a step before, elsewhere
/// a + a a step after.
template <std::size_t step, typename Batch, std::size_t... lane>
VELORN_INLINE Batch folded(const Batch& a, const Batch& b, std::index_sequence<lane...> /*lanes*/) {
  constexpr std::size_t count = sizeof...(lane);
  const typename Batch::register_type x = a, y = b;
  return Batch(
             __builtin_shufflevector(x, y, ((lane & step) == 0 ? lane : count + lane - step)...)) +
         Batch(__builtin_shufflevector(x, y, ((lane & step) == 0 ? lane + step : count + lane)...));
}

/// The sum of the lanes of each of as many batches as one has lanes, the first one's in the first
/// lane.
/// @{
template <typename Batch>
VELORN_INLINE Batch sumsOf(const Batch& a, const Batch& b, const Batch& c, const Batch& d) {
  constexpr auto lanes = std::make_index_sequence<Batch::size>();
  return folded<2>(folded<1>(a, b, lanes), folded<1>(c, d, lanes), lanes);
}

template <typename Batch>
VELORN_INLINE Batch sumsOf(const Batch& a, const Batch& b, const Batch& c, const Batch& d,
                           const Batch& e, const Batch& f, const Batch& g, const Batch& h) {
  return folded<4>(sumsOf(a, b, c, d), sumsOf(e, f, g, h), std::make_index_sequence<Batch::size>());
}
/// @}

}  // namespace Detail

template <typename Architecture>
struct Lanes<xsimd::batch<double, Architecture>> {
  using Batch = xsimd::batch<double, Architecture>;

  static constexpr std::size_t count = Batch::size;
  static_assert(lanesAtOnce % count == 0);

  static Batch load(const double* from) { return Batch::load_aligned(from); }
  static void store(const Batch& value, double* to) { value.store_aligned(to); }
  static Batch select(const typename Batch::batch_bool_type& condition, const Batch& yes,
                      const Batch& no) {
    return xsimd::select(condition, yes, no);
  }
  static bool all(const typename Batch::batch_bool_type& condition) {
    return xsimd::all(condition);
  }
  static double sum(const Batch& value) { return xsimd::hadd(value); }
  template <std::size_t number>
  VELORN_INLINE static void sums(const Batch (&values)[number], double* to) {
    putSums<0>(values, to, std::make_index_sequence<count>());
  }

 private:
  template <std::size_t first, std::size_t number, std::size_t... lane>
  VELORN_INLINE static void putSums(const Batch (&values)[number], double* to,
                                    std::index_sequence<lane...> lanes) {
    static_assert(number % count == 0);
    Detail::sumsOf(values[first + lane]...).store_aligned(to + first);
    if constexpr (first + count < number) putSums<first + count>(values, to, lanes);
  }
};

}  // namespace Velorn
