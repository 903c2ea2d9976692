// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/ProjectKeys.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commandline/Nearest.h"
#include "host/project/Bounds.h"
#include "host/project/ModelOptions.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

constexpr const char* files = "Files";
constexpr const char* chain = "Chain";
constexpr const char* raster = "Rasterize";
constexpr const char* matching = "Match";
constexpr const char* adjusting = "Adjust";

void addFiles(CLI::App& command, Velorn::Flights::FlightSettings& project) {
  command
      .add_option("--strips", project.strips,
                  "strip containers; * and ? stand for any letters and any letter")
      ->group(files)
      ->type_name("FILE");
  command.add_option("--trajectory", project.trajectories, "trajectory containers")
      ->group(files)
      ->type_name("FILE");
  command.add_option("--ground-truth", project.groundTruth, "ground-truth container")
      ->group(files)
      ->type_name("FILE");
  command
      .add_option("--root", project.configuration().RootPath,
                  "folder of all results; it is made when it is missing")
      ->group(files)
      ->type_name("FOLDER")
      ->capture_default_str();
}

void addChain(CLI::App& command, Velorn::Flights::FlightSettings& project) {
  command
      .add_option("--steps", project.steps,
                  "what is done: +rasterize +correspondences +optimization +adjustment")
      ->delimiter(' ')
      ->group(chain)
      ->type_name("+WORD")
      ->capture_default_str();
  command
      .add_option("--rounds", project.rounds,
                  "of matching and adjusting, at most; it ends early when the fit changes by less "
                  "than 1 %")
      ->check(within(1, 20))
      ->group(chain)
      ->capture_default_str();
  command
      .add_option("--coarse-rounds", project.coarseRounds,
                  "that come first when strips disagree by many times the distance of their "
                  "points, each half as coarse as the one before")
      ->check(within(0, 10))
      ->group(chain)
      ->capture_default_str();
  command.add_flag("--compress", project.compress, "deflate what is written into adjusted strips")
      ->group(chain);
}

void addRaster(CLI::App& command, Velorn::Flights::FlightSettings& project) {
  auto& configuration = project.configuration();
  auto& options = project.raster;
  command.add_option("--min-cell-size", configuration.MinCellSize, "smallest raster cell, metres")
      ->check(within(0.01, 1000))
      ->group(raster)
      ->capture_default_str();
  command
      .add_option("--cell-scalers", configuration.CellSizeScaler,
                  "cell sizes of ground truth, roof, slope, bed and flat in units of it")
      ->delimiter(',')
      ->expected(5)
      ->check(within(0.001, 1e6))
      ->group(raster)
      ->type_name("F,F,F,F,F")
      ->capture_default_str();
  command
      .add_option("--amplitude", configuration.Amplitude,
                  "lowest amplitude of each class; -100: no limit")
      ->delimiter(',')
      ->expected(5)
      ->check(within(-1e9, 1e9))
      ->group(raster)
      ->type_name("A,A,A,A,A")
      ->capture_default_str();
  command
      .add_option("--selection", configuration.SelectionStr,
                  "expression over field names that a point must fulfil, such as \"Amplitude > 20 "
                  "and not PointSourceID == 3\"")
      ->group(raster)
      ->type_name("EXPRESSION");
  command.add_option("--neighbours", options.neighbours, "points that a plane is fitted to")
      ->check(within(6, 200))
      ->group(raster)
      ->capture_default_str();
  command.add_option("--neighbour-radius", options.neighbourRadius, "they lie within, metres")
      ->check(within(0.01, 1000))
      ->group(raster)
      ->capture_default_str();
  command
      .add_option("--max-roughness", options.maxRoughness,
                  "standard deviation from the plane of a planar neighbourhood, metres")
      ->check(within(1e-6, 1000))
      ->group(raster)
      ->capture_default_str();
  command
      .add_option("--slope-limit", options.slopeLimit, "ground that is steeper is a slope, degrees")
      ->check(within(0, 90))
      ->group(raster)
      ->capture_default_str();
}

