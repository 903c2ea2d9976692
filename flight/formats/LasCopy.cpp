// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasCopy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <system_error>

#include <fmt/format.h>

#include "flight/formats/LasFile.h"
#include "flight/formats/LasGrid.h"
#include "flight/formats/LasOrigin.h"
#include "flight/formats/LittleEndian.h"
#include "flight/formats/OutputFile.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;
using Grids = std::array<LasGrid, 3>;

/// What the header tells of the points that were written.
struct Written {
  std::uint64_t count = 0;
  std::array<std::uint64_t, 16> byReturn{};
  std::array<std::int32_t, 3> lowest{}, highest{};

  void add(const std::array<std::int32_t, 3>& numbers, std::uint8_t returnNumber) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      lowest[axis] = count == 0 ? numbers[axis] : std::min(lowest[axis], numbers[axis]);
      highest[axis] = count == 0 ? numbers[axis] : std::max(highest[axis], numbers[axis]);
    }
    ++byReturn[returnNumber & 15U];
    ++count;
  }
};

std::array<double, 3> axesOf(const point& place) {
  return {place.x, place.y, place.z};
}

void checkNumbers(const LasFile& source, std::span<const std::uint64_t> numbers,
                  std::size_t places) {
  const auto refuse = [&](const std::string& fault) {
    throw Error(source.path().string() + ": " + fault);
  };
  if (numbers.size() != places) {
    refuse(fmt::format("{} points have {} new coordinates", numbers.size(), places));
  }
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    if (numbers[i - 1] >= numbers[i]) {
      refuse(fmt::format("points have to be told in ascending order; {} comes after {}", numbers[i],
                         numbers[i - 1]));
    }
  }
  if (!numbers.empty() && numbers.back() >= source.header().count) {
    refuse(
        fmt::format("holds {} points, none with number {}, counted from 0; is it the file that "
                    "was imported?",
                    source.header().count, numbers.back()));
  }
}

/// The number of a point that has the coordinate, counted from 0.
std::uint64_t numberWith(double coordinate, std::size_t axis,
                         std::span<const std::uint64_t> numbers, std::span<const point> places) {
  const auto found = std::find_if(places.begin(), places.end(), [&](const point& place) {
    return axesOf(place)[axis] == coordinate;
  });
  return numbers[static_cast<std::size_t>(found - places.begin())];
}

void checkFinite(const LasFile& source, std::span<const std::uint64_t> numbers,
                 std::span<const point> places) {
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto [x, y, z] = places[i];
    if (std::isfinite(x) && std::isfinite(y) && std::isfinite(z)) continue;
    throw Error(
        fmt::format("{}: point {}, counted from 0: its new coordinates {}, {}, {} are "
                    "not finite",
                    source.path().string(), numbers[i], x, y, z));
  }
}

LasGrid gridOfAxis(const LasFile& source, std::size_t axis, std::span<const std::uint64_t> numbers,
                   std::span<const point> places) {
  const LasGrid given{source.header().scale[axis], source.header().offset[axis]};
  if (places.empty()) return given;
  const auto [lowest, highest] = std::minmax_element(
      places.begin(), places.end(),
      [&](const point& a, const point& b) { return axesOf(a)[axis] < axesOf(b)[axis]; });
  const double low = axesOf(*lowest)[axis], high = axesOf(*highest)[axis];
  if (const auto grid = gridFor(low, high, given)) return *grid;
  const double farther = given.offset - low > high - given.offset ? low : high;
  throw Error(fmt::format(
      "{}: point {}, counted from 0: its new {} = {} does not fit into 32 bits at the scale {} of "
      "the file; the points reach from {} to {}",
      source.path().string(), numberWith(farther, axis, numbers, places), "xyz"[axis], farther,
      given.scale, low, high));
}

Grids gridsFor(const LasFile& source, std::span<const std::uint64_t> numbers,
               std::span<const point> places) {
  return {gridOfAxis(source, 0, numbers, places), gridOfAxis(source, 1, numbers, places),
          gridOfAxis(source, 2, numbers, places)};
}

void copyBytes(const LasFile& source, std::uint64_t position, std::uint64_t count,
               OutputFile& out) {
  if (count == 0) return;
  std::ifstream file = source.open(position);
  std::vector<char> block(std::min<std::uint64_t>(count, 1U << 20U));
  while (count > 0) {
    const std::uint64_t bytes = std::min<std::uint64_t>(count, block.size());
    if (!file.read(block.data(), static_cast<std::streamsize>(bytes))) {
      throw Error(source.path().string() + ": cannot be read to its end");
    }
    out.write(block.data(), bytes);
    count -= bytes;
  }
}

