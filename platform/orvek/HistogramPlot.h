// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a histogram's page shows, and the script that draws it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Visibility.h"
#include "platform/orvek/Statistic.h"

namespace OrvekPDF {

/// Bins [first, end) of a histogram.
struct ShownBins {
  std::size_t first = 0;
  std::size_t end = 0;
};

/// The part of the axis that is worth looking at: the bins that hold the central 99 % of the values
/// in bins (about 2.6 standard deviations of normally distributed values to each side), a third of
/// that wider on both sides, and ten bins at least. All bins, where this would save less than half
/// of the axis or there is nothing to see.
VELORN_PLATFORM_EXPORT ShownBins shownBins(const OrvekStatistic::Bins& bins);

/// A figure with as many decimals as give the spread three digits, and the unit; "–" when it is not
/// known.
VELORN_PLATFORM_EXPORT std::string figureText(double figure, double spread, std::string_view unit);

/// The unit in a label's closing brackets, as in "differences [m]"; empty without, for "[-]" and
/// for more than eight bytes.
VELORN_PLATFORM_EXPORT std::string_view unitOf(std::string_view label);

/// The script; see OrvekPDF::hist for what the page shows.
/// @param width, height  of the page [mm]
std::string histogramScript(const OrvekStatistic::Summary& summary,
                            const OrvekStatistic::Bins& bins, std::string_view xLabel,
                            std::string_view title, int width, int height);

}  // namespace OrvekPDF
