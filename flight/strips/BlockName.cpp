// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/strips/BlockName.h"

#include <charconv>
#include <limits>
#include <regex>

#include <fmt/format.h>

namespace Velorn::Flights {
namespace {

std::uint32_t idOf(const std::string& digits) {
  auto id = std::numeric_limits<std::uint32_t>::max();
  std::from_chars(digits.data(), digits.data() + digits.size(), id);  // as before when out of range
  return id;
}

}  // namespace

std::string fileNameOf(const BlockName& block) {
  return fmt::format("c{}_{}{}.kx", block.i, block.j, block.isGroundTruth ? "_GroundTruth" : "");
}

std::optional<BlockName> blockNameIn(const std::string& fileName) {
  static const std::regex pattern(R"(c(\d+)_(\d+)(_GroundTruth)?\.kx)");
  std::smatch parts;
  if (!std::regex_match(fileName, parts, pattern)) return {};
  return BlockName{idOf(parts[1]), idOf(parts[2]), parts[3].matched};
}

}  // namespace Velorn::Flights
