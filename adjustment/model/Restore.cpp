// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Sections and unknowns from the files of an earlier run.
#include <algorithm>
#include <set>
#include <system_error>

#include <fmt/format.h>

#include "adjustment/model/ExactParameters.h"
#include "adjustment/model/Layout.h"
#include "adjustment/model/ParameterFile.h"
#include "adjustment/model/SectionFile.h"
#include "adjustment/model/StripIdFile.h"
#include <velorn/SolverParameters.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;

using StripPlaces = std::map<std::string, std::uint32_t>;

/// The place of each strip by its file name.
std::string placesOf(const std::vector<fs::path>& strips, StripPlaces& places) {
  if (strips.empty()) return "stripFiles.size() == 0 !";
  for (const auto& strip : strips) {
    const auto place = static_cast<std::uint32_t>(places.size());
    if (!places.try_emplace(strip.filename().string(), place).second) {
      return fmt::format("{}: a second strip named {}", strip.string(), strip.filename().string());
    }
  }
  return {};
}

/// Gives each section the place of its strip in our list instead of that in the run which wrote it.
std::string renumberStrips(const fs::path& sectionFile, const StripNames& names,
                           const StripPlaces& places, std::vector<Section>& sections) {
  for (auto& section : sections) {
    const auto refused = [&](const std::string& fault) {
      return fmt::format("{}: line {}: StripID {}: {}", sectionFile.string(), section.sectionID + 1,
                         section.stripIndex, fault);
    };
    const auto name = names.find(section.stripIndex);
    if (name == names.end()) return refused("is no strip of the strip id file");
    const auto place = places.find(name->second);
    if (place == places.end()) return refused(name->second + " is not among the strips");
    section.stripIndex = place->second;
  }
  return {};
}

/// A strip of SPLINE sections has ends that are LINEAR, so its model is that of its middle.
void addModel(StripSections& strip) {
  const auto half = static_cast<std::ptrdiff_t>(strip.sections.size() / 2);
  strip.type = std::next(strip.sections.begin(), half)->second.type;
}

/// Strips that the files do not name get one LINEAR section from time 0 on, numbered after all
/// others.
void addSectionsOfUnknown(const std::vector<fs::path>& stripFiles, const StripNames& names,
                          std::vector<Section>& sections, std::vector<fs::path>& unknown) {
  std::set<std::string> known;
  for (const auto& [id, name] : names) known.insert(name);
  for (std::uint32_t i = 0; i < stripFiles.size(); ++i) {
    if (known.contains(stripFiles[i].filename().string())) continue;
    const auto number = static_cast<std::uint32_t>(sections.size());
    sections.push_back({Sec_Type::LINEAR, number, 0.0, i, false, 0});
    unknown.push_back(stripFiles[i]);
  }
}

std::string stripsOf(const std::vector<Section>& sections, const fs::path& sectionFile,
                     const std::vector<fs::path>& stripFiles, std::vector<StripSections>& strips) {
  strips.resize(stripFiles.size());
  for (const auto& section : sections) {
    strips[section.stripIndex].sections[section.t] = section;
  }
  for (std::uint32_t i = 0; i < strips.size(); ++i) {
    if (strips[i].sections.empty()) {
      return fmt::format("{}: no section for strip {}", sectionFile.string(),
                         stripFiles[i].string());
    }
    strips[i].stripIndex = i;
    addModel(strips[i]);
  }
  return {};
}

std::string readUnknowns(const fs::path& parameterFile, std::size_t sections,
                         std::vector<double>& parameters) {
  if (auto fault = readParameterFile(parameterFile, parameters); !fault.empty()) return fault;
  if (parameters.size() != numberOfParameters(sections)) {
    return fmt::format("{}: {} parameters, {} sections have {}", parameterFile.string(),
                       parameters.size(), sections, numberOfParameters(sections));
  }
  const fs::path companion = companionOf(parameterFile);
  std::error_code ignored;
  if (!fs::exists(companion, ignored)) return {};
  return readExactParameters(companion, parameters);
}

/// Room for sections that are in no file: their unknowns are zero.
void addUnknowns(std::size_t fromSection, std::size_t sections, std::vector<double>& parameters) {
  parameters.insert(parameters.begin() + static_cast<std::ptrdiff_t>(localParameters * fromSection),
                    localParameters * (sections - fromSection), 0.0);
}

/// Numbers the sections in the order of our strips, which may be another than that of the run which
/// wrote the files, and moves their unknowns along: whoever walks the sections counts on it.
void renumberSections(std::vector<StripSections>& strips, std::vector<double>& parameters) {
  std::vector<double> ordered = parameters;  // the global ones stay where they are
  std::uint32_t number = 0;
  const auto block = [](std::vector<double>& values, std::uint32_t section) {
    return values.begin() + static_cast<std::ptrdiff_t>(localParameters * section);
  };
  for (auto& strip : strips) {
    for (auto& [start, section] : strip.sections) {
      std::copy_n(block(parameters, section.sectionID), localParameters, block(ordered, number));
      section.sectionID = number++;
    }
  }
  parameters.swap(ordered);
}

/// No file tells when a strip begins and ends, but whoever has divided it knows.
void keepTimes(const std::vector<StripSections>& known, std::vector<StripSections>& strips) {
  for (std::size_t i = 0; i < std::min(known.size(), strips.size()); ++i) {
    strips[i].intervalTime = known[i].intervalTime;
    strips[i].minTime = known[i].minTime;
    strips[i].maxTime = known[i].maxTime;
  }
}

}  // namespace

std::string SolverParameters::restore(const fs::path& sectionFile, const fs::path& parameterFile,
                                      const fs::path& stripIdFile,
                                      std::vector<fs::path>* unknownStrips) {
  const auto refused = [](const std::string& fault) {
    return "SolverParameters::restore: " + fault;
  };
  StripPlaces places;
  StripNames names;
  std::vector<Section> sections;
  std::vector<StripSections> strips;
  std::vector<double> values;
  std::vector<fs::path> unknown;
  if (auto fault = placesOf(stripFiles, places); !fault.empty()) return refused(fault);
  if (auto fault = readStripIdFile(stripIdFile, names); !fault.empty()) return refused(fault);
  if (auto fault = readSectionFile(sectionFile, sections); !fault.empty()) return refused(fault);
  if (auto fault = renumberStrips(sectionFile, names, places, sections); !fault.empty()) {
    return refused(fault);
  }
  const std::size_t inFiles = sections.size();
  if (unknownStrips) addSectionsOfUnknown(stripFiles, names, sections, unknown);
  if (auto fault = stripsOf(sections, sectionFile, stripFiles, strips); !fault.empty()) {
    return refused(fault);
  }
  if (auto fault = readUnknowns(parameterFile, inFiles, values); !fault.empty()) {
    return refused(fault);
  }
  addUnknowns(inFiles, sections.size(), values);
  renumberSections(strips, values);
  keepTimes(newsections, strips);
  newsections.swap(strips);
  parameters.swap(values);
  numberOfSections = static_cast<std::uint32_t>(sections.size());
  if (unknownStrips) unknownStrips->swap(unknown);
  return {};
}

}  // namespace Velorn
