// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/Decompression.h"

#include <array>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "flight/formats/LasHeader.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
#include "platform/plome/Program.h"
#include "platform/plome/ReplacedFile.h"

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

fs::path decompressed(const fs::path& file, const std::string& command, const fs::path& folder,
                      const std::function<void()>& whileRunning) {
  fs::path target = folder / (file.stem().string() + ".las");
  Plome::ReplacedFile las(target, ".las");
  const auto words = wordsOf(command, file, las.temporary());
  makeFolder(folder);
  const auto end = Plome::runProgram({.command = words, .whileRunning = whileRunning});
  if (!end.fault.empty()) {
    throw Error(fmt::format("{}: `{}`: {}{}{}", file.string(), command, end.fault,
                            end.said.empty() ? "" : ": ", end.said));
  }
  std::error_code fault;
  if (!fs::is_regular_file(las.temporary(), fault)) {
    throw Error(
        fmt::format("{}: `{}` made no file {}", file.string(), command, las.temporary().string()));
  }
  orFail(las.replace(), Error::NoSpace);
  return target;
}

}  // namespace Velorn::Flights
