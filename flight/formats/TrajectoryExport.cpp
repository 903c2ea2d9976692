// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/TrajectoryExport.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "flight/formats/OutputFile.h"
#include "platform/geomra/Degree.h"
#include "platform/tessaly/TransverseMercator.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

using Geomra::degreesPerRadian;

using std::numbers::pi;
using Bytes = std::string;
using Zone = Tessaly::TransverseMercatorProjectionParameter;

double withinATurn(double heading) {
  return std::abs(heading) <= 2 * pi ? heading : std::remainder(heading, 2 * pi);
}

void checkFinite(const std::filesystem::path& file, const std::vector<SbetRecord>& records) {
  if (records.empty()) throw Error(file.string() + ": there is no record to write");
  for (std::size_t i = 0; i < records.size(); ++i) {
    const auto& r = records[i];
    for (const double value :
         {r.time, r.latitude, r.longitude, r.height, r.roll, r.pitch, r.heading}) {
      if (!std::isfinite(value)) {
        throw Error(fmt::format("{}: record {} of {} holds {} and is not written", file.string(),
                                i + 1, records.size(), value));
      }
    }
  }
}

/// Writes block by block what `append` makes of each record.
void writeRecords(const std::filesystem::path& file, const std::vector<SbetRecord>& records,
                  Bytes block, const std::function<void(const SbetRecord&, Bytes&)>& append) {
  checkFinite(file, records);
  OutputFile out(file);
  const auto writeBlock = [&] {
    out.write(block);
    block.clear();
  };
  for (const auto& record : records) {
    append(record, block);
    if (block.size() >= outputBlockBytes) writeBlock();
  }
  writeBlock();
  out.finish();
}

void appendLittleEndian(double value, Bytes& bytes) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (unsigned i = 0; i < 8; ++i) bytes += static_cast<char>(bits >> (8 * i) & 0xFFU);
}

void appendSbet(const SbetRecord& r, Bytes& bytes) {
  const std::array<double, 17> values{
      r.time, r.latitude, r.longitude, r.height, 0.0,
      0.0,    0.0,        r.roll,      r.pitch,  withinATurn(r.heading)};
  for (const double value : values) appendLittleEndian(value, bytes);
}

void appendLine(const SbetRecord& r, const Zone& zone, Bytes& text) {
  const auto projected =
      Tessaly::transverseMercatorProjection({r.longitude, r.latitude, r.height}, zone, false);
  fmt::format_to(std::back_inserter(text), "{},{},{},{},{},{},{},{},{}\n", r.time,
                 r.latitude * degreesPerRadian, r.longitude * degreesPerRadian, r.height,
                 r.roll * degreesPerRadian, r.pitch * degreesPerRadian,
                 withinATurn(r.heading) * degreesPerRadian, projected.x, projected.y);
}

}  // namespace

void writeSbet(const std::filesystem::path& file, const std::vector<SbetRecord>& records) {
  writeRecords(file, records, {}, appendSbet);
}

void writeTextTrajectory(const std::filesystem::path& file, const std::vector<SbetRecord>& records,
                         unsigned epsg) {
  Zone zone;
  try {
    zone = Zone::UTMfromEPSG(epsg);
  } catch (const std::invalid_argument& fault) {
    throw Error(file.string() + ": " + fault.what());
  }
  writeRecords(file, records,
               "time[s],latitude[deg],longitude[deg],height[m],roll[deg],pitch[deg],heading[deg],"
               "easting[m],northing[m]\n",
               [&](const SbetRecord& record, Bytes& text) { appendLine(record, zone, text); });
}

}  // namespace Velorn::Flights
