// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/CorrespondenceFolder.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <regex>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;

fs::path folderOf(const InputParameter& configuration) {
  return configuration.RootPath / configuration.getCorrespondencePath();
}

unsigned int stripNumber(const std::string& digits, const fs::path& file) {
  constexpr unsigned long long most = std::numeric_limits<unsigned int>::max();
  unsigned long long number = most + 1;
  try {
    number = std::stoull(digits);
  } catch (const std::out_of_range&) {
  }
  if (number > most) {
    throw std::out_of_range(
        fmt::format("{}: the strip number {} is too large", file.string(), digits));
  }
  return static_cast<unsigned int>(number);
}

std::optional<CorrespondenceFile> correspondenceFile(const fs::path& path) {
  static const std::regex pattern(R"(c(\d+)_(\d+)(_GroundTruth)?\.kx)", std::regex::ECMAScript);
  std::smatch match;
  const std::string name = path.filename().string();
  if (!std::regex_match(name, match, pattern)) return {};
  return CorrespondenceFile{path, stripNumber(match[1], path), stripNumber(match[2], path)};
}

}  // namespace

std::size_t entriesOfCorrespondenceFolder(const InputParameter& configuration) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folderOf(configuration)), fs::directory_iterator()));
}

std::string walkCorrespondences(
    const InputParameter& configuration, const std::string& text,
    const std::function<std::string(const CorrespondenceFile&, const CorrespondenceBlock&)>&
        visit) {
  std::vector<fs::directory_entry> entries{fs::directory_iterator(folderOf(configuration)),
                                           fs::directory_iterator()};
  std::sort(entries.begin(), entries.end());  // sums do not hang on the file system's order
  const std::size_t total = entries.size();
  std::size_t current = 0;
  for (const auto& entry : entries) {
    if (!entry.is_regular_file()) continue;
    if (const auto progress = configuration.progress.lock()) {
      progress->report(text, current, total);
    }
    ++current;
    const auto file = correspondenceFile(entry.path());
    if (!file) continue;
    const CorrespondenceBlock block(file->path, configuration.Storage);
    if (!block.errorText().empty()) return block.errorText();
    if (auto fault = visit(*file, block); !fault.empty()) return fault;
  }
  return {};
}

}  // namespace Velorn
