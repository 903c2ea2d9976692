// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cerrno>
#include <fstream>
#include <ios>
#include <locale>
#include <regex>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "platform/morvane/Console.h"
#include <velorn/InputParameter.h>
#include <velorn/TerrainType.h>
#include <velorn/TextHelpers.h>

namespace Velorn {
namespace {

constexpr std::size_t classes = 5;

bool namesAmplitude(const std::string& selection) {
  std::regex word;
  word.imbue(std::locale::classic());  // which characters make a word is no matter of the language
  word.assign("\\bAmplitude\\b", std::regex::ECMAScript);
  return std::regex_search(selection, word);
}

/// A NaN counts as a limit: it is not the value that says "none".
bool isLimit(double amplitude) {
  return !(amplitude <= -100);
}

double cellSizeOf(TerrainType type, const std::vector<double>& sizes, std::string_view getter) {
  const auto index = static_cast<std::size_t>(type);
  if (index < sizes.size()) return sizes[index];
  throw std::out_of_range(fmt::format(
      "InputParameter::{}: CellSize has {} entries; it is filled by check", getter, sizes.size()));
}

}  // namespace

InputParameter::InputParameter()
    : Storage(std::make_shared<Strandel::MyStorage>(0, 0, 0, 1)),
      StorageInterface(std::dynamic_pointer_cast<Strandel::StorageInterface>(Storage)),
      FileSuffix("_" + current_date_and_time('_') + ".txt"),
      Options("+rasterize +correspondences +optimization +adjustment", ' ') {}

std::string InputParameter::check() {
  if (namesAmplitude(SelectionStr) && std::any_of(Amplitude.begin(), Amplitude.end(), isLimit)) {
    return "InputParameter::check: SelectionStr for Amplitude AND for the flag Amplitude set! Use "
           "only one parameter.";
  }
  if (!(MinCellSize >= 0.01)) return "InputParameter::check: MinCellSize too low";  // NaN too
  if (CellSizeScaler.size() != classes) {
    return fmt::format(
        "InputParameter::check: Size of CellSizeScaler is not 5 ({}). Check enum "
        "GROUND=0,ROOF,SLOPE,BED,FLAT",
        CellSizeScaler.size());
  }
  if (CellSizeWeights.size() != CellSizeScaler.size()) {
    return "InputParameter::check: Size of CellSizeScaler and CellSizeWeights are different";
  }
  CellSize.resize(CellSizeScaler.size());
  std::transform(CellSizeScaler.begin(), CellSizeScaler.end(), CellSize.begin(),
                 [this](double scaler) { return MinCellSize * scaler; });
  if (RootPath.empty()) {
    return "InputParameter::check: rooth path is empty. At least '.' is needed";
  }
  return {};
}

void InputParameter::write(const std::filesystem::path& path, const std::string& text,
                           const bool& echo, const bool& append) const {
  std::ofstream file(path, std::ios::binary | (append ? std::ios::app : std::ios::trunc));
  if (!file) {
    throw std::ios_base::failure("InputParameter::write: Failed to open the file:" + path.string(),
                                 std::error_code(errno, std::generic_category()));
  }
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.flush();  // what is left to the closing is not reported
  if (!file) {
    Morvane::Console::writeLine("InputParameter::write: Failed to write the file:" + path.string());
  }
  file.close();
  if (echo) Morvane::Console::writeLine(text);
}

double InputParameter::getGroundTruthSize() const {
  return cellSizeOf(TerrainType::GROUND_TRUTH, CellSize, "getGroundTruthSize");
}

double InputParameter::getRoof() const {
  return cellSizeOf(TerrainType::ROOF, CellSize, "getRoof");
}

double InputParameter::getSlope() const {
  return cellSizeOf(TerrainType::SLOPE, CellSize, "getSlope");
}

double InputParameter::getBedPoints() const {
  return cellSizeOf(TerrainType::BED_POINTS, CellSize, "getBedPoints");
}

double InputParameter::getFlat() const {
  return cellSizeOf(TerrainType::FLAT, CellSize, "getFlat");
}

}  // namespace Velorn
