// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What people see of an operation: progress, messages, and the lines of the library.
#pragma once

#include "host/terminal/LibraryMessages.h"
#include "host/terminal/Progress.h"
#include <velorn/flight/Watch.h>

/// The bar is off the terminal when this is gone.
class Telling {
 public:
  /// @param quiet  shows warnings alone
  explicit Telling(bool quiet) : progress_(quiet), messages_(progress_, quiet) {}

  /// Outlived by this object.
  Velorn::Flights::Watch watch() {
    return {[this](const std::string& what, std::size_t current, std::size_t total) {
              progress_.report(what, current, total);
            },
            [this](const std::string& line) { progress_.message(line); },
            {}};
  }

 private:
  Progress progress_;
  LibraryMessages messages_;
};
