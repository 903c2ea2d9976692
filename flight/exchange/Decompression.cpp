// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/Decompression.h"

#include <array>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include "flight/formats/LasHeader.h"
#include "flight/strips/OutputPlaces.h"
#include <velorn/flight/Error.h>

extern char** environ;

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// @return how often
std::size_t replaceAll(std::string& text, const std::string& what, const std::string& by) {
  std::size_t count = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
    ++count;
  }
  return count;
}

std::vector<std::string> wordsOf(const std::string& command, const fs::path& in,
                                 const fs::path& out) {
  std::vector<std::string> words;
  std::size_t ins = 0, outs = 0;
  std::istringstream stream(command);
  for (std::string word; stream >> word;) {
    outs += replaceAll(word, "{out}", out.string());
    ins += replaceAll(word, "{in}", in.string());
    words.push_back(word);
  }
  if (ins > 0 && outs > 0) return words;
  throw Error(
      fmt::format("--decompress: \"{}\" must hold {{in}} and {{out}}, as in \"laszip -i {{in}} -o "
                  "{{out}}\"",
                  command),
      Error::BadSettings);
}

/// @return the exit status; 127 for a program that cannot be started
int statusOf(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  if (posix_spawnp(&child, arguments.front(), nullptr, nullptr, arguments.data(), environ) != 0) {
    return 127;
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return 127;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

bool isCompressed(const fs::path& file) {
  std::array<char, longestLasHeader> bytes{};
  std::ifstream stream(file, std::ios::binary);
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const auto size = static_cast<std::size_t>(stream.gcount());
  std::error_code fault;
  const auto header =
      lasHeaderIn(std::span<const char>(bytes).first(size), fs::file_size(file, fault));
  const auto* const known = std::get_if<LasHeader>(&header);
  return known && known->isCompressed;
}

fs::path decompressed(const fs::path& file, const std::string& command, const fs::path& folder) {
  const std::string stem = file.stem().string();
  const fs::path target = folder / (stem + ".las"), unfinished = folder / (stem + ".part.las");
  const auto words = wordsOf(command, file, unfinished);
  makeFolder(folder);
  std::error_code fault;
  fs::remove(unfinished, fault);
  const int status = statusOf(words);
  if (status != 0) {
    fs::remove(unfinished, fault);
    throw Error(fmt::format("{}: `{}` ended with status {}{}", file.string(), command, status,
                            status == 127 ? ": is it installed?" : ""));
  }
  if (!fs::is_regular_file(unfinished, fault)) {
    throw Error(
        fmt::format("{}: `{}` made no file {}", file.string(), command, unfinished.string()));
  }
  fs::rename(unfinished, target, fault);
  if (fault) throw Error(target.string() + ": " + fault.message(), Error::NoSpace);
  return target;
}

}  // namespace Velorn::Flights
