// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The room is header-only; this file proves that its header compiles alone.
#include "platform/geomra/PhysicalSpace.h"
