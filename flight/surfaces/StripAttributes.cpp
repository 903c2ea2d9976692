// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/StripAttributes.h"

#include <cmath>

#include "flight/surfaces/CellTable.h"

namespace Velorn::Flights {
namespace {

bool isOurs(const Strandel::Field& field) {
  return field.attributes().text(originName) == originText;
}

/// A field of the world chart that was not computed here; empty when there is none.
Strandel::FieldPtr givenField(const GridFile& strip, const char* name) {
  const auto field = strip.worldField(name);
  return field && !isOurs(*field) ? field : nullptr;
}

}  // namespace

void checkStrip(const GridFile& strip) {
  const std::string georeference = "`velorn georeference STRIP --trajectory FILE --in-place";
  strip.week();
  strip.world<double>("GPSTime");
  strip.world<double>("Amplitude");
  for (const char* name : {"ReturnNumber", "NumberOfReturns", "Classification"}) {
    strip.world<std::uint8_t>(name);
  }
  strip.scanner<point>("Positions", georeference + " --inverse` computes it, where zeros lie");
  strip.scanner<vector>("Waveforms.DirectionDelta", georeference + "` writes it");
}

std::vector<Cloud> cloudsOf(const GridFile& strip, std::span<const point> positions) {
  std::vector<Cloud> clouds(positions.size(), Cloud::last);
  const auto returns = strip.world<std::uint8_t>("ReturnNumber").whole();
  strip.world<std::uint8_t>("NumberOfReturns").forEachBlock([&](std::size_t first, auto numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      const auto number = (*returns)[first + i];
      if (number != 0 && number < numbers[i]) clouds[first + i] = Cloud::notLast;
    }
  });
  strip.world<double>("GPSTime").forEachBlock([&](std::size_t first, auto times) {
    for (std::size_t i = 0; i < times.size(); ++i) {
      const bool usable = std::isfinite(times[i]) && isOnEarth(positions[first + i]);
      if (!usable) clouds[first + i] = Cloud::leftOut;
    }
  });
  return clouds;
}

std::optional<std::vector<std::uint8_t>> givenClasses(const GridFile& strip) {
  if (givenField(strip, classesName)) return *strip.world<std::uint8_t>(classesName).whole();
  if (!strip.worldField(givenClassesName)) return std::nullopt;
  return *strip.world<std::uint8_t>(givenClassesName).whole();
}

}  // namespace Velorn::Flights
