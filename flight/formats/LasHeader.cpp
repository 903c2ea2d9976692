// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasHeader.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

#include "flight/formats/LittleEndian.h"

namespace Velorn::Flights {
namespace {

constexpr std::array<std::size_t, 11> recordLengths{20, 28, 26, 34, 57, 63, 30, 36, 38, 59, 67};
constexpr std::array<std::size_t, 5> headerSizes{227, 227, 227, 235, 375};

// Formats 0 to 5 have one layout, so one that a later version brought is read all the same.
constexpr unsigned lastFormatOf(unsigned minorVersion) {
  return minorVersion < 4 ? 5 : 10;
}

/// Reads the header step by step; each step returns what is wrong, or nothing.
class HeaderReader {
 public:
  HeaderReader(std::span<const char> bytes, std::uint64_t fileSize)
      : bytes_(bytes), fileSize_(fileSize) {}

  std::string read() {
    using Step = std::string (HeaderReader::*)();
    for (const Step step :
         {&HeaderReader::readVersion, &HeaderReader::readTexts, &HeaderReader::readRecords,
          &HeaderReader::readCoordinates, &HeaderReader::readExtendedRecords,
          &HeaderReader::readCounts, &HeaderReader::checkPoints, &HeaderReader::checkWaveforms}) {
      if (std::string fault = (this->*step)(); !fault.empty()) return fault;
      if (header_.isCompressed) return {};
    }
    return {};
  }
  const LasHeader& header() const { return header_; }

 private:
  template <typename T>
  T at(std::size_t place) const {
    return numberAt<T>(bytes_.data() + place);
  }

  std::string readVersion() {
    const std::string_view begin(bytes_.data(), std::min<std::size_t>(bytes_.size(), 4));
    if (begin != std::string_view("LASF").substr(0, begin.size()) || begin.empty()) {
      return "does not begin with \"LASF\" and is no LAS file";
    }
    if (bytes_.size() < headerSizes[0]) {
      return fmt::format("is cut off: it has {} bytes, the header alone has {}", bytes_.size(),
                         headerSizes[0]);
    }
    const unsigned major = at<std::uint8_t>(24);
    header_.minorVersion = at<std::uint8_t>(25);
    if (major != 1 || header_.minorVersion > 4) {
      return fmt::format("is of LAS version {}.{}; 1.0 to 1.4 are read", major,
                         header_.minorVersion);
    }
    return readSize();
  }

  std::string readSize() {
    header_.headerSize = at<std::uint16_t>(94);
    const std::size_t least = headerSizes[header_.minorVersion];
    if (header_.headerSize < least) {
      return fmt::format("its header has {} bytes by its own account; version 1.{} has {} or more",
                         header_.headerSize, header_.minorVersion, least);
    }
    if (bytes_.size() < least || fileSize_ < header_.headerSize) {
      return fmt::format("is cut off: it has {} bytes, the header alone has {}", fileSize_,
                         header_.headerSize);
    }
    return {};
  }

  std::string readTexts() {
    // Before 1.2 the place of these bits was reserved, and some writers left anything in it.
    const unsigned encoding = header_.minorVersion < 2 ? 0 : at<std::uint16_t>(6);
    header_.hasStandardTime = (encoding & 1U) != 0;
    holdsWaveforms_ = (encoding & 2U) != 0;
    header_.hasWkt = (encoding & 16U) != 0;
    header_.fileSource = header_.minorVersion < 1 ? std::uint16_t{0} : at<std::uint16_t>(4);
    header_.systemId = textAt(bytes_.data() + LasPlaces::systemId, LasPlaces::textWidth);
    header_.generatingSoftware =
        textAt(bytes_.data() + LasPlaces::generatingSoftware, LasPlaces::textWidth);
    header_.creationDay = at<std::uint16_t>(LasPlaces::creationDay);
    header_.creationYear = at<std::uint16_t>(LasPlaces::creationYear);
    return {};
  }

  std::string readRecords() {
    header_.pointsStart = at<std::uint32_t>(96);
    header_.vlrCount = at<std::uint32_t>(100);
    const unsigned format = at<std::uint8_t>(104);
    header_.format = format & 0x3FU;
    header_.isCompressed = format != header_.format;
    header_.recordLength = at<std::uint16_t>(105);
    if (header_.pointsStart < header_.headerSize || header_.pointsStart > fileSize_) {
      return fmt::format(
          "its points begin at byte {}, not between the end of its header, {}, and "
          "the end of the file, {}",
          header_.pointsStart, header_.headerSize, fileSize_);
    }
    const std::uint64_t room = header_.pointsStart - header_.headerSize;
    if (header_.vlrCount > room / recordHead) {
      return fmt::format("claims {} variable length records, but has {} bytes for them, {} each",
                         header_.vlrCount, room, recordHead);
    }
    return header_.isCompressed ? std::string() : checkFormat();
  }