void addMatching(CLI::App& command, Velorn::Flights::FlightSettings& project) {
  auto& configuration = project.configuration();
  auto& options = project.match;
  command
      .add_option("--search-radius", configuration.SearchRadius,
                  "within which the partner of a point is sought, metres; later rounds take less")
      ->check(within(0.01, 1000))
      ->group(matching)
      ->capture_default_str();
  command
      .add_option("--max-angle", configuration.ThresholdMaxAngle,
                  "between the normals of a correspondence, degrees")
      ->check(within(0, 90))
      ->group(matching)
      ->capture_default_str();
  command
      .add_option("--max-correspondences", options.maxCorrespondences,
                  "over all strips; 0: 10,000 per strip; the solver takes 3 kB for each")
      ->check(within(0, 1e12))
      ->group(matching)
      ->capture_default_str();
  command.add_option("--seed", options.seed, "of the thinning")
      ->check(within(0, 9e15))
      ->group(matching)
      ->capture_default_str();
  command
      .add_option("--onto-planes", options.ontoPlanes,
                  "points of correspondences are moved along their beams onto the planes of their "
                  "neighbourhoods")
      ->check(CLI::IsMember({"true", "false", "1", "0"}))
      ->group(matching)
      ->type_name("BOOL")
      ->default_str("true");
}

/// @throws Error for what a project file cannot hold
std::string quoted(const std::string& text) {
  if (text.find_first_of("\"#\n\r") != std::string::npos) {
    throw Error(fmt::format("{}: a project file holds no value with a quote, a # or a line feed; "
                            "give it as a flag",
                            text),
                Error::BadSettings);
  }
  const bool isPlain = std::ranges::all_of(text, [](unsigned char letter) {
    return std::isalnum(letter) != 0 || letter == '.' || letter == '-' || letter == '_';
  });
  return isPlain && !text.empty() ? text : '"' + text + '"';
}

std::string listOf(const std::vector<std::string>& values) {
  std::vector<std::string> texts;
  texts.reserve(values.size());
  for (const auto& value : values) texts.push_back(quoted(value));
  if (texts.size() == 1) return texts.front();
  return fmt::format("[{}]", fmt::join(texts, ", "));
}

/// What stands for a key that has no default.
std::string exampleOf(const std::string& key) {
  static const std::map<std::string, std::string> examples{
      {"strips", "\"strips/*.kx\""},
      {"trajectory", "trajectory.kx"},
      {"ground-truth", "ground_truth.kx"},
      {"selection", "\"Amplitude > 20 and not PointSourceID == 3\""},
      {"lock", "[0, 2]"},
      {"hold", "[scales, lever-arm]"},
      {"split-back-strips", "false"},
      {"relative", "false"},
      {"compress", "false"}};
  const auto example = examples.find(key);
  return example == examples.end() ? "" : example->second;
}

std::string keyOf(const CLI::Option& option) {
  return option.get_lnames().empty() ? "" : option.get_lnames().front();
}

std::vector<std::string> keysOf(const CLI::App& command) {
  std::vector<std::string> keys;
  for (const auto* option : command.get_options()) {
    if (option->get_configurable() && !option->get_lnames().empty()) keys.push_back(keyOf(*option));
  }
  return keys;
}

/// Paths of flags count from where the user is, those of a project file from its folder.
std::vector<std::string> seenFrom(const std::filesystem::path& folder,
                                  std::vector<std::string> paths) {
  namespace fs = std::filesystem;
  for (auto& path : paths) {
    if (fs::path(path).is_relative()) {
      path = fs::absolute(path).lexically_proximate(folder).string();
    }
  }
  return paths;
}

/// @param folder    of the project file, absolute, for a key of paths
/// @param isNeeded  without a value the key gets an example; otherwise this is a comment
std::string entryOf(const CLI::Option& option, const std::filesystem::path* folder, bool isNeeded) {
  const std::string key = keyOf(option);
  std::string text = "\n# " + option.get_description() + "\n";
  if (option.count() > 0) {
    const auto values = folder ? seenFrom(*folder, option.results()) : option.results();
    return text + key + " = " + listOf(values) + "\n";
  }
  const std::string standard = option.get_default_str();
  const std::string value = standard.empty() ? exampleOf(key) : standard;
  return text + (isNeeded ? "" : "# ") + key + " = " + value + "\n";
}

