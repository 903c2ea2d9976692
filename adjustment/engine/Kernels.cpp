// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/Kernels.h"

namespace Velorn {

const std::vector<BatchKernel>& batchKernels() {
  static const std::vector<BatchKernel> all{plainKernel()};
  return all;
}

}  // namespace Velorn
