// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Inputs.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <system_error>

#include <fmt/format.h>

#include "flight/strips/GridFile.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
#include "flight/strips/TimeCover.h"
#include "flight/surfaces/StripAttributes.h"

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

/// In plan, and within `reach` of each other.
bool areNear(const Box& one, const Box& other, double reach) {
  for (std::size_t i = 0; i < 2; ++i) {
    if (one.low[i] > other.high[i] + reach || other.low[i] > one.high[i] + reach) return false;
  }
  return true;
}

bool isFinite(const Box& box) {
  const auto isNumber = [](double value) { return std::isfinite(value); };
  return std::ranges::all_of(box.low, isNumber) && std::ranges::all_of(box.high, isNumber);
}

/// @return nothing for a field without values
std::optional<Strandel::ValueRange> rangeOf(const Strandel::FieldPtr& field) {
  const auto read = field->range();
  orFail(read.error);
  return read.range;
}

/// Places that are no numbers are left out of the matching, but a point that was not measured has
/// nothing to be georeferenced from.
/// @return the bounds of the scanner coordinates
Box checkedScanner(const GridFile& file) {
  const auto range = rangeOf(file.grid().chart(Strandel::scannerChartName)->field("Positions"));
  const Box box{range->minimum, range->maximum};
  if (!isFinite(box)) file.refuse("", "a scanner coordinate is no number");
  return box;
}

std::string placeText(const Box& box) {
  return fmt::format("E {:.0f} to {:.0f}, N {:.0f} to {:.0f}", box.low[0], box.high[0], box.low[1],
                     box.high[1]);
}

bool haveSameBytes(const fs::path& one, const fs::path& other) {
  std::error_code fault;
  if (fs::file_size(one, fault) != fs::file_size(other, fault)) return false;
  std::ifstream first(one, std::ios::binary), second(other, std::ios::binary);
  std::vector<char> some(std::size_t{1} << 20U), same(some.size());
  while (first && second) {
    first.read(some.data(), static_cast<std::streamsize>(some.size()));
    second.read(same.data(), static_cast<std::streamsize>(same.size()));
    if (first.gcount() != second.gcount()) return false;
    if (!std::equal(some.begin(), some.begin() + first.gcount(), same.begin())) return false;
  }
  return first.eof() && second.eof();
}

/// By what is known without reading their points.
bool mayBeCopies(const StripFacts& one, const StripFacts& other) {
  return one.points == other.points && one.week == other.week && one.first == other.first &&
         one.last == other.last;
}

}  // namespace

void checkTimes(const StripFacts& strip, const Velorn::Trajectory& trajectory) {
  const auto ranges = trajectory.timeRanges();
  const auto week = ranges.find(strip.week);
  const TimeSpan own{strip.first, strip.last};
  const std::string measured =
      fmt::format("{}: measured from {}", strip.file.string(), timesText(own, strip.week));
  if (week == ranges.end()) {
    std::string weeks;
    for (const auto& [number, range] : ranges) weeks += fmt::format(" {}", number);
    throw Error(fmt::format("{}, but the trajectory has only the GPS weeks{}", measured, weeks));
  }
  const TimeSpan recorded{week->second.first, week->second.last};
  if (covers(recorded, own)) return;
  throw Error(fmt::format("{}, but the trajectory is from {}{}", measured,
                          timesText(recorded, strip.week), likelyCause(recorded, own)));
}

StripFacts factsOf(const fs::path& strip, std::uint32_t id) {
  const GridFile file(strip);
  if (file.size() == 0) file.refuse("", "holds no points");
  checkStrip(file);
  const Box scanner = checkedScanner(file);
  const auto places = rangeOf(file.worldField("Positions")).value(),
             times = rangeOf(file.worldField("GPSTime")).value();
  if (!std::isfinite(times.lowest()) || !std::isfinite(times.highest())) {
    file.refuse("", "a GPS time is no number");
  }
  return {id,
          strip,
          file.size(),
          file.week(),
          times.lowest(),
          times.highest(),
          {places.minimum, places.maximum},
          std::max(std::abs(scanner.low[1]), std::abs(scanner.high[1]))};
}

std::optional<Box> boxOfGroundTruth(const fs::path& groundTruth) {
  const GridFile file(groundTruth);
  file.world<Geomra::PhysicalSpace::vector>("NormalVector");
  const auto range = rangeOf(file.worldField("Positions"));
  if (!range) return {};
  return Box{range->minimum, range->maximum};
}

void checkTogether(const std::vector<StripFacts>& strips, const Velorn::Trajectory& trajectory,
                   const FlightSettings& settings) {
  for (const auto& strip : strips) checkTimes(strip, trajectory);
  if (settings.groundTruth.empty()) return;
  const auto box = boxOfGroundTruth(settings.groundTruth);
  if (!box || !isFinite(*box)) return;
  for (const auto& strip : strips) {
    if (!isFinite(strip.box) || areNear(strip.box, *box, settings.configuration().SearchRadius)) {
      return;
    }
  }
  throw Error(fmt::format(
      "{}: lies at {}, and no strip does ({}: {}): another zone, or easting and northing swapped?",
      settings.groundTruth, placeText(*box), strips.front().file.string(),
      placeText(strips.front().box)));
}

void requireFinishedImports(const std::vector<fs::path>& files) {
  for (const auto& file : files) {
    const auto mark = markOfUnfinishedImport(file.parent_path());
    std::error_code fault;
    if (!fs::exists(mark, fault)) continue;
    throw Error(
        fmt::format("{}: was imported into {}, where the import has not come to its end; "
                    "import again, or remove {} if these files are whole",
                    file.string(), file.parent_path().string(), mark.string()));
  }
}

void requireDifferentStrips(const std::vector<StripFacts>& strips) {
  for (std::size_t i = 0; i < strips.size(); ++i) {
    for (std::size_t j = i + 1; j < strips.size(); ++j) {
      if (!mayBeCopies(strips[i], strips[j])) continue;
      const auto &one = strips[i].file, &other = strips[j].file;
      std::error_code fault;
      if (!fs::equivalent(one, other, fault) && !haveSameBytes(one, other)) continue;
      throw Error(fmt::format("{} and {}: the same strip twice", one.string(), other.string()));
    }
  }
}

}  // namespace Velorn::Flights
