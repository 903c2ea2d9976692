// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/terminal/Interruption.h"

#include <csignal>
#include <string_view>
#include <thread>

#include <pthread.h>
#include <unistd.h>

#include "platform/plome/ReplacedFile.h"

namespace {

pthread_t waitingThread;

/// Not through the buffers of the standard library, whose locks another thread may hold.
void say(std::string_view text) {
  [[maybe_unused]] const auto written = write(STDERR_FILENO, text.data(), text.size());
}

[[noreturn]] void endBy(int signal) {
  Plome::removeUnfinishedFiles();
  if (isatty(STDERR_FILENO) != 0) say("\r\x1b[K");
  say("velorn: interrupted\n");
  Plome::removeUnfinishedFiles();  // a thread that had the name of one may have made it since
  _exit(128 + signal);
}

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t interruptions() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM}) {
    if (!isIgnored(signal)) sigaddset(&signals, signal);
  }
  return signals;
}

void passOn(int signal) {
  pthread_kill(waitingThread, signal);
}

/// A library may have started threads before main, which do not block the signals.
void passOnFromOtherThreads(const sigset_t& signals) {
  struct sigaction action {};
  action.sa_handler = passOn;
  action.sa_flags = SA_RESTART;
  for (const int signal : {SIGINT, SIGTERM}) {
    if (sigismember(&signals, signal) != 0) sigaction(signal, &action, nullptr);
  }
}

}  // namespace

void endWhenInterrupted() {
  const sigset_t signals = interruptions();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // every thread that is started inherits it
  std::thread waiting([signals] {
    int signal = 0;
    if (sigwait(&signals, &signal) == 0) endBy(signal);
  });
  waitingThread = waiting.native_handle();
  passOnFromOtherThreads(signals);
  waiting.detach();
}