  std::string checkFormat() const {
    const unsigned last = lastFormatOf(header_.minorVersion);
    if (header_.format > last) {
      return fmt::format("has points of format {}; version 1.{} has 0 to {}", header_.format,
                         header_.minorVersion, last);
    }
    const std::size_t least = leastRecordLength(header_.format);
    if (header_.recordLength < least) {
      return fmt::format(
          "its point records have {} bytes by its header; those of format {} have "
          "{} or more",
          header_.recordLength, header_.format, least);
    }
    return {};
  }

  std::string readCoordinates() {
    std::array<double, 3> lowest{}, highest{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto scale = at<double>(LasPlaces::scale + 8 * axis);
      const auto offset = at<double>(LasPlaces::offset + 8 * axis);
      // With this every coordinate is a finite number, whatever its integer.
      const double reach = 2147483648.0 * std::abs(scale) + std::abs(offset);
      if (scale == 0.0 || !std::isfinite(reach)) {
        return fmt::format("{} coordinates of scale {} and offset {} are none", "xyz"[axis], scale,
                           offset);
      }
      header_.scale[axis] = scale;
      header_.offset[axis] = offset;
      highest[axis] = at<double>(LasPlaces::bounds + 16 * axis);
      lowest[axis] = at<double>(LasPlaces::bounds + 16 * axis + 8);
    }
    header_.lowest = {lowest[0], lowest[1], lowest[2]};
    header_.highest = {highest[0], highest[1], highest[2]};
    return {};
  }

  std::string readExtendedRecords() {
    if (header_.minorVersion >= 3)
      header_.waveformStart = at<std::uint64_t>(LasPlaces::waveformStart);
    if (header_.minorVersion < 4) return {};
    header_.evlrStart = at<std::uint64_t>(LasPlaces::evlrStart);
    header_.evlrCount = at<std::uint32_t>(LasPlaces::evlrStart + 8);
    if (header_.evlrCount == 0) return {};
    if (header_.evlrStart < header_.pointsStart || header_.evlrStart > fileSize_ ||
        header_.evlrCount > (fileSize_ - header_.evlrStart) / extendedRecordHead) {
      return fmt::format(
          "claims {} extended variable length records from byte {} on; of its {} bytes the points "
          "begin at {}, and it is cut off or damaged",
          header_.evlrCount, header_.evlrStart, fileSize_, header_.pointsStart);
    }
    return {};
  }

  std::string readCounts() {
    const std::uint64_t legacy = at<std::uint32_t>(LasPlaces::legacyCount);
    const std::uint64_t wide = header_.minorVersion < 4 ? 0 : at<std::uint64_t>(LasPlaces::count);
    // 1.4 writes the 64-bit count, and the other as well or 0 instead; some writers forget the
    // first.
    if (legacy != 0 && wide != 0 && legacy != wide) {
      return fmt::format("counts {} points in 32 bits and {} in 64; one of the two is wrong",
                         legacy, wide);
    }
    header_.count = wide != 0 ? wide : legacy;
    for (std::size_t i = 0; i < header_.countByReturn.size(); ++i) {
      if (wide != 0) {
        header_.countByReturn[i] = at<std::uint64_t>(LasPlaces::countByReturn + 8 * i);
      } else if (i < legacyReturns) {
        header_.countByReturn[i] = at<std::uint32_t>(LasPlaces::legacyCountByReturn + 4 * i);
      }
    }
    return {};
  }

  std::string checkPoints() {
    const std::uint64_t end = header_.evlrCount != 0 ? header_.evlrStart : fileSize_;
    const std::uint64_t most = (end - header_.pointsStart) / header_.recordLength;
    if (header_.count <= most) return {};
    return fmt::format(
        "its header counts {} points, but there are {} in the file: it is cut off or was not "
        "finished; copy it again from where it came",
        header_.count, most);
  }

  std::string checkWaveforms() {
    const std::uint64_t start = header_.waveformStart;
    if (!holdsWaveforms_ || start < header_.pointsStart || start >= header_.pointsEnd()) return {};
    return fmt::format("its waveforms begin at byte {}, among the points", start);
  }

  std::span<const char> bytes_;
  std::uint64_t fileSize_;
  bool holdsWaveforms_ = false;  // in this file, not in one beside it
  LasHeader header_;
};

}  // namespace

std::size_t leastRecordLength(unsigned format) {
  return recordLengths.at(format);
}

bool hasGpsTime(unsigned format) {
  return format != 0 && format != 2;
}

std::variant<LasHeader, std::string> lasHeaderIn(std::span<const char> bytes,
                                                 std::uint64_t fileSize) {
  HeaderReader reader(bytes, fileSize);
  if (std::string fault = reader.read(); !fault.empty()) return fault;
  return reader.header();
}

}  // namespace Velorn::Flights
