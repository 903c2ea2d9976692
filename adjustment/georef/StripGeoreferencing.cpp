// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <system_error>

#include <fmt/format.h>

#include "adjustment/georef/GridGeoreferencing.h"
#include "adjustment/georef/NothingThrown.h"
#include "adjustment/georef/StripFiles.h"
#include "platform/morvane/Console.h"
#include "platform/plome/ReplacedFile.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/Georeferencing.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;

/// One strip from its container to its output.
class StripGeoreferencing {
 public:
  StripGeoreferencing(StripTask task, const std::string& outputFolder, int storageMode)
      : task_(std::move(task)),
        output_(outputFile(task_.file, outputFolder)),
        errorFile_(errorFile(task_.file, outputFolder)),
        replacesStrip_(outputFolder.empty()),
        storage_(storageMode, 0, 0, 1) {}

  std::string run() {
    if (auto fault = otherNameOfStrip(); !fault.empty()) return notSaved(fault);
    std::string message;
    try {
      if (auto fault = storage_.load(task_.file, bundle_); !fault.empty()) return notLoaded(fault);
      message = georeferenceOnlyGrid();
    } catch (const UnreadableColumn& fault) {
      return notLoaded(fault.what());
    } catch (const std::bad_alloc&) {  // some fields may be new and others old: nothing to be kept
      message = fmt::format("scanner2world: {}: not enough memory", task_.file);
      writeErrorFile(message);
      return message;
    }
    if (!message.empty()) writeErrorFile(message);
    if (auto fault = storage_.save(bundle_, output_, "wd"); !fault.empty()) return notSaved(fault);
    if (message.empty()) removeErrorFile();
    return message;
  }

 private:
  /// A link in the output folder may lead to the strip, which is to stay as it is.
  std::string otherNameOfStrip() const {
    std::error_code missing;  // there is no output yet
    if (replacesStrip_ || !fs::equivalent(output_, task_.file, missing)) return {};
    return output_.string() + ": is the strip itself";
  }

  std::string notLoaded(const std::string& reason) const {
    Morvane::Console::writeLine(reason);
    return "scanner2world: can not load " + task_.file + " (EnableExternalFile!) \n";
  }

  static std::string notSaved(const std::string& reason) {
    return "scanner2world::initialize, SaveParameters: " + reason + "\n";
  }

  std::string georeferenceOnlyGrid() {
    const auto grids = bundle_.grids();
    if (grids.size() > 1) return "scanner2world, have more than one grid";
    if (grids.empty()) return "scanner2world, have no grid";
    return georeference(*grids.front(), task_);
  }

  void writeErrorFile(const std::string& message) const {
    const std::string content = task_.file + ": " + message;
    const auto fault = Plome::replaceFile(errorFile_, content);
    if (fault.empty()) return;
    Morvane::Console::writeLine(content);
    Morvane::Console::writeLine("scanner2world: the error file was not written: " + fault);
  }

  /// An earlier run's is no longer true.
  void removeErrorFile() const {
    std::error_code fault;
    if (!fs::is_regular_file(fs::symlink_status(errorFile_, fault))) return;
    if (fs::remove(errorFile_, fault)) return;
    Morvane::Console::writeLine(
        "scanner2world: the error file of an earlier run was not removed: " + errorFile_.string() +
        ": " + fault.message());
  }

  StripTask task_;
  fs::path output_, errorFile_;
  bool replacesStrip_;
  Strandel::MyStorage storage_;
  Strandel::Bundle bundle_;
};

}  // namespace

std::string scanner2world(const SolverParameters& parameters, const Trajectory& trajectory,
                          const std::string& stripFile, const unsigned& stripIndex,
                          const std::string& outputFolder, const bool& inverse,
                          const int& storageMode, const bool& interpolationFlag) {
  return withoutThrowing([&] {
    const StripTask task{parameters, trajectory, stripFile, stripIndex, inverse, interpolationFlag};
    return StripGeoreferencing(task, outputFolder, storageMode).run();
  });
}

}  // namespace Velorn
