// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Values against places, as a PDF page.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "platform/Visibility.h"

namespace OrvekPDF {

/// A plot of one or more vectors, A5 landscape:
///
///     const OrvekPDF::VectorToPDF plot("StripID [-]", "Offset [m]", "Offset along z", strips,
///                                      offsets, "Offset_z.pdf");
///     const std::string fault = plot.write2Pdf(false);
///
/// Whole numbers on the x axis get ticks at whole numbers only. The y axis always holds zero; it
/// begins there when no value is negative. Without any value the page says "no data".
class VELORN_PLATFORM_EXPORT VectorToPDF {
 public:
  /// @param pdf  the file that write2Pdf replaces
  VectorToPDF(std::string xLabel, std::string yLabel, std::string title, std::filesystem::path pdf);

  /// The same with its first vector; when that is broken, write2Pdf refuses with addVector's text.
  VectorToPDF(std::string xLabel, std::string yLabel, std::string title, std::span<const double> x,
              std::span<const double> y, std::filesystem::path pdf);

  /// Adds y against x.
  /// @param name  its name in the legend; without names there is none
  /// @return empty, or "VectorToPDF::addVector: broken data" when the lengths differ or a number is
  ///         NaN, infinite or beyond +-1e100 (too large to be drawn); nothing is then added
  std::string addVector(std::span<const double> x, std::span<const double> y,
                        const std::string& name = {});

  /// Draws the page.
  /// @param joined  true: the points of a vector are joined by lines, in the order they were given;
  ///                false: each point stands on a line of its own from zero
  /// @return  empty, or "VectorToPDF::write2Pdf: <path>: <fault>" (or addVector's text, see the
  ///          constructor), which is a warning on the console, too; the file is then as before.
  ///          Drawing needs the program gnuplot.
  std::string write2Pdf(bool joined) const;

 private:
  struct Series {
    std::string name;
    std::vector<double> x, y;
  };

  std::string script(bool joined) const;
  std::string axes() const;
  std::string curve(std::size_t index, bool joined) const;

  std::string xLabel_, yLabel_, title_;
  std::filesystem::path pdf_;
  std::vector<Series> series_;
  std::string broken_;  ///< text of the constructor's addVector
};

}  // namespace OrvekPDF
