// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What there is to say of the commands and their options, as the parser knows them: help, man page
// and completion are made of this table and never by hand.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace CommandLine {

/// An option, a flag or a positional argument.
struct Argument {
  std::vector<std::string> names;    ///< as typed, the short one first; of a positional: STRIP
  std::string value;                 ///< what it stands for, such as FILE; empty of a flag
  std::vector<std::string> choices;  ///< all values that there are; empty: any
  char delimiter = '\0';             ///< between several values in one word
  bool isPositional = false;
  bool isRequired = false;
  bool takesMany = false;            ///< values as words of their own, any number
  bool valueIsOptional = false;      ///< and then given as --name=VALUE only
  std::string description;           ///< one line
  std::vector<std::string> remarks;  ///< "required", "default 3", "not with --relative"
  std::string group;                 ///< title that it stands under; empty: it is not shown

  /// "-h, --help", "--trajectory FILE...", "STRIP..."
  std::string usage() const;

  /// The words of the description, and behind them the remarks in brackets. No line ends within
  /// one.
  std::vector<std::string> explanation() const;

  bool operator==(const Argument&) const = default;
};

struct Command {
  std::string name, description, group;
  std::string example;             ///< one line of shell; may be empty
  std::vector<std::string> notes;  ///< paragraphs
  std::vector<Argument> positionals, options;
  std::vector<Command> commands;

  /// The words behind its name: positionals come first, since options may take many words.
  std::vector<std::string> synopsis() const;
};

Command tableOf(const CLI::App& app);

/// The titles of some things, each once, in their order; not the empty one.
template <typename Titled>
std::vector<std::string> groupsOf(const std::vector<Titled>& titled) {
  std::vector<std::string> groups;
  for (const auto& one : titled) {
    bool isNew = !one.group.empty();
    for (const auto& group : groups) isNew = isNew && group != one.group;
    if (isNew) groups.push_back(one.group);
  }
  return groups;
}

template <typename Titled>
std::vector<Titled> thoseOf(const std::string& group, const std::vector<Titled>& titled) {
  std::vector<Titled> found;
  for (const auto& one : titled) {
    if (one.group == group) found.push_back(one);
  }
  return found;
}

/// Without what is between them: blanks, line feeds.
std::vector<std::string> wordsOf(const std::string& text);

/// "init, run and match"
std::string listed(const std::vector<std::string>& names);

/// All names of the options.
std::vector<std::string> optionNames(const Command& command);

std::vector<std::string> commandNames(const Command& program);

}  // namespace CommandLine
