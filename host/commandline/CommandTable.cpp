// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/CommandTable.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace CommandLine {

namespace {

std::string oneLine(const std::string& text) {
  return fmt::format("{}", fmt::join(wordsOf(text), " "));
}

/// The parser shows types and choices together: "TEXT:{BIAS,LINEAR}", or "true|grid".
void takeValue(const CLI::Option& option, Argument& argument) {
  const std::string shown = option.get_type_name();
  const auto brace = shown.find(":{");
  argument.value = shown.substr(0, brace);
  if (brace != std::string::npos) {
    argument.choices = CLI::detail::split(shown.substr(brace + 2, shown.size() - brace - 3), ',');
  } else if (shown.find('|') != std::string::npos) {
    argument.choices = CLI::detail::split(shown, '|');
  }
  if (argument.value == "TEXT" && !argument.choices.empty()) {
    argument.value = fmt::format("{}", fmt::join(argument.choices, "|"));
  }
  static const std::map<std::string, std::string> plainNames{
      {"FLOAT", "NUMBER"}, {"UINT", "N"}, {"INT", "N"}};
  const auto plain = plainNames.find(argument.value);
  if (plain != plainNames.end()) argument.value = plain->second;
}

/// A flag that stands for a value may be given another one.
void takeFlag(const CLI::Option& option, Argument& argument) {
  if (option.get_lnames().empty()) return;
  const std::string value = option.get_flag_value(option.get_lnames().front(), "");
  if (value == "true" || value == "false") return;
  const bool isNumber = value.find_first_not_of("0123456789") == std::string::npos;
  argument.value = isNumber ? "N" : "TEXT";
  argument.valueIsOptional = true;
}

/// Lists are shown in brackets by the parser, but not typed so.
std::string defaultOf(const CLI::Option& option) {
  std::string text = option.get_default_str();
  if (!text.starts_with('[') || !text.ends_with(']')) return text;
  text = text.substr(1, text.size() - 2);
  if (option.get_delimiter() != '\0') std::ranges::replace(text, ',', option.get_delimiter());
  return text;
}

/// In alphabetical order, where the parser has that of addresses.
std::set<std::string> namesOf(const std::set<CLI::Option*>& options) {
  std::set<std::string> names;
  for (const auto* option : options) names.insert(option->get_name());
  return names;
}

std::vector<std::string> remarksOf(const CLI::Option& option) {
  std::vector<std::string> remarks;
  if (option.get_required() && !option.get_positional()) remarks.emplace_back("required");
  if (const auto standard = defaultOf(option); !standard.empty()) {
    remarks.push_back("default " + standard);
  }
  for (const auto& other : namesOf(option.get_excludes())) remarks.push_back("not with " + other);
  for (const auto& other : namesOf(option.get_needs())) remarks.push_back("only with " + other);
  return remarks;
}

Argument argumentOf(const CLI::Option& option) {
  Argument argument;
  argument.isPositional = option.get_positional();
  argument.isRequired = option.get_required();
  argument.takesMany = option.get_expected_max() >= CLI::detail::expected_max_vector_size &&
                       option.get_allow_extra_args();
  argument.delimiter = option.get_delimiter();
  argument.description = oneLine(option.get_description());
  argument.remarks = remarksOf(option);
  argument.group = option.get_group();
  for (const auto& name : option.get_snames()) argument.names.push_back("-" + name);
  for (const auto& name : option.get_lnames()) argument.names.push_back("--" + name);
  if (argument.isPositional) argument.names = {option.get_name(true, false)};
  if (option.get_expected_max() > 0) {
    takeValue(option, argument);
  } else {
    takeFlag(option, argument);
  }
  return argument;
}

/// Paragraphs are parted by an empty line. One that begins with "Example:" is a line of shell, of
/// which continued lines are indented.
void takeFooter(const std::string& footer, Command& command) {
  std::istringstream stream(footer);
  std::string paragraph;
  const auto end = [&] {
    if (const auto text = oneLine(paragraph); !text.empty()) command.notes.push_back(text);
    paragraph.clear();
  };
  const std::string mark = "Example:";
  bool isExample = false;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(mark) || (isExample && line.starts_with(' '))) {
      const auto begin = isExample ? 0 : mark.size();
      isExample = true;
      const auto first = std::min(line.find_first_not_of(' ', begin), line.size());
      command.example += (command.example.empty() ? "" : " ") + line.substr(first);
      if (command.example.ends_with(" \\")) command.example.resize(command.example.size() - 2);
    } else {
      isExample = false;
      if (line.empty()) end();
      paragraph += line + '\n';
    }
  }
  end();
}

}  // namespace

std::string Argument::usage() const {
  std::string text = fmt::format("{}", fmt::join(names, ", "));
  if (valueIsOptional) return text + "[=" + value + "]";
  if (!value.empty() && !isPositional) text += " " + value;
  const bool isListed = !isPositional && value.find(',') != std::string::npos;
  return takesMany && !isListed ? text + "..." : text;
}

std::vector<std::string> Argument::explanation() const {
  auto words = wordsOf(description);
  for (std::size_t i = 0; i < remarks.size(); ++i) {
    const bool isLast = i + 1 == remarks.size();
    const std::string text = (i == 0 ? "(" : "") + remarks[i] + (isLast ? ")" : ";");
    const auto parts = text.size() > 30 ? wordsOf(text) : std::vector{text};
    words.insert(words.end(), parts.begin(), parts.end());
  }
  return words;
}

std::vector<std::string> Command::synopsis() const {
  if (!commands.empty()) return {"COMMAND", "[ARGUMENTS]"};
  std::vector<std::string> words;
  for (const auto& one : positionals) {
    words.push_back(one.isRequired ? one.usage() : "[" + one.usage() + "]");
  }
  for (const auto& one : options) {
    if (one.isRequired) words.push_back(one.usage());
  }
  const bool hasMore = std::ranges::any_of(options, [](const Argument& option) {
    return !option.isRequired && option.names.back() != "--help";
  });
  if (hasMore) words.emplace_back("[OPTIONS]");
  return words;
}

Command tableOf(const CLI::App& app) {
  Command command;
  command.name = app.get_name();
  command.description = oneLine(app.get_description());
  command.group = app.get_group();
  takeFooter(app.get_footer(), command);
  for (const auto* option : app.get_options()) {
    auto argument = argumentOf(*option);
    auto& list = argument.isPositional ? command.positionals : command.options;
    list.push_back(std::move(argument));
  }
  const auto any = [](const CLI::App*) { return true; };
  for (const auto* one : app.get_subcommands(any)) command.commands.push_back(tableOf(*one));
  return command;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
  }
  return text;
}

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::vector<std::string> optionNames(const Command& command) {
  std::vector<std::string> names;
  for (const auto& option : command.options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return names;
}

std::vector<std::string> commandNames(const Command& program) {
  std::vector<std::string> names;
  for (const auto& command : program.commands) names.push_back(command.name);
  return names;
}

}  // namespace CommandLine