/// A comment begins at any #, also between quotes; what it would cut off is refused.
void refuseOpenQuotes(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::size_t number = 1;
  for (std::string line; std::getline(stream, line); ++number) {
    const auto value = line.substr(0, line.find('#'));
    if (std::ranges::count(value, '"') % 2 == 0) continue;
    throw Error(
        fmt::format("{}: line {}: a quote is open; a value cannot hold a #", file.string(), number),
        Error::BadSettings);
  }
}

/// The items of a project file, without the marks of sections.
std::vector<CLI::ConfigItem> itemsOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  if (!stream) throw Error(file.string() + ": cannot be opened");
  refuseOpenQuotes(file);
  auto items = CLI::ConfigTOML().from_config(stream);
  if (stream.bad()) throw Error(file.string() + ": cannot be read");
  std::set<std::string> seen;
  for (const auto& item : items) {
    if (!item.parents.empty() || item.name == "++" || item.name == "--") {
      throw Error(fmt::format("{}: {}: a project file has no sections and no dots in its keys",
                              file.string(), item.fullname()),
                  Error::BadSettings);
    }
    if (!seen.insert(item.name).second) {
      throw Error(fmt::format("{}: {} is there twice", file.string(), item.name),
                  Error::BadSettings);
    }
  }
  return items;
}

}  // namespace

ProjectKeys::ProjectKeys(CLI::App& command, Velorn::Flights::FlightSettings& project)
    : command_(command),
      project_(project),
      pathKeys_{"strips", "trajectory", "ground-truth", "root"} {
  addFiles(command, project);
  addChain(command, project);
  addRaster(command, project);
  addMatching(command, project);
  const auto before = command.get_options();
  addModelOptions(command, project.model);
  for (auto* option : command.get_options()) {
    if (std::ranges::find(before, option) == before.end()) option->group(adjusting);
  }
}

void ProjectKeys::read(const std::filesystem::path& file) const {
  for (auto& item : itemsOf(file)) {
    const std::string where = fmt::format("{}: {}", file.string(), item.name);
    CLI::Option* const option = command_.get_option_no_throw("--" + item.name);
    if (!option || !option->get_configurable()) {
      const auto nearest = CommandLine::nearestOf(keysOf(command_), item.name);
      throw Error(where + ": no such key" + CommandLine::didYouMean(nearest), Error::BadSettings);
    }
    if (option->count() > 0) continue;
    if (item.inputs.empty() || std::ranges::count(item.inputs, std::string()) > 0) {
      throw Error(where + " has no value", Error::BadSettings);
    }
    for (auto& input : item.inputs) {
      if (pathKeys_.contains(item.name)) {
        input = (file.parent_path() / input).lexically_normal().string();
      }
    }
    try {
      const bool isFlag = option->get_expected_min() == 0;
      if (isFlag) {
        option->add_result(option->get_flag_value(item.name, item.inputs.front()));
      } else {
        option->add_result(item.inputs);
      }
      option->run_callback();
    } catch (const CLI::ParseError& error) {
      throw Error(fmt::format("{} = {}: {}", where, fmt::join(item.inputs, ", "), error.what()),
                  Error::BadSettings);
    }
  }
  auto& root = project_.configuration().RootPath;
  if (command_.get_option("--root")->count() == 0) root = file.parent_path() / root;
}

std::string ProjectKeys::text(const std::filesystem::path& file) const {
  const auto folder = std::filesystem::absolute(file).parent_path();
  std::string text =
      "# A project of `velorn run`. Every key is a flag too (--search-radius 5), and flags win.\n"
      "# Relative paths count from the folder of this file.\n";
  std::string group;
  for (const auto* option : command_.get_options()) {
    if (keyOf(*option).empty() || !option->get_configurable()) continue;
    if (option->get_group() != group) {
      group = option->get_group();
      text += fmt::format("\n\n# ---- {} ----\n", group);
    }
    const std::string key = keyOf(*option);
    const bool isPath = pathKeys_.contains(key);
    const bool isNeeded = isPath && !(key == "ground-truth" && project_.model.isRelative);
    text += entryOf(*option, isPath ? &folder : nullptr, isNeeded);
  }
  return text;
}
