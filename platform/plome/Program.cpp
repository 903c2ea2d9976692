// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/Program.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <thread>

#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include "platform/plome/Descriptor.h"
#include "platform/plome/SystemFault.h"
#include "platform/plome/UnfinishedWork.h"

namespace Plome {
namespace {

using std::chrono::steady_clock;
using namespace std::chrono_literals;

/// What a program is started with.
struct Streams {
  Descriptor input, output, error;
  Descriptor readError;  ///< the other end of `error`
};

Descriptor openOutput(const std::filesystem::path& output) {
  if (output.empty()) return Descriptor(open("/dev/null", O_WRONLY | O_CLOEXEC));
  return Descriptor(open(output.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
}

/// @return empty, or why one of them cannot be had
std::string openStreams(const ProgramCall& call, Streams& streams) {
  streams.output = openOutput(call.output);
  if (!streams.output.isOpen()) return "cannot be written: " + systemFault(errno);
  streams.input = Descriptor(memfd_create("input", MFD_CLOEXEC));
  const int fault = streams.input.isOpen() ? streams.input.write(call.input) : errno;
  if (fault != 0) return "no memory for the input: " + systemFault(fault);
  lseek(streams.input.value(), 0, SEEK_SET);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return "no pipe: " + systemFault(errno);
  streams.readError = Descriptor(ends[0]);
  streams.error = Descriptor(ends[1]);
  return {};
}

std::vector<std::string> environmentWithPlainLocale() {
  std::vector<std::string> variables{"LC_ALL=C.UTF-8"};
  for (char** variable = environ; variable && *variable; ++variable) {
    const std::string_view text(*variable);
    if (!text.starts_with("LC_") && !text.starts_with("LANG")) variables.emplace_back(text);
  }
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// The settings of a start, freed at the end of a scope.
class StartSettings {
 public:
  explicit StartSettings(const Streams& streams) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, streams.input.value(), 0);
    posix_spawn_file_actions_adddup2(&actions_, streams.output.value(), 1);
    posix_spawn_file_actions_adddup2(&actions_, streams.error.value(), 2);
    posix_spawn_file_actions_addclosefrom_np(&actions_, 3);

    sigset_t none, plain;
    sigemptyset(&none);
    sigemptyset(&plain);
    sigaddset(&plain, SIGPIPE);
    sigaddset(&plain, SIGCHLD);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &plain);
    posix_spawnattr_setpgroup(&attributes_, 0);  // a group of its own can be killed as a whole
    posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~StartSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  StartSettings(const StartSettings&) = delete;
  StartSettings& operator=(const StartSettings&) = delete;

  /// @return 0 or the error number
  int start(std::vector<std::string> command, pid_t& process) const {
    auto environment = environmentWithPlainLocale();
    return posix_spawnp(&process, command.front().c_str(), &actions_, &attributes_,
                        pointersTo(command).data(), pointersTo(environment).data());
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

/// A program that has been started, killed with all that it started when it has not ended by the
/// end of the scope.
class RunningProgram {
 public:
  RunningProgram(const std::vector<std::string>& command, const Streams& streams) {
    const StartSettings settings(streams);
    fault_ = UnfinishedWork::ofThisProcess().startProgram(
        [&](pid_t& process) { return settings.start(command, process); }, process_);
    isOver_ = fault_ != 0;
  }
  ~RunningProgram() {
    if (!isOver_) end();
  }
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  /// @return 0, or the error number why it could not be started
  int fault() const { return fault_; }

  /// @return how it ended, in words, empty for status 0; nothing while it runs
  std::optional<std::string> outcome() {
    int status = 0;
    const pid_t ended = UnfinishedWork::ofThisProcess().reapProgram(process_, status);
    if (ended == 0) return std::nullopt;
    isOver_ = true;
    if (ended < 0) return "";  // a host that reaps every child itself: it did end
    if (WIFSIGNALED(status)) return fmt::format("was ended by signal {}", WTERMSIG(status));
    const int code = WEXITSTATUS(status);
    return code == 0 ? "" : fmt::format("ended with status {}", code);
  }

  void end() {
    kill(-process_, SIGKILL);
    while (!outcome()) std::this_thread::sleep_for(1ms);
  }

 private:
  pid_t process_ = 0;
  int fault_ = 0;
  bool isOver_ = false;
};

/// Reads once when something comes within `patience`, and closes `pipe` at its end.
void listen(Descriptor& pipe, std::chrono::milliseconds patience, std::string& said) {
  constexpr std::size_t mostKept = 4096;
  pollfd waiting{pipe.value(), POLLIN, 0};
  if (poll(&waiting, 1, static_cast<int>(patience.count())) <= 0) return;
  char buffer[65536];
  const auto count = read(pipe.value(), buffer, sizeof buffer);
  if (count == 0) pipe.close();
  if (count <= 0) return;
  said.append(buffer, std::min(static_cast<std::size_t>(count), mostKept - said.size()));
}

/// Waits for the end of the program, listening to what it says.
std::string waitFor(RunningProgram& program, Descriptor pipe, const ProgramCall& call,
                    std::string& said) {
  const auto begin = steady_clock::now();
  while (true) {
    if (pipe.isOpen()) {
      listen(pipe, 10ms, said);
    } else {
      std::this_thread::sleep_for(1ms);
    }
    if (auto outcome = program.outcome()) {
      if (pipe.isOpen()) listen(pipe, 0ms, said);  // what came between the two calls
      return std::move(*outcome);
    }
    if (call.timeLimit && steady_clock::now() - begin >= *call.timeLimit) {
      program.end();
      return fmt::format("did not finish within {} s and was ended",
                         std::chrono::duration<double>(*call.timeLimit).count());
    }
    if (call.whileRunning) call.whileRunning();
  }
}

std::string onOneLine(std::string_view text) {
  std::string line;
  for (const char character : text) {
    const bool blank = static_cast<unsigned char>(character) <= ' ' || character == '\x7F';
    if (!blank) line += character;
    if (blank && !line.empty() && line.back() != ' ') line += ' ';
  }
  if (line.ends_with(' ')) line.pop_back();
  return line;
}

}  // namespace

ProgramEnd runProgram(const ProgramCall& call) {
  Streams streams;
  ProgramEnd end;
  end.fault = openStreams(call, streams);
  if (!end.fault.empty()) return end;

  RunningProgram program(call.command, streams);
  if (program.fault() != 0) {
    end.fault = call.command.front() + " cannot be started: " + systemFault(program.fault());
    return end;
  }
  streams.error.close();  // or the reading end would never see an end
  std::string said;
  end.fault = waitFor(program, std::move(streams.readError), call, said);
  if (!end.fault.empty()) end.fault = call.command.front() + " " + end.fault;
  end.said = onOneLine(said);
  return end;
}

}  // namespace Plome
