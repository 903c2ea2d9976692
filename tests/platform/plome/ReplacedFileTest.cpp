// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include <gmock/gmock.h>

#include "platform/plome/ReplacedFile.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using Plome::ReplacedFile, Plome::replaceFile;
using testing::HasSubstr;

namespace {

std::size_t entriesOf(const fs::path& folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

}  // namespace

TEST(ReplacedFile, TakesItsPlaceWholeAndLeavesNothingBeside) {
  const TemporaryFolder folder;
  EXPECT_EQ(replaceFile(folder / "a.txt", "old"), "");
  {
    ReplacedFile file(folder / "a.txt");
    writeContent(file.temporary(), "new");
    EXPECT_EQ(contentOf(folder / "a.txt"), "old");
    EXPECT_EQ(file.replace(), "");
  }
  EXPECT_EQ(contentOf(folder / "a.txt"), "new");
  EXPECT_EQ(entriesOf(folder.path()), 1u);
}

TEST(ReplacedFile, AbandonedOrFailedLeavesTheTarget) {
  const TemporaryFolder folder;
  writeContent(folder / "a.txt", "old");
  {
    const ReplacedFile file(folder / "a.txt");
    writeContent(file.temporary(), "half");
  }
  EXPECT_EQ(contentOf(folder / "a.txt"), "old");
  {
    ReplacedFile nothingWritten(folder / "a.txt");
    EXPECT_THAT(nothingWritten.replace(), HasSubstr((folder / "a.txt").string() + ": "));
  }
  EXPECT_EQ(contentOf(folder / "a.txt"), "old");
  EXPECT_EQ(entriesOf(folder.path()), 1u);

  fs::create_directory(folder / "sub");
  EXPECT_THAT(replaceFile(folder / "sub", "x"), HasSubstr("is not a regular file"));
  EXPECT_THAT(replaceFile(folder / "no/such.txt", "x"),
              HasSubstr(std::generic_category().message(ENOENT)));  // in the language of the locale
  EXPECT_EQ(entriesOf(folder.path()), 2u);
}

TEST(ReplacedFile, KeepsSymbolicLinksAndPermissions) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "data");
  writeContent(folder / "data/real.txt", "old");
  fs::permissions(folder / "data/real.txt", fs::perms::owner_all | fs::perms::group_read);
  fs::create_symlink("data/real.txt", folder / "link.txt");
  EXPECT_EQ(replaceFile(folder / "link.txt", "new"), "");
  EXPECT_TRUE(fs::is_symlink(folder / "link.txt"));
  EXPECT_EQ(contentOf(folder / "data/real.txt"), "new");
  EXPECT_EQ(fs::status(folder / "data/real.txt").permissions(),
            fs::perms::owner_all | fs::perms::group_read);
}

namespace {

/// A process that is interrupted when it has written a file but not replaced its target: a thread
/// goes on working, while the one that ends the process takes its time.
[[noreturn]] void workUntilInterrupted(const fs::path& folder) {
  ReplacedFile half(folder / "half.txt");
  writeContent(half.temporary(), "new");
  Plome::removeUnfinishedFiles();
  std::thread([&half] { half.replace(); }).detach();
  std::thread([&folder] { replaceFile(folder / "later.txt", "new"); }).detach();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  Plome::removeUnfinishedFiles();
  std::_Exit(7);
}

}  // namespace

TEST(ReplacedFile, OfAnInterruptedProcessIsRemovedAndNoneIsReplacedThen) {
  testing::FLAGS_gtest_death_test_style = "fast";  // this process has no other threads
  const TemporaryFolder folder;
  writeContent(folder / "half.txt", "old");
  EXPECT_EXIT(workUntilInterrupted(folder.path()), testing::ExitedWithCode(7), "");
  EXPECT_EQ(contentOf(folder / "half.txt"), "old");
  EXPECT_EQ(entriesOf(folder.path()), 1u);
}
