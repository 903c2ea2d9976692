// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/morvane/Console.h"

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>

namespace Morvane {
namespace {

// Recursive, so that a target may itself write a message. Both live until the process ends and are
// never destroyed: a message may come from a destructor that runs at exit.
std::recursive_mutex& mutex() {
  static auto* const instance = new std::recursive_mutex;
  return *instance;
}

Console::Target& currentTarget() {
  static auto* const instance = new Console::Target;
  return *instance;
}

void writeToStandardOutput(std::string_view text) {
  std::string line(text);
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fflush(stdout);
}

}  // namespace

void Console::writeLine(std::string_view text) noexcept {
  try {
    const std::lock_guard lock(mutex());
    const Target target =
        currentTarget();  // a copy: the target may redirect the console while it runs
    if (target) {
      target(text);
    } else {
      writeToStandardOutput(text);
    }
  } catch (...) {  // see Target
  }
}

Console::Target Console::redirect(Target target) {
  const std::lock_guard lock(mutex());
  return std::exchange(currentTarget(), std::move(target));
}

ConsoleRedirection::ConsoleRedirection(Console::Target target)
    : before_(Console::redirect(std::move(target))) {}

ConsoleRedirection::~ConsoleRedirection() {
  Console::redirect(std::move(before_));
}

}  // namespace Morvane
