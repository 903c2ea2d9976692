// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/ControlFit.h"

#include <fmt/format.h>

namespace Velorn::Flights {

void addControlWarnings(const std::vector<RoundReport>& /*rounds*/, const std::string& /*model*/,
                        DatumReport& /*datum*/) {}

}  // namespace Velorn::Flights
