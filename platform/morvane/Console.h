// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where messages for people go. A host redirects the console to its log or window; tests read what
// was written.
#pragma once

#include <functional>
#include <string_view>

#include "platform/Visibility.h"

namespace Morvane {

/// The process's one message sink. All operations may be called from any thread.
class VELORN_PLATFORM_EXPORT Console {
 public:
  /// Receives one message without its final line feed; calls never overlap. An exception it throws
  /// is dropped: a message that cannot be shown must not end the work it tells about.
  using Target = std::function<void(std::string_view)>;

  /// Writes one message; the default target adds "\n" and writes it to standard output in one
  /// piece.
  static void writeLine(std::string_view text) noexcept;

  /// Makes `target` the receiver; an empty one restores standard output.
  /// @return the receiver until now (empty: standard output)
  static Target redirect(Target target);
};

/// Redirects the console for as long as it lives, then restores the receiver before it.
class VELORN_PLATFORM_EXPORT ConsoleRedirection {
 public:
  explicit ConsoleRedirection(Console::Target target);
  ~ConsoleRedirection();
  ConsoleRedirection(const ConsoleRedirection&) = delete;
  ConsoleRedirection& operator=(const ConsoleRedirection&) = delete;

 private:
  Console::Target before_;
};

}  // namespace Morvane
