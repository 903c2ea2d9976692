// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The program, interrupted while it works.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/LasBytes.h"
#include "tests/support/TemporaryFolder.h"

using testing::HasSubstr;
namespace fs = std::filesystem;
using std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

/// A busy machine may take a while; a program that waits for other work to end takes for ever.
constexpr auto patience = 20s;

#ifdef VELORN_SANITIZED
constexpr const char* points = "300000";
#else
constexpr const char* points = "3000000";  // so many that a strip is not written in an instant
#endif

/// One call of the program, what it says going to a file.
class Call {
 public:
  Call(std::vector<std::string> arguments, fs::path said) : said_(std::move(said)) {
    arguments.insert(arguments.begin(), VELORN_PROGRAM);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, said_.c_str(), O_WRONLY | O_CREAT, 0666);
    EXPECT_EQ(posix_spawn(&process_, VELORN_PROGRAM, &actions, nullptr, pointers.data(), environ),
              0);
    posix_spawn_file_actions_destroy(&actions);
  }

  std::string said() const { return contentOf(said_); }

  /// Waits for something to happen, and interrupts; the exit status, or -1 for a late or other end.
  template <typename Condition>
  int interrupted(int signal, const Condition& condition) {
    const auto begin = steady_clock::now();
    while (!condition() && steady_clock::now() < begin + 300s) std::this_thread::sleep_for(200us);
    EXPECT_TRUE(condition.happened) << said();
    const auto sent = steady_clock::now();
    kill(process_, signal);
    int status = 0;
    waitpid(process_, &status, 0);
    EXPECT_LT(steady_clock::now() - sent, patience);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  fs::path said_;
  pid_t process_ = 0;
};

template <typename Function>
struct Happens {
  Function function;
  mutable bool happened = false;
  bool operator()() const { return happened = happened || function(); }
};
template <typename Function>
Happens(Function) -> Happens<Function>;

std::vector<std::string> halfWrittenIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : fs::directory_iterator(folder, missing)) {
    if (entry.path().extension() == ".part") names.push_back(entry.path().filename().string());
  }
  return names;
}

bool isWriting(const fs::path& folder, const std::string& name) {
  const auto names = halfWrittenIn(folder);
  return std::ranges::any_of(names, [&](const auto& n) { return n.starts_with(name); });
}

class Interruption : public testing::Test {
 protected:
  Call start(std::vector<std::string> arguments) const {
    return Call(std::move(arguments), folder / "said.txt");
  }
  const TemporaryFolder folder;
  const fs::path flight = folder / "flight";
};

}  // namespace

TEST_F(Interruption, WhileAStripIsWrittenLeavesNothingOfIt) {
  auto simulate = start({"simulate", flight.string(), "--points", points});
  const Happens writing{[&] { return isWriting(flight, "strip_01.kx"); }};
  EXPECT_EQ(simulate.interrupted(SIGINT, writing), 130);
  EXPECT_EQ(simulate.said(), "velorn: interrupted\n");
  EXPECT_THAT(halfWrittenIn(flight), testing::IsEmpty());
  EXPECT_TRUE(fs::exists(flight / "trajectory.kx"));
}

TEST_F(Interruption, ReachesTheSolver) {
  const std::string name = flight.string();
  outputOf(std::string(VELORN_PROGRAM) + " simulate '" + name +
           "' --points 60000 --strips 2 --length 800 --correspondences=20000");
  auto adjust =
      start({"adjust", name + "/strip_01.kx", name + "/strip_02.kx", name + "/strip_03.kx",
             name + "/strip_04.kx", "--trajectory", name + "/trajectory.kx", "--ground-truth",
             name + "/ground_truth.kx", "--output", name, "--reference"});
  const Happens solving{
      [&] { return adjust.said().find("DONE FILLING CERES") != std::string::npos; }};
  EXPECT_EQ(adjust.interrupted(SIGTERM, solving), 143);
  EXPECT_THAT(adjust.said(), HasSubstr("velorn: interrupted\n"));
  EXPECT_FALSE(fs::exists(flight / "01_status/03_SolverStatus.txt"));
}

TEST_F(Interruption, EndsACommandThatDecompresses) {
  std::string compressed = lasBytes(lasOverZone32(10));
  compressed[104] = static_cast<char>(compressed[104] | '\x80');
  writeContent(folder / "a.laz", compressed);
  const std::string trajectory = VELORN_TEST_DATA "/line/sbet.out";
  const auto note = folder / "process", command = folder / "unpack";
  writeContent(command, "#!/bin/sh\necho $$ > '" + note.string() + "'\nexec sleep 600\n");
  chmod(command.c_str(), 0700);
  auto import = start({"import", (folder / "a.laz").string(), "--trajectory", trajectory, "--week",
                       "2318", "--output", (folder / "out").string(), "--decompress",
                       command.string() + " {in} {out}"});
  const Happens running{[&] { return fs::exists(note) && contentOf(note).ends_with('\n'); }};
  ASSERT_EQ(import.interrupted(SIGTERM, running), 143);
  const std::string process = contentOf(note).substr(0, contentOf(note).find('\n'));
  const auto sleeps = [&] {  // one that nobody has reaped yet has no command line
    const fs::path line = "/proc/" + process + "/cmdline";
    return fs::exists(line) && contentOf(line).starts_with("sleep");
  };
  for (const auto begin = steady_clock::now();
       sleeps() && steady_clock::now() < begin + patience;) {
    std::this_thread::sleep_for(1ms);
  }
  EXPECT_FALSE(sleeps());
}

TEST_F(Interruption, ThatIsIgnoredWhenTheProgramStartsStaysIgnored) {
  EXPECT_EQ(outputOf("trap '' INT; " VELORN_PROGRAM " simulate '" + flight.string() +
                     "' --points 200000 >/dev/null & sleep 0.1; kill -INT $!; wait $!; echo $?"),
            "0\n");
}
