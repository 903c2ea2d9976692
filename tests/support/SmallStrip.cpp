// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/SmallStrip.h"

#include <random>

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace Strandel;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;

namespace {

template <typename T>
std::vector<T> randomValues(std::size_t count, std::mt19937_64& random) {
  std::vector<T> values(count);
  std::uniform_real_distribution<double> metre(-1e6, 1e6);
  for (auto& value : values) {
    if constexpr (sizeof(T) == 3 * sizeof(double)) {
      value = {metre(random), metre(random), metre(random)};
    } else if constexpr (std::is_floating_point_v<T>) {
      value = metre(random);
    } else {
      value = static_cast<T>(random());
    }
  }
  return values;
}

template <typename T>
FieldPtr fill(Chart& chart, const std::string& name, std::size_t points, std::mt19937_64& random) {
  auto field = chart.makeField(name, valueTypeOf<T>());
  field->template setValues<T>({0}, randomValues<T>(points, random));
  field->template setValues<T>({1}, randomValues<T>(points / 2, random));
  return field;
}

std::string textOf(const Attributes& attributes) {
  struct Printer {
    std::string operator()(std::int64_t value) const { return fmt::format("{}", value); }
    std::string operator()(double value) const { return fmt::format("{:a}", value); }
    std::string operator()(const std::string& value) const { return "'" + value + "'"; }
    std::string operator()(const point& p) const {
      return fmt::format("({:a},{:a},{:a})", p.x, p.y, p.z);
    }
  };
  std::string text;
  for (const auto& [name, value] : attributes.all()) {
    text += fmt::format(" {}={}", name, std::visit(Printer(), value));
  }
  return text + "\n";
}

template <typename T>
std::string hexOf(const Field& field, FragmentId fragment, std::string& fault) {
  const auto read = field.values<T>(fragment);
  if (!read) {
    if (fault.empty()) fault = read.error;
    return read.error + "\n";
  }
  std::string text = fmt::format("{} values ", read.values->size());
  const auto* bytes = reinterpret_cast<const unsigned char*>(read.values->data());
  constexpr const char* digits = "0123456789abcdef";
  for (std::size_t i = 0; i < read.values->size() * sizeof(T); ++i) {
    text += digits[bytes[i] >> 4U];
    text += digits[bytes[i] & 15U];
  }
  return text + "\n";
}

template <typename... T>
std::string valuesOfAny(const Field& field, FragmentId fragment, std::string& fault) {
  std::string text;
  const auto take = [&](ValueType type, auto hex) {
    if (field.valueType() == type) text = hex(field, fragment, fault);
  };
  (take(valueTypeOf<T>(), hexOf<T>), ...);
  return text;
}

std::string valuesOf(const Field& field, FragmentId fragment, std::string& fault) {
  if (!field.hasChunk(fragment)) return "absent\n";
  return valuesOfAny<double, point, vector, std::uint8_t, std::uint16_t, std::uint32_t,
                     std::uint64_t, std::int8_t, std::int16_t, std::int32_t, std::int64_t>(
      field, fragment, fault);
}

std::string fieldText(const Field& field, std::string& fault) {
  std::string text = std::string(infoOf(field.valueType()).name) + textOf(field.attributes());
  for (const auto fragment : field.fragments()) {
    text += fmt::format("      {}: {}", fragment.number, valuesOf(field, fragment, fault));
  }
  const auto read = field.range();
  if (fault.empty()) fault = read.error;
  if (read.range) {
    text += fmt::format("      range {:a} to {:a}\n", fmt::join(read.range->minimum, ","),
                        fmt::join(read.range->maximum, ","));
  }
  return text;
}

}  // namespace

Bundle smallStrip(std::size_t points, unsigned seed) {
  std::mt19937_64 random(seed);
  Bundle bundle;
  bundle.attributes().set("Comment", std::string("Überflug 3"));
  const auto grid = bundle.makeSlice(0.0)->makeGrid("strip");
  grid->attributes().set("WeekNumber", std::int64_t{2318});
  grid->makeWaveforms()->attributes().set("Scanner Group Velocity", std::int64_t{299702547});
  grid->makeWaveforms()->attributes().set("WaveformSampleInterval", std::int64_t{1});
  const auto world = grid->makeChart(worldChartName);
  world->attributes().set("LeverArm", point{0.12, -0.08, 0.45});
  world->attributes().set("Scale", 0.9996);
  fill<point>(*world, "Positions", points, random)->attributes().set("Unit", std::string("m"));
  fill<vector>(*world, "NormalVector", points, random);
  const auto times = fill<double>(*world, "GPSTime", points, random);
  fill<std::uint8_t>(*world, "ReturnNumber", points, random);
  fill<std::uint16_t>(*world, "PointSourceID", points, random);
  fill<std::uint32_t>(*world, "U32", points, random);
  fill<std::uint64_t>(*world, "U64", points, random);
  fill<std::int8_t>(*world, "I8", points, random);
  fill<std::int16_t>(*world, "Amplitude", points, random);
  fill<std::int32_t>(*world, "I32", points, random);
  fill<std::int64_t>(*world, "I64", points, random);
  const auto scanner = grid->makeChart(scannerChartName);
  fill<point>(*scanner, "Positions", points, random)
      ->attributes()
      .set("ScannerCoordsModified", std::int64_t{1});
  scanner->shareField(times);
  fill<vector>(*scanner, "Waveforms.DirectionDelta", points, random);
  return bundle;
}

std::string contentOf(const Bundle& bundle, std::string& fault) {
  std::string text = "bundle" + textOf(bundle.attributes());
  for (const auto& slice : bundle.slices()) {
    text += fmt::format("slice {}{}", slice->time(), textOf(slice->attributes()));
    for (const auto& [gridName, grid] : slice->grids()) {
      text += " grid " + gridName + textOf(grid->attributes());
      if (grid->waveforms()) text += "  waveforms" + textOf(grid->waveforms()->attributes());
      for (const auto& [chartName, chart] : grid->charts()) {
        text += "  chart " + chartName + textOf(chart->attributes());
        for (const auto& [name, field] : chart->fields())
          text += "   " + name + " " + fieldText(*field, fault);
      }
    }
  }
  return text;
}

std::string intactContentOf(const Bundle& bundle) {
  std::string fault;
  std::string text = contentOf(bundle, fault);
  EXPECT_EQ(fault, "");
  return text;
}
