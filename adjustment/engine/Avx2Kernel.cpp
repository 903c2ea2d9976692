// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/Kernels.h"
#include "adjustment/engine/VectorLanes.h"

namespace Velorn {

using BatchAvx2 = xsimd::batch<double, xsimd::fma3<xsimd::avx2>>;

template <>
SineCosine<BatchAvx2> sineCosine(const BatchAvx2& angle) {
  return Detail::vectorSineCosine(angle);
}

BatchKernel avx2Kernel() {
  return batchKernel<BatchAvx2>("AVX2");
}

}  // namespace Velorn
