// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <fstream>
#include <random>
#include <system_error>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/platform/strandel/Processes.h"
#include "tests/platform/strandel/Storages.h"
#include "tests/support/Limit.h"
#include "tests/support/SmallStrip.h"

using namespace Strandel;
using testing::HasSubstr;

namespace {

#ifdef VELORN_SANITIZED
constexpr int variants = 150;  // the fuzzers try many more under sanitizers
#else
constexpr int variants = 700;
#endif

// Closes its file at the very end of the process, when the HDF5 library has ended before it.
Bundle stillOpenAtTheEnd;

std::string systemText(int error) {
  return std::generic_category().message(error);  // in the language of the locale
}

/// What a file tells: a message, or its whole content.
struct Told {
  std::string fault;
  std::string content;
};

Told told(const Bundle& bundle) {
  Told result;
  result.content = contentOf(bundle, result.fault);
  return result;
}

Told toldBy(const std::filesystem::path& path) {
  Bundle bundle;
  if (auto fault = storage.load(path, bundle); !fault.empty()) return {fault, ""};
  return told(bundle);
}

/// Holds one file, and damages it again and again.
class DamagedFile {
 public:
  DamagedFile(const TemporaryFolder& folder, const std::string& name)
      : path_(folder / name), copy_(folder / (name + ".copy")), bytes_(contentOf(path_)) {
    const auto intact = toldBy(path_);
    EXPECT_EQ(intact.fault, "");
    content_ = intact.content;
  }

  std::size_t size() const { return bytes_.size(); }

  /// Expects a message or the intact content, of the file and of what is saved from it.
  void expectNoOtherContent(const std::string& damaged) {
    // A new file each time: some file systems flush one that is replaced.
    std::filesystem::remove(path_);
    std::filesystem::remove(copy_);
    writeContent(path_, damaged);
    const auto read = toldBy(path_);
    check(read, path_);
    Bundle bundle;
    if (!storage.load(path_, bundle).empty()) return;
    const auto fault = storage.save(bundle, copy_, "w");
    check(fault.empty() ? toldBy(copy_) : Told{fault, ""}, copy_);
  }

  void flip(std::size_t position, unsigned char bits) {
    std::string damaged = bytes_;
    damaged[position] = static_cast<char>(static_cast<unsigned char>(damaged[position]) ^ bits);
    expectNoOtherContent(damaged);
  }

  void truncate(std::size_t size) { expectNoOtherContent(bytes_.substr(0, size)); }
  void append(const std::string& rest) { expectNoOtherContent(bytes_ + rest); }

  int messages() const { return messages_; }
  int unchanged() const { return unchanged_; }

 private:
  void check(const Told& read, const std::filesystem::path& path) {
    if (read.fault.empty()) {
      ++unchanged_;
      EXPECT_TRUE(read.content == content_) << path << " gave another content";
    } else {
      ++messages_;
      EXPECT_THAT(read.fault, HasSubstr(path.string() + ": "));
    }
  }

  std::filesystem::path path_, copy_;
  std::string bytes_, content_;
  int messages_ = 0, unchanged_ = 0;
};

class DamagedFiles : public testing::TestWithParam<const char*> {
 protected:
  /// Writes the file of the parameter's name: our own two ways, one with attributes in number and
  /// length, and a file that others wrote.
  void SetUp() override {
    Bundle strip = smallStrip(40);
    const std::string name = GetParam();
    if (name == "strip.kx") {
      runPython(folder_.path(), "n = 60\n" + replaced(exampleOfTheManual(), "n = 5000\n", ""));
      return;
    }
    if (name == "attributes.kx") {
      strip = smallStrip(2);
      auto& attributes = strip.slice(0)->uniqueGrid()->attributes();
      for (int i = 0; i < 12; ++i) attributes.set("a" + std::to_string(i), std::int64_t{i});
      attributes.set("Comment", std::string(5000, 'x'));
    }
    const auto& with = name == "compressed.kx" ? compressed : storage;
    ASSERT_EQ(with.save(strip, folder_ / name, "w"), "");
  }

  static std::string replaced(std::string text, const std::string& what, const std::string& with) {
    const auto place = text.find(what);
    EXPECT_NE(place, std::string::npos);
    return text.replace(place, what.size(), with);
  }

