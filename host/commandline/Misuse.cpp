// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/Misuse.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include <fmt/format.h>

#include "host/commandline/CommandTable.h"
#include "host/commandline/Nearest.h"

namespace CommandLine {

namespace {

bool isOption(const std::string& word) {
  return word.size() > 1 && word.front() == '-';
}

/// Where no name is near, the list of them is.
std::string withAdvice(const std::string& text, const std::string& nearest,
                       const std::string& call) {
  if (!nearest.empty()) return text + didYouMean(nearest);
  return fmt::format("{}; see `{} --help`", text, call);
}

std::string noSuchOption(const CLI::App& app, const std::string& word, const std::string& call) {
  const std::string typed = word.substr(0, word.find('='));
  std::vector<std::string> names;
  for (const auto& name : optionNames(tableOf(app))) {
    if (name.starts_with("--")) names.push_back(name.substr(2));
  }
  const auto begin = std::min(typed.find_first_not_of('-'), typed.size());
  const std::string nearest = nearestOf(names, typed.substr(begin));
  return withAdvice(typed + ": no such option", nearest.empty() ? "" : "--" + nearest, call);
}

std::string misuseOf(const CLI::App& app, const std::string& fault, const std::string& call) {
  const auto words = app.remaining();
  const auto option = std::ranges::find_if(words, isOption);
  if (option != words.end()) return noSuchOption(app, *option, call);
  return withAdvice(words.empty() ? fault : words.front() + ": one argument too many", "", call);
}

}  // namespace

std::string noSuchCommand(const CLI::App& program, const std::string& typed) {
  return withAdvice(typed + ": no such command", nearestOf(commandNames(tableOf(program)), typed),
                    program.get_name());
}

std::string misuseText(const CLI::App& program, const CLI::ParseError& error) {
  const std::string& name = program.get_name();
  const auto words = program.remaining();  // typed before any command
  if (!words.empty() && !isOption(words.front())) return noSuchCommand(program, words.front());
  const auto called = program.get_subcommands();
  if (called.empty()) return misuseOf(program, error.what(), name);
  const auto& command = *called.front();
  const std::string call = name + " " + command.get_name();
  if (words.empty()) return misuseOf(command, error.what(), call);
  const std::string option = words.front().substr(0, words.front().find('='));
  if (!command.get_option_no_throw(option)) return noSuchOption(program, option, name);
  return fmt::format("{} stands behind the command: {} {}", option, call, option);
}

}  // namespace CommandLine
