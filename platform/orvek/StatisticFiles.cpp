// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/StatisticFiles.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace OrvekStatistic {
namespace {

namespace fs = std::filesystem;

/// One line of a summary: its word and the one place its number lives in.
struct Field {
  std::string word;
  double* figure;
  std::uint64_t* number;
};

std::vector<Field> fieldsOf(Summary& summary) {
  Moments& moments = summary.moments;
  std::vector<Field> fields{{"count", nullptr, &moments.count},
                            {"mean", &moments.mean, nullptr},
                            {"standard_deviation", &moments.standardDeviation, nullptr},
                            {"rms", &moments.rms, nullptr},
                            {"median", &summary.median, nullptr},
                            {"nmad", &summary.nmad, nullptr},
                            {"minimum", &moments.minimum, nullptr},
                            {"maximum", &moments.maximum, nullptr},
                            {"not_a_number", nullptr, &summary.notNumbers},
                            {"infinite", nullptr, &summary.infinite}};
  for (std::size_t i = 0; i < Summary::probabilities.size(); ++i) {
    fields.push_back(
        {fmt::format("quantile_{}", Summary::probabilities[i]), &summary.quantiles[i], nullptr});
  }
  return fields;
}

/// The whole text is the number, or there is none.
template <typename Number>
bool parse(std::string_view text, Number& number) {
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  return fault == std::errc() && end == text.data() + text.size();
}

/// Counts that a double holds exactly; a larger one comes from no program.
bool parseCount(std::string_view text, std::uint64_t& count) {
  return parse(text, count) && count <= std::uint64_t{1} << 53;
}

struct Line {
  std::size_t number;  ///< from 1
  std::vector<std::string_view> words;
};

std::vector<std::string_view> wordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  while (true) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
    if (line.empty() || line.front() == '#') return words;
    const std::size_t end = std::min(line.find_first_of(" \t\r"), line.size());
    words.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
}

/// The lines that hold something; the words point into `content`.
std::vector<Line> linesOf(std::string_view content) {
  std::vector<Line> lines;
  for (std::size_t number = 1; !content.empty(); ++number) {
    const std::size_t end = std::min(content.find('\n'), content.size());
    auto words = wordsOf(content.substr(0, end));
    if (!words.empty()) lines.push_back({number, std::move(words)});
    content.remove_prefix(std::min(end + 1, content.size()));
  }
  return lines;
}

/// @return empty, or the fault without the path
std::string readContent(const fs::path& file, std::string& content) {
  constexpr std::uintmax_t mostBytes = 100'000'000;  // a million bins fill half of it
  std::error_code fault;
  if (!fs::is_regular_file(file, fault)) return fault ? fault.message() : "is not a regular file";
  if (fs::file_size(file, fault) > mostBytes || fault) return "is too large for a statistic";
  std::ifstream stream(file, std::ios::binary);
  content.assign(std::istreambuf_iterator<char>(stream), {});
  return stream ? "" : "cannot be read";
}

std::string parseSummary(const std::vector<Line>& lines, Summary& summary) {
  for (const Field& field : fieldsOf(summary)) {
    const auto line = std::find_if(lines.begin(), lines.end(), [&](const Line& candidate) {
      return candidate.words.front() == field.word;
    });
    if (line == lines.end()) return field.word + " is missing";
    const bool parsed =
        line->words.size() == 2 && (field.figure ? parse(line->words[1], *field.figure)
                                                 : parseCount(line->words[1], *field.number));
    if (!parsed) {
      return fmt::format("line {}: expected \"{} <number>\"", line->number, field.word);
    }
  }
  return {};
}

/// "<word> <count>" at a place where nothing else may stand.
std::optional<std::uint64_t> headOf(const std::vector<Line>& lines, std::size_t index,
                                    std::string_view word) {
  std::uint64_t number = 0;
  if (index < lines.size() && lines[index].words.size() == 2 && lines[index].words[0] == word &&
      parseCount(lines[index].words[1], number)) {
    return number;
  }
  return std::nullopt;
}

/// Appends one bin; bins follow each other without a gap.
bool appendBin(const Line& line, Bins& bins) {
  float lower = 0.0F, upper = 0.0F;
  std::uint64_t count = 0;
  if (line.words.size() != 3 || !parse(line.words[0], lower) || !parse(line.words[1], upper) ||
      !parseCount(line.words[2], count) || !(lower < upper) || !std::isfinite(lower) ||
      !std::isfinite(upper)) {
    return false;
  }
  if (bins.edges.empty()) bins.edges.push_back(lower);
  if (bins.edges.back() != lower) return false;
  bins.edges.push_back(upper);
  bins.counts.push_back(count);
  return true;
}

std::string parseHistogram(const std::vector<Line>& lines, Bins& bins) {
  const auto below = headOf(lines, 0, "below"), above = headOf(lines, 1, "above"),
             count = headOf(lines, 2, "bins");
  if (!below || !above || !count) {
    return "does not begin with the lines \"below <count>\", \"above <count>\", \"bins <n>\"";
  }
  if (*count == 0 || lines.size() - 3 != *count) {
    return fmt::format("announces {} bins and holds {}", *count, lines.size() - 3);
  }
  bins.below = *below;
  bins.above = *above;
  for (std::size_t i = 3; i < lines.size(); ++i) {
    if (!appendBin(lines[i], bins)) {
      return fmt::format(
          "line {}: expected \"<lower> <upper> <count>\", lower being the edge before",
          lines[i].number);
    }
  }
  return {};
}

template <typename Kind>
std::string readFile(const fs::path& file, Kind& result,
                     std::string (*parseLines)(const std::vector<Line>&, Kind&)) {
  std::string content;
  Kind read;
  std::string fault = readContent(file, content);
  if (fault.empty()) fault = parseLines(linesOf(content), read);
  if (!fault.empty()) return file.string() + ": " + fault;
  result = std::move(read);
  return {};
}

}  // namespace

std::string summaryText(const Summary& summary) {
  std::string text =
      "# Figures in the unit of the values; nan: not known. standard_deviation: with n - 1.\n"
      "# nmad: 1.4826 median |x - median|. quantile_p: linear between the order statistics around\n"
      "# (n - 1) p. not_a_number and infinite: counts of values that entered no figure.\n";
  Summary copy = summary;
  for (const Field& field : fieldsOf(copy)) {
    text += field.figure ? fmt::format("{:<20}{}\n", field.word, *field.figure)
                         : fmt::format("{:<20}{}\n", field.word, *field.number);
  }
  return text;
}

std::string histogramText(const Bins& bins) {
  std::string text =
      "# Counts of values. A bin holds lower <= value < upper, the last one its upper edge, too.\n";
  text += fmt::format("below {}\nabove {}\nbins {}\n", bins.below, bins.above, bins.counts.size());
  text += "# lower upper count\n";
  for (std::size_t i = 0; i < bins.counts.size(); ++i) {
    fmt::format_to(std::back_inserter(text), "{} {} {}\n", bins.edges[i], bins.edges[i + 1],
                   bins.counts[i]);
  }
  return text;
}

std::string readSummary(const fs::path& file, Summary& summary) {
  return readFile(file, summary, parseSummary);
}

std::string readHistogram(const fs::path& file, Bins& bins) {
  return readFile(file, bins, parseHistogram);
}

}  // namespace OrvekStatistic
