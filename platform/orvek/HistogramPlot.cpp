// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/HistogramPlot.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <vector>

#include <fmt/format.h>

#include "platform/orvek/Gnuplot.h"

namespace OrvekPDF {
namespace {

using OrvekStatistic::Bins;
using OrvekStatistic::Summary;

/// First bin at which the running sum of `counts` is greater than `passed`.
template <typename Iterator>
std::ptrdiff_t binAfter(Iterator begin, Iterator end, double passed) {
  double sum = 0.0;
  return std::find_if(begin, end,
                      [&](std::uint64_t count) {
                        sum += static_cast<double>(count);
                        return sum > passed;
                      }) -
         begin;
}

std::uint64_t sumOf(const Bins& bins, const ShownBins& shown) {
  const auto at = [&](std::size_t i) {
    return bins.counts.begin() + static_cast<std::ptrdiff_t>(i);
  };
  return std::accumulate(at(shown.first), at(shown.end), std::uint64_t{0});
}

/// One line beside the plot.
struct FigureLine {
  std::string name;
  std::string value;
};

/// The spread that decides on decimals: the standard deviation, or for equal values their size.
double spreadOf(const Summary& summary) {
  const auto& moments = summary.moments;
  if (moments.standardDeviation > 0.0) return moments.standardDeviation;
  return std::max(std::abs(moments.minimum), std::abs(moments.maximum));
}

std::vector<FigureLine> figureLines(const Summary& summary, std::string_view unit) {
  const auto& moments = summary.moments;
  const auto text = [&, spread = spreadOf(summary)](double figure) {
    return figureText(figure, spread, unit);
  };
  return {{"count", grouped(moments.count)},
          {"mean", text(moments.mean)},
          {"std. deviation", text(moments.standardDeviation)},
          {"RMS", text(moments.rms)},
          {"median", text(summary.median)},
          {"NMAD", text(summary.nmad)},
          {"5 % quantile", text(summary.quantiles.front())},
          {"95 % quantile", text(summary.quantiles.back())},
          {"minimum", text(moments.minimum)},
          {"maximum", text(moments.maximum)}};
}

std::string percentText(double percent) {
  if (percent < 0.001) return "< 0.001 %";
  return percent < 10.0 ? fmt::format("{:.2g} %", percent) : fmt::format("{:.0f} %", percent);
}

/// What the bars do not tell: values that lie elsewhere, or nowhere.
std::vector<FigureLine> absentLines(const Summary& summary, const Bins& bins,
                                    const ShownBins& shown) {
  std::vector<FigureLine> lines;
  const std::uint64_t left = sumOf(bins, {0, shown.first}) + bins.below;
  const std::uint64_t right = sumOf(bins, {shown.end, bins.counts.size()}) + bins.above;
  const double percent =
      100.0 * static_cast<double>(left + right) / static_cast<double>(summary.moments.count);
  if (left + right > 0) {
    lines.push_back({"outside the plot", percentText(percent)});
    lines.push_back({"   to its left", grouped(left)});
    lines.push_back({"   to its right", grouped(right)});
  }
  const std::uint64_t notFinite = summary.notNumbers + summary.infinite;
  if (notFinite > 0) lines.push_back({"not finite", grouped(notFinite)});
  return lines;
}

/// Two columns on the right of the plot: names, and numbers aligned by their last digit.
class FigureColumn {
 public:
  FigureColumn(int width, int height) : width_(width), height_(height) {}

  /// Where the plot has to end, as a part of the page's width.
  double left() const { return 1.0 - 56.0 / width_; }

  std::string lines(const std::vector<FigureLine>& lines) {
    std::string script;
    for (const FigureLine& line : lines) {
      script += label(line.name, left() + 3.0 / width_, "left");
      script += label(line.value, 1.0 - 5.0 / width_, "right");
      down_ += 5.2;
    }
    down_ += 2.6;
    return script;
  }

 private:
  std::string label(std::string_view text, double x, std::string_view side) const {
    return fmt::format("set label {} at screen {:.5f},{:.5f} {} font \"Sans,9.5\"\n",
                       quoted(text, 40), x, 1.0 - down_ / height_, side);
  }

