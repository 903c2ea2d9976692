// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commandline/Completion.h"

namespace CommandLine {

namespace {

std::string quoted(const std::string& text) {
  std::string found = "'";
  for (const char letter : text) {
    if (letter == '\'') {
      found += "'\\''";
    } else {
      found += letter;
    }
  }
  return found + "'";
}

/// With a backslash before each of these letters, and before each backslash.
std::string escaped(const std::string& text, const std::string& letters) {
  std::string found;
  for (const char letter : text) {
    if (letter == '\\' || letters.find(letter) != std::string::npos) found += '\\';
    found += letter;
  }
  return found;
}

/// What `_arguments` does for a value.
std::string actionOf(const Argument& argument) {
  if (!argument.choices.empty()) {
    const auto words = fmt::format("{}", fmt::join(argument.choices, " "));
    return argument.delimiter == ',' ? "_sequence compadd - " + words : "(" + words + ")";
  }
  if (argument.value == "FOLDER") return "_files -/";
  return argument.value == "FILE" || argument.isPositional ? "_files" : " ";
}

std::string specificationOf(const Argument& option) {
  const auto description = fmt::format("{}", fmt::join(option.explanation(), " "));
  const std::string told = "[" + escaped(description, "[]") + "]";
  std::string value;
  if (!option.value.empty()) {
    const char* count = option.valueIsOptional ? "::" : ":";
    value = count + escaped(option.value, ":") + ":" + actionOf(option);
  }
  const char* joint = option.value.empty() ? "" : option.valueIsOptional ? "=-" : "=";
  if (option.names.size() == 1) {
    const char* again = option.takesMany ? "*" : "";
    return quoted(again + option.names.front() + joint + told + value);
  }
  return fmt::format("'({})'{{{}}}{}", fmt::join(option.names, " "), fmt::join(option.names, ","),
                     quoted(joint + told + value));
}

/// @param isRepeated  also because an option takes more words than the shell takes for its values
std::string specificationOfPositional(const Argument& argument, bool isRepeated) {
  const char* count = isRepeated ? "*:" : argument.isRequired ? ":" : "::";
  return quoted(count + argument.names.front() + ":" + actionOf(argument));
}

std::string zshCaseOf(const Command& command) {
  std::string text = "        " + command.name + ")\n          _arguments";
  bool takesMany = false;
  for (const auto& option : command.options) {
    text += " \\\n            " + specificationOf(option);
    takesMany = takesMany || option.takesMany;
  }
  for (const auto& argument : command.positionals) {
    text += " \\\n            ";
    text += specificationOfPositional(argument, takesMany || argument.takesMany);
  }
  return text + "\n          ;;\n";
}

}  // namespace

std::string zshCompletion(const Command& program) {
  const auto& name = program.name;
  std::string text = fmt::format(
      "#compdef {0}\n# Completes the command line of {0} in zsh; made by `{0} completion zsh`.\n"
      "_{0}() {{\n  local state line curcontext=$curcontext\n  local -A opt_args\n"
      "  _arguments -C",
      name);
  for (const auto& option : program.options) text += " \\\n    " + specificationOf(option);
  text +=
      " \\\n    '1:command:->command' '*::argument:->argument'\n"
      "  case $state in\n    command)\n      local -a commands=(\n";
  for (const auto& command : program.commands) {
    text += "        " + quoted(command.name + ":" + command.description) + "\n";
  }
  text +=
      "      )\n      _describe command commands\n      ;;\n    argument)\n"
      "      curcontext=\"${curcontext%:*}-$words[1]:\"\n      case $words[1] in\n";
  for (const auto& command : program.commands) text += zshCaseOf(command);
  return text + fmt::format(
                    "      esac\n      ;;\n  esac\n}}\n"
                    "if [[ $funcstack[1] == _{0} ]]; then\n  _{0} \"$@\"\n"
                    "else\n  compdef _{0} {0}\nfi\n",
                    name);
}

}  // namespace CommandLine
