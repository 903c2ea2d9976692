// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/terminal/Progress.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

#include "platform/plome/Printable.h"

namespace {

constexpr double secondsBetweenBars = 0.1;
constexpr double secondsBetweenLines = 10.0;
constexpr std::size_t barWidth = 20;
constexpr std::size_t columns = 79;  // a line that wraps around could not be erased
constexpr const char* eraseLine = "\r\x1b[K";

void writeToStandardError(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

bool standardErrorShowsBars() {
  const char* const kind = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && kind && std::string_view(kind) != "dumb";
}

double secondsNow() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

/// "1:05" or "2:03:09".
std::string clockText(double seconds) {
  constexpr double most = 359999.0;  // 99:59:59
  const auto all = static_cast<long>(std::lround(std::min(seconds, most)));
  const long hours = all / 3600;
  const long minutes = all / 60 % 60;
  return hours ? fmt::format("{}:{:02}:{:02}", hours, minutes, all % 60)
               : fmt::format("{}:{:02}", minutes, all % 60);
}

std::string barText(std::size_t current, std::size_t total) {
  const double done = static_cast<double>(current) / static_cast<double>(total);
  const auto filled =
      std::min(barWidth, static_cast<std::size_t>(done * static_cast<double>(barWidth)));
  return "[" + std::string(filled, '=') + std::string(barWidth - filled, ' ') + "] ";
}

}  // namespace

Progress::Progress(bool quiet)
    : Progress(writeToStandardError, standardErrorShowsBars(), secondsNow) {
  quiet_ = quiet;
}

Progress::Progress(Output output, bool terminal, Clock clock)
    : output_(std::move(output)), terminal_(terminal), clock_(std::move(clock)) {}

Progress::~Progress() {
  erase();
}

void Progress::report(const std::string& text, std::size_t current, std::size_t total) {
  if (quiet_) return;
  const std::lock_guard lock(mutex_);
  const double now = clock_();
  if (text != text_ || current < current_) begin(text, current, now);
  current_ = current;
  if (now >= next_) show(current, total, now);
}

void Progress::message(std::string_view line) {
  const std::lock_guard lock(mutex_);
  const std::string bar = bar_;
  erase();
  output_(Plome::printable(line) + "\n");
  if (bar.empty()) return;
  output_(bar);
  bar_ = bar;
}

void Progress::begin(const std::string& text, std::size_t current, double now) {
  text_ = text;
  first_ = current;
  begun_ = now;
  if (terminal_) next_ = now;  // a log keeps its pace also when short jobs follow each other
}

void Progress::show(std::size_t current, std::size_t total, double now) {
  const std::size_t item = total ? std::min(current + 1, total) : current + 1;
  const std::string count = total ? fmt::format("{} of {}", item, total) : fmt::format("{}", item);
  const std::string rest = count + speed(current, total, now);
  if (terminal_) {
    erase();
    bar_ = Plome::printable(text_) + " " + (total ? barText(current, total) : "") + rest;
    bar_.resize(std::min(bar_.size(), columns));
    output_(bar_);
  } else {
    output_(Plome::printable(text_) + " " + rest + "\n");
  }
  next_ = now + (terminal_ ? secondsBetweenBars : secondsBetweenLines);
}

void Progress::erase() {
  if (!bar_.empty()) output_(eraseLine);
  bar_.clear();
}

/// Rate so far, and the time that the rest takes at this rate; empty before there is any.
std::string Progress::speed(std::size_t current, std::size_t total, double now) const {
  const auto done = static_cast<double>(current - first_);
  const double seconds = now - begun_;
  if (!(done > 0.0) || !(seconds > 0.0)) return {};
  const double rate = done / seconds;
  std::string text =
      rate < 1.0 ? fmt::format(", {:.1f} s each", 1.0 / rate) : fmt::format(", {:.0f}/s", rate);
  if (current >= total) return text;
  return text + ", " + clockText(static_cast<double>(total - current) / rate) + " left";
}
