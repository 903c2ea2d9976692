// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/model/LineReader.h"

#include <system_error>

#include <fmt/format.h>

namespace Velorn {
namespace {

constexpr std::size_t longestLine = 65536;  // 24 unknowns have up to 8 kB, a path 4 kB

}  // namespace

LineReader::LineReader(const std::filesystem::path& path) : path_(path), buffer_(longestLine) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) {
    fault_ = refusedWhole("is no file");
    return;
  }
  file_.open(path, std::ios::binary);
  if (!file_) fault_ = refusedWhole("can not be opened");
}

bool LineReader::next(std::string_view& line) {
  if (!fault_.empty()) return false;
  ++number_;
  file_.getline(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  const auto taken = static_cast<std::size_t>(file_.gcount());
  if (file_.bad()) fault_ = refusedWhole("can not be read");
  if (file_.eof() && taken == 0) return false;
  if (file_.fail() && !file_.bad()) fault_ = refused("is too long");
  if (!fault_.empty()) return false;
  line = {buffer_.data(), file_.eof() ? taken : taken - 1};  // the line feed is counted
  return true;
}

std::string LineReader::refused(std::string_view fault) const {
  return fmt::format("{}: line {}: {}", path_.string(), number_, fault);
}

std::string LineReader::refusedWhole(std::string_view fault) const {
  return fmt::format("{}: {}", path_.string(), fault);
}

}  // namespace Velorn
