// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/ControlText.h"

#include <algorithm>
#include <cmath>
#include <map>

#include <fmt/format.h>

namespace Velorn::Flights {
namespace {

constexpr std::size_t mostRows = 100;

/// A patch and its fit; not known: NaN.
struct ControlRow {
  const ControlItem* item;
  double before = unknownFigure, after = unknownFigure;

  /// Those left out before those that fit worst [m].
  double urgency() const {
    if (!item->leftOut.empty()) return std::numeric_limits<double>::infinity();
    return std::isfinite(after) ? std::abs(after) : 0.0;
  }
};

std::vector<ControlRow> rowsOf(const MatchReport& matching, const AdjustmentReport* adjustment) {
  std::map<std::uint32_t, const ControlMisfit*> fits;
  if (adjustment) {
    for (const ControlMisfit& one : adjustment->control) fits[one.id] = &one;
  }
  std::vector<ControlRow> rows;
  for (const ControlItem& item : matching.control) {
    const auto fit = fits.find(item.id);
    rows.push_back({&item});
    if (fit == fits.end()) continue;
    rows.back().before = fit->second->before;
    rows.back().after = fit->second->after;
  }
  return rows;
}

std::string misfitText(double misfit) {
  return std::isfinite(misfit) ? fmt::format("{:>12.2f}", 100.0 * misfit)
                               : fmt::format("{:>12}", "-");
}

std::string rowText(const ControlRow& row) {
  const ControlItem& item = *row.item;
  std::string text = fmt::format("{:<8}{:>13.2f}{:>13.2f}{:>10}", item.id, item.place[0],
                                 item.place[1], item.isInclined ? "inclined" : "flat");
  if (!item.leftOut.empty()) return text + "  left out: " + item.leftOut + "\n";
  return text + fmt::format("{:>8}{:>9}{}{}{:>8.2f}\n", item.strips, item.correspondences,
                            misfitText(row.before), misfitText(row.after), item.weight);
}

}  // namespace

std::string controlTable(const MatchReport& matching, const AdjustmentReport* adjustment) {
  auto rows = rowsOf(matching, adjustment);
  if (rows.empty()) return {};
  std::string text =
      fmt::format("{:<8}{:>13}{:>13}{:>10}{:>8}{:>9}{:>12}{:>12}{:>8}\n", "control", "easting",
                  "northing", "", "strips", "number", "before [cm]", "after [cm]", "weight");
  const std::size_t all = rows.size();
  if (all > mostRows) {
    std::ranges::stable_sort(rows, std::greater{}, &ControlRow::urgency);
    rows.resize(mostRows);
  }
  for (const ControlRow& row : rows) text += rowText(row);
  if (all > mostRows) {
    text +=
        fmt::format("and {} more that fit better, all of them in summary.json\n", all - mostRows);
  }
  return text;
}

}  // namespace Velorn::Flights
