// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/Kernels.h"

namespace Velorn {
namespace {

std::vector<BatchKernel> kernelsOfThisProcessor() {
  std::vector<BatchKernel> kernels;
#ifdef VELORN_VECTOR_KERNELS
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vl")) {
    kernels.push_back(avx512Kernel());
  }
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) {
    kernels.push_back(avx2Kernel());
  }
#endif
  kernels.push_back(plainKernel());
  return kernels;
}

}  // namespace

const std::vector<BatchKernel>& batchKernels() {
  static const std::vector<BatchKernel> kernels = kernelsOfThisProcessor();
  return kernels;
}

}  // namespace Velorn
