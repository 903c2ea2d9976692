// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/DelimitedText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

#include <fmt/format.h>

#include "platform/plome/Printable.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text, std::string_view off = blanks) {
  const auto first = text.find_first_not_of(off);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(off) - first + 1);
}

std::vector<std::string_view> wordsBetween(std::string_view line, std::string_view delimiters) {
  std::vector<std::string_view> words;
  for (std::size_t start = 0; start < line.size();) {
    const std::size_t end = std::min(line.find_first_of(delimiters, start), line.size());
    if (end > start) words.push_back(line.substr(start, end - start));
    start = end + 1;
  }
  return words;
}

std::string_view likelyCause(std::string_view noNumber) {
  if (noNumber.find_first_of(blanks) != std::string_view::npos) {
    return "; the columns may be parted by something else";
  }
  const bool comma = noNumber.find(',') != std::string_view::npos;
  return comma ? "; decimals have to follow a point" : "";
}

}  // namespace

std::optional<double> numberIn(std::string_view word) {
  if (word.starts_with('+') && !word.starts_with("+-")) word.remove_prefix(1);
  double number = 0.0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

char delimiterOf(std::string_view line) {
  for (const char delimiter : {';', '\t', ','}) {
    if (line.find(delimiter) != std::string_view::npos) return delimiter;
  }
  return ' ';
}

std::vector<std::string_view> wordsOf(std::string_view line, char delimiter) {
  if (delimiter == ' ') return wordsBetween(line, blanks);
  std::vector<std::string_view> words;
  for (std::size_t start = 0; start <= line.size();) {
    const std::size_t end = std::min(line.find(delimiter, start), line.size());
    words.push_back(trimmed(line.substr(start, end - start)));
    start = end + 1;
  }
  return words;
}

bool holdsANumber(std::string_view line) {
  const auto words = wordsBetween(line, " \t\r,;");
  return std::any_of(words.begin(), words.end(),
                     [](std::string_view word) { return numberIn(word).has_value(); });
}

std::string shown(std::string_view text) {
  const std::string result = Plome::printableOnOneLine(text.substr(0, 60));
  return text.size() > 60 ? result + "..." : result;
}

DelimitedText::DelimitedText(const std::filesystem::path& file)
    : file_(file.string()), buffer_(16384) {
  std::error_code ignored;
  const auto status = std::filesystem::status(file, ignored);
  if (!std::filesystem::exists(status)) throw Error(file_ + ": no such file");
  if (!std::filesystem::is_regular_file(status)) throw Error(file_ + ": is not a text file");
  stream_.open(file, std::ios::binary);
  if (!stream_) throw Error(file_ + ": cannot be opened for reading");
}

bool DelimitedText::readLine() {
  stream_.getline(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  auto length = static_cast<std::size_t>(stream_.gcount());
  if (length == 0 && stream_.eof()) return false;
  ++number_;
  line_ = {buffer_.data(), length};
  if (stream_.bad()) refuse("cannot be read");
  if (stream_.fail()) refuse("the line is longer than any record; this is no text of records");
  if (!stream_.eof()) --length;  // the end of the line is counted, but not kept
  line_ = line_.substr(0, length);
  if (number_ == 1 && line_.starts_with("\xEF\xBB\xBF")) line_.remove_prefix(3);
  line_ = trimmed(line_, " \r");  // a tab may end an empty first column
  return true;
}

bool DelimitedText::next() {
  while (readLine()) {
    const std::string_view content = trimmed(line_);
    if (!content.empty() && content.front() != '#' && content.front() != '%') return true;
  }
  return false;
}

double DelimitedText::finiteNumber(const std::vector<std::string_view>& words, std::size_t column,
                                   std::string_view name) const {
  if (column >= words.size()) {
    refuse(
        fmt::format("there is no column {} for the {}, only {}", column + 1, name, words.size()));
  }
  const auto number = numberIn(words[column]);
  if (!number) {
    refuse(fmt::format("the {} in column {} is \"{}\", no number{}", name, column + 1,
                       shown(words[column]), likelyCause(words[column])));
  }
  if (!std::isfinite(*number)) {
    refuse(fmt::format("the {} in column {} is {}", name, column + 1, *number));
  }
  return *number;
}

void DelimitedText::refuse(const std::string& fault) const {
  throw Error(fmt::format("{}: line {}: {}: \"{}\"", file_, number_, fault, shown(line_)));
}

}  // namespace Velorn::Flights
