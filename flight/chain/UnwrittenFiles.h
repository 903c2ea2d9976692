// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Files of the adjustment that did not take their text, of which it only tells the console.
#pragma once

#include <ios>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/morvane/Console.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

/// Listens to the console for the length of a scope, and passes on what is said. There is one
/// console: adjustments of several threads go one after the other, lest one gives it back to
/// another that is over.
class UnwrittenFiles {
 public:
  UnwrittenFiles() : turn_(ofThisProcess()), before_(Morvane::Console::redirect({})) {
    Morvane::Console::redirect([this](std::string_view line) { hear(line); });
  }
  ~UnwrittenFiles() { Morvane::Console::redirect(before_); }
  UnwrittenFiles(const UnwrittenFiles&) = delete;
  UnwrittenFiles& operator=(const UnwrittenFiles&) = delete;

  /// @return what `work` returns
  /// @throws Error with NoSpace when a file could not be opened or written meanwhile
  template <typename Work>
  auto refusedAfter(const Work& work) {
    try {
      auto result = work();
      if (!first_.empty()) throw Error(first_, Error::NoSpace);
      return result;
    } catch (const std::ios_base::failure& fault) {
      throw Error(fault.what(), Error::NoSpace);
    }
  }

 private:
  /// Taken again by an adjustment that a callback of another one begins.
  static std::recursive_mutex& ofThisProcess() {
    static std::recursive_mutex mutex;
    return mutex;
  }

  void hear(std::string_view line) {
    const bool isFault = line.find(": Failed to write the file:") != std::string_view::npos ||
                         line.find(": Failed to open the file:") != std::string_view::npos;
    if (isFault && first_.empty()) first_ = line;
    // It means locked strips, too; the report names each section that is held, and why.
    const bool isTold =
        line.find("some section have low number of correspondeces") != std::string_view::npos;
    if (before_ && !isTold) before_(line);
  }

  std::lock_guard<std::recursive_mutex> turn_;
  Morvane::Console::Target before_;
  std::string first_;
};

}  // namespace Velorn::Flights
