// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/Gnuplot.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

#include <fmt/format.h>

#include "platform/morvane/Console.h"
#include "platform/plome/Program.h"
#include "platform/plome/ReplacedFile.h"

namespace OrvekPDF {
namespace {

/// Bytes of the character that `text` begins with; 0 when these are no UTF-8 (Unicode, table 3-7).
std::size_t characterLength(std::string_view text) {
  const auto byte = [text](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first < 0xC2   ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
  }
  const bool overlongOrNoCharacter =
      (first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
      (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F);
  return overlongOrNoCharacter ? 0 : length;
}

std::string escaped(std::string_view character) {
  const auto byte = static_cast<unsigned char>(character.front());
  // Not so digits: gnuplot takes all that follow an octal number to be part of it.
  const bool harmless = byte == ' ' || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
  if (harmless) return std::string(character);
  if (byte < 0x20 || byte == 0x7F) return " ";
  std::string octal;
  for (const char part : character) {
    octal += fmt::format("\\{:03o}", static_cast<unsigned char>(part));
  }
  return octal;
}

/// A page is whole when it has both ends; a program that was stopped leaves only the first.
bool isWholePdf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(stream), {}};
  const std::size_t tail = content.size() - std::min<std::size_t>(content.size(), 1024);
  return content.starts_with("%PDF-") && content.find("%%EOF", tail) != std::string::npos;
}

}  // namespace

std::string quoted(std::string_view utf8, std::size_t mostCharacters) {
  std::string text = "\"";
  std::string last;  // kept back until it is known whether it is the last one
  std::size_t characters = 0;
  while (!utf8.empty() && characters < mostCharacters) {
    const std::size_t length = characterLength(utf8);
    text += last;
    last = length == 0 ? escaped("\uFFFD") : escaped(utf8.substr(0, length));
    utf8.remove_prefix(std::max<std::size_t>(1, length));
    ++characters;
  }
  return text + (utf8.empty() ? last : escaped("…")) + "\"";
}

std::string grouped(unsigned long long number) {
  std::string digits = std::to_string(number);
  for (auto place = static_cast<std::ptrdiff_t>(digits.size()) - 3; place > 0; place -= 3) {
    digits.insert(static_cast<std::size_t>(place), 1, ' ');
  }
  return digits;
}

double roundStep(double least) {
  const double power = std::pow(10.0, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= least * (1.0 - 1e-9)) return factor * power;
  }
  return 10.0 * power;
}

std::string pageHead(int width, int height, std::string_view title) {
  const auto mostCharacters = static_cast<std::size_t>(width / 3);
  return fmt::format(
      "set encoding utf8\n"
      "set terminal pdfcairo noenhanced color size {}cm,{}cm font \"Sans,11\"\n"
      "set minussign\n"
      "set title {} font \"Sans:Bold,14\" offset 0,0.3\n"
      "set border 3 linecolor rgb \"#404040\"\n"
      "set tics nomirror out scale 0.6 font \"Sans,10\" textcolor rgb \"#202020\"\n"
      "set grid ytics linetype 1 linewidth 0.5 linecolor rgb \"#D8D8D8\"\n"
      "set key off\n",
      width / 10.0, height / 10.0, quoted(title, mostCharacters));
}

std::string emptyPlot(std::string_view message) {
  return fmt::format(
      "set label 1000 {} at graph 0.5,0.5 center font \"Sans,16\" textcolor rgb \"#606060\"\n"
      "unset grid\n"
      "set xrange [0:1]\nset yrange [0:1]\nset format \"\"\nset tics scale 0\n"
      "plot NaN\n",
      quoted(message, 100));
}

std::string drawPdf(std::string_view script, const std::filesystem::path& pdf,
                    std::chrono::milliseconds timeLimit) {
  Plome::ReplacedFile file(pdf);
  auto end = Plome::runProgram({.command = {"gnuplot", "-d"},
                                .input = script,
                                .output = file.temporary(),
                                .timeLimit = timeLimit});
  if (end.fault.empty() && !isWholePdf(file.temporary())) end.fault = "gnuplot wrote no whole PDF";
  if (end.fault.empty()) return file.replace();
  return pdf.string() + ": " + end.fault + (end.said.empty() ? "" : ": " + end.said);
}

std::string warned(std::string fault) {
  Morvane::Console::writeLine("Warning: " + fault);
  return fault;
}

}  // namespace OrvekPDF