/// Writes the chosen points with their places on the grids.
Written copyPoints(const LasFile& source, const Grids& grids,
                   std::span<const std::uint64_t> numbers, std::span<const point> places,
                   OutputFile& out) {
  const LasHeader& header = source.header();
  Written written;
  std::vector<char> block;
  std::size_t next = 0;
  source.readBytes([&](std::uint64_t first, std::uint64_t count, const char* records) {
    block.clear();
    for (; next < numbers.size() && numbers[next] < first + count; ++next) {
      const char* const record = records + (numbers[next] - first) * header.recordLength;
      const auto place = axesOf(places[next]);
      std::array<std::int32_t, 3> onGrid{};
      for (std::size_t axis = 0; axis < 3; ++axis) {
        onGrid[axis] = grids[axis].number(place[axis]).value();
      }
      block.insert(block.end(), record, record + header.recordLength);
      std::memcpy(block.data() + block.size() - header.recordLength, onGrid.data(), sizeof onGrid);
      written.add(onGrid, returnNumberIn(record, header.format));
    }
    out.write(block.data(), block.size());
  });
  return written;
}

void putCounts(char* head, const LasHeader& header, const Written& written) {
  // From 1.4 on the 32-bit counts are 0 for formats that came with it and for counts they cannot
  // hold.
  const bool isLegacy =
      header.format < 6 && written.count <= std::numeric_limits<std::uint32_t>::max();
  const auto legacy = [&](std::uint64_t count) {
    return static_cast<std::uint32_t>(isLegacy ? count : 0);
  };
  putNumber<std::uint32_t>(head + LasPlaces::legacyCount, legacy(written.count));
  for (std::size_t i = 0; i < legacyReturns; ++i) {
    putNumber<std::uint32_t>(head + LasPlaces::legacyCountByReturn + 4 * i,
                             legacy(written.byReturn[i + 1]));
  }
  if (header.minorVersion < 4) return;
  putNumber<std::uint64_t>(head + LasPlaces::count, written.count);
  for (std::size_t i = 0; i < header.countByReturn.size(); ++i) {
    putNumber<std::uint64_t>(head + LasPlaces::countByReturn + 8 * i, written.byReturn[i + 1]);
  }
}

void putBounds(char* head, const Grids& grids, const Written& written) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const auto bound = [&](std::int32_t number) {
      return written.count == 0 ? 0.0 : grids[axis].coordinate(number);
    };
    const auto [low, high] =
        std::minmax({bound(written.lowest[axis]), bound(written.highest[axis])});  // scale < 0
    putNumber<double>(head + LasPlaces::offset + 8 * axis, grids[axis].offset);
    putNumber<double>(head + LasPlaces::bounds + 16 * axis, high);
    putNumber<double>(head + LasPlaces::bounds + 16 * axis + 8, low);
  }
}

/// What stands behind the points moves when there are fewer of them.
void putStarts(char* head, const LasHeader& header, const Written& written, std::uint64_t size) {
  const auto moved = [&](std::uint64_t start) {
    if (start < header.pointsEnd() || start >= size) return start;
    return start - (header.count - written.count) * header.recordLength;
  };
  if (header.minorVersion >= 3) {
    putNumber<std::uint64_t>(head + LasPlaces::waveformStart, moved(header.waveformStart));
  }
  if (header.evlrCount != 0) {
    putNumber<std::uint64_t>(head + LasPlaces::evlrStart, moved(header.evlrStart));
  }
}

std::string newHeader(const LasFile& source, const Grids& grids, const Written& written,
                      std::uint64_t size) {
  const LasHeader& header = source.header();
  std::string head(std::min(header.headerSize, longestLasHeader), '\0');
  if (!source.open(0).read(head.data(), static_cast<std::streamsize>(head.size()))) {
    throw Error(source.path().string() + ": cannot be read");
  }
  putOrigin(head.data(), "MODIFICATION");
  putCounts(head.data(), header, written);
  putBounds(head.data(), grids, written);
  putStarts(head.data(), header, written, size);
  return head;
}

void refuseOneFile(const fs::path& source, const fs::path& target) {
  std::error_code ignored;
  if (!fs::equivalent(source, target, ignored)) return;
  throw Error(target.string() +
              ": is the file that the points come from; name another one to write to");
}

}  // namespace

void copyLas(const fs::path& source, const fs::path& target, std::span<const std::uint64_t> numbers,
             std::span<const point> places) {
  refuseOneFile(source, target);
  const LasFile file(source);
  checkNumbers(file, numbers, places.size());
  checkFinite(file, numbers, places);
  const Grids grids = gridsFor(file, numbers, places);
  const std::uint64_t end = file.header().pointsEnd(), size = file.size();
  if (size < end) throw Error(source.string() + ": became shorter while it was read");
  OutputFile out(target);
  copyBytes(file, 0, file.header().pointsStart, out);
  const Written written = copyPoints(file, grids, numbers, places, out);
  copyBytes(file, end, size - end, out);
  out.overwriteBegin(newHeader(file, grids, written, size));
  out.finish();
}

}  // namespace Velorn::Flights
