// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/Program.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace OrvekPDF {
namespace {

using std::chrono::steady_clock;

std::string systemFault(int code) {
  return std::generic_category().message(code);
}

/// A file descriptor that is closed at the end of its scope and in every program started. It is
/// never 0, 1 or 2, which a process may have closed: the redirections would run into each other.
class Descriptor {
 public:
  explicit Descriptor(int value = -1) : value_(value) {
    if (value < 0 || value > 2) return;
    value_ = fcntl(value, F_DUPFD_CLOEXEC, 3);
    ::close(value);
  }
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Descriptor() { close(); }

  void close() {
    if (value_ >= 0) ::close(std::exchange(value_, -1));
  }
  bool isOpen() const { return value_ >= 0; }
  int value() const { return value_; }

 private:
  int value_;
};

/// What a program is started with.
struct Streams {
  Descriptor input, output, error;
  Descriptor readError;  ///< the other end of `error`
};

bool fill(const Descriptor& file, std::string_view content) {
  while (!content.empty()) {
    const auto written = write(file.value(), content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return lseek(file.value(), 0, SEEK_SET) == 0;
}

/// @return empty, or why one of them cannot be had
std::string openStreams(std::string_view input, const std::filesystem::path& output,
                        Streams& streams) {
  streams.output = Descriptor(open(output.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!streams.output.isOpen()) return "cannot be written: " + systemFault(errno);
  streams.input = Descriptor(memfd_create("input", MFD_CLOEXEC));
  if (!streams.input.isOpen() || !fill(streams.input, input)) {
    return "no memory for the input: " + systemFault(errno);
  }
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

/// @return how the process ended, in words; nothing while it runs
std::optional<std::string> endOf(pid_t process, int options) {
  int status = 0;
  pid_t ended = 0;
  do {
    ended = waitpid(process, &status, options);
  } while (ended < 0 && errno == EINTR);
  if (ended == 0) return std::nullopt;
  if (ended < 0) return "";  // a host that reaps every child itself: it did end
  if (WIFSIGNALED(status)) return fmt::format("was ended by signal {}", WTERMSIG(status));
  const int code = WEXITSTATUS(status);
  return code == 0 ? "" : fmt::format("ended with status {}", code);
}

/// Waits for the end of the process, listening to what it says.
std::string waitFor(pid_t process, Descriptor pipe, std::chrono::milliseconds timeLimit,
                    std::string& said) {
  using namespace std::chrono_literals;
  const auto deadline = steady_clock::now() + timeLimit;
  while (true) {
    if (pipe.isOpen()) {
      listen(pipe, 10ms, said);
    } else {
      std::this_thread::sleep_for(1ms);
    }
    if (auto end = endOf(process, WNOHANG)) {
      if (pipe.isOpen()) listen(pipe, 0ms, said);  // what came between the two calls
      return std::move(*end);
    }
    if (steady_clock::now() >= deadline) {
      kill(-process, SIGKILL);
      endOf(process, 0);
      return fmt::format("did not finish within {} s and was ended",
                         std::chrono::duration<double>(timeLimit).count());
    }
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

ProgramEnd runProgram(const std::vector<std::string>& command, std::string_view input,
                      const std::filesystem::path& output, std::chrono::milliseconds timeLimit) {
  Streams streams;
  ProgramEnd end;
  end.fault = openStreams(input, output, streams);
  if (!end.fault.empty()) return end;

  pid_t process = 0;
  if (const int fault = StartSettings(streams).start(command, process)) {
    end.fault = command.front() + " cannot be started: " + systemFault(fault);
    return end;
  }
  streams.error.close();  // or the reading end would never see an end
  std::string said;
  end.fault = waitFor(process, std::move(streams.readError), timeLimit, said);
  if (!end.fault.empty()) end.fault = command.front() + " " + end.fault;
  end.said = onOneLine(said);
  return end;
}

}  // namespace OrvekPDF
