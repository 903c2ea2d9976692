// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/platform/strandel/Storages.h"
#include "tests/support/SmallStrip.h"
#include "tests/support/TemporaryFolder.h"

using namespace Strandel;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

std::string whole(const Bundle& bundle) {
  std::string fault;
  std::string text = contentOf(bundle, fault);
  return fault.empty() ? text : fault;
}

/// A process that replaces a file and ends.
pid_t startSaving(Bundle& bundle, const std::filesystem::path& path) {
  const pid_t child = fork();
  if (child == 0) _exit(flushed.save(bundle, path, "wd").empty() ? 0 : 1);
  return child;
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
  ASSERT_EQ(flushed.save(oldStrip, path, "w"), "");
  const std::string oldBytes = contentOf(path);

  // A machine's pace changes with what else it does. So the moments are spread over a span that
  // follows what the kills leave: it grows while few come too late, and shrinks while most do.
  constexpr int wanted = 10, leastKills = 100, mostKills = 5000;
  Clock::duration span = 1ms;
  int kills = 0, leftOld = 0, leftNew = 0, leftPart = 0;
  while (kills < leastKills || std::min({leftOld, leftNew, leftPart}) < wanted) {
    ASSERT_LT(kills, mostKills) << leftOld << " old, " << leftNew << " new, " << leftPart
                                << " in the middle of writing";
    writeContent(path, oldBytes);
    const auto moment = Clock::now() + span * (kills % 20) / 20;
    const pid_t child = startSaving(newStrip, path);
    std::this_thread::sleep_until(moment);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    leftPart += removeParts(folder.path()) ? 1 : 0;
    Bundle read;
    ASSERT_EQ(flushed.load(path, read), "") << "kill " << kills;
    const std::string content = whole(read);
    const bool isNew = content == newContent;
    ASSERT_TRUE(isNew || content == oldContent) << "kill " << kills << " left neither content";
    (isNew ? leftNew : leftOld) += 1;
    if (leftNew * 4 < leftOld) span += span / 10;
    if (leftNew > leftOld) span -= span / 10;
    ++kills;
  }
  RecordProperty("old", leftOld);
  RecordProperty("new", leftNew);
  RecordProperty("part", leftPart);
}
