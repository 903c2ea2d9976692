// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

Error::Error(const std::string& message, Kind kind) : std::runtime_error(message), kind_(kind) {}

Error::~Error() = default;

}  // namespace Velorn::Flights
