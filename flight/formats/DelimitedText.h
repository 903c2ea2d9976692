// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Text files of a line per record, with words between delimiters: what readers of trajectories and
// of control share. Lines are read one after the other; numbers have a decimal point whatever the
// locale.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Velorn::Flights {

/// The number that the whole word is, a sign of plus allowed; none for anything else and for what a
/// double cannot hold. "nan" and "inf" are numbers here.
std::optional<double> numberIn(std::string_view word);

/// The one of ';', tab, ',' and ' ' that parts the words of a line, in this order.
char delimiterOf(std::string_view line);

/// The words of a line without the blanks around them. Between other delimiters than blanks a word
/// may be empty.
std::vector<std::string_view> wordsOf(std::string_view line, char delimiter);

/// True when one of the words is a number, whatever parts them: such a line is no header.
bool holdsANumber(std::string_view line);

/// The lines of a file. A line of more than 16383 bytes is refused.
class DelimitedText {
 public:
  /// @throws Error, naming the file: no regular file, or not to be opened
  explicit DelimitedText(const std::filesystem::path& file);

  /// Goes to the next line that is not blank and does not begin with '#' or '%'.
  /// @return false at the end
  bool next();

  /// The line without its end; until the next call of next().
  std::string_view line() const { return line_; }

  /// Where the line stands in the file, from 1 on.
  std::size_t number() const { return number_; }

  /// The word of a column as a finite number.
  /// @param column  from 0 on
  /// @param name    of the quantity, for the message
  /// @throws Error, naming file, line, quantity and word: too few words, no number, not finite
  double finiteNumber(const std::vector<std::string_view>& words, std::size_t column,
                      std::string_view name) const;

  /// @throws Error with file, number of the line, fault and the line's text
  [[noreturn]] void refuse(const std::string& fault) const;

 private:
  bool readLine();

  std::string file_;
  std::ifstream stream_;
  std::vector<char> buffer_;
  std::string_view line_;
  std::size_t number_ = 0;
};

/// Text of a file as a message can show it: at most 60 bytes of it, control characters escaped.
std::string shown(std::string_view text);

}  // namespace Velorn::Flights
