// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/ControlFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "flight/formats/DelimitedText.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

using Geomra::PhysicalSpace::vector;
using Words = std::vector<std::string_view>;

constexpr double largestRadius = 1000.0;  // [m]
constexpr double mostPoints = 1e7;        // some 500 MB
constexpr double largestHeight = 1e5;     // [m]

enum Place : std::size_t { Easting, Northing, Height, Nx, Ny, Nz, Radius, Name };
constexpr std::size_t placeCount = Name + 1;

struct Quantity {
  const char* name;
  std::array<std::string_view, 3> names;  // in small letters
};

constexpr std::array<Quantity, placeCount> quantities{{{"easting", {"e", "easting", "x"}},
                                                       {"northing", {"n", "northing", "y"}},
                                                       {"height", {"h", "height", "z"}},
                                                       {"nx", {"nx"}},
                                                       {"ny", {"ny"}},
                                                       {"nz", {"nz"}},
                                                       {"radius", {"radius"}},
                                                       {"name", {"id", "name"}}}};

using ColumnPlaces = std::array<std::optional<std::size_t>, placeCount>;

/// A column's name without quotes, without a unit in brackets, in small letters.
std::string plainName(std::string_view word) {
  word = word.substr(0, word.find_first_of("[("));
  std::string name;
  for (const char letter : word) {
    if (letter == '"' || letter == ' ') continue;
    name += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  }
  return name;
}

void checkComplete(const ColumnPlaces& places, const DelimitedText& text) {
  for (const Place place : {Easting, Northing, Height}) {
    if (places[place]) continue;
    text.refuse(
        fmt::format("no column is the {}; the columns of control are named as in "
                    "E,N,h,nx,ny,nz,radius,id",
                    quantities[place].name));
  }
  if (places[Nx].has_value() != places[Ny].has_value() ||
      places[Ny].has_value() != places[Nz].has_value()) {
    text.refuse("of a normal all of nx, ny and nz are needed");
  }
}

ColumnPlaces namedColumns(const Words& words, const DelimitedText& text) {
  ColumnPlaces places;
  for (std::size_t column = 0; column < words.size(); ++column) {
    const std::string name = plainName(words[column]);
    for (std::size_t i = 0; i < placeCount; ++i) {
      const auto& names = quantities[i].names;
      if (name.empty() || std::find(names.begin(), names.end(), name) == names.end()) continue;
      if (places[i]) text.refuse(fmt::format("two columns are the {}", quantities[i].name));
      places[i] = column;
    }
  }
  checkComplete(places, text);
  return places;
}

/// The columns of a file without a line of names, by the number of them.
ColumnPlaces usualColumns(std::size_t count, const DelimitedText& text) {
  if (count != 3 && count != 6 && count != 7) {
    text.refuse(
        fmt::format("{} columns without a line of names are not understood: E,N,h or "
                    "E,N,h,nx,ny,nz or E,N,h,nx,ny,nz,radius are; begin the file with a "
                    "line of names",
                    count));
  }
  ColumnPlaces places;
  for (std::size_t i = 0; i < count; ++i) places[i] = i;
  return places;
}

class ControlReader {
 public:
  ControlReader(const std::filesystem::path& file, double defaultRadius)
      : file_(file.string()), text_(file), defaultRadius_(defaultRadius) {}

  Control read() {
    Control control;
    if (text_.next()) {
      if (readColumns()) control.patches.push_back(patch(control));
      while (text_.next()) control.patches.push_back(patch(control));
    }
    if (control.patches.empty()) throw Error(file_ + ": holds no point of control");
    return control;
  }

 private:
  /// Learns the columns from the first line.
  /// @return true when that is a point already
  bool readColumns() {
    delimiter_ = delimiterOf(text_.line());
    const Words words = wordsOf(text_.line(), delimiter_);
    const bool named = !holdsANumber(text_.line());
    places_ = named ? namedColumns(words, text_) : usualColumns(words.size(), text_);
    exactly_ = named ? std::nullopt : std::optional(words.size());
    return !named;
  }

