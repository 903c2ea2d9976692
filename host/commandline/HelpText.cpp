// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/HelpText.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace CommandLine {

namespace {

constexpr std::size_t width = 80;
constexpr std::size_t descriptions = 28;  ///< column that those of options begin in

/// Lines of up to so many letters; a word that is longer is a line of its own.
std::vector<std::string> filled(const std::vector<std::string>& words, std::size_t limit,
                                std::size_t indentation = 0) {
  std::vector<std::string> lines;
  for (const auto& word : words) {
    if (!lines.empty() && lines.back().size() + 1 + word.size() <= limit) {
      lines.back() += " " + word;
    } else {
      lines.push_back(std::string(lines.empty() ? 0 : indentation, ' ') + word);
    }
  }
  return lines;
}

/// Words of shell; blanks between quotes part none.
std::vector<std::string> shellWords(std::string_view command) {
  std::vector<std::string> words{""};
  char quote = '\0';
  for (const char letter : command) {
    if (letter == ' ' && quote == '\0') {
      words.emplace_back();
      continue;
    }
    words.back() += letter;
    if (letter == quote) {
      quote = '\0';
    } else if (quote == '\0' && (letter == '"' || letter == '\'')) {
      quote = letter;
    }
  }
  return words;
}

std::string entry(const std::string& name, const std::vector<std::string>& words,
                  std::size_t column) {
  const std::string nextLine = "\n" + std::string(column, ' ');
  std::string text = "  " + name;
  text += text.size() + 2 <= column ? std::string(column - text.size(), ' ') : nextLine;
  return text + fmt::format("{}\n", fmt::join(filled(words, width - column), nextLine));
}

std::string entries(const std::string& title, const std::vector<Argument>& arguments) {
  std::string text = fmt::format("\n{}:\n", title);
  for (const auto& one : arguments) text += entry(one.usage(), one.explanation(), descriptions);
  return text;
}

std::string entries(const std::string& title, const std::vector<Command>& commands,
                    std::size_t column) {
  std::string text = fmt::format("\n{}:\n", title);
  for (const auto& one : commands) text += entry(one.name, wordsOf(one.description), column);
  return text;
}

std::string paragraph(const std::vector<std::string>& words, std::size_t indentation = 0) {
  return fmt::format("{}\n", fmt::join(filled(words, width, indentation), "\n"));
}

}  // namespace

std::vector<std::string> wrappedShell(std::string_view commands, std::size_t limit) {
  std::vector<std::string> lines, pieces;
  const auto end = [&] {
    const auto those = filled(pieces, limit - 2, 4);
    for (const auto& one : those) lines.push_back(one + (&one == &those.back() ? "" : " \\"));
    pieces.clear();
  };
  for (const auto& word : shellWords(commands)) {
    const bool isValue =  // of the option before it, with which it stays together
        !pieces.empty() && pieces.back().starts_with('-') && !word.starts_with('-');
    if (isValue || (word == "&&" && !pieces.empty())) {
      pieces.back() += " " + word;
    } else {
      pieces.push_back(word);
    }
    if (word == "&&") end();  // the next line goes on without a mark
  }
  end();
  return lines;
}

std::string helpText(const Command& command, const std::string& call) {
  auto usage = command.synopsis();
  usage.insert(usage.begin(), "Usage: " + call);
  std::string text = paragraph(wordsOf(command.description)) + "\n" + paragraph(usage, 9);
  if (!command.positionals.empty()) text += entries("Arguments", command.positionals);
  std::size_t longest = 0;
  for (const auto& one : command.commands) longest = std::max(longest, one.name.size());
  for (const auto& group : groupsOf(command.commands)) {
    text += entries(group, thoseOf(group, command.commands), longest + 4);
  }
  for (const auto& group : groupsOf(command.options)) {
    text += entries(group, thoseOf(group, command.options));
  }
  if (!command.example.empty()) {
    const auto lines = wrappedShell(command.example, width - 2);
    text += fmt::format("\nExample:\n  {}\n", fmt::join(lines, "\n  "));
  }
  for (const auto& note : command.notes) text += "\n" + paragraph(wordsOf(note));
  return text;
}

}  // namespace CommandLine