  TemporaryFolder folder_;
};

}  // namespace

TEST_P(DamagedFiles, AFlippedByteGivesAMessageOrTheSameContent) {
  constexpr unsigned seed = 20260;
  DamagedFile file(folder_, GetParam());
  std::mt19937 random(seed);
  for (int i = 0; i < variants; ++i) {
    const auto position = random() % file.size();
    const auto bits = static_cast<unsigned char>(i % 2 ? 1U << random() % 8 : 1 + random() % 255);
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", byte " << position << " ^ " << +bits);
    file.flip(position, bits);
    if (HasFailure()) break;
  }
  EXPECT_GT(file.messages(), variants / 2);
  EXPECT_GT(file.unchanged(), variants / 50);  // bytes that mean nothing
}

TEST_P(DamagedFiles, ACutGivesAMessageAndAppendedBytesTheSameContent) {
  DamagedFile file(folder_, GetParam());
  int cuts = 0;
  for (std::size_t size = 0; size < file.size(); size += 4096, ++cuts) file.truncate(size);
  for (const std::size_t size : {1UL, 8UL, 100UL, file.size() - 1}) file.truncate(size), ++cuts;
  EXPECT_EQ(file.messages(), cuts);
  file.append(std::string(5000, 'x'));
  EXPECT_EQ(file.unchanged(), 2);
}

INSTANTIATE_TEST_SUITE_P(Strips, DamagedFiles,
                         testing::Values("plain.kx", "compressed.kx", "attributes.kx", "strip.kx"),
                         [](const auto& test) {
                           return std::filesystem::path(test.param).stem().string();
                         });

TEST(DamagedFile, CutUnderAnOpenBundleGivesAMessageFromReadingAndSaving) {
  const TemporaryFolder folder;
  const auto path = folder / "a.kx";
  Bundle strip = smallStrip(2000), read;
  ASSERT_EQ(storage.save(strip, path, "w"), "");
  ASSERT_EQ(storage.load(path, read), "");
  std::filesystem::resize_file(path, 40000);
  EXPECT_THAT(told(read).fault, HasSubstr(path.string() + ": /0/strip/"));
  EXPECT_THAT(storage.save(read, folder / "b.kx", "w"),
              HasSubstr("cannot be copied from " + path.string()));
  EXPECT_FALSE(std::filesystem::exists(folder / "b.kx"));
}

TEST(DamagedFile, ChangedByAnotherProgramIsReadAnewBesideAnOlderBundle) {
  const TemporaryFolder folder;
  const auto path = folder / "a.kx";
  Bundle strip = smallStrip(), older, newer;
  ASSERT_EQ(storage.save(strip, path, "w"), "");
  ASSERT_EQ(storage.load(path, older), "");
  runPython(folder.path(),
            "import h5py; h5py.File('a.kx', 'r+')['0/strip'].attrs['WeekNumber'] = 7");
  ASSERT_EQ(storage.load(path, newer), "");
  EXPECT_EQ(newer.slice(0)->uniqueGrid()->attributes().integer("WeekNumber"), 7);
}

TEST(DamagedFile, WhatIsNoContainerIsRefusedAndTheBundleStays) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "folder");
  writeContent(folder / "empty", "");
  writeContent(folder / "text", "Positions\n1 2 3\n");
  std::string noise(100000, ' ');
  std::mt19937 random(1);
  for (char& byte : noise) byte = static_cast<char>(random());
  writeContent(folder / "noise", noise);
  writeContent(folder / "signature", "\x89HDF\r\n\x1a\n" + noise);
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("circle", folder / "circle");
  std::filesystem::create_symlink("/dev/zero", folder / "device");
  const std::string unreadable = "is not a readable container file (HDF5), or it is damaged";
  for (const auto& [name, words] : {std::pair<std::string, std::string>{"folder", "is a folder"},
                                    {"empty", unreadable},
                                    {"text", unreadable},
                                    {"noise", unreadable},
                                    {"signature", unreadable},
                                    {"pipe", "is not a regular file"},
                                    {"device", "is not a regular file"},
                                    {"circle", systemText(ELOOP)},
                                    {"missing", systemText(ENOENT)}}) {
    Bundle bundle = smallStrip(3);
    const auto before = told(bundle).content;
    EXPECT_THAT(storage.load(folder / name, bundle),
                HasSubstr("Strandel::MyStorage::load: " + (folder / name).string() + ": " + words));
    EXPECT_TRUE(told(bundle).content == before);
  }
  Bundle bundle = smallStrip(3);
  for (const auto* name : {"folder", "pipe"}) {
    EXPECT_THAT(storage.save(bundle, folder / name, "wd"),
                HasSubstr((folder / name).string() + ": is not a regular file"));
  }
}