  double width_, height_;  // of the page [mm]
  double down_ = 19.0;     // next line's distance from the upper margin [mm]
};

std::string countAxis(std::uint64_t highest) {
  const double top = std::max(1.0, static_cast<double>(highest));
  const double step = std::max(1.0, roundStep(top / 6.0));
  std::string tics;
  const auto count = static_cast<int>(top * 1.05 / step);
  for (int i = 0; i <= count; ++i) {
    const double tic = i * step;
    tics += fmt::format("{}{} {:.0f}", tics.empty() ? "" : ", ",
                        quoted(grouped(static_cast<unsigned long long>(tic)), 40), tic);
  }
  return fmt::format("set yrange [0:{}]\nset ytics ({})\nset ylabel \"count\"\n", top * 1.05, tics);
}

std::string bars(const Bins& bins, const ShownBins& shown) {
  std::string script = "$bins << EndOfBins\n";
  for (std::size_t i = shown.first; i < shown.end; ++i) {
    if (bins.counts[i] == 0) continue;
    const double lower = bins.edges[i], upper = bins.edges[i + 1];
    fmt::format_to(std::back_inserter(script), "{} {} {} {}\n", (lower + upper) / 2.0,
                   bins.counts[i], lower, upper);
  }
  script += "EndOfBins\n";
  // The thin white gap that tells bars apart would hide bars that are hardly wider.
  const bool apart = shown.end - shown.first <= 60;
  script += fmt::format(
      "set style fill solid 1.0 {}\n"
      "plot $bins using 1:2:3:4:(0):2 with boxxyerror linecolor rgb \"#4C78A8\"\n",
      apart ? "border linecolor rgb \"white\"" : "border linecolor rgb \"#4C78A8\"");
  return script;
}

std::string zeroLine(float lower, float upper) {
  if (lower >= 0.0F || upper <= 0.0F) return {};
  return "set arrow from first 0, graph 0 to first 0, graph 1 nohead front dashtype 2 "
         "linecolor rgb \"#404040\"\n";
}

}  // namespace

ShownBins shownBins(const Bins& bins) {
  const std::size_t all = bins.counts.size();
  const auto inside = static_cast<double>(sumOf(bins, {0, all}));
  if (inside == 0.0) return {0, all};
  const double tail = 0.005 * inside;
  const auto total = static_cast<std::ptrdiff_t>(all);
  auto first = binAfter(bins.counts.begin(), bins.counts.end(), tail);
  auto end =
      static_cast<std::ptrdiff_t>(all) - binAfter(bins.counts.rbegin(), bins.counts.rend(), tail);
  const std::ptrdiff_t least = std::min<std::ptrdiff_t>(10, total);
  const std::ptrdiff_t wider = std::max((end - first + 2) / 3, (least - (end - first) + 1) / 2);
  first = std::clamp<std::ptrdiff_t>(first - wider, 0, total - least);
  end = std::clamp(end + wider, first + least, total);
  if (2 * (end - first) > total) return {0, all};
  return {static_cast<std::size_t>(first), static_cast<std::size_t>(end)};
}

std::string figureText(double figure, double spread, std::string_view unit) {
  if (!std::isfinite(figure)) return "–";
  std::string text;
  if (figure == 0.0 || (spread >= 1e-7 && spread < 1e6 && std::abs(figure) < 1e9)) {
    const double decimals = spread > 0.0 ? 2.0 - std::floor(std::log10(spread)) : 0.0;
    text = fmt::format("{:.{}f}", figure, static_cast<int>(std::clamp(decimals, 0.0, 9.0)));
  } else {
    text = fmt::format("{:.4g}", figure);
  }
  if (text.find_first_not_of("-0.") == std::string::npos && text.starts_with('-')) text.erase(0, 1);
  if (text.starts_with('-')) text.replace(0, 1, "−");
  return unit.empty() ? text : text + " " + std::string(unit);
}

std::string_view unitOf(std::string_view label) {
  constexpr std::size_t longestUnit = 8;  // bytes; a longer one would not fit beside the figures
  const std::size_t open = label.rfind('[');
  if (open == std::string_view::npos || !label.ends_with(']')) return {};
  const std::string_view unit = label.substr(open + 1, label.size() - open - 2);
  return unit == "-" || unit.size() > longestUnit ? std::string_view() : unit;
}

std::string histogramScript(const Summary& summary, const Bins& bins, std::string_view xLabel,
                            std::string_view title, int width, int height) {
  std::string script = pageHead(width, height, title);
  script += fmt::format("set xlabel {}\n", quoted(xLabel, static_cast<std::size_t>(width / 2)));
  if (summary.moments.count == 0 && summary.notNumbers + summary.infinite == 0) {
    return script + emptyPlot("no data");
  }
  const ShownBins shown = shownBins(bins);
  FigureColumn column(width, height);
  script += fmt::format("set rmargin at screen {:.5f}\n", column.left());
  script += column.lines(figureLines(summary, unitOf(xLabel)));
  script += column.lines(absentLines(summary, bins, shown));
  const float lower = bins.edges[shown.first], upper = bins.edges[shown.end];
  if (sumOf(bins, shown) == 0) {
    return script + emptyPlot(fmt::format("no values from {} to {}", lower, upper));
  }
  script += fmt::format("set xrange [{}:{}]\n", lower, upper);
  script +=
      countAxis(*std::max_element(bins.counts.begin() + static_cast<std::ptrdiff_t>(shown.first),
                                  bins.counts.begin() + static_cast<std::ptrdiff_t>(shown.end)));
  return script + zeroLine(lower, upper) + bars(bins, shown);
}

}  // namespace OrvekPDF
