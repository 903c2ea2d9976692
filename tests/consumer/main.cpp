// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A host other than ours: it redirects the console, makes the library warn, and catches the line.
// Were the platform linked twice, the library would print on a console of its own.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "platform/morvane/Console.h"
#include "platform/plome/StringList.h"
#include <velorn/FileContainer.h>

int main() {
  const auto folder = std::filesystem::temp_directory_path() / "velorn-consumer";
  std::filesystem::create_directories(folder);
  const auto file = [&](const char* name) {
    std::ofstream(folder / name).put('\n');
    return (folder / name).string();
  };
  const std::string strip = file("strip.kx"), truth = file("truth.kx"),
                    trajectory = file("traj.kx");

  std::vector<std::string> caught;
  const Morvane::ConsoleRedirection redirection(
      [&](std::string_view line) { caught.emplace_back(line); });
  Velorn::FileContainer files;
  const auto strips = std::make_shared<Plome::StringList>(Plome::StringList{strip, strip});
  const std::string fault = files.add(strips, truth, trajectory);
  std::filesystem::remove_all(folder);

  const bool right = fault.empty() && caught == std::vector{"Warning: Duplicated File: " + strip};
  if (!right) std::cerr << "fault: '" << fault << "', lines caught: " << caught.size() << '\n';
  return right ? 0 : 1;
}