// Texts of variable length lie in the one place that has no checksum in any version of HDF5. Their
// characters can change; whatever else is there must not lead the library astray.
#ifndef VELORN_SANITIZED  // they take more addresses
TEST(DamagedFile, ThatWouldInflateBeyondTheMemoryIsRefusedAndZerosThatFitAreRead) {
  const TemporaryFolder folder;
  const auto file = (folder / "zeros.kx").string();
  // 128 MB in chunks of 0.5 MB, and ten values in one chunk of 128 MB.
  runPython(folder.path(), R"(
import h5py, numpy as np
with h5py.File('zeros.kx', 'w', libver=('v110', 'v110')) as f:
    f.attrs['format'] = np.bytes_('kx')
    f.attrs['version'] = 1
    s = f.create_group('0')
    s.attrs['time'] = 0.0
    for name, rows, chunk in (('Many', 1 << 24, 1 << 16), ('Few', 10, 1 << 24)):
        group = s.create_group(name).create_group('StandardCartesianChart3D').create_group('Times')
        group.attrs['value_type'] = np.bytes_('double')
        values = group.create_dataset('0', shape=(rows,), maxshape=(None,), dtype='f8', chunks=(chunk,), compression=9)
        values[:] = 0.0
)");
  EXPECT_LT(std::filesystem::file_size(file), 2'000'000U);
  Bundle bundle;
  ASSERT_EQ(storage.load(file, bundle), "");
  const auto read = [&](const char* grid) {
    return bundle.slices().at(0)->grid(grid)->cartesian()->field("Times")->values<double>({0});
  };
  EXPECT_EQ(read("Many").values->size(), std::size_t{1} << 24);
  const auto memory = [] {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * 4096;
  };
  const Limit little(RLIMIT_AS, memory() + (std::size_t{200} << 20));
  for (const char* const name : {"Many", "Few"}) {
    EXPECT_THAT(read(name).error,
                testing::AllOf(HasSubstr(file), HasSubstr(name), HasSubstr("would inflate to")));
  }
}
#endif

TEST(DamagedFile, AnyByteOfTheHeapOfTextsMayBeWrongWithoutHarmToTheProcess) {
  const TemporaryFolder folder;
  std::string example = exampleOfTheManual();
  for (std::size_t at = 0; (at = example.find("np.bytes_(")) != std::string::npos;) {
    example.replace(at, 10, "str(");
  }
  runPython(folder.path(), example);
  const std::string bytes = contentOf(folder / "strip.kx");
  const auto heap = bytes.find("GCOL");
  ASSERT_NE(heap, std::string::npos);
  ASSERT_EQ(toldBy(folder / "strip.kx").fault, "");
  int messages = 0;
  // The header and the first five texts.
  for (std::size_t at = heap; at < heap + 136; ++at) {
    for (const int bits : {0x01, 0x08, 0x40, 0xFF}) {
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(damaged[at] ^ bits);
      std::filesystem::remove(folder / "a.kx");
      writeContent(folder / "a.kx", damaged);
      Bundle bundle;
      messages += storage.load(folder / "a.kx", bundle).empty() ? 0 : 1;
    }
  }
  EXPECT_GT(messages, 100);
}

TEST(DamagedFile, AnOpenFileMayOutliveTheHdf5Library) {
  const TemporaryFolder folder;
  Bundle strip = smallStrip();
  ASSERT_EQ(storage.save(strip, folder / "a.kx", "w"), "");
  EXPECT_EQ(storage.load(folder / "a.kx", stillOpenAtTheEnd), "");
}

TEST(DamagedFile, AllThisPassesInHalfAGibibyteToo) {
  runWithLittleMemory("'*DamagedFile*'");
}
