// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Inside this room only: a file descriptor with an owner.
#pragma once

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace Plome {

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

  /// @return 0 or the error number
  int write(std::string_view content) const {
    while (!content.empty()) {
      const auto written = ::write(value_, content.data(), content.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return errno;
      content.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
  }

 private:
  int value_;
};

}  // namespace Plome
