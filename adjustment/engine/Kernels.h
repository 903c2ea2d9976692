// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The kernels by processor. Only the plain one runs everywhere.
#pragma once

#include "adjustment/engine/Batch.h"

namespace Velorn {

BatchKernel plainKernel();
BatchKernel avx2Kernel();    ///< with FMA
BatchKernel avx512Kernel();  ///< F, DQ and VL

}  // namespace Velorn
