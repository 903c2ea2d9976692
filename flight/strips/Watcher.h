// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The callbacks of a caller, as the rooms take them.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/kestrum/LoaderProgress.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

/// What a line for people is given to.
using Tell = std::function<void(const std::string&)>;

/// Ends the work where it is no longer wanted: reports come between two pieces of it, on the thread
/// of the caller.
class Watcher final : public Kestrum::LoaderProgress {
 public:
  explicit Watcher(Watch watch) : watch_(std::move(watch)) {}

  /// @throws Error of Interrupted when the caller has cancelled
  void report(const std::string& text, std::size_t current, std::size_t total) override {
    goOn(text);
    if (watch_.progress) watch_.progress(text, current, total);
  }

  /// The same without a report.
  void goOn(const std::string& text) const {
    if (isCancelled()) throw Error("cancelled while " + text, Error::Interrupted);
  }

  void tell(const std::string& line) const {
    if (watch_.message) watch_.message(line);
  }
  Tell teller() const {
    return [this](const std::string& line) { tell(line); };
  }
  bool isCancelled() const { return watch_.isCancelled && watch_.isCancelled(); }

 private:
  Watch watch_;
};

}  // namespace Velorn::Flights
