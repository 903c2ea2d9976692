// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include <velorn/flight/Error.h>

/// The message of a call that must be refused, with an error of that kind.
inline std::string refusalOf(const std::function<void()>& call,
                             Velorn::Flights::Error::Kind kind = Velorn::Flights::Error::BadInput) {
  try {
    call();
  } catch (const Velorn::Flights::Error& error) {
    EXPECT_EQ(error.kind(), kind) << error.what();
    return error.what();
  }
  return "not refused";
}
