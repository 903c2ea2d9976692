// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/VectorToPDF.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "platform/orvek/Gnuplot.h"

namespace OrvekPDF {
namespace {

constexpr int width = 210, height = 148;  // A5 landscape [mm]
// Told apart also by readers who do not see all colours.
constexpr std::array colours{"#4C78A8", "#E45756", "#54A24B", "#B279A2", "#F58518", "#72B7B2"};

bool canBeDrawn(std::span<const double> values) {
  return std::all_of(values.begin(), values.end(),
                     [](double value) { return std::abs(value) <= 1e100; });
}

struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  bool whole = true;  ///< all values are whole numbers that a tick can name

  void include(const std::vector<double>& values) {
    for (const double value : values) {
      low = std::min(low, value);
      high = std::max(high, value);
      whole = whole && value == std::round(value) && std::abs(value) < 1e9;
    }
  }
};

std::string xAxis(const Range& x) {
  const double span = x.high - x.low;
  const double margin =
      std::max({x.whole ? 0.7 : 0.0, 0.02 * span, span > 0.0 ? 0.0 : 0.5 * std::abs(x.low)});
  const double beside = margin > 0.0 ? margin : 1.0;
  std::string script = fmt::format("set xrange [{}:{}]\n", x.low - beside, x.high + beside);
  if (x.whole) {
    const double step = std::max(1.0, roundStep(std::max(1.0, span) / 20.0));
    script +=
        fmt::format("set xtics {},{} format \"%.0f\"\n", std::ceil(x.low / step) * step, step);
  }
  return script;
}

std::string yAxis(const Range& y) {
  const double low = std::min(0.0, y.low), high = std::max(0.0, y.high);
  const double margin = high > low ? 0.08 * (high - low) : 1.0;
  return fmt::format("set yrange [{}:{}]\n", low < 0.0 ? low - margin : 0.0,
                     high > 0.0 || low == 0.0 ? high + margin : 0.0) +
         (low < 0.0 && high > 0.0 ? "set xzeroaxis linetype 1 linecolor rgb \"#404040\"\n" : "");
}

/// Points that do not run into each other, however many there are.
double pointSize(std::size_t count) {
  return count <= 60 ? 0.7 : count <= 200 ? 0.4 : 0.25;
}

}  // namespace

VectorToPDF::VectorToPDF(std::string xLabel, std::string yLabel, std::string title,
                         std::filesystem::path pdf)
    : xLabel_(std::move(xLabel)),
      yLabel_(std::move(yLabel)),
      title_(std::move(title)),
      pdf_(std::move(pdf)) {}

VectorToPDF::VectorToPDF(std::string xLabel, std::string yLabel, std::string title,
                         std::span<const double> x, std::span<const double> y,
                         std::filesystem::path pdf)
    : VectorToPDF(std::move(xLabel), std::move(yLabel), std::move(title), std::move(pdf)) {
  broken_ = addVector(x, y);
}

std::string VectorToPDF::addVector(std::span<const double> x, std::span<const double> y,
                                   const std::string& name) {
  if (x.size() != y.size() || !canBeDrawn(x) || !canBeDrawn(y)) {
    return "VectorToPDF::addVector: broken data";
  }
  series_.push_back({name, {x.begin(), x.end()}, {y.begin(), y.end()}});
  return {};
}

std::string VectorToPDF::write2Pdf(bool joined) const {
  if (!broken_.empty()) return warned(broken_);
  const std::string fault = drawPdf(script(joined), pdf_);
  return fault.empty() ? fault : warned("VectorToPDF::write2Pdf: " + fault);
}

std::string VectorToPDF::script(bool joined) const {
  std::string script = pageHead(width, height, title_);
  script +=
      fmt::format("set xlabel {}\nset ylabel {}\n", quoted(xLabel_, 100), quoted(yLabel_, 60));
  if (std::all_of(series_.begin(), series_.end(), [](const Series& s) { return s.x.empty(); })) {
    return script + emptyPlot("no data");
  }
  script += axes();
  std::string plots;
  for (std::size_t i = 0; i < series_.size(); ++i) {
    if (series_[i].x.empty()) continue;
    fmt::format_to(std::back_inserter(script), "$series{} << EndOfSeries\n", i);
    for (std::size_t k = 0; k < series_[i].x.size(); ++k) {
      fmt::format_to(std::back_inserter(script), "{} {}\n", series_[i].x[k], series_[i].y[k]);
    }
    script += "EndOfSeries\n";
    plots += (plots.empty() ? "plot " : ", ") + curve(i, joined);
  }
  return script + plots + "\n";
}

std::string VectorToPDF::axes() const {
  Range x, y;
  bool named = false;
  for (const Series& series : series_) {
    x.include(series.x);
    y.include(series.y);
    named = named || !series.name.empty();
  }
  const char* const legend = "set key on outside right top vertical Left reverse\n";
  return xAxis(x) + yAxis(y) + (named ? legend : "");
}

std::string VectorToPDF::curve(std::size_t index, bool joined) const {
  const Series& series = series_[index];
  const std::string legend = series.name.empty() ? "notitle" : "title " + quoted(series.name, 40);
  const std::string colour = fmt::format("linecolor rgb \"{}\"", colours[index % colours.size()]);
  const double size = pointSize(series.x.size());
  const std::string points = fmt::format("pointtype 7 pointsize {} {} {}", size, colour, legend);
  if (joined) {
    return fmt::format("$series{} with linespoints linewidth {} {}", index, 5.0 * size, points);
  }
  return fmt::format(
      "$series{0} with impulses linewidth {1} {2} notitle, $series{0} with points {3}", index,
      6.0 * size, colour, points);
}

}  // namespace OrvekPDF
