// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A histogram as a PDF page.
#pragma once

#include <filesystem>
#include <string>

#include "platform/Visibility.h"

namespace OrvekPDF {

/// Draws what OrvekStatistic::Statistic::write wrote, one page: bars that fill their bins, and
/// beside them count, mean, standard deviation, RMS, median, NMAD, quantiles and extremes with the
/// unit of the x label. The axis shows the part of the range where the values are
/// (HistogramPlot.h); how many lie outside of it is written on the page, as are NaN and infinite
/// values. Without any value the page says "no data".
///
///     differences.write("stat_Pairs.txt", "hist_Pairs.txt");
///     OrvekPDF::hist("stat_Pairs.txt", "hist_Pairs.txt", "Pairs.pdf", "differences [m]", "Pairs",
///     0, 0);
///
/// @param summaryFile    read: the figures
/// @param histogramFile  read: the bins
/// @param pdf            replaced by the page, whole or not at all
/// @param width          of the page [mm], 120 to 2000; 0 is 210
/// @param height         of the page [mm], 100 to 2000; 0 is 148, with the width 210 A5 landscape
/// @return  empty, or "OrvekPDF::hist: <path>: <fault>", which is a warning on the console, too;
///          `pdf` is then as before. Drawing needs the program gnuplot.
VELORN_PLATFORM_EXPORT std::string hist(const std::filesystem::path& summaryFile,
                                        const std::filesystem::path& histogramFile,
                                        const std::filesystem::path& pdf, const std::string& xLabel,
                                        const std::string& title, const int& width,
                                        const int& height);

}  // namespace OrvekPDF
