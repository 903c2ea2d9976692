// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Strips that cannot be read or written, and too little memory.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "tests/adjustment/georef/StripsToGeoreference.h"
#include "tests/platform/strandel/Processes.h"
#include "tests/support/Limit.h"

using namespace Strandel;
using testing::Contains, testing::ElementsAre, testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

constexpr const char* saveFault = "scanner2world::initialize, SaveParameters: ";

class StripFiles : public StripsToGeoreference {};

/// A folder of the test that cannot be written to, for one scope; root, who may write everywhere,
/// is somebody else meanwhile.
class ReadOnly {
 public:
  explicit ReadOnly(fs::path folder) : folder_(std::move(folder)), changed_(geteuid() == 0) {
    fs::permissions(folder_, fs::perms(0555));
    if (changed_ && seteuid(65534) != 0) throw std::runtime_error("cannot leave root");
  }
  ~ReadOnly() {
    if (changed_ && seteuid(0) != 0) std::abort();
    fs::permissions(folder_, fs::perms(0755));
  }
  ReadOnly(const ReadOnly&) = delete;
  ReadOnly& operator=(const ReadOnly&) = delete;

 private:
  fs::path folder_;
  bool changed_;
};

}  // namespace

TEST_F(StripFiles, WhatCannotBeReadIsLeftAsItIs) {
  auto strip = measuredStrip();
  const auto file = save(strip);
  const auto expectNotLoaded = [&](const std::string& reason) {
    const std::string before = contentOf(fs::path(file));
    for (const auto& outputFolder : {out, std::string()}) {
      EXPECT_EQ(georeference(file, outputFolder), cannotLoad(file));
      EXPECT_THAT(console.back(), HasSubstr(reason));
    }
    EXPECT_TRUE(contentOf(fs::path(file)) == before);
    EXPECT_TRUE(fs::is_empty(out));
    EXPECT_FALSE(fs::exists(folder / "ERROR_SCANNER2WORLD_a.txt"));
  };
  runPython(folder.path(),
            "import h5py\n"
            "chart = h5py.File('a.kx', 'r+')['0/strip/ScannerCoordinateSystem']\n"
            "del chart['Positions/1']\n"
            "chart['Positions/1'] = [[1.0, 2.0, 3.0]] * 29\n");
  expectNotLoaded("29");
  auto content = (save(strip), contentOf(fs::path(file)));
  const double time = valuesOf<double>(scannerChart(strip), "GPSTime", 1)[17];
  content[content.find(std::string_view(reinterpret_cast<const char*>(&time), sizeof(time)))] ^= 1;
  writeContent(file, content);
  expectNotLoaded("GPSTime/");
  fs::remove(file);
  expectNotLoaded(std::generic_category().message(ENOENT));
  EXPECT_EQ(georeference(file, out, false, 7), cannotLoad(file));
}

TEST_F(StripFiles, WhatCannotBeWrittenLeavesEverythingAsItWas) {
  auto strip = measuredStrip();
  const auto file = save(strip);
  const auto content = contentOf(fs::path(file));
  const auto reason = [&](const fs::path& written, int error) {
    return saveFault + ("Strandel::MyStorage::save: " + written.string() + ": " +
                        std::generic_category().message(error) + "\n");
  };
  const auto missing = (folder / "missing").string();
  EXPECT_EQ(georeference(file, missing), reason(missing + "/a_SA.kx", ENOENT));
  EXPECT_EQ(georeference(file, file), reason(file + "/a_SA.kx", ENOTDIR));
  const auto expectFaults = [&](int error) {
    for (const bool inverse : {false, true}) {
      EXPECT_EQ(georeference(file, out, inverse), reason(output, error));
      EXPECT_EQ(georeference(file, "", inverse), reason(file, error));
    }
  };
  for (const rlim_t bytes : {0U, 5000U, 20000U}) {
    const Limit limit(RLIMIT_FSIZE, bytes);
    expectFaults(EFBIG);
  }
  const auto inOut = save(strip, "out/b.kx");
  fs::permissions(folder.path(), fs::perms(0755));
  {
    const ReadOnly outputs(out);
    EXPECT_EQ(georeference(file, out), reason(output, EACCES));
    EXPECT_EQ(georeference(inOut, ""), reason(inOut, EACCES));
  }
  fs::remove(inOut);
  fs::create_symlink(file, output);
  EXPECT_EQ(georeference(file, out), saveFault + output.string() + ": is the strip itself\n");
  EXPECT_TRUE(contentOf(fs::path(file)) == content);
  EXPECT_EQ(filesInFolder(), 4U);
}

TEST_F(StripFiles, AMessageThatFindsNoFileIsToldOnTheConsole) {
  auto strip = measuredStrip();
  grid(strip)->attributes().remove("WeekNumber");
  const auto file = save(strip);
  fs::create_directory(errorFile);
  const std::string message = "scanner2world: Have no WeekNumber attribute for this strip";
  EXPECT_EQ(georeference(file, out), message);
  EXPECT_THAT(console, Contains(file + ": " + message));
  EXPECT_THAT(console, Contains(HasSubstr(errorFile.string() + ": is not a regular file")));
  EXPECT_TRUE(fs::exists(output));
}

#ifndef VELORN_SANITIZED  // they take more memory
TEST_F(StripFiles, DISABLED_WithLittleMemory) {
  const auto file = variable("VELORN_TEST_STRIP");
  const std::string before = contentOf(fs::path(file));
  ASSERT_EQ(georeference(file, out), "");  // starts the threads
  std::vector<std::string> messages{"none yet"};
  for (rlim_t megabytes = 60; megabytes < 1000 && !messages.back().empty(); megabytes += 30) {
    const Limit limit(RLIMIT_AS, megabytes << 20);
    messages.push_back(georeference(file, out));
  }
  messages.erase(std::unique(messages.begin(), messages.end()), messages.end());
  EXPECT_THAT(messages, ElementsAre("none yet", cannotLoad(file),
                                    "scanner2world: " + file + ": not enough memory", ""));
  EXPECT_TRUE(contentOf(fs::path(file)) == before);
}

TEST_F(StripFiles, TooLittleMemoryIsAMessage) {
  Bundle strip;
  const auto grid = strip.makeSlice(0)->makeGrid("strip");
  grid->attributes().set("WeekNumber", std::int64_t{2318});
  const auto chart = grid->makeChart(scannerChartName);
  constexpr std::size_t points = 1'500'000;  // columns beyond what the heap keeps when freed
  chart->makeField("GPSTime", ValueType::Double)
      ->setValues<double>({0}, std::vector<double>(points, 1002.0));
  chart->makeField("Positions", ValueType::Point)
      ->setValues<point>({0}, std::vector<point>(points, {900, 1, 2}));
  runInOwnProcess("StripFiles.DISABLED_WithLittleMemory",
                  "VELORN_TEST_STRIP='" + save(strip) + "'");
}
#endif
