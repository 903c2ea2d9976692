// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The files that SolverParameters writes.
#include <fstream>
#include <system_error>

#include "adjustment/model/ExactParameters.h"
#include "adjustment/model/Layout.h"
#include "adjustment/model/ParameterFile.h"
#include "adjustment/model/SectionFile.h"
#include "platform/morvane/Console.h"
#include "platform/plome/ReplacedFile.h"
#include <velorn/SolverParameters.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;

/// Lets `content` write a file anew; nothing happens when it cannot be opened.
template <typename Content>
void writeFile(const fs::path& path, const std::string& operation, const Content& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return;
  content(file);
  file.close();
  if (!file) {
    Morvane::Console::writeLine(operation + ": Failed to write the file:" + path.string());
    std::error_code ignored;  // half a file is none
    if (fs::is_regular_file(path, ignored)) fs::remove(path, ignored);
  }
}

/// Makes the folder of a file that is to be written, and tells when the file cannot be opened.
void prepare(const fs::path& path, const std::string& operation) {
  std::error_code shownByTheFile;
  fs::create_directories(path.parent_path(), shownByTheFile);
  if (std::ofstream(path, std::ios::binary | std::ios::app)) return;
  Morvane::Console::writeLine(operation + ": Failed to open the file:" + path.string());
}

}  // namespace

fs::path SolverParameters::fileInParameterFolder(const std::string& name) const {
  return inputParameter.RootPath / inputParameter.getPrameterPath() / name;
}

void SolverParameters::writeSectionFile(const std::string& name) const {
  if (name.empty()) return;
  const auto lines = [this](std::ostream& file) {
    for (const auto& strip : newsections) {
      for (const auto& [start, section] : strip.sections) {
        const std::string line = sectionLine(section);
        file.write(line.data(), static_cast<std::streamsize>(line.size()));
      }
    }
  };
  writeFile(fileInParameterFolder("Sections" + name), "SolverParameters::writeSectionFile", lines);
}

void SolverParameters::writeParameterFile(const std::string& name) const {
  if (name.empty()) return;
  const std::string operation = "SolverParameters::writeParameterFile";
  const fs::path path = fileInParameterFolder("Parameter" + name);
  if (parameters.size() < globalParameters) {
    return Morvane::Console::writeLine(operation + ": no parameters for the file:" + path.string());
  }
  writeFile(path, operation, [this](std::ostream& file) { writeParameters(file, parameters); });
}

void SolverParameters::saveSectionFile(const std::string& name) const {
  if (name.empty()) return;
  prepare(fileInParameterFolder("Sections" + name), "SolverParameters::saveSectionFile");
  writeSectionFile(name);
}

void SolverParameters::saveParameterFile(const std::string& name) const {
  if (name.empty()) return;
  prepare(fileInParameterFolder("Parameter" + name), "SolverParameters::saveParameterFile");
  writeParameterFile(name);
}

std::string SolverParameters::writeExactParameters(const fs::path& parameterFile) const {
  const std::string operation = "SolverParameters::writeExactParameters: ";
  const fs::path path = companionOf(parameterFile);
  if (parameters.empty()) return operation + "no parameters for the file:" + path.string();
  const std::string fault = Plome::replaceFile(path, exactContent(parameters));
  return fault.empty() ? fault : operation + fault;
}

}  // namespace Velorn
