// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/LasFromStrips.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <system_error>

#include <fmt/format.h>

#include "flight/exchange/SourceTimes.h"
#include "flight/formats/LasCopy.h"
#include "flight/formats/LasFile.h"
#include "flight/strips/AdjustedName.h"
#include "flight/strips/GridFile.h"
#include "platform/geomra/PhysicalSpace.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;

constexpr const char* notImported =
    "LAS files can be written only of strips that `velorn import` made";

bool isFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

fs::path sourceOf(const GridFile& strip, const fs::path& sourceFolder) {
  const auto recorded = strip.grid().attributes().text("SourceFile");
  if (!recorded || recorded->empty()) {
    strip.refuse("", fmt::format("names no SourceFile; {}", notImported));
  }
  fs::path there = *recorded, elsewhere = sourceFolder / there.filename();
  if (!sourceFolder.empty() && isFile(elsewhere)) return elsewhere;
  if (isFile(there)) return there;
  strip.refuse("",
               sourceFolder.empty()
                   ? fmt::format("its points come from {}, which is missing; --source-folder names "
                                 "the folder where it lies now",
                                 there.string())
                   : fmt::format("its points come from {}, which is neither there nor in {}",
                                 there.string(), sourceFolder.string()));
}

LasStrip lasStripOf(const fs::path& container, const fs::path& sourceFolder,
                    const fs::path& output) {
  const GridFile strip(container);
  const fs::path source = sourceOf(strip, sourceFolder);
  strip.world<std::uint64_t>("SourceIndex", notImported);
  const auto count = LasFile(source).header().count;
  if (count < strip.size()) {
    strip.refuse("", fmt::format("has {} points, but {}, from which they come, only {}; it was "
                                 "changed since the import",
                                 strip.size(), source.string(), count));
  }
  return {container, source, output / (strippedStem(container) + ".las"), strip.size()};
}

void refuseCollisions(const std::vector<LasStrip>& strips) {
  std::map<fs::path, fs::path> targets;
  for (const LasStrip& strip : strips) {
    const auto [same, isNew] = targets.emplace(strip.target, strip.container);
    if (isNew) continue;
    throw Error(fmt::format("{} and {} would both become {}", same->second.string(),
                            strip.container.string(), strip.target.string()));
  }
}

void refuseSources(const std::vector<LasStrip>& strips) {
  std::error_code ignored;
  for (const LasStrip& strip : strips) {
    if (!fs::exists(strip.target, ignored)) continue;
    for (const LasStrip& other : strips) {
      if (!fs::equivalent(strip.target, other.source, ignored)) continue;
      throw Error(
          fmt::format("{}: points of {} come from this file; name another folder as --output",
                      strip.target.string(), other.container.string()));
    }
  }
}

/// The places of the numbers in the order of their values.
std::vector<std::uint32_t> orderOf(const std::vector<std::uint64_t>& numbers) {
  std::vector<std::uint32_t> order(numbers.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(),
            [&](std::uint32_t a, std::uint32_t b) { return numbers[a] < numbers[b]; });
  return order;
}

template <typename T>
std::vector<T> inOrder(const std::vector<T>& values, const std::vector<std::uint32_t>& order) {
  std::vector<T> ordered;
  ordered.reserve(order.size());
  for (const std::uint32_t place : order) ordered.push_back(values[place]);
  return ordered;
}

void checkNumbers(const GridFile& strip, const fs::path& source,
                  const std::vector<std::uint64_t>& ascending) {
  const auto twice = std::adjacent_find(ascending.begin(), ascending.end());
  if (twice != ascending.end()) {
    strip.refuse("SourceIndex", fmt::format("two points come from point {} of {}, counted from 0",
                                            *twice, source.string()));
  }
  const auto count = LasFile(source).header().count;
  if (ascending.empty() || ascending.back() < count) return;
  strip.refuse("SourceIndex",
               fmt::format("names point {}, counted from 0, of {}, which has {}; it was changed "
                           "since the import",
                           ascending.back(), source.string(), count));
}

/// A source of the same size may have been sorted since; its points would get coordinates of
/// others.
void checkTimes(const GridFile& strip, const fs::path& source,
                const std::vector<std::uint64_t>& numbers, const std::vector<double>& times) {
  const auto other = firstOtherTime(LasFile(source), numbers, times);
  if (!other) return;
  strip.refuse("GPSTime",
               fmt::format("point {}, counted from 0, of {} has another time than here; it was "
                           "changed since the import",
                           *other, source.string()));
}

}  // namespace

std::vector<LasStrip> lasStripsOf(const std::vector<fs::path>& containers,
                                  const fs::path& sourceFolder, const fs::path& output) {
  std::vector<LasStrip> strips;
  strips.reserve(containers.size());
  for (const auto& container : containers) {
    strips.push_back(lasStripOf(container, sourceFolder, output));
  }
  refuseCollisions(strips);
  refuseSources(strips);
  return strips;
}

void writeLas(const LasStrip& strip) {
  const GridFile file(strip.container);
  std::vector<std::uint64_t> numbers;
  std::vector<std::uint32_t> order;
  {
    const auto inTime = file.world<std::uint64_t>("SourceIndex", notImported).whole();
    order = orderOf(*inTime);
    numbers = inOrder(*inTime, order);
  }
  checkNumbers(file, strip.source, numbers);
  checkTimes(file, strip.source, numbers, inOrder(*file.world<double>("GPSTime").whole(), order));
  const auto places = inOrder(*file.world<point>("Positions").whole(), order);
  try {
    copyLas(strip.source, strip.target, numbers, places);
  } catch (const Error& failure) {
    throw Error(fmt::format("{}: {}", strip.container.string(), failure.what()), failure.kind());
  }
}

}  // namespace Velorn::Flights
