// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/RunState.h"

#include <array>
#include <fstream>
#include <nlohmann/json.hpp>

#include <fmt/format.h>

#include "flight/records/Process.h"
#include "flight/strips/OrFail.h"
#include "platform/plome/ReplacedFile.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* format = "velorn run";
constexpr int version = 1;
constexpr std::array<const char*, 4> phaseNames{"running", "interrupted", "failed", "finished"};

fs::path fileIn(const fs::path& root) {
  return root / "run.json";
}

Json jsonOf(const ModelFiles& model) {
  return {{"sections", model.sections.string()},
          {"parameters", model.parameters.string()},
          {"strip_ids", model.stripIds.string()}};
}

Json jsonOf(const std::vector<fs::path>& files) {
  Json list = Json::array();
  for (const auto& file : files) list.push_back(fs::absolute(file).lexically_normal().string());
  return list;
}

std::vector<fs::path> filesIn(const Json& list) {
  std::vector<fs::path> files;
  for (const auto& file : list) files.emplace_back(file.get<std::string>());
  return files;
}

RunState::Phase phaseIn(const Json& json) {
  const auto name = json.at("state").get<std::string>();
  for (std::size_t i = 0; i < phaseNames.size(); ++i) {
    if (name == phaseNames[i]) return static_cast<RunState::Phase>(i);
  }
  throw Json::other_error::create(501, "no state is called " + name, &json);
}

RunState stateIn(const Json& json) {
  if (json.at("format") != format || json.at("version") != version) {
    throw Json::other_error::create(501, "not of this version", &json);
  }
  RunState state;
  state.phase = phaseIn(json);
  state.steps = json.at("steps").get<std::string>();
  state.message = json.at("message").get<std::string>();
  const auto& process = json.at("process");
  const Process its{process.at("host").get<std::string>(), process.at("number").get<long long>(),
                    process.at("start").get<std::string>()};
  if (state.phase == RunState::Phase::running && its.isGone()) {
    state.phase = RunState::Phase::interrupted;
  }
  if (json.contains("model")) {
    const auto& model = json.at("model");
    state.model = {model.at("sections").get<std::string>(),
                   model.at("parameters").get<std::string>(),
                   model.at("strip_ids").get<std::string>()};
  }
  state.strips = filesIn(json.at("strips"));
  state.trajectories = filesIn(json.at("trajectories"));
  state.isGeoreferenced = json.at("georeferenced").get<bool>();
  return state;
}

}  // namespace

bool RunState::isIn(const fs::path& root) {
  std::error_code fault;
  return fs::exists(fileIn(root), fault);
}

RunState RunState::in(const fs::path& root) {
  std::error_code fault;
  if (!fs::is_directory(root, fault)) {
    throw Error(root.string() + ": no such folder", Error::MissingFile);
  }
  std::ifstream stream(fileIn(root));
  if (!stream) {
    throw Error(fmt::format("{}: is no root folder of a run: it has no run.json. A run of version "
                            "0.1 is made anew by `velorn run`",
                            root.string()),
                Error::MissingFile);
  }
  try {
    return stateIn(Json::parse(stream));
  } catch (const Json::exception& fault_) {
    throw Error(fmt::format("{}: does not tell the state of a run: {}; `velorn run` writes it anew",
                            fileIn(root).string(), fault_.what()));
  }
}

void RunState::write(const fs::path& root) const {
  const auto process = Process::ours();
  Json json{
      {"format", format},
      {"version", version},
      {"state", phaseNames[static_cast<std::size_t>(phase)]},
      {"steps", steps},
      {"message", message},
      {"process", {{"host", process.host}, {"number", process.number}, {"start", process.start}}},
      {"strips", jsonOf(strips)},
      {"trajectories", jsonOf(trajectories)},
      {"georeferenced", isGeoreferenced}};
  if (model) json["model"] = jsonOf(*model);
  const auto text = json.dump(2, ' ', false, Json::error_handler_t::replace);
  orFail(Plome::replaceFile(fileIn(root), text + "\n"), Error::NoSpace);
}

}  // namespace Velorn::Flights
