// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/RunFolder.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "flight/records/ReportJson.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
#include "platform/plome/ReplacedFile.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* planarPoints = "02_planar";

template <typename Change>
ModelFiles changed(const ModelFiles& model, const Change& change) {
  return {change(model.sections), change(model.parameters), change(model.stripIds)};
}

}  // namespace

RunFolder::RunFolder(fs::path root, const Velorn::InputParameter& names)
    : root_(std::move(root)),
      surfaces_(root_),
      rasters_(names.getRasterPath()),
      blocks_(names.getCorrespondencePath()),
      parameters_(names.getPrameterPath()),
      status_(names.getStatusPath()),
      statistics_(names.getStatisticPath()) {}

fs::path RunFolder::rastersOfRound() const {
  auto folder = root_ / rasters_;
  folder += "_of_round";
  return folder;
}

fs::path RunFolder::rasterOf(const fs::path& file) const {
  return rasters() / file.filename();
}

fs::path RunFolder::planarPointsOf(const fs::path& strip) const {
  return surfaces_ / planarPoints / strip.filename();
}

StepRecord RunFolder::rasterRecordOf(const fs::path& file) const {
  return {surfaces_ / status_ / "steps", "rasterize_" + file.stem().string()};
}

ModelFiles RunFolder::modelOf(const std::string& suffix) const {
  return {parameters() / ("Sections" + suffix), parameters() / ("Parameter" + suffix),
          parameters() / ("StripID" + suffix)};
}

ModelFiles RunFolder::fromRoot(const ModelFiles& model) const {
  return changed(model, [&](const fs::path& file) { return file.lexically_relative(root_); });
}

ModelFiles RunFolder::inRoot(const ModelFiles& model) const {
  return changed(model, [&](const fs::path& file) { return root_ / file; });
}

std::vector<fs::path> RunFolder::blockFiles() const {
  std::vector<fs::path> files;
  std::error_code fault;
  for (const auto& entry : fs::directory_iterator(blocks(), fault)) {
    if (entry.path().extension() == ".kx") files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

void RunFolder::make() const {
  for (const auto& folder : {parameters(), status() / "steps", blocks(), statistics()}) {
    makeFolder(folder);
  }
}

void RunFolder::makeSurfaces() const {
  for (const auto& folder : {surfaces_ / status_ / "steps", rasters(), surfaces_ / planarPoints}) {
    makeFolder(folder);
  }
}

void RunFolder::writeSummary(const RunReport& report, const std::string& text) const {
  const auto document = jsonOf(report).dump(2, ' ', false, Json::error_handler_t::replace);
  orFail(Plome::replaceFile(summaryJson(), document + "\n"), Error::NoSpace);
  orFail(Plome::replaceFile(summaryText(), text), Error::NoSpace);
}

RunReport RunFolder::readSummary() const {
  std::ifstream stream(summaryJson());
  if (!stream) throw Error(summaryJson().string() + ": no such file", Error::MissingFile);
  try {
    RunReport report;
    fromJson(Json::parse(stream), report);
    return report;
  } catch (const Json::exception& fault) {
    throw Error(
        fmt::format("{}: is not the summary of a run: {}", summaryJson().string(), fault.what()));
  }
}

}  // namespace Velorn::Flights
