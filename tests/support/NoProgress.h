// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/kestrum/LoaderProgress.h"

/// Tells nobody how far an operation is.
struct NoProgress : Kestrum::LoaderProgress {
  void report(const std::string& /*text*/, std::size_t /*current*/,
              std::size_t /*total*/) override {}
};
