// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/statistics/StatisticFolder.h"

#include <numeric>
#include <regex>
#include <system_error>

#include <fmt/format.h>

#include "platform/morvane/Console.h"
#include "platform/orvek/HistogramPdf.h"
#include "platform/orvek/VectorToPDF.h"

namespace Velorn {
namespace {

namespace fs = std::filesystem;
using Morvane::Console;

bool isStatisticText(const fs::directory_entry& entry) {
  static const std::regex pattern(R"(hist_.*\.txt|stat_.*\.txt)");
  std::error_code error;
  return entry.symlink_status(error).type() == fs::file_type::regular &&
         std::regex_match(entry.path().filename().string(), pattern);
}

void warn(const fs::path& path, const std::error_code& error) {
  if (error) Console::writeLine(fmt::format("Warning: {}: {}", path.string(), error.message()));
}

/// Collected before the first is removed: what a walk sees of a folder that changes is open.
std::vector<fs::path> statisticTexts(const fs::path& folder) {
  std::vector<fs::path> texts;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isStatisticText(*entry)) texts.push_back(entry->path());
  }
  warn(folder, error);
  return texts;
}

}  // namespace

bool makeStatisticFolder(const fs::path& folder) {
  std::error_code error;
  if (fs::is_directory(folder, error)) return true;
  fs::create_directories(folder, error);
  if (error) {
    Console::writeLine("AdjustmentStatistic::hist: can create directory");
    Console::writeLine("Error: " + error.message());
  }
  if (fs::is_directory(folder, error)) return true;
  Console::writeLine("Invalid directory: " + folder.string());
  return false;
}

void plotDifferences(const fs::path& folder, const std::string& name,
                     OrvekStatistic::Statistic& differences) {
  const fs::path summary = folder / ("stat_" + name + ".txt");
  const fs::path histogram = folder / ("hist_" + name + ".txt");
  differences.compute();
  if (const std::string fault = differences.write(summary, histogram); !fault.empty()) {
    Console::writeLine("Warning: " + fault);
    return;
  }
  OrvekPDF::hist(summary, histogram, folder / (name + ".pdf"), "differences [m]",
                 name + " adjustment", 0, 0);  // tells the console itself
}

void removeStatisticTexts(const fs::path& folder) {
  for (const fs::path& text : statisticTexts(folder)) {
    std::error_code error;
    fs::remove(text, error);
    warn(text, error);
  }
}

void plotQuantiles(const fs::path& pdf, const std::string& title,
                   const std::vector<double>& offsets) {
  std::vector<double> strips(offsets.size());
  std::iota(strips.begin(), strips.end(), 0.0);
  const OrvekPDF::VectorToPDF plot("StripID [-]", "Offset [m]", title, strips, offsets, pdf);
  plot.write2Pdf(false);  // tells the console itself
}

}  // namespace Velorn
