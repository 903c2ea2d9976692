// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/kestrum/LoaderProgress.h"

namespace Kestrum {

// Defined here so that the class has one home for its type information, in the shared library.
LoaderProgress::LoaderProgress() = default;
LoaderProgress::~LoaderProgress() = default;

}  // namespace Kestrum