  ControlPatch patch(Control& control) {
    const Words words = wordsOf(text_.line(), delimiter_);
    if (exactly_ && words.size() != *exactly_) {
      text_.refuse(
          fmt::format("there are {} columns, in the first line {}", words.size(), *exactly_));
    }
    ControlPatch patch;
    patch.name = given(words, Name) ? std::string(words[*places_[Name]])
                                    : fmt::format("line {}", text_.number());
    patch.centre = {value(words, Easting), value(words, Northing), height(words)};
    patch.radius = given(words, Radius) ? radius(words) : defaultRadius_;
    const bool normal = given(words, Nx) || given(words, Ny) || given(words, Nz);
    patch.normal = normal ? upwardNormal(words) : vector{0, 0, 1};
    if (!normal) ++control.withoutNormal;
    return patch;
  }

  bool given(const Words& words, Place place) const {
    return places_[place] && *places_[place] < words.size() && !words[*places_[place]].empty();
  }

  double value(const Words& words, Place place) const {
    return text_.finiteNumber(words, *places_[place], quantities[place].name);
  }

  /// A number of the point in the first column shows here at the latest.
  double height(const Words& words) const {
    const double height = value(words, Height);
    if (std::abs(height) > largestHeight) {
      text_.refuse(
          fmt::format("the height is {} m; if the columns are in another order than E,N,h, "
                      "begin the file with a line of names",
                      height));
    }
    return height;
  }

  double radius(const Words& words) const {
    const double radius = value(words, Radius);
    if (!(radius >= 0.0 && radius <= largestRadius)) {
      text_.refuse(fmt::format("the radius is {} m, not between 0 and {}", radius, largestRadius));
    }
    return radius;
  }

  vector upwardNormal(const Words& words) const {
    const double x = value(words, Nx), y = value(words, Ny), z = value(words, Nz);
    const double length = std::hypot(x, y, z);
    if (!(length > 1e-9 && std::isfinite(length))) text_.refuse("the normal has no direction");
    const double factor = z < 0.0 ? -1.0 / length : 1.0 / length;
    return {factor * x, factor * y, factor * z};
  }

  std::string file_;
  DelimitedText text_;
  double defaultRadius_;
  char delimiter_ = ',';
  ColumnPlaces places_;
  std::optional<std::size_t> exactly_;
};

/// Two directions of length one across a normal of length one, and each other.
std::array<vector, 2> acrossNormal(const vector& normal) {
  const bool steep = std::abs(normal.x) < 0.7;
  const vector other = steep ? vector{1, 0, 0} : vector{0, 1, 0};
  vector along = other - dot(other, normal) * normal;
  along = (1.0 / std::sqrt(dot(along, along))) * along;
  const vector beside{normal.y * along.z - normal.z * along.y,
                      normal.z * along.x - normal.x * along.z,
                      normal.x * along.y - normal.y * along.x};
  return {along, beside};
}

void layPoints(const ControlPatch& patch, double spacing, GroundTruthColumns& columns) {
  const auto [along, beside] = acrossNormal(patch.normal);
  const double reach = patch.radius / spacing * (1.0 + 1e-12);  // in steps, the rim is on the patch
  const auto steps = static_cast<int>(reach);
  for (int i = -steps; i <= steps; ++i) {
    for (int j = -steps; j <= steps; ++j) {
      if (std::hypot(i, j) > reach) continue;
      columns.positions.push_back(patch.centre + (i * spacing) * along + (j * spacing) * beside);
      columns.normals.push_back(patch.normal);
      columns.classification.push_back(2);
    }
  }
}

}  // namespace

Control readControl(const std::filesystem::path& file, double defaultRadius) {
  if (!(defaultRadius >= 0.0 && defaultRadius <= largestRadius)) {
    throw Error(fmt::format("the radius of control patches is {} m, not between 0 and {}",
                            defaultRadius, largestRadius));
  }
  return ControlReader(file, defaultRadius).read();
}

GroundTruthColumns patchPoints(const std::vector<ControlPatch>& patches, double spacing) {
  if (!(spacing > 0.0) || !std::isfinite(spacing)) {
    throw Error(
        fmt::format("the spacing of points on control patches is {} m, not above zero", spacing));
  }
  GroundTruthColumns columns;
  double points = 0.0;
  for (const auto& patch : patches) {
    const double side = 2.0 * patch.radius / spacing + 1.0;
    points += side * side;
    if (!(points <= mostPoints)) {
      throw Error(
          fmt::format("with the control patch {} of {} m radius, points every {} m become "
                      "more than {:.0f}; take a wider spacing",
                      shown(patch.name), patch.radius, spacing, mostPoints));
    }
    layPoints(patch, spacing, columns);
  }
  return columns;
}

}  // namespace Velorn::Flights
