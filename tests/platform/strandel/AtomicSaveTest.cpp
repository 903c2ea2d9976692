// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/support/SmallStrip.h"
#include "tests/support/TemporaryFolder.h"

using namespace Strandel;
using Clock = std::chrono::steady_clock;

namespace {

const MyStorage storage(0, 0, 0, 1);

std::string whole(const Bundle& bundle) {
  std::string fault;
  std::string text = contentOf(bundle, fault);
  return fault.empty() ? text : fault;
}

/// A process that replaces a file and ends.
pid_t startSaving(Bundle& bundle, const std::filesystem::path& path) {
  const pid_t child = fork();
  if (child == 0) _exit(storage.save(bundle, path, "wd").empty() ? 0 : 1);
  return child;
}

Clock::duration timeOfSaving(Bundle& bundle, const std::filesystem::path& path) {
  const auto start = Clock::now();
  int status = 0;
  waitpid(startSaving(bundle, path), &status, 0);
  EXPECT_EQ(status, 0);
  return Clock::now() - start;
}

/// @return whether a ".part" file lay there
bool removeParts(const std::filesystem::path& folder) {
  bool found = false;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".part") continue;
    found = true;
    std::filesystem::remove(entry.path());
  }
  return found;
}

}  // namespace

TEST(AtomicSave, KilledAtAnyMomentLeavesTheOldFileOrTheNewOneWhole) {
  const TemporaryFolder folder;
  const auto path = folder / "a.kx";
  Bundle oldStrip = smallStrip(2500, 1), newStrip = smallStrip(2500, 2);
  const std::string oldContent = whole(oldStrip), newContent = whole(newStrip);
  ASSERT_EQ(storage.save(oldStrip, path, "w"), "");
  const std::string oldBytes = contentOf(path);
  std::array<Clock::duration, 9> durations;
  for (auto& duration : durations) duration = timeOfSaving(newStrip, path);
  std::sort(durations.begin(), durations.end());

  // The moments reach beyond the usual end, so that some kills come too late.
  constexpr int kills = 200;
  int leftOld = 0, leftNew = 0, leftPart = 0;
  for (int i = 0; i < kills; ++i) {
    writeContent(path, oldBytes);
    const auto end = Clock::now() + durations[4] * (3 * i) / (2 * kills);
    const pid_t child = startSaving(newStrip, path);
    std::this_thread::sleep_until(end);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    leftPart += removeParts(folder.path()) ? 1 : 0;
    Bundle read;
    ASSERT_EQ(storage.load(path, read), "") << "kill " << i;
    const std::string content = whole(read);
    leftOld += content == oldContent ? 1 : 0;
    leftNew += content == newContent ? 1 : 0;
    ASSERT_EQ(leftOld + leftNew, i + 1) << "kill " << i << " left neither content";
  }
  EXPECT_GE(leftOld, kills / 20);
  EXPECT_GE(leftNew, kills / 20);
  EXPECT_GE(leftPart, kills / 20) << "kills that hit the writing";
  RecordProperty("old", leftOld);
  RecordProperty("new", leftNew);
  RecordProperty("part", leftPart);
}
