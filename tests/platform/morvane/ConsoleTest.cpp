// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/morvane/Console.h"

using Morvane::Console, Morvane::ConsoleRedirection;

TEST(Console, WritesToStandardOutputByDefaultAndAgainAfterARedirection) {
  testing::internal::CaptureStdout();
  Console::writeLine("first");
  std::vector<std::string> seen;
  {
    const ConsoleRedirection redirection([&](std::string_view line) { seen.emplace_back(line); });
    Console::writeLine("second");
    {
      const ConsoleRedirection inner([](std::string_view) {});
      Console::writeLine("swallowed");
    }
    Console::writeLine("third\nwith two lines");
  }
  Console::writeLine("");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "first\n\n");
  EXPECT_EQ(seen, (std::vector<std::string>{"second", "third\nwith two lines"}));
}

TEST(Console, LinesOfManyThreadsDoNotMix) {
  constexpr int threads = 4, lines = 500;
  std::multiset<std::string> seen;  // not guarded: calls of the target never overlap
  const ConsoleRedirection redirection([&](std::string_view line) { seen.emplace(line); });
  std::vector<std::thread> writers;
  writers.reserve(threads);
  for (int thread = 0; thread < threads; ++thread) {
    writers.emplace_back([thread] {
      for (int line = 0; line < lines; ++line)
        Console::writeLine("line of " + std::to_string(thread));
    });
  }
  for (auto& writer : writers) writer.join();
  for (int thread = 0; thread < threads; ++thread) {
    EXPECT_EQ(seen.count("line of " + std::to_string(thread)), static_cast<std::size_t>(lines));
  }
}

TEST(Console, ATargetMayThrowWriteAndRedirect) {
  testing::internal::CaptureStdout();
  const ConsoleRedirection redirection([](std::string_view line) {
    if (line == "throw") throw std::runtime_error("a full log");
    Console::redirect({});
    Console::writeLine("from the target");
  });
  Console::writeLine("throw");
  Console::writeLine("redirect");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "from the target\n");
}
