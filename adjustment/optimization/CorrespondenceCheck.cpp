// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The check of CeresOptimization: what there is, and whether it is enough.
#include <numeric>
#include <system_error>

#include <fmt/format.h>

#include "adjustment/correspondence/ClassCode.h"
#include "adjustment/optimization/CheckTexts.h"
#include "adjustment/optimization/CorrespondenceFaults.h"
#include "adjustment/optimization/SectionReport.h"
#include "platform/morvane/Console.h"
#include <velorn/CeresOptimization.h>

namespace Velorn {
namespace {

using Morvane::Console;

/// @return empty, or what is returned for a folder that cannot be made
std::string makeFolder(const std::filesystem::path& folder) {
  std::error_code fault;
  std::filesystem::create_directories(folder, fault);
  if (!fault && std::filesystem::is_directory(folder, fault)) return {};
  return "string CeresOptimization::check: can create directory  " + folder.string();
}

/// In double quotes, between which a shell would expand some characters.
std::string quoted(const std::string& path) {
  std::string text = "\"";
  for (const char c : path) {
    if (std::string_view("\\\"$`").find(c) != std::string_view::npos) text += '\\';
    text += c;
  }
  return text + "\"";
}

/// The strips as arguments of a command.
std::string quoted(const std::vector<std::uint32_t>& strips, const FileContainer& files) {
  std::string text;
  for (const std::uint32_t strip : strips) {
    text += " " + quoted(std::filesystem::absolute(files.getFileAccordingID(strip)).string());
  }
  return text;
}

constexpr const char* listingName = "03_CorrespondencesPerSection.txt";
constexpr const char* warningName = "03_Warning_LowCorrespondencesPersection.txt";
constexpr const char* scriptName = "not_adjusted_strips.sh";

}  // namespace

struct CeresOptimization::Counts {
  std::vector<unsigned>& perSection;
  std::vector<unsigned> perClass;
  std::uint64_t withoutNormal = 0;

  std::uint64_t total() const {
    return std::accumulate(perClass.begin(), perClass.end(), std::uint64_t{0});
  }
};

std::string CeresOptimization::check(std::vector<unsigned>& correspondencesPerSection) {
  if (auto fault = faultOfInputs(correspondencesPerSection.size()); !fault.empty()) return fault;
  Counts counts{correspondencesPerSection,
                std::vector<unsigned>(inputParameter.getNumberOfClasses())};
  if (auto fault = countCorrespondences(counts); !fault.empty()) return fault;
  // Made before the first report is written into it.
  const auto folder = inputParameter.RootPath / inputParameter.getStatusPath();
  if (auto fault = makeFolder(folder); !fault.empty()) return fault;
  if (!reportSections(correspondencesPerSection, inputParameter, solverParameters, fileContainer)) {
    Console::writeLine(
        " CeresOptimization::check -> Warning, some section have low number of correspondeces. "
        "Check txt in directory 01_Status");
  }
  reportNumbers(counts);
  outcome.correspondencesPerClass = counts.perClass;
  outcome.withoutNormal = counts.withoutNormal;
  // Callers look whether there are words, not which.
  const bool isControlled =
      !counts.perClass.empty() && counts.perClass.front() >= settings.fewestGroundTruth;
  return isControlled ? "" : "tion::check: can create directory  ";
}

/// A strip without a file would end the process where the file is asked for.
std::string CeresOptimization::faultOfInputs(std::size_t counters) const {
  const std::size_t strips = solverParameters.getStripSections().size();
  const std::size_t files = fileContainer.getStripFiles().size();
  if (files < strips) {
    return fmt::format(
        "CeresOptimization::check: {} strip files for the {} strips of the parameters", files,
        strips);
  }
  const std::uint32_t sections = solverParameters.numberOfSectionsForAllStrips();
  if (counters == sections) return {};
  return fmt::format("CeresOptimization::check: {} counters for {} sections", counters, sections);
}

std::string CeresOptimization::countCorrespondences(Counts& counts) const {
  const auto classes = static_cast<unsigned>(counts.perClass.size());
  return walkCorrespondences(inputParameter, "check correspondences #",
                             [&](const CorrespondenceFile& file, const CorrespondenceBlock& block) {
                               auto fault = faultOfBlock(file, block, solverParameters);
                               for (std::uint32_t i = 0; fault.empty() && i < block.size(); ++i) {
                                 fault = faultOfCorrespondence(file, block, i, solverParameters,
                                                               classes);
                                 if (fault.empty()) count(file, block, i, counts);
                               }
                               return fault;
                             });
}

void CeresOptimization::count(const CorrespondenceFile& file, const CorrespondenceBlock& block,
                              std::uint32_t index, Counts& counts) const {
  const auto [first, second] = block.get(index);
  const auto i = solverParameters.getSectionInStrip(file.firstStrip, first.gpsTime);
  ++counts.perSection.at(i.sectionID);
  if (!block.isGroundTruth()) {
    const auto j = solverParameters.getSectionInStrip(file.secondStrip, second.gpsTime);
    if (!j.invalid) ++counts.perSection.at(j.sectionID);
  }
  ++counts.perClass.at(classIndex(first.classification));
  if (isWithoutNormal(first)) ++counts.withoutNormal;
}

/// @return whether no section is held constant
bool CeresOptimization::reportSections(const std::vector<unsigned>& correspondencesPerSection,
                                       const InputParameter& configuration,
                                       const SolverParameters& model, const FileContainer& inputs) {
  outcome.sections =
      sectionStates(model.getStripSections(), correspondencesPerSection, configuration.LockedStrips,
                    settings.knowledge ? 0 : fewestCorrespondences);
  const auto strips = stripsHeldConstant(outcome.sections);
  const auto listing = sectionListing(outcome.sections);
  if (strips.empty()) {
    writeStatus(listingName, listing);
    removeStatus(warningName);
    removeStatus(scriptName);
    return true;
  }
  writeStatus(warningName, listing, true);
  removeStatus(listingName);
  writeStatus(scriptName,
              "KXmergecartesian -f=Positions,PointSourceID,Amplitude,Classification -q -r=merged" +
                  quoted(strips, inputs) + " -o=NotAdjustedStrips.kx");
  return false;
}

void CeresOptimization::reportNumbers(const Counts& counts) const {
  if (counts.withoutNormal > 0) {
    Console::writeLine(fmt::format(
        "CeresOptimization::check -> Warning, {} correspondences have a zero normal and contribute "
        "nothing",
        counts.withoutNormal));
  }
  const std::uint64_t total = counts.total();
  if (areTooMany(total)) {
    Console::writeLine(
        "CeresOptimization::check: Too many correspondences. Ceres will probably fail to solve "
        "this problem");
    writeStatus("03_Warning_TooManyCorrespondences.txt", std::to_string(total));
  } else {
    Console::writeLine(
        fmt::format(" CeresOptimization::check: Number of correspondences: {}", total));
  }
  writeStatus("03_HistCorrespondences.txt",
              terrainHistogram(counts.perClass, inputParameter.CellSizeWeights));
}

void CeresOptimization::writeStatus(const std::string& name, const std::string& text,
                                    bool echo) const {
  inputParameter.write(inputParameter.RootPath / inputParameter.getStatusPath() / name, text, echo,
                       false);
}

/// What an earlier run in the same folder left would tell of this one.
void CeresOptimization::removeStatus(const std::string& name) const {
  std::filesystem::remove(inputParameter.RootPath / inputParameter.getStatusPath() / name);
}

}  // namespace Velorn
