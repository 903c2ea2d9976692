// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/CorrespondenceTable.h"

#include <array>
#include <cmath>
#include <iterator>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "flight/formats/LasOutput.h"
#include "flight/formats/OutputFile.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

/// A value of a row that both kinds of files have, LAS in extra bytes.
struct Column {
  const char* name;
  const char* unit;  ///< empty: none
  const char* description;
  LasNumber type;
  double (*value)(const CorrespondenceRow& row);
};

constexpr LasNumber small = LasNumber::uint16, real = LasNumber::float32;

constexpr std::array columns{
    Column{"strip_i", "", "file id of the first point", small,
           [](const CorrespondenceRow& row) -> double { return row.stripI; }},
    Column{"strip_j", "", "file id of the second point", small,
           [](const CorrespondenceRow& row) -> double { return row.stripJ; }},
    Column{"patch", "", "id of the control, -1: none", LasNumber::int32,
           [](const CorrespondenceRow& row) { return row.patch ? double(*row.patch) : -1.0; }},
    Column{"before", "m", "n*(Q-P) as searched", real,
           [](const CorrespondenceRow& row) { return row.before; }},
    Column{"after", "m", "n*(Q-P) as adjusted", real,
           [](const CorrespondenceRow& row) { return row.after; }},
    Column{"normal_x", "", "unit normal n, east", real,
           [](const CorrespondenceRow& row) { return row.normal.x; }},
    Column{"normal_y", "", "unit normal n, north", real,
           [](const CorrespondenceRow& row) { return row.normal.y; }},
    Column{"normal_z", "", "unit normal n, up", real,
           [](const CorrespondenceRow& row) { return row.normal.z; }},
    Column{"angle", "deg", "between the normals", real,
           [](const CorrespondenceRow& row) { return row.angle; }},
    Column{"roughness_i", "m", "about the first point", real,
           [](const CorrespondenceRow& row) { return row.roughnessI; }},
    Column{"roughness_j", "m", "about the second point", real,
           [](const CorrespondenceRow& row) { return row.roughnessJ; }},
};

/// Satellite seconds less 1e9.
double standardTime(std::uint32_t week, double time) {
  return 604800.0 * week + time - 1e9;
}

class LasTable final : public CorrespondenceTable {
 public:
  LasTable(const std::filesystem::path& target, unsigned epsg) : file_(target, epsg, extras()) {}

  void add(std::span<const CorrespondenceRow> rows) override {
    std::vector<double> values;
    for (const CorrespondenceRow& row : rows) {
      const auto toJ = row.placeJ - row.placeI;
      values = {static_cast<double>(row.fate), standardTime(row.weekJ, row.timeJ), toJ.x, toJ.y,
                toJ.z};
      for (const Column& column : columns) values.push_back(column.value(row));
      file_.add({row.placeI, standardTime(row.weekI, row.timeI), row.code,
                 static_cast<std::uint16_t>(row.stripI)},
                values);
    }
  }
  void finish() override { file_.finish(); }

 private:
  static std::vector<LasExtra> extras() {
    std::vector<LasExtra> all{{"fate", "0: kept, 1 to 7: left out", LasNumber::uint8},
                              {"time_j", "[s] of the second point", LasNumber::float64},
                              {"to_j_x", "[m] from first to second, east", real},
                              {"to_j_y", "[m] from first to second, north", real},
                              {"to_j_z", "[m] from first to second, up", real}};
    for (const Column& column : columns) {
      const std::string unit = *column.unit ? fmt::format("[{}] ", column.unit) : std::string();
      all.push_back({column.name, unit + column.description, column.type});
    }
    return all;
  }

  LasOutput file_;
};

class CsvTable final : public CorrespondenceTable {
 public:
  explicit CsvTable(const std::filesystem::path& target) : file_(target) {
    std::string head =
        "fate,class,week_i,time_i[s],x_i[m],y_i[m],z_i[m],week_j,time_j[s],x_j[m],y_j[m],z_j[m]";
    for (const Column& column : columns) {
      head += fmt::format(",{}", column.name);
      if (*column.unit) head += fmt::format("[{}]", column.unit);
    }
    file_.write(head + "\n");
  }

  void add(std::span<const CorrespondenceRow> rows) override {
    std::string text;
    for (const CorrespondenceRow& row : rows) {
      text += nameOf(row.fate);
      append(row.code, text);
      append(row.weekI, row.timeI, row.placeI, text);
      append(row.weekJ, row.timeJ, row.placeJ, text);
      for (const Column& column : columns) append(column.value(row), text);
      text += '\n';
    }
    file_.write(text);
  }
  void finish() override { file_.finish(); }

 private:
  static void append(double value, std::string& text) {
    text += ',';
    if (std::isfinite(value)) fmt::format_to(std::back_inserter(text), "{}", value);
  }
  static void append(std::uint32_t week, double time, const CorrespondenceRow::point& place,
                     std::string& text) {
    append(std::isfinite(time) ? week : CorrespondenceRow::unknown, text);
    for (const double value : {time, place.x, place.y, place.z}) append(value, text);
  }

  OutputFile file_;
};

}  // namespace

const char* nameOf(Fate fate) {
  constexpr std::array<const char*, fateCount> names{"kept",     "too_far",   "taken",   "angle",
                                                     "no_plane", "roughness", "outlier", "thinned"};
  return names.at(static_cast<std::size_t>(fate));
}

std::unique_ptr<CorrespondenceTable> correspondenceTable(const std::filesystem::path& target,
                                                         unsigned epsg) {
  const auto ending = target.extension();
  if (ending == ".las") return std::make_unique<LasTable>(target, epsg);
  if (ending == ".csv") return std::make_unique<CsvTable>(target);
  throw Error(target.string() + ": the name has to end in .las or .csv", Error::BadSettings);
}

}  // namespace Velorn::Flights
