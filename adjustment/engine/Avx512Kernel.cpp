// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/Kernels.h"
#include "adjustment/engine/VectorLanes.h"

namespace Velorn {

using BatchAvx512 = xsimd::batch<double, xsimd::avx512f>;

template <>
SineCosine<BatchAvx512> sineCosine(const BatchAvx512& angle) {
  return Detail::vectorSineCosine(angle);
}

BatchKernel avx512Kernel() {
  return batchKernel<BatchAvx512>("AVX-512");
}

}  // namespace Velorn
