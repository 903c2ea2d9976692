// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasVlr.h"

#include <array>
#include <istream>
#include <stdexcept>

#include <fmt/format.h>

#include "flight/formats/LittleEndian.h"

namespace Velorn::Flights {
namespace {

/// Where records stand and what they are called.
struct VlrPlace {
  const char* kind;
  std::uint64_t start, end;
  std::uint64_t count;
  std::size_t headSize;
};

LasVlr vlrIn(const char* head, const VlrPlace& place, std::uint64_t position) {
  const bool isExtended = place.headSize == extendedRecordHead;
  const std::uint64_t length =
      isExtended ? numberAt<std::uint64_t>(head + 20) : numberAt<std::uint16_t>(head + 20);
  return {textAt(head + 2, 16), numberAt<std::uint16_t>(head + 18), position + place.headSize,
          length};
}

void appendRecords(std::istream& file, const VlrPlace& place, std::vector<LasVlr>& records) {
  std::array<char, extendedRecordHead> head{};
  std::uint64_t position = place.start;
  for (std::uint64_t i = 0; i < place.count; ++i) {
    const auto refuse = [&](const std::string& fault) {
      throw std::runtime_error(
          fmt::format("{} {} of {}: {}", place.kind, i + 1, place.count, fault));
    };
    if (place.end - position < place.headSize) refuse("there is no place left for it");
    file.seekg(static_cast<std::streamoff>(position));
    if (!file.read(head.data(), static_cast<std::streamsize>(place.headSize))) {
      refuse("cannot be read");
    }
    const LasVlr record = vlrIn(head.data(), place, position);
    if (record.length > place.end - record.position) {
      refuse(fmt::format("has {} bytes by its own account, where there are {}", record.length,
                         place.end - record.position));
    }
    position = record.position + record.length;
    records.push_back(record);
  }
}

}  // namespace

std::vector<LasVlr> lasVlrs(std::istream& file, const LasHeader& header, std::uint64_t fileSize) {
  std::vector<LasVlr> records;
  appendRecords(file,
                {"variable length record", header.headerSize, header.pointsStart, header.vlrCount,
                 recordHead},
                records);
  if (header.evlrCount != 0) {
    appendRecords(file,
                  {"extended variable length record", header.evlrStart, fileSize, header.evlrCount,
                   extendedRecordHead},
                  records);
  }
  return records;
}

}  // namespace Velorn::Flights
