// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Batches of doubles as the scalar of a kernel, for the processor that the including file is
// compiled for.
#pragma once

#include <xsimd/xsimd.hpp>

#include "adjustment/engine/KernelTemplate.h"
#include "adjustment/engine/VectorSineCosine.h"

namespace Velorn {

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
  static void sums(const Batch* values, double* to) {
    for (std::size_t i = 0; i < 16; i += count) xsimd::haddp(values + i).store_unaligned(to + i);
  }
};

}  // namespace Velorn
