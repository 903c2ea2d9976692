// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/Listing.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <fmt/format.h>

#include "platform/plome/Printable.h"

namespace Velorn::Flights {

using Json = nlohmann::ordered_json;

namespace {

std::string textOf(const Json& json) {
  return Plome::printableOnOneLine(json.get<std::string>());
}

/// A value as an attribute or a limit holds it. Twelve digits are 0.1 mm of a northing.
std::string valueText(const Json& value) {
  if (value.is_string()) return textOf(value);
  if (value.is_number_float()) return fmt::format("{:.12g}", value.get<double>());
  if (value.is_array()) {
    return fmt::format("({}, {}, {})", valueText(value[0]), valueText(value[1]),
                       valueText(value[2]));
  }
  return value.dump();
}

std::string attributesText(const Json& attributes, const std::string& indent) {
  std::string text;
  for (const auto& [name, value] : attributes.items()) {
    text += indent + Plome::printableOnOneLine(name) + " = " + valueText(value) + "\n";
  }
  return text;
}

/// Characters, as far as a terminal shows each byte sequence of UTF-8 as one.
std::size_t widthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](unsigned char byte) { return (byte & 0xC0U) != 0x80U; }));
}

struct Row {
  std::vector<std::string> cells;
  std::string below;  // lines that follow the row as they are
};

/// Component `i` of a limit; a scalar has one, and a field without values none.
std::string limitText(const Json& field, const char* name, std::size_t i) {
  if (!field.contains(name)) return i == 0 ? "-" : "";
  return valueText(field[name].is_array() ? field[name][i] : field[name]);
}

std::string remarkOf(const Json& field) {
  if (field.contains("error")) return "UNREADABLE";
  std::string remark;
  for (const auto& chart : field.value("shared_with", Json::array())) {
    remark += (remark.empty() ? "shared with " : ", ") + textOf(chart);
  }
  return remark;
}

/// A field and what belongs to it; the y and z of points have rows of their own.
void addRows(const Json& field, std::vector<Row>& rows) {
  rows.push_back({{textOf(field["name"]), textOf(field["type"]), field["count"].dump(),
                   fmt::format("{}", field["fragments"].size()), limitText(field, "minimum", 0),
                   limitText(field, "maximum", 0), remarkOf(field)},
                  {}});
  const bool isArray = field.contains("minimum") && field["minimum"].is_array();
  for (std::size_t i = 1; isArray && i < field["minimum"].size(); ++i) {
    rows.push_back(
        {{"", "", "", "", limitText(field, "minimum", i), limitText(field, "maximum", i), ""}, {}});
  }
  rows.back().below = attributesText(field["attributes"], "          ");
  if (field.contains("error")) rows.back().below += "          " + textOf(field["error"]) + "\n";
}

std::string tableText(const std::vector<Row>& rows, const std::string& indent) {
  std::vector<std::size_t> widths(rows.front().cells.size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths[i] = std::max(widths[i], widthOf(row.cells[i]));
    }
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line = indent;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const std::string padding(widths[i] - widthOf(row.cells[i]), ' ');
      const bool number = i >= 2 && i <= 5;
      line += (number ? padding + row.cells[i] : row.cells[i] + padding) + "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n" + row.below;
  }
  return text;
}

std::string chartText(const Json& chart) {
  std::string text = "    chart " + textOf(chart["name"]) + "\n";
  text += attributesText(chart["attributes"], "      ");
  std::vector<Row> rows{
      {{"field", "type", "count", "fragments", "minimum", "maximum", ""}, std::string()}};
  for (const auto& field : chart["fields"]) addRows(field, rows);
  return rows.size() == 1 ? text + "      no fields\n" : text + tableText(rows, "      ");
}

std::string gridText(const Json& grid) {
  std::string text =
      fmt::format("  grid {}, {} points\n", textOf(grid["name"]), grid["points"].dump());
  text += attributesText(grid["attributes"], "    ");
  if (grid.contains("waveforms")) {
    text += "    Waveforms\n" + attributesText(grid["waveforms"], "      ");
  }
  for (const auto& chart : grid["charts"]) text += chartText(chart);
  return text;
}

std::string containerText(const Json& document) {
  std::string text = attributesText(document["attributes"], "  ");
  for (const auto& slice : document["slices"]) {
    text += "  slice at time " + valueText(slice["time"]) + "\n";
    text += attributesText(slice["attributes"], "    ");
    for (const auto& grid : slice["grids"]) text += gridText(grid);
  }
  return document["slices"].empty() ? text + "  no slices\n" : text;
}

std::string sbetText(const Json& document) {
  const auto extent = [&](const char* key) {
    return valueText(document[key][0]) + " to " + valueText(document[key][1]);
  };
  return fmt::format(
      "  records    {}\n  time       {} s of week\n  latitude   {} degrees\n"
      "  longitude  {} degrees\n  height     {} m\n",
      document["records"].dump(), extent("time_s"), extent("latitude_deg"), extent("longitude_deg"),
      extent("height_m"));
}

}  // namespace

std::string listingOf(const Json& document) {
  const std::string head = textOf(document["path"]) + ": " + textOf(document["kind"]) + "\n";
  if (document.contains("error")) return head + "  UNREADABLE\n";
  return head + (document["kind"] == "sbet" ? sbetText(document) : containerText(document));
}

}  // namespace Velorn::Flights
