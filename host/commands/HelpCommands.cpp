// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The commands that tell of the program itself: help, completion and manpage.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commandline/CommandTable.h"
#include "host/commandline/Completion.h"
#include "host/commandline/HelpText.h"
#include "host/commandline/ManPage.h"
#include "host/commandline/Misuse.h"
#include "host/commands/Commands.h"
#include "host/project/SettingsPage.h"
#include <velorn/flight/Error.h>

using Velorn::Flights::Error;

namespace {

constexpr const char* aboutProgram = "Help";
constexpr const char* settingsTopic = "settings";

void showHelp(const CLI::App& program, const std::string& name) {
  const auto table = CommandLine::tableOf(program);
  if (name.empty()) {
    std::cout << CommandLine::helpText(table, table.name);
    return;
  }
  if (name == settingsTopic) {
    std::cout << settingsPage();
    return;
  }
  for (const auto& command : table.commands) {
    if (command.name != name) continue;
    std::cout << CommandLine::helpText(command, table.name + " " + name);
    return;
  }
  throw Error(CommandLine::noSuchCommand(program, name), Error::BadSettings);
}

}  // namespace

void addHelp(CLI::App& app) {
  const auto name = std::make_shared<std::string>();
  auto& command = *app.add_subcommand("help", "Shows how a command is called, or all commands");
  command.group(aboutProgram);
  // No check: a name that is none is told with the nearest one. For completion there are choices.
  auto names = CommandLine::commandNames(CommandLine::tableOf(app));
  names.back() = settingsTopic;
  const auto choices = fmt::format("{{{}}}", fmt::join(names, ","));
  command.add_option("COMMAND", *name, "whose help is shown; settings: what all of them are")
      ->check(CLI::Validator([](std::string&) { return std::string(); }, choices));
  command.footer("Example: velorn help adjust");
  command.callback([&app, name] { showHelp(app, *name); });
}

void addCompletion(CLI::App& app) {
  const auto shell = std::make_shared<std::string>();
  auto& command = *app.add_subcommand("completion", "Prints what lets a shell complete commands");
  command.group(aboutProgram);
  command.add_option("SHELL", *shell, "bash or zsh")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh"}));
  command.footer(
      "Example: source <(velorn completion bash)\n\n"
      "This line in ~/.bashrc, or with zsh in ~/.zshrc behind compinit, completes commands, their "
      "options, values and files. Installed, the program brings both scripts to where the shells "
      "look for them.");
  command.callback([&app, shell] {
    const auto table = CommandLine::tableOf(app);
    std::cout << (*shell == "bash" ? CommandLine::bashCompletion(table)
                                   : CommandLine::zshCompletion(table));
  });
}

void addManPage(CLI::App& app) {
  auto& command = *app.add_subcommand("manpage", "Prints the page that `man velorn` shows");
  command.group(aboutProgram);
  command.footer("Example: velorn manpage | man -l -");
  command.callback(
      [&app] { std::cout << CommandLine::manPage(CommandLine::tableOf(app), VELORN_VERSION); });
}
