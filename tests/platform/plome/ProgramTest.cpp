// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/plome/Program.h"
#include "platform/plome/ReplacedFile.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using Plome::runProgram;
using namespace std::chrono_literals;

TEST(Program, GetsNothingOfThisProcessButItsEnvironment) {
  const TemporaryFolder folder;
  const int open = ::open("/dev/null", O_RDONLY);  // as a library may leave one, without O_CLOEXEC
  setenv("PLOME_TEST", "kept", 1);
  setenv("LC_NUMERIC", "de_DE.UTF-8", 1);
  sigset_t blocked, before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto end = runProgram({.command = {"sh", "-c",
                                           "ls /proc/$$/fd; echo $PLOME_TEST $LC_ALL $LC_NUMERIC "
                                           "$LANG; cat; exec grep SigBlk /proc/self/status"},
                               .input = "input\n",
                               .output = folder / "out"});
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  unsetenv("LC_NUMERIC");
  ::close(open);
  EXPECT_EQ(end.fault, "");
  EXPECT_EQ(contentOf(folder / "out"), "0\n1\n2\nkept C.UTF-8\ninput\nSigBlk:\t0000000000000000\n");
}

TEST(Program, RunsWhereTheStandardStreamsAreClosed) {
  const TemporaryFolder folder;
  EXPECT_EXIT(
      {
        for (const int stream : {0, 1, 2}) ::close(stream);
        const auto end = runProgram({.command = {"sh", "-c", "cat; echo said >&2"},
                                     .input = "input\n",
                                     .output = folder / "out"});
        const bool right = contentOf(folder / "out") == "input\n" && end.said == "said";
        fs::remove_all(folder.path());  // this process has one of its own
        std::_Exit(right && end.fault.empty() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

namespace {

/// A program that does not end by itself, nor does the one that it starts.
class EndlessProgram : public testing::Test {
 protected:
  /// @param closing  one time it still listens to nobody, one time it has closed its standard error
  std::vector<std::string> command(const std::string& closing = "") const {
    fs::remove(note);
    return {"sh", "-c",
            closing + "trap '' TERM; sleep 600 & echo $! > '" + note.string() + "'; sleep 600"};
  }
  bool hasStarted() const { return contentOf(note).ends_with('\n'); }

  void expectKilledWithAllItStarted() const {
    const std::string process = std::to_string(std::stoi(contentOf(note)));
    for (int patience = 0; runs(process) && patience < 500; ++patience) {
      std::this_thread::sleep_for(10ms);
    }
    EXPECT_FALSE(runs(process));
  }

  TemporaryFolder folder;
  fs::path note = folder / "process";

 private:
  /// One that has ended and was not reaped yet does not run.
  static bool runs(const std::string& process) {
    const std::string status = contentOf("/proc/" + process + "/stat");
    const std::size_t name = status.rfind(')');
    return name != std::string::npos && status.at(name + 2) != 'Z' && status.at(name + 2) != 'X';
  }
};

}  // namespace

TEST_F(EndlessProgram, IsKilledAtItsTimeLimit) {
  for (const char* const closing : {"", "exec 2>&-; "}) {
    EXPECT_EQ(runProgram({.command = command(closing), .timeLimit = 2s}).fault,
              "sh did not finish within 2 s and was ended");
    expectKilledWithAllItStarted();
  }
}

TEST_F(EndlessProgram, IsKilledWhenTheCallerHasEnough) {
  const auto enough = [this] {
    if (hasStarted()) throw std::runtime_error("enough");
  };
  EXPECT_THROW(runProgram({.command = command(), .whileRunning = enough}), std::runtime_error);
  expectKilledWithAllItStarted();
}

TEST_F(EndlessProgram, IsKilledWithAProcessThatIsInterrupted) {
  testing::FLAGS_gtest_death_test_style = "fast";  // this process has no other threads
  EXPECT_EXIT(
      {
        std::thread([this] {
          while (!hasStarted()) std::this_thread::sleep_for(1ms);
          Plome::removeUnfinishedFiles();
          std::_Exit(7);
        }).detach();
        runProgram({.command = command()});
      },
      testing::ExitedWithCode(7), "");
  expectKilledWithAllItStarted();
}
