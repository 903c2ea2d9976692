// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include <velorn/flight/Error.h>

/// The message of a call that must be refused.
/// @param kind  that its error must have; none: any
template <typename Call>
std::string refusalOf(const Call& call, std::optional<Velorn::Flights::Error::Kind> kind =
                                            Velorn::Flights::Error::BadInput) {
  try {
    call();
  } catch (const Velorn::Flights::Error& error) {
    return error.kind() == kind.value_or(error.kind()) ? error.what() : "another kind of error";
  }
  return "not refused";
}
