// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/Process.h"

#include <array>
#include <fstream>
#include <sstream>

#include <fmt/format.h>
#include <unistd.h>

namespace Velorn::Flights {
namespace {

std::string hostName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

/// The 22nd word of /proc/<number>/stat, whose second one is in brackets and may hold blanks.
std::string startOf(long long number) {
  std::ifstream stream(fmt::format("/proc/{}/stat", number));
  std::string text;
  std::getline(stream, text);
  const auto bracket = text.rfind(')');
  if (bracket == std::string::npos) return {};
  std::istringstream words(text.substr(bracket + 1));
  std::string word;
  for (int place = 3; place <= 22; ++place) words >> word;
  return word;
}

}  // namespace

Process Process::ours() {
  return {hostName(), getpid(), startOf(getpid())};
}

bool Process::isHere() const {
  return host == hostName();
}

bool Process::isGone() const {
  return isHere() && startOf(number) != start;
}

}  // namespace Velorn::Flights
