// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From the texts of the floors below to the exception of this one.
#pragma once

#include <string>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {

/// @throws Error unless the text is empty
inline void orFail(const std::string& fault, Error::Kind kind = Error::BadInput) {
  if (!fault.empty()) throw Error(fault, kind);
}

}  // namespace Velorn::Flights
