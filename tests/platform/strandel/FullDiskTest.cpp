// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/platform/strandel/Processes.h"
#include "tests/platform/strandel/Storages.h"
#include "tests/support/SmallStrip.h"

using namespace Strandel;

namespace {

std::filesystem::path pathFromParent(const char* variable) {
  const char* const value = std::getenv(variable);
  return value ? value : "not run by a test";
}

void limitFileSize(rlim_t bytes) {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limit);
}

/// Saves for which there is no room: of new values, and of values that lie in another file.
void failAndGoOn(const std::filesystem::path& path, int error) {
  letHdf5EndWithTheProcess();
  const std::string before = contentOf(path);
  const auto files = namesIn(path.parent_path());
  Bundle made = smallStrip(3000, 2), loaded;
  ASSERT_EQ(flushed.load(pathFromParent("VELORN_TEST_SOURCE"), loaded), "");
  for (auto& [with, bundle] :
       {std::pair{&flushed, &made}, {&flushedCompressed, &made}, {&flushed, &loaded}}) {
    EXPECT_EQ(with->save(*bundle, path, "wd"), "Strandel::MyStorage::save: " + path.string() +
                                                   ": " + std::generic_category().message(error));
    EXPECT_TRUE(contentOf(path) == before);
    EXPECT_EQ(namesIn(path.parent_path()), files);
  }
}

void saveSmall(const std::filesystem::path& path) {
  Bundle small = smallStrip(1, 3), read;
  ASSERT_EQ(flushed.save(small, path, "wd"), "");
  ASSERT_EQ(flushed.load(path, read), "");
  EXPECT_TRUE(intactContentOf(read) == intactContentOf(small));
}

/// The folder of the process with the limit, and a large file elsewhere.
std::string environment(const TemporaryFolder& folder, const TemporaryFolder& elsewhere) {
  Bundle large = smallStrip(3000, 2);
  EXPECT_EQ(flushedCompressed.save(large, elsewhere / "large.kx", "wd"), "");
  return "VELORN_TEST_FOLDER='" + folder.path().string() + "' VELORN_TEST_SOURCE='" +
         (elsewhere / "large.kx").string() + "'";
}

}  // namespace

// Run by the tests below: a process that met a full disk ends as any other, through the handlers
// that the HDF5 library has for its end.

TEST(FullDiskInOwnProcess, DISABLED_FileSizeLimit) {
  const auto folder = pathFromParent("VELORN_TEST_FOLDER");
  const auto limit = rlim_t{std::stoul(variable("VELORN_TEST_LIMIT"))};
  std::signal(SIGXFSZ, SIG_IGN);
  limitFileSize(limit);
  failAndGoOn(folder / "a.kx", EFBIG);
  // A file that grows is longer for a moment than it will be.
  if (limit < 2 * std::filesystem::file_size(folder / "small.kx")) limitFileSize(RLIM_INFINITY);
  saveSmall(folder / "a.kx");
}

TEST(FullDiskInOwnProcess, DISABLED_SmallFileSystem) {
  const auto folder = pathFromParent("VELORN_TEST_FOLDER");
  const auto path = folder / "a.kx";
  Bundle old = smallStrip(100);
  ASSERT_EQ(flushed.save(old, path, "w"), "");
  for (std::size_t full = 0; full <= 440; full += 20) {  // KiB of 512
    writeContent(folder / "filler", std::string(full << 10, 'x'));
    failAndGoOn(path, ENOSPC);
    std::filesystem::remove(folder / "filler");
  }
  saveSmall(path);
}

TEST(FullDisk, AFileSizeLimitAnywhereInTheFileKeepsTheOldFileAndTheProcess) {
  const TemporaryFolder folder, elsewhere;
  Bundle old = smallStrip(100), small = smallStrip(1, 3);
  ASSERT_EQ(flushed.save(old, folder / "old.kx", "w"), "");
  ASSERT_EQ(flushed.save(small, folder / "small.kx", "w"), "");
  const auto variables = environment(folder, elsewhere);
  const auto size = std::filesystem::file_size(elsewhere / "large.kx");
#ifdef VELORN_SANITIZED
  constexpr std::size_t limits = 24;
#else
  constexpr std::size_t limits = 96;
#endif
  for (std::size_t i = 0; i < limits; ++i) {
    std::filesystem::copy_file(folder / "old.kx", folder / "a.kx",
                               std::filesystem::copy_options::overwrite_existing);
    const auto limit = i * (size - 1) / (limits - 1);
    SCOPED_TRACE(limit);
    runInOwnProcess("FullDiskInOwnProcess.DISABLED_FileSizeLimit",
                    variables + " VELORN_TEST_LIMIT=" + std::to_string(limit));
  }
}

TEST(FullDisk, AFullFileSystemKeepsTheOldFileAndTheProcess) {
  const TemporaryFolder folder, elsewhere;
  const auto variables = environment(folder, elsewhere);
  // In a name space of its own the mount ends with the process.
  const std::string mounted =
      " unshare -m sh -c 'mount -t tmpfs -o size=512k none \"$VELORN_TEST_FOLDER\" && exec \"$0\" "
      "\"$@\"' ";
  if (std::system((variables + mounted + "true 2>/dev/null").c_str()) != 0) {
    GTEST_SKIP() << "mounting is not permitted";
  }
  runInOwnProcess("FullDiskInOwnProcess.DISABLED_SmallFileSystem", variables + mounted);
}
