// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cstddef>
#include <map>
#include <system_error>

#include <fmt/format.h>

#include "adjustment/georef/NothingThrown.h"
#include "adjustment/georef/StripFiles.h"
#include "platform/morvane/Console.h"
#include <velorn/Georeferencing.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;
using Progress = Kestrum::StrongPtr<Kestrum::LoaderProgress, Kestrum::InterfaceBase>;

/// Which strips of a list, and where they go.
struct Selection {
  const std::vector<fs::path>& strips;
  const std::set<int>& places;  ///< empty: all
  const std::string& outputFolder;

  bool holds(std::size_t place) const {
    return places.empty() || places.contains(static_cast<int>(place));
  }
};

/// One name for all names of a file.
fs::path oneNameOf(const fs::path& file) {
  std::error_code fault;
  const auto name = fs::weakly_canonical(file, fault);
  return fault ? file : name;
}

/// Strips of equal names in several folders would replace each other's output, and "a" one named
/// "a_SA" in the output folder.
std::string collidingOutput(const Selection& selection) {
  if (selection.outputFolder.empty()) return {};
  std::map<fs::path, fs::path> owners;  // of files, by canonical name
  for (const auto& strip : selection.strips) owners.emplace(oneNameOf(strip), strip);
  for (std::size_t i = 0; i < selection.strips.size(); ++i) {
    if (!selection.holds(i)) continue;
    const auto& strip = selection.strips[i];
    const auto output = outputFile(strip, selection.outputFolder);
    const auto [place, isNew] = owners.emplace(oneNameOf(output), strip);
    if (isNew) continue;
    return fmt::format("scanner2world: the output {} of strip {} belongs to strip {}",
                       output.string(), strip.string(), place->second.string());
  }
  return {};
}

/// Calls `georeference(place)` for the selected strips, up to the first one with a message.
template <typename Operation>
std::string forEachStrip(const Selection& selection, const Progress& progress,
                         const Operation& georeference) {
  for (std::size_t i = 0; i < selection.strips.size(); ++i) {
    if (progress) progress->report("scan2World #", i, selection.strips.size());
    if (!selection.holds(i)) continue;
    if (auto fault = georeference(i); !fault.empty()) return fault;
  }
  return {};
}

}  // namespace

std::string scanner2world(
    const std::vector<fs::path>& stripFiles, const std::vector<fs::path>& trajectoryFiles,
    const std::string& outputFolder, const bool& inverse, const int& storageMode,
    const std::string& sectionFile, const std::string& parameterFile,
    const std::set<int>& selectedStrips, const bool& interpolationFlag,
    const Kestrum::StrongPtr<Kestrum::LoaderProgress, Kestrum::InterfaceBase>& progress) {
  return withoutThrowing([&]() -> std::string {
    if (inverse) {
      Morvane::Console::writeLine(
          " INVERSE CALLED! Recalculate from world to scanner coordinates...");
    }
    Trajectory trajectory(trajectoryFiles);
    if (auto fault = trajectory.importTrajectory(); !fault.empty()) return fault;
    SolverParameters parameters(stripFiles, InputParameter());
    if (auto fault = parameters.readSectionsAndParameter(
            sectionFile, parameterFile, trajectory.getLeverarm(), trajectory.getMisalignment());
        !fault.empty()) {
      return fault;
    }
    const Selection selection{stripFiles, selectedStrips, outputFolder};
    if (auto fault = collidingOutput(selection); !fault.empty()) return fault;
    return forEachStrip(selection, progress, [&](std::size_t i) {
      return scanner2world(parameters, trajectory, stripFiles[i].string(), static_cast<unsigned>(i),
                           outputFolder, inverse, storageMode, interpolationFlag);
    });
  });
}

}  // namespace Velorn
