// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <map>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commandline/Completion.h"

namespace CommandLine {

namespace {

constexpr const char* beginning =
    R"(# Completes the command line of @ in bash; made by `@ completion bash`.
_@() {
  local current=${COMP_WORDS[COMP_CWORD]} last=$((COMP_CWORD - 1))
  # --name=value comes as three words.
  if [[ $current == "=" ]]; then
    current=
  elif [[ ${COMP_WORDS[last]} == "=" ]]; then
    ((last--))
  fi
  # The last option, whose value or one of whose values this may be.
  local place=$last
  while ((place > 1)) && [[ ${COMP_WORDS[place]} != -* ]]; do ((place--)); done
  local option=${COMP_WORDS[place]} options= value= many= otherwise=none
  case $((COMP_CWORD > 1)),${COMP_WORDS[1]} in
)";

constexpr const char* ending = R"(  esac
  [[ -z $value || ($place -lt $last && -z $many) ]] && value=$otherwise
  [[ $current == -* ]] && value="one $options"
  local begun=
  COMPREPLY=()
  case $value in
    file) compopt -o default ;;
    folder) compopt -o dirnames ;;
    list\ *)
      begun=${current%"${current##*,}"}
      current=${current##*,}
      ;&
    one\ *) mapfile -t COMPREPLY < <(compgen -P "$begun" -W "${value#* }" -- "$current") ;;
  esac
}
complete -F _@ @
)";

std::string withName(std::string text, const std::string& name) {
  for (auto at = text.find('@'); at != std::string::npos; at = text.find('@', at + name.size())) {
    text.replace(at, 1, name);
  }
  return text;
}

/// What may stand for an argument, as the script tells it apart.
std::string kindOf(const Argument& argument) {
  if (!argument.choices.empty()) {
    return fmt::format("'{} {}'", argument.delimiter == ',' ? "list" : "one",
                       fmt::join(argument.choices, " "));
  }
  if (argument.value == "FOLDER") return "folder";
  return argument.value == "FILE" || argument.isPositional ? "file" : "none";
}

std::string bashCaseOf(const Command& command) {
  std::string text = fmt::format("    1,{})\n      options='{}'\n", command.name,
                                 fmt::join(optionNames(command), " "));
  if (!command.positionals.empty()) {
    text += fmt::format("      otherwise={}\n", kindOf(command.positionals.front()));
  }
  std::map<std::string, std::vector<std::string>> optionsOfKind;
  for (const auto& option : command.options) {
    if (option.value.empty() || option.valueIsOptional) continue;
    const std::string kind = kindOf(option) + (option.takesMany ? " many=yes" : "");
    auto& names = optionsOfKind[kind];
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  if (optionsOfKind.empty()) return text + "      ;;\n";
  text += "      case $option in\n";
  for (const auto& [kind, names] : optionsOfKind) {
    text += fmt::format("        {}) value={} ;;\n", fmt::join(names, " | "), kind);
  }
  return text + "      esac\n      ;;\n";
}

}  // namespace

std::string bashCompletion(const Command& program) {
  std::string text = beginning;
  text += fmt::format("    0,*)\n      options='{}'\n      otherwise='one {}'\n      ;;\n",
                      fmt::join(optionNames(program), " "), fmt::join(commandNames(program), " "));
  for (const auto& command : program.commands) text += bashCaseOf(command);
  return withName(text + ending, program.name);
}

}  // namespace CommandLine
