// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Shows people how far a long job is: a bar with rate and time left on a terminal, plain lines in a
// log.
//
//     const auto progress = std::make_shared<Progress>();
//     for (std::size_t i = 0; i < strips.size(); ++i) {
//       progress->report("georeferencing", i, strips.size());
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

/// Counts one thing after the other; a new text or a smaller count begins anew. Reports may come as
/// often as they like: a bar is drawn ten times a second at most, a line written every ten seconds.
class Progress {
 public:
  using Output = std::function<void(std::string_view)>;
  using Clock = std::function<double()>;  ///< [s], never goes back

  /// On standard error; a bar when that is a terminal.
  /// @param quiet  shows messages only
  explicit Progress(bool quiet = false);
  Progress(Output output, bool terminal, Clock clock);
  /// Takes the bar off the terminal.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void report(const std::string& text, std::size_t current, std::size_t total);

  /// Writes a line of its own, where a bar stands above it. May be called from any thread.
  void message(std::string_view line);

 private:
  void begin(const std::string& text, std::size_t current, double now);
  void show(std::size_t current, std::size_t total, double now);
  void erase();
  std::string speed(std::size_t current, std::size_t total, double now) const;

  Output output_;
  bool terminal_;
  bool quiet_ = false;
  Clock clock_;
  std::mutex mutex_;
  std::string text_;
  std::size_t first_ = 0;    // count with which this text began
  std::size_t current_ = 0;  // count reported last
  double begun_ = 0.0;       // [s]
  double next_ = 0.0;        // nothing is shown before [s]
  std::string bar_;          // as it stands on the terminal
};
