// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

/// Bytes that a new program could have without swapping, as the system says; nothing when it does
/// not say.
std::optional<std::uint64_t> availableMemory();

/// Most bytes that this process has held so far.
std::uint64_t peakMemory();
