// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/HistogramPdf.h"

#include <fmt/format.h>

#include "platform/orvek/Gnuplot.h"
#include "platform/orvek/HistogramPlot.h"
#include "platform/orvek/StatisticFiles.h"

namespace OrvekPDF {
namespace {

namespace fs = std::filesystem;

std::string checkSize(const fs::path& pdf, int width, int height) {
  const bool widthOk = width == 0 || (width >= 120 && width <= 2000);
  const bool heightOk = height == 0 || (height >= 100 && height <= 2000);
  if (widthOk && heightOk) return {};
  return fmt::format(
      "{}: a page of {} x {} mm, the width must be 120 to 2000 mm and the height 100 to 2000 mm "
      "(or 0)",
      pdf.string(), width, height);
}

std::string readBoth(const fs::path& summaryFile, const fs::path& histogramFile,
                     OrvekStatistic::Summary& summary, OrvekStatistic::Bins& bins) {
  std::string fault = OrvekStatistic::readSummary(summaryFile, summary);
  if (fault.empty()) fault = OrvekStatistic::readHistogram(histogramFile, bins);
  if (!fault.empty()) return fault;
  const auto counted = OrvekStatistic::totalOf(bins);
  if (counted == summary.moments.count) return {};
  return fmt::format("{}: counts {} values, but {} counts {}", histogramFile.string(), counted,
                     summaryFile.string(), summary.moments.count);
}

}  // namespace

std::string hist(const fs::path& summaryFile, const fs::path& histogramFile, const fs::path& pdf,
                 const std::string& xLabel, const std::string& title, const int& width,
                 const int& height) {
  OrvekStatistic::Summary summary;
  OrvekStatistic::Bins bins;
  std::string fault = checkSize(pdf, width, height);
  if (fault.empty()) fault = readBoth(summaryFile, histogramFile, summary, bins);
  if (fault.empty()) {
    const std::string script =
        histogramScript(summary, bins, xLabel, title, width ? width : 210, height ? height : 148);
    fault = drawPdf(script, pdf);
  }
  return fault.empty() ? fault : warned("OrvekPDF::hist: " + fault);
}

}  // namespace OrvekPDF
