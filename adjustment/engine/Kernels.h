// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The kernels by processor.
#pragma once

#include "adjustment/engine/Batch.h"

namespace Velorn {

BatchKernel plainKernel();

}  // namespace Velorn
