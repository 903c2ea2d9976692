// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/StripsFromLas.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "flight/formats/LasFile.h"
#include "flight/strips/OrFail.h"
#include <velorn/Georeferencing.h>
#include <velorn/SolverParameters.h>

namespace Velorn::Flights {
namespace {

using Geomra::PhysicalSpace::isFinite, Geomra::PhysicalSpace::point;

constexpr std::uint8_t noise = 7;  // class of the LAS format

TimeReading timesOf(const LasFacts& facts, bool saysAdjusted) {
  try {
    return readingOf(facts.low, facts.high, saysAdjusted);
  } catch (const std::invalid_argument& fault) {
    throw Error(facts.file.string() + ": " + fault.what());
  }
}

template <typename T>
std::vector<T> chosen(const std::vector<T>& all, const std::vector<std::uint64_t>& order) {
  std::vector<T> some;
  some.reserve(order.size());
  for (const std::uint64_t k : order) some.push_back(all[k]);
  return some;
}

}  // namespace

LasFacts lasFactsOf(const std::filesystem::path& file) {
  const LasFile las(file);
  LasFacts facts{file,
                 las.header().count,
                 std::numeric_limits<double>::infinity(),
                 -std::numeric_limits<double>::infinity(),
                 {},
                 las.epsg(),
                 las.crsText()};
  if (facts.points == 0) throw Error(file.string() + ": holds no points");
  if (!hasGpsTime(las.header().format)) {
    throw Error(
        fmt::format("{}: points of format {} have no GPS time, and without one nobody "
                    "knows where the sensor was",
                    file.string(), las.header().format));
  }
  std::uint64_t notFinite = 0;
  las.read([&](std::uint64_t, std::span<const LasPoint> points) {
    for (const LasPoint& one : points) {
      if (!std::isfinite(one.time)) ++notFinite;
      facts.low = std::min(facts.low, one.time);
      facts.high = std::max(facts.high, one.time);
    }
  });
  if (notFinite > 0) {
    throw Error(
        fmt::format("{}: the GPS time of {} points is no number", file.string(), notFinite));
  }
  if (facts.points > 1 && facts.low == facts.high) {
    throw Error(fmt::format("{}: all {} points have the time {}; every point needs its own",
                            file.string(), facts.points, facts.low));
  }
  facts.times = timesOf(facts, las.header().hasStandardTime);
  return facts;
}

LasColumns columnsOf(const LasFacts& facts, std::int64_t weekOfSeconds) {
  const LasFile las(facts.file);
  LasColumns columns;
  columns.places.reserve(facts.points);
  columns.times.reserve(facts.points);
  las.read([&](std::uint64_t, std::span<const LasPoint> points) {
    for (const LasPoint& one : points) {
      columns.places.push_back(one.place);
      columns.times.push_back(gpsTimeOf(one.time, facts.times.kind, weekOfSeconds));
      columns.intensity.push_back(one.intensity);
      columns.sourceId.push_back(one.sourceId);
      columns.returnNumber.push_back(one.returnNumber);
      columns.numberOfReturns.push_back(one.numberOfReturns);
      columns.classification.push_back(one.isWithheld ? noise : one.classification);
    }
  });
  return columns;
}

StripColumns stripOf(const LasColumns& columns, const StripPart& part,
                     const std::filesystem::path& source) {
  StripColumns strip;
  strip.week = part.week;
  strip.world = chosen(columns.places, part.order);
  strip.times.reserve(part.order.size());
  strip.amplitude.reserve(part.order.size());
  for (const std::uint64_t k : part.order) {
    strip.times.push_back(columns.times[k].seconds);
    strip.amplitude.push_back(columns.intensity[k]);
  }
  strip.returnNumber = chosen(columns.returnNumber, part.order);
  strip.numberOfReturns = chosen(columns.numberOfReturns, part.order);
  strip.classification = chosen(columns.classification, part.order);
  strip.pointSourceId = chosen(columns.sourceId, part.order);
  strip.sourceIndex = part.order;
  strip.sourceFile = std::filesystem::absolute(source).lexically_normal().string();
  return strip;
}

void addMeasurements(StripColumns& strip, const Velorn::Trajectory& trajectory) {
  Velorn::SolverParameters mounting({"strip"}, Velorn::InputParameter());
  orFail(mounting.setEmptySections(trajectory.getLeverarm(), trajectory.getMisalignment()));
  const auto week = static_cast<unsigned>(strip.week);
  strip.scanner.resize(strip.world.size());
  orFail(world2scanner(mounting, trajectory, strip.scanner, strip.times, week, 0, strip.world));
  Points again(strip.world.size());
  strip.directions.resize(strip.world.size());
  orFail(scanner2world(mounting, trajectory, strip.scanner, strip.times, week, 0, again,
                       strip.directions, 0.0, false));
  const auto bad =
      std::ranges::find_if_not(strip.scanner, [](const point& p) { return isFinite(p); });
  if (bad == strip.scanner.end()) return;
  const point& place = strip.world[static_cast<std::size_t>(bad - strip.scanner.begin())];
  throw Error(fmt::format("the point E {} N {} H {} has no scanner coordinates", place.x, place.y,
                          place.z));
}

}  // namespace Velorn::Flights
