// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include <velorn/flight/Error.h>

/// The message of a call that must be refused.
/// @param kind  that its error must have; none: any
inline std::string refusalOf(
    const std::function<void()>& call,
    std::optional<Velorn::Flights::Error::Kind> kind = Velorn::Flights::Error::BadInput) {
  try {
    call();
  } catch (const Velorn::Flights::Error& error) {
    EXPECT_EQ(error.kind(), kind.value_or(error.kind())) << error.what();
    return error.what();
  }
  return "not refused";
}
