// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Velorn::Flights {

/// Length of a GPS week [s]; GPS time has no leap seconds.
constexpr double weekSeconds = 604800.0;

}  // namespace Velorn::Flights
