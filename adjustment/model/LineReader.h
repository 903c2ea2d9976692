// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads a text file line by line, and names the line in its messages.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace Velorn {

/// Lines of a text file without their line feeds. What can not be read, and a line longer than any
/// that these files hold, is a fault of the file.
///
///     LineReader lines(path);
///     std::string_view line;
///     while (lines.next(line)) ...
///     if (!lines.fault().empty()) return lines.fault();
class LineReader {
 public:
  explicit LineReader(const std::filesystem::path& path);

  /// @param line  valid until the next call
  /// @return      false at the end of the file or at a fault
  bool next(std::string_view& line);

  /// Empty, or what kept the file from being read to its end.
  const std::string& fault() const { return fault_; }

  /// "<file>: line <n>: <fault>" for the line that was read last.
  std::string refused(std::string_view fault) const;

  /// "<file>: <fault>".
  std::string refusedWhole(std::string_view fault) const;

 private:
  std::filesystem::path path_;
  std::ifstream file_;
  std::vector<char> buffer_;
  std::size_t number_ = 0;
  std::string fault_;
};

}  // namespace Velorn
