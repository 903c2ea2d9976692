// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/StepKey.h"

#include <cstdint>

#include "flight/records/FileStamp.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// Counts on with what records hold, so that one of an older form is made anew.
constexpr int form = 6;

}  // namespace

StepKey::StepKey(const std::string& step) {
  add("step", step);
  add("program", VELORN_VERSION);
  add("form", form);
}

void StepKey::addFiles(const char* name, const std::vector<fs::path>& files) {
  for (const auto& file : files) {
    const auto stamp = stampOf(file);
    lines_.push_back(fmt::format("{} = {} of {} bytes, {}, {}", name, stamp.path, stamp.bytes,
                                 stamp.changed, stamp.number));
  }
}

void StepKey::add(const StepKey& other) {
  lines_.insert(lines_.end(), other.lines_.begin(), other.lines_.end());
}

std::string StepKey::digest() const {
  std::uint64_t hash = 14695981039346656037ULL;
  const auto take = [&](unsigned char letter) { hash = (hash ^ letter) * 1099511628211ULL; };
  for (const auto& line : lines_) {
    for (const char letter : line) take(static_cast<unsigned char>(letter));
    take('\n');
  }
  return fmt::format("{:016x}", hash);
}

}  // namespace Velorn::Flights
