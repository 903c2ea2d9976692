// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasFile.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <variant>

#include <fmt/format.h>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t blockRecords = 16384;

// Coordinate systems are some thousand bytes long; what is longer is none.
constexpr std::uint64_t longestContent = 1U << 20U;

constexpr const char* projection = "LASF_Projection";
constexpr unsigned wktRecord = 2112, geoKeys = 34735, geoTexts = 34737;

bool isOfCompression(const LasVlr& record) {
  return record.userId == "laszip encoded" && record.recordId == 22204;
}

/// What to call a file with the points of a compressed one.
fs::path nameOfUncompressed(fs::path path) {
  if (path.extension() == ".las") return path.replace_filename(path.stem().string() + "_plain.las");
  return path.replace_extension(".las");
}

}  // namespace

LasFile::LasFile(fs::path path) : path_(std::move(path)) {
  readHeader();
  if (header_.isCompressed) refuseCompressed();
  std::ifstream file = open(0);
  try {
    vlrs_ = lasVlrs(file, header_, size());
  } catch (const std::runtime_error& fault) {
    refuse(std::string(fault.what()) + "; it is damaged, copy it again from where it came");
  }
  if (std::any_of(vlrs_.begin(), vlrs_.end(), isOfCompression)) refuseCompressed();
  crs_ = findCrs();
}

void LasFile::refuse(const std::string& fault) const {
  throw Error(path_.string() + ": " + fault);
}

void LasFile::refuseCompressed() const {
  refuse(
      fmt::format("is compressed (LAZ), only LAS is read: convert it by \"laszip -i {} -o {}\", or "
                  "name such a command with --decompress",
                  path_.string(), nameOfUncompressed(path_).string()));
}

std::uint64_t LasFile::size() const {
  std::error_code error;
  const auto status = fs::status(path_, error);
  if (!fs::exists(status)) refuse("no such file");
  if (!fs::is_regular_file(status)) refuse("is not a file with points");
  const auto bytes = fs::file_size(path_, error);
  if (error) refuse(error.message());
  return bytes;
}

std::ifstream LasFile::open(std::uint64_t position) const {
  std::ifstream stream(path_, std::ios::binary);
  if (!stream.seekg(static_cast<std::streamoff>(position))) refuse("cannot be opened for reading");
  return stream;
}

void LasFile::readHeader() {
  const std::uint64_t bytes = size();
  if (bytes == 0) refuse("is empty");
  std::string head(std::min<std::uint64_t>(bytes, longestLasHeader), '\0');
  if (!open(0).read(head.data(), static_cast<std::streamsize>(head.size()))) {
    refuse("cannot be read");
  }
  auto read = lasHeaderIn(head, bytes);
  if (const auto* const fault = std::get_if<std::string>(&read)) refuse(*fault);
  header_ = std::get<LasHeader>(std::move(read));
}

std::string LasFile::contentOf(const LasVlr& record) const {
  if (record.length > longestContent) return {};
  std::string bytes(record.length, '\0');
  if (!open(record.position).read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
    refuse("cannot be read");
  }
  return bytes;
}

/// Content of the last such record: the one behind the points replaces the one before them.
std::string LasFile::content(const char* userId, unsigned recordId) const {
  const auto found = std::find_if(vlrs_.rbegin(), vlrs_.rend(), [&](const LasVlr& record) {
    return record.userId == userId && record.recordId == recordId;
  });
  return found == vlrs_.rend() ? std::string() : contentOf(*found);
}

LasCrs LasFile::findCrs() const {
  const LasCrs wkt = crsOfWkt(content(projection, wktRecord));
  const LasCrs keys = crsOfGeoKeys(content(projection, geoKeys), content(projection, geoTexts));
  const LasCrs& first = header_.hasWkt ? wkt : keys;
  const LasCrs& second = header_.hasWkt ? keys : wkt;
  if (first.epsg || (!second.epsg && !first.text.empty())) return first;
  return second;
}

void LasFile::readBytes(const TakeBytes& take) const {
  if (header_.count == 0) return;
  std::ifstream file = open(header_.pointsStart);
  std::vector<char> block(std::min(blockRecords, header_.count) * header_.recordLength);
  for (std::uint64_t first = 0; first < header_.count; first += blockRecords) {
    const std::uint64_t count = std::min(blockRecords, header_.count - first);
    if (!file.read(block.data(), static_cast<std::streamsize>(count * header_.recordLength))) {
      refuse(fmt::format("points {} to {} of {} cannot be read", first + 1, first + count,
                         header_.count));
    }
    take(first, count, block.data());
  }
}

void LasFile::read(const Take& take) const {
  std::vector<LasPoint> points;
  readBytes([&](std::uint64_t first, std::uint64_t count, const char* records) {
    points.clear();
    for (std::uint64_t i = 0; i < count; ++i) {
      points.push_back(lasPointIn(records + i * header_.recordLength, header_));
    }
    take(first, points);
  });
}

}  // namespace Velorn::Flights
