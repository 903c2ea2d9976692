// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/ManPage.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commandline/HelpText.h"

namespace CommandLine {

namespace {

/// A letter as it is: no command, and a hyphen that can be copied.
std::string literal(char letter) {
  if (letter == '\\') return "\\e";
  return letter == '-' ? "\\-" : std::string(1, letter);
}

std::string literal(const std::string& text) {
  std::string found;
  for (const char letter : text) found += literal(letter);
  return found;
}

/// As a line of its own: one that begins with a dot or an apostrophe would be a command.
std::string line(const std::string& text) {
  const bool isCommand = text.starts_with('.') || text.starts_with('\'');
  return (isCommand ? "\\&" : "") + text + "\n";
}

/// A blank in prose at which no line may end.
constexpr char unbroken = '\t';

/// What stands between backticks in bold letters; hyphens of options can be copied.
std::string prose(const std::string& text) {
  std::string found;
  bool isBold = false, isOption = false;
  char before = ' ';
  for (const char letter : text) {
    const bool isInWord = std::isalnum(static_cast<unsigned char>(before)) != 0;
    isOption =
        letter == '-' ? isOption || !isInWord : isOption && letter != ' ' && letter != unbroken;
    before = letter;
    if (letter == '`') {
      isBold = !isBold;
      found += isBold ? "\\fB" : "\\fR";
    } else if (letter == unbroken) {
      found += "\\ ";
    } else {
      found += letter != '-' || isOption || isBold ? literal(letter) : "-";
    }
  }
  return line(found);
}

/// Names in bold, what they stand for in italic letters: words in capitals are placeholders. The
/// whole stays in one line.
std::string emphasised(const std::string& usage) {
  std::string found, word;
  const auto end = [&] {
    if (word.empty()) return;
    const bool isPlaceholder = std::isupper(static_cast<unsigned char>(word.front())) != 0;
    found += (isPlaceholder ? "\\fI" : "\\fB") + literal(word) + "\\fR";
    word.clear();
  };
  for (const char letter : usage) {
    if (std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '-') {
      word += letter;
      continue;
    }
    end();
    found += letter == ' ' ? "\\ " : literal(letter);
  }
  end();
  return found;
}

std::string entryOf(const Argument& argument) {
  std::string text;
  for (auto piece : argument.explanation()) {
    std::ranges::replace(piece, ' ', unbroken);
    text += (text.empty() ? "" : " ") + piece;
  }
  return ".TP\n" + line(emphasised(argument.usage())) + prose(text);
}

/// A call, whose further lines are indented.
std::string synopsisOf(const std::string& call, const std::vector<std::string>& words) {
  std::string text = ".HP\n\\fB" + literal(call) + "\\fR";
  for (const auto& word : words) text += " " + emphasised(word);
  return text + "\n";
}

/// The title of those that a command does not share.
constexpr const char* ownOptions = "Options";

/// Options under one title, and the commands that have them all.
struct SharedGroup {
  std::string title;
  std::vector<Argument> options;
  std::vector<std::string> commands;
};

std::vector<SharedGroup> sharedGroups(const Command& program) {
  std::vector<SharedGroup> groups;
  for (const auto& command : program.commands) {
    for (const auto& title : groupsOf(command.options)) {
      if (title == ownOptions) continue;
      const auto options = thoseOf(title, command.options);
      const auto known = std::ranges::find_if(groups, [&](const SharedGroup& group) {
        return group.title == title && group.options == options;
      });
      if (known != groups.end()) {
        known->commands.push_back(command.name);
      } else {
        groups.push_back({title, options, {command.name}});
      }
    }
  }
  std::erase_if(groups, [](const SharedGroup& group) { return group.commands.size() < 2; });
  return groups;
}

std::string exampleOf(const std::string& example) {
  std::string text = ".PP\nExample:\n.PP\n.RS 4\n.EX\n";
  for (const auto& one : wrappedShell(example, 72)) text += line(literal(one));
  return text + ".EE\n.RE\n";
}

std::string sectionOf(const Command& program, const Command& command,
                      const std::vector<SharedGroup>& shared) {
  const std::string call = program.name + " " + command.name;
  std::string text = ".SS " + line(literal(call)) + prose(command.description + ".");
  text += synopsisOf(call, command.synopsis());
  for (const auto& argument : command.positionals) text += entryOf(argument);
  std::vector<std::string> elsewhere;
  for (const auto& title : groupsOf(command.options)) {
    const bool isShared = std::ranges::any_of(shared, [&](const SharedGroup& group) {
      return group.title == title && std::ranges::count(group.commands, command.name) > 0;
    });
    if (isShared) {
      elsewhere.push_back(title);
      continue;
    }
    for (const auto& option : thoseOf(title, command.options)) {
      if (std::ranges::count(program.options, option) == 0) text += entryOf(option);
    }
  }
  if (!elsewhere.empty()) {
    text += ".PP\n" + prose("Further options: " + listed(elsewhere) + " under SHARED OPTIONS.");
  }
  if (!command.example.empty()) text += exampleOf(command.example);
  for (const auto& note : command.notes) text += ".PP\n" + prose(note);
  return text;
}

/// "Exit status: 0 all went well; 130 or 143 interrupted." as a list.
std::string exitStatuses(const std::string& note) {
  std::string text = ".SH EXIT STATUS\n";
  std::istringstream statuses(note.substr(note.find(':') + 1));
  for (std::string one; std::getline(statuses, one, ';');) {
    std::istringstream words(one);
    std::string numbers, meaning, word;
    while (words >> word) {
      const bool isNumber =
          word == "or" || word.find_first_not_of("0123456789") == std::string::npos;
      std::string& part = isNumber && meaning.empty() ? numbers : meaning;
      part += (part.empty() ? "" : " ") + word;
    }
    if (meaning.ends_with('.')) meaning.pop_back();
    text += ".TP\n\\fB" + numbers + "\\fR\n" + prose(meaning);
  }
  return text;
}

}  // namespace

std::string manPage(const Command& program, const std::string& version) {
  const auto& name = program.name;
  std::string title = name, summary = program.description.substr(0, program.description.find(':'));
  std::ranges::transform(title, title.begin(), [](unsigned char c) { return std::toupper(c); });
  summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
  std::string text = fmt::format(
      ".\\\" Made by `{0} manpage`.\n.TH {1} 1 \"\" \"{0} {2}\" \"User Commands\"\n"
      ".nr HY 0\n.ad l\n.SH NAME\n{0} \\- {3}.SH SYNOPSIS\n",
      name, title, version, prose(summary));
  text += synopsisOf(name, program.synopsis());
  text += ".SH DESCRIPTION\n" + prose(program.description);
  std::string statuses;
  for (const auto& note : program.notes) {
    if (note.starts_with("Exit status:")) {
      statuses = exitStatuses(note);
    } else {
      text += ".PP\n" + prose(note);
    }
  }
  text += ".SH OPTIONS\n";
  for (const auto& option : program.options) text += entryOf(option);
  text += ".SH COMMANDS\n";
  const auto shared = sharedGroups(program);
  for (const auto& command : program.commands) text += sectionOf(program, command, shared);
  if (!shared.empty()) text += ".SH SHARED OPTIONS\n";
  for (const auto& group : shared) {
    text += ".SS " + line(group.title) + prose("Of " + listed(group.commands) + ".");
    for (const auto& option : group.options) text += entryOf(option);
  }
  return text + statuses;
}

}  // namespace CommandLine
